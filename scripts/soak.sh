#!/usr/bin/env bash
# Logs for that many minutes under every disturbance that there is and accounts for every line; ends
# with a summary, and in failure when anything is lost, torn or left over or a sanitizer reports.
# Usage: soak.sh MINUTES [release|asan|tsan] [SEED]
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

usage="usage: soak.sh MINUTES [release|asan|tsan] [SEED]"
minutes=${1-}
preset=${2-release}
[[ $minutes =~ ^[0-9]+$ ]] && ((minutes > 0)) || fail "$usage"
prefix=()
case $preset in
  release) directory=build ;;
  asan) directory=build-asan ;;
  tsan)
    directory=build-tsan
    read -r -a prefix <<<"$(fixed_addresses)"
    ;;
  *) fail "$usage" ;;
esac
ensure_packages
build "$preset" soak
export ASAN_OPTIONS=detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
say "soaking for $minutes minutes in the preset $preset"
"${prefix[@]}" "$ROOT/$directory/tests/soak" $((60 * minutes)) ${3+"$3"} ||
  fail "the preset $preset failed"
say "nothing lost, nothing torn, nothing left over"
