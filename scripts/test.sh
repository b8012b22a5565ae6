#!/usr/bin/env bash
# Installs what is missing, builds, and runs all tests. Arguments go to ctest, such as -R Rolling.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

ensure_packages "${TEST_NEEDED[@]}"
build release
say "running the tests"
exec ctest --test-dir "$ROOT/build" --output-on-failure -j2 "$@"
