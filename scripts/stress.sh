#!/usr/bin/env bash
# Does to appenders, loggers and documents for that many minutes whatever a program may, from several
# threads and from inside of appenders, filters and messages; fails when it crashes or hangs or a
# sanitizer reports. Usage: stress.sh MINUTES [release|asan|tsan] [SEED]
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

usage="usage: stress.sh MINUTES [release|asan|tsan] [SEED]"
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
build "$preset" stress
export ASAN_OPTIONS=detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
say "running for $minutes minutes in the preset $preset"
"${prefix[@]}" "$ROOT/$directory/tests/stress" $((60 * minutes)) ${3+"$3"} ||
  fail "the preset $preset failed"
say "neither a crash nor a hang"
