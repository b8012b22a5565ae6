#!/usr/bin/env bash
# Installs what is missing, compares the Markdown pages with the files, samples and tests that they
# talk about, and makes the API reference of the installed headers in build-docs/api. A dead link, a
# sample that differs from its file, a test that does not exist or a warning of Doxygen fails.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

DOCS_NEEDED=(
  'doxygen command:doxygen'
  'git command:git'
  'libfmt-dev header:fmt/format.h'
  'python3 command:python3'
)
BUILD="$ROOT/build-docs"

[[ $# == 0 ]] || fail "usage: docs.sh"
ensure_packages "${DOCS_NEEDED[@]}"

say "looking at links, samples, paths and tests in the pages"
mkdir -p -- "$BUILD"
cmake -S "$ROOT" -B "$BUILD/examples" -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
  -DLOG4ZEB_BUILD_TESTS=OFF -DLOG4ZEB_BUILD_TOOLS=OFF >"$BUILD/examples.log" 2>&1 ||
  { cat -- "$BUILD/examples.log" >&2 && fail "the examples were not configured"; }
"$ROOT/scripts/check_docs.py" "$ROOT" "$BUILD/examples/compile_commands.json" ||
  fail "the pages are not in step with the project"

say "making the API reference"
rm -rf -- "$BUILD/api"
folders=$(sed -n 's/^foreach(folder \(.*\))$/\1/p' "$ROOT/cmake/Install.cmake")
grep -q "^INPUT .* log4zeb.h ${folders:?}\$" "$ROOT/docs/Doxyfile" ||
  fail "docs/Doxyfile reads other folders than are installed: $folders"
(cd -- "$ROOT" && doxygen docs/Doxyfile) || fail "Doxygen is not content"
say "the API reference is $BUILD/api/index.html"
