#!/usr/bin/env bash
# Builds the fuzz harnesses and runs each over its corpus and then on inputs of the fuzzer's own.
# Usage: fuzz.sh SECONDS [HARNESS...]; SECONDS is for each harness, 0 runs the corpora only; without
# names, all harnesses. What fails a harness is kept in build-fuzz/findings.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

BUILD="$ROOT/build-fuzz"
FINDINGS="$BUILD/findings"

# The package with the fuzzer's and the sanitizers' runtime for the clang that is installed.
runtime_package() {
  printf 'libclang-rt-%s-dev' "$(clang++ -dumpversion | cut -d. -f1)"
}

ensure_clang() {
  ensure_packages 'clang command:clang++'
  local runtime
  runtime=$(clang++ -print-file-name="lib/linux/libclang_rt.fuzzer-$(uname -m).a")
  if [[ ! -e $runtime ]]; then
    is_debian || fail "missing: the fuzzer's runtime library of clang"
    install_packages "$(runtime_package)"
  fi
}

# The number that the fuzzer gives a statistic in its log.
statistic() {
  sed -n "s/^stat::$1: *//p" "$2"
}

# run_harness NAME SECONDS: prints a row of figures; what is found goes to the log.
run_harness() {
  local name=$1 seconds=$2 log="$FINDINGS/$1.log" options status=0
  mkdir -p -- "$SCRATCH/$name"
  options=(
    -artifact_prefix="$FINDINGS/$name-"
    -close_fd_mask=1
    -dict="$ROOT/fuzz/dictionaries/${name%Fuzz}.dict"
    -print_final_stats=1
    -timeout=20
  )
  if ((seconds > 0)); then
    options+=(-max_total_time="$seconds")
  else
    options+=(-runs=0)
  fi
  TMPDIR=$SCRATCH "$BUILD/fuzz/$name" "${options[@]}" "$SCRATCH/$name" "$ROOT/fuzz/corpus/$name" \
    >"$log" 2>&1 || status=$?
  printf '%-14s %12s %12s %8s\n' "$name" "$(statistic number_of_executed_units "$log")" \
    "$(statistic average_exec_per_sec "$log")" \
    "$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -d' ' -f2)"
  if ((status != 0)); then
    grep -v -E '^#|^INFO' "$log" | head -n 60
  fi
  return "$status"
}

[[ ${1-} =~ ^[0-9]+$ ]] || fail "usage: fuzz.sh SECONDS [HARNESS...]"
seconds=$1
shift
ensure_clang
build fuzz
rm -rf -- "$FINDINGS"
mkdir -p -- "$FINDINGS"
# Files of harnesses are many and small: they stay in memory where the system has a place for that.
memory=/dev/shm
[[ -w $memory ]] || memory=${TMPDIR-/tmp}
SCRATCH=$(mktemp -d -- "$memory/log4zeb-fuzz.XXXXXX")
trap 'rm -rf -- "$SCRATCH"' EXIT
if (($# == 0)); then
  for corpus in "$ROOT"/fuzz/corpus/*; do
    set -- "$@" "${corpus##*/}"
  done
fi
say "fuzzing, $seconds seconds each"
printf '%-14s %12s %12s %8s\n' harness executions 'a second' edges
# One for each processor at a time; what they print appears in the order of their names.
for harness in "$@"; do
  (($(jobs -rp | wc -l) < $(nproc))) || wait -n || true
  (run_harness "$harness" "$seconds" >"$FINDINGS/$harness.row" || touch -- "$FINDINGS/$harness.failed") &
done
wait
failed=()
for harness in "$@"; do
  cat -- "$FINDINGS/$harness.row"
  [[ ! -e $FINDINGS/$harness.failed ]] || failed+=("$harness")
done
((${#failed[@]} == 0)) || fail "found something, see $FINDINGS: ${failed[*]}"
say "nothing found"
