#!/usr/bin/env bash
# Installs what is missing, builds the library and the benchmarks with the same flags, measures the
# library beside its peers, and writes bench/results.md and bench/results.svg. Usage: bench.sh
# [--quick]; with --quick it takes few repetitions, counts no instructions, and leaves what it writes
# in build-bench/results, for looking at a change and not for publishing. How each row is measured is
# told in bench/README.md.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

BENCH_NEEDED=(
  'libbenchmark-dev header:benchmark/benchmark.h'
  'libspdlog-dev header:spdlog/spdlog.h'
  'libgoogle-glog-dev header:glog/logging.h'
  'libboost-log-dev header:boost/log/core.hpp'
  'python3 command:python3'
  'valgrind command:valgrind'
)
BIN="$ROOT/build-bench/bin"
RESULTS="$ROOT/build-bench/results"
SECONDS_AT_MOST=900
INSTRUCTION_TIMES=1000

# Repetitions of calls and files, of the slower asynchronous work, and of the probes.
case ${1-} in
  '') call_repetitions=15 async_repetitions=9 probe_repetitions=5 output="$ROOT/bench" ;;
  --quick) call_repetitions=5 async_repetitions=3 probe_repetitions=1 output=$RESULTS ;;
  *) fail "usage: bench.sh [--quick]" ;;
esac

# run_benchmarks PROGRAM REPETITIONS: the repetitions of all its benchmarks in random order, so that
# what disturbs the machine meets all of them.
run_benchmarks() {
  say "running $1, $2 repetitions"
  timeout "$SECONDS_AT_MOST" "$BIN/$1" --benchmark_enable_random_interleaving=true \
    --benchmark_repetitions="$2" --benchmark_min_time=0.1 --benchmark_display_aggregates_only=true \
    --benchmark_out="$RESULTS/$1.json" --benchmark_out_format=json \
    >"$RESULTS/$1.txt" 2>&1 || fail "$1 failed: $(tail -n 3 "$RESULTS/$1.txt")"
}

run_probes() {
  local repetition loggers library log
  say "reading documents and counting memory, $probe_repetitions repetitions"
  for ((repetition = 0; repetition < probe_repetitions; repetition++)); do
    for loggers in 100 1000 10000; do
      "$BIN/setupProbe" "$loggers" 50
    done
    for library in log4zeb spdlog; do
      "$BIN/memoryProbe" loggers "$library" 100000
    done
    for log in {log4zeb,spdlog}_{kernel,buffered,async} {glog,boost_log}_{kernel,buffered}; do
      "$BIN/memoryProbe" events "$log"
    done
  done >"$RESULTS/probes.jsonl"
}

# count_instructions OPERATION: prints them as JSON.
count_instructions() {
  local report="$RESULTS/callgrind.txt" collected
  timeout "$SECONDS_AT_MOST" valgrind --tool=callgrind --callgrind-out-file=/dev/null \
    '--toggle-collect=measuredPart*' --log-file="$report" \
    "$BIN/instructionProbe" "$1" "$INSTRUCTION_TIMES" || fail "instructionProbe $1 failed"
  collected=$(sed -n 's/.*Collected : *\([0-9]*\).*/\1/p' "$report")
  [[ -n $collected ]] || fail "no instructions were counted for $1"
  printf '{"probe": "instructions", "operation": "%s", "times": %d, "instructions": %d}\n' \
    "$1" "$INSTRUCTION_TIMES" "$collected"
}

run_instructions() {
  local operation
  say "counting instructions"
  for operation in nothing disabled_{log4zeb_method,log4zeb_macro,spdlog} \
    lookup_{log4zeb,log4zeb_literal,spdlog} {log4zeb,spdlog}_{kernel,buffered,async} \
    {glog,boost_log}_{kernel,buffered} bare_write; do
    count_instructions "$operation"
  done >"$RESULTS/instructions.jsonl"
}

# Prints what the results depend on and the programs do not know, as "name: value".
describe_machine() {
  printf 'date: %s\n' "$(date -u +%F)"
  printf 'processor: %s, %s cores\n' \
    "$(awk -F': *' '/^model name/ { print $2; exit }' /proc/cpuinfo)" "$(nproc)"
  printf 'system: %s, Linux %s\n' "$(source /etc/os-release && printf '%s' "$PRETTY_NAME")" \
    "$(uname -r | cut -d. -f1,2)"
  printf 'file system: %s\n' "$(df --output=fstype "$RESULTS" | tail -n 1)"
  printf 'revision: %s\n' "$(git -C "$ROOT" describe --always --dirty 2>/dev/null || echo none)"
  printf 'valgrind: %s\n' "$(valgrind --version)"
}

ensure_packages "${BENCH_NEEDED[@]}"
build bench
rm -rf -- "$RESULTS"
mkdir -p -- "$RESULTS"
cd -- "$ROOT/build-bench"
describe_machine >"$RESULTS/machine.txt"
run_benchmarks callBench "$call_repetitions"
run_benchmarks callBenchPackaged "$call_repetitions"
run_benchmarks fileBench "$call_repetitions"
run_benchmarks asyncBench "$async_repetitions"
run_probes
if [[ ${1-} != --quick ]]; then
  run_instructions
fi
python3 -B "$ROOT/bench/report.py" "$RESULTS" "$output"
say "written: $output/results.md and $output/results.svg"
