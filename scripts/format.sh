#!/usr/bin/env bash
# Formats every C++ file of the project; with --check, changes nothing and fails when a file is not
# formatted. The check is skipped where the version of clang-format that the project uses is absent.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

VERSION=14

find_formatter() {
  local name
  for name in "clang-format-$VERSION" clang-format; do
    if command -v "$name" >/dev/null && "$name" --version | grep -q " version $VERSION\."; then
      printf '%s' "$name"
      return
    fi
  done
}

source_files() {
  cd -- "$ROOT"
  find . \( -name '.?*' -o -path './build' -o -path './build-*' \) -prune -o \
    \( -name '*.h' -o -name '*.cpp' \) -print0
}

formatter=$(find_formatter)
case ${1-} in
  --check) mode=(--dry-run --Werror) ;;
  '') mode=(-i) ;;
  *) fail "usage: format.sh [--check]" ;;
esac
if [[ -z $formatter ]]; then
  if [[ ${1-} == --check ]]; then
    say "SKIPPED: THE FORMAT CHECK. It needs clang-format $VERSION (package clang-format-$VERSION)."
    exit 0
  fi
  fail "needs clang-format $VERSION (package clang-format-$VERSION)"
fi
source_files | (cd -- "$ROOT" && xargs -0 "$formatter" --style=file "${mode[@]}")
if [[ ${1-} == --check ]]; then
  say "every file is formatted"
fi
