#!/usr/bin/env bash
# Builds with sanitizers and runs all tests; any report fails, also one of a process that a test
# started. Usage: sanitize.sh [asan|tsan]; without an argument, both.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

# run_under PRESET: builds the preset and runs its tests, every report going to a file.
run_under() {
  local preset=$1 directory="$ROOT/build-$1" prefix=()
  local reports="$directory/reports" status=0
  build "$preset"
  rm -rf -- "$reports"
  mkdir -p -- "$reports"
  local common="log_path=\"$reports/report\""
  export ASAN_OPTIONS="detect_leaks=1:$common"
  export LSAN_OPTIONS="$common"
  export UBSAN_OPTIONS="print_stacktrace=1:$common"
  export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:$common"
  if [[ $preset == tsan ]]; then
    read -r -a prefix <<<"$(fixed_addresses)"
  fi
  say "running the tests of the preset $preset"
  "${prefix[@]}" ctest --test-dir "$directory" --output-on-failure -j2 || status=$?
  local report
  for report in "$reports"/*; do
    [[ -s $report ]] || continue
    printf -- '-- %s\n' "$report"
    cat -- "$report"
    status=1
  done
  # Beside the address sanitizer, reports of undefined behaviour go to standard error only.
  if grep ': runtime error: ' "$directory/Testing/Temporary/LastTest.log"; then
    status=1
  fi
  ((status == 0)) || fail "the preset $preset failed"
}

case ${1-both} in
  both) presets=(asan tsan) ;;
  asan | tsan) presets=("$1") ;;
  *) fail "usage: sanitize.sh [asan|tsan]" ;;
esac
ensure_packages "${TEST_NEEDED[@]}"
for preset in "${presets[@]}"; do
  run_under "$preset"
done
say "no sanitizer report: ${presets[*]}"
