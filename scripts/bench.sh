#!/usr/bin/env bash
# Installs what is missing, builds the library and the benchmarks with the same flags, measures the
# library beside its peers, and writes bench/results.md and bench/results.svg.
#
#   bench.sh [--quick] [--quill FOLDER] [--before REVISION]
#
# --quick takes few repetitions and leaves what it writes in build-bench/results, for looking at a
# change and not for publishing. --quill, or the variable LOG4ZEB_QUILL, names a folder with quill's
# headers, to be measured as well. --before builds the library of an earlier revision with the same
# benchmarks in build-bench-before, and measures both in turn. How each row is measured is told in
# bench/README.md.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

BENCH_NEEDED=(
  'libbenchmark-dev header:benchmark/benchmark.h'
  'libfmt-dev header:fmt/format.h'
  'libspdlog-dev header:spdlog/spdlog.h'
  'libgoogle-glog-dev header:glog/logging.h'
  'libboost-log-dev header:boost/log/core.hpp'
  'python3 command:python3'
  'strace command:strace'
  'valgrind command:valgrind'
)
BEFORE_SOURCE="$ROOT/build-bench-before/source"
BIN="$ROOT/build-bench/bin"
BIN_BEFORE="$BEFORE_SOURCE/build-bench/bin"
RESULTS="$ROOT/build-bench/results"
SECONDS_AT_MOST=900
INSTRUCTION_TIMES=1000
PACED_EVENTS_TRACED=30000
MOST_FOREIGN_LOAD=0.02

quick='' before='' quill=${LOG4ZEB_QUILL-}
while [[ $# != 0 ]]; do
  case $1 in
    --quick) quick=yes ;;
    --quill | --before)
      [[ -n ${2-} ]] || fail "$1 needs a value"
      if [[ $1 == --quill ]]; then quill=$2; else before=$2; fi
      shift
      ;;
    *) fail "usage: bench.sh [--quick] [--quill FOLDER] [--before REVISION]" ;;
  esac
  shift
done
[[ -z $quill ]] || quill=$(cd -- "$quill" && pwd) || fail "there is no folder for quill"

# Rounds, in each of which the programs of both revisions run once; repetitions in a round; those of
# the probes; rounds of paced blocks wanted, and tried at most.
if [[ -z $quick ]]; then
  rounds=5 repetitions=3 probe_repetitions=5 paced_rounds=25 paced_attempts=200 output="$ROOT/bench"
else
  rounds=2 repetitions=2 probe_repetitions=1 paced_rounds=5 paced_attempts=10 output=$RESULTS
fi

# build_bench FOLDER: the library and the benchmarks in that tree, and the library once more without
# optimization across its sources, in which calls are counted.
build_bench() {
  (cd -- "$1" && cmake --preset bench -DLOG4ZEB_QUILL="$quill" &&
    cmake --build --preset bench) || fail "cannot build $1"
  (cd -- "$1" && cmake --preset release -B build-bench-calls -DLOG4ZEB_BUILD_TESTS=OFF \
    -DLOG4ZEB_BUILD_TOOLS=OFF -DLOG4ZEB_BUILD_EXAMPLES=OFF &&
    cmake --build build-bench-calls --target kivlog4zeb) || fail "cannot build the library of $1"
}

# The sources of the earlier revision, with the benchmarks of this tree.
take_before() {
  local revision
  revision=$(git -C "$ROOT" rev-parse --verify --quiet "$before^{commit}") ||
    fail "there is no revision $before"
  if [[ $(cat "$BEFORE_SOURCE/REVISION" 2>/dev/null) != "$revision" ]]; then
    rm -rf -- "$BEFORE_SOURCE"
    mkdir -p -- "$BEFORE_SOURCE"
    git -C "$ROOT" archive "$revision" | tar -x -C "$BEFORE_SOURCE"
    printf '%s\n' "$revision" >"$BEFORE_SOURCE/REVISION"
  fi
  rm -rf -- "$BEFORE_SOURCE/bench"
  cp -a -- "$ROOT/bench" "$BEFORE_SOURCE/bench"
}

# run_program FOLDER PROGRAM OUTPUT FILTER: the repetitions of its benchmarks in random order, so
# that what disturbs the machine meets all of them.
run_program() {
  timeout "$SECONDS_AT_MOST" "$1/$2" --benchmark_enable_random_interleaving=true \
    --benchmark_repetitions="$repetitions" --benchmark_min_time=0.1 \
    --benchmark_display_aggregates_only=true --benchmark_filter="$4" \
    --benchmark_out="$RESULTS/$3.json" --benchmark_out_format=json \
    >"$RESULTS/$3.txt" 2>&1 || fail "$2 failed: $(tail -n 3 "$RESULTS/$3.txt")"
}

# Of the earlier revision only the library's own benchmarks, by turns before and after the others.
run_benchmarks() {
  local round program
  for ((round = 1; round <= rounds; round++)); do
    for program in callBench callBenchPackaged fileBench asyncBench; do
      say "running $program, round $round of $rounds, $repetitions repetitions each"
      if [[ -n $before ]] && ((round % 2 == 0)); then
        run_program "$BIN_BEFORE" "$program" "$program.before.$round" '/log4zeb'
      fi
      run_program "$BIN" "$program" "$program.after.$round" '.'
      if [[ -n $before ]] && ((round % 2 == 1)); then
        run_program "$BIN_BEFORE" "$program" "$program.before.$round" '/log4zeb'
      fi
    done
  done
}

run_paced() {
  local logs=("log4zeb=$BIN/pacedProbe:log4zeb_async")
  if (($(nproc) < 2)); then
    say "paced events need two processors: left out"
    return
  fi
  [[ -z $quill ]] || logs+=("quill=$BIN/pacedProbe:quill_async")
  [[ -z $before ]] || logs+=("log4zeb_before=$BIN_BEFORE/pacedProbe:log4zeb_async")
  logs+=("spdlog=$BIN/pacedProbe:spdlog_async")
  say "running paced events, $paced_rounds rounds"
  python3 -B "$ROOT/bench/paced.py" "$paced_rounds" "$paced_attempts" "$MOST_FOREIGN_LOAD" \
    "$RESULTS/paced.json" "${logs[@]}" || fail "paced.py failed"
}

# count_wakes FOLDER LOG NAME: the calls that wake threads which the thread that logs makes.
count_wakes() {
  local trace="$RESULTS/futex.txt"
  if ! timeout "$SECONDS_AT_MOST" strace -f -qq --seccomp-bpf -e trace=futex,getppid -o "$trace" \
    "$1/pacedProbe" "$2" "$PACED_EVENTS_TRACED" >"$RESULTS/strace.txt" 2>&1; then
    say "no futex calls were counted, strace failed: $(tail -n 1 "$RESULTS/strace.txt")" >&2
    return
  fi
  awk -v name="$3" -v events="$PACED_EVENTS_TRACED" '
    /getppid\(/ { ++marks; caller = $1; next }
    /futex\(/ && marks == 1 && $1 == caller { ++calls }
    END {
      if (marks != 2) { exit 1 }
      printf "{\"probe\": \"futex\", \"log\": \"%s\", \"events\": %d, \"calls\": %d}\n",
          name, events, calls
    }' "$trace" || fail "the trace of $2 lacks its marks"
  rm -f -- "$trace"
}

run_wakes() {
  (($(nproc) >= 2)) || return 0
  say "counting futex calls of $PACED_EVENTS_TRACED paced events"
  {
    count_wakes "$BIN" log4zeb_async log4zeb
    [[ -z $before ]] || count_wakes "$BIN_BEFORE" log4zeb_async log4zeb_before
    count_wakes "$BIN" spdlog_async spdlog
    [[ -z $quill ]] || count_wakes "$BIN" quill_async quill
  } >>"$RESULTS/probes.jsonl"
}

run_probes() {
  local repetition loggers library log
  local logs=({log4zeb,spdlog}_{kernel,buffered,async} {glog,boost_log}_{kernel,buffered})
  [[ -z $quill ]] || logs+=(quill_async)
  say "reading documents and counting memory, $probe_repetitions repetitions"
  for ((repetition = 0; repetition < probe_repetitions; repetition++)); do
    for loggers in 100 1000 10000; do
      "$BIN/setupProbe" "$loggers" 50
    done
    for library in log4zeb spdlog; do
      "$BIN/memoryProbe" loggers "$library" 100000
    done
    for log in "${logs[@]}"; do
      "$BIN/memoryProbe" events "$log"
    done
  done >>"$RESULTS/probes.jsonl"
}

# count_instructions FOLDER OPERATION NAME: prints them as JSON.
count_instructions() {
  local report="$RESULTS/callgrind.txt" collected
  timeout "$SECONDS_AT_MOST" valgrind --tool=callgrind --callgrind-out-file=/dev/null \
    '--toggle-collect=measuredPart*' --log-file="$report" \
    "$1/instructionProbe" "$2" "$INSTRUCTION_TIMES" || fail "instructionProbe $2 failed"
  collected=$(sed -n 's/.*Collected : *\([0-9]*\).*/\1/p' "$report")
  [[ -n $collected ]] || fail "no instructions were counted for $2"
  printf '{"probe": "instructions", "operation": "%s", "times": %d, "instructions": %d}\n' \
    "$3" "$INSTRUCTION_TIMES" "$collected"
}

# count_calls FOLDER NAME: prints as JSON what the library calls for an event to a file, each of its
# sources compiled for itself so that calls between them are calls.
count_calls() {
  local profile="$RESULTS/callgrind.out" calls
  LD_LIBRARY_PATH="$1/build-bench-calls" timeout "$SECONDS_AT_MOST" valgrind --tool=callgrind \
    --dump-instr=yes --callgrind-out-file="$profile" '--toggle-collect=measuredPart*' \
    --log-file="$RESULTS/callgrind.txt" "$1/build-bench/bin/instructionProbe" log4zeb_kernel \
    "$INSTRUCTION_TIMES" || fail "instructionProbe log4zeb_kernel failed"
  calls=$(python3 -B "$ROOT/bench/callgrind_calls.py" "$profile" libkivlog4zeb) ||
    fail "no calls were counted"
  printf '{"probe": "calls", "tree": "%s", "times": %d, %s}\n' "$2" "$INSTRUCTION_TIMES" "$calls"
  rm -f -- "$profile"
}

run_calls() {
  say "counting calls"
  {
    count_calls "$ROOT" after
    [[ -z $before ]] || count_calls "$BEFORE_SOURCE" before
  } >>"$RESULTS/probes.jsonl"
}

run_instructions() {
  local operation ours=(log4zeb_{kernel,buffered,async,async_formatted})
  local all=(nothing "${ours[@]}" spdlog_{async,async_formatted})
  [[ -n $quick ]] || all+=(disabled_{log4zeb_method,log4zeb_macro,spdlog}
    lookup_{log4zeb,log4zeb_literal,spdlog} {spdlog,glog,boost_log}_{kernel,buffered} bare_write)
  [[ -z $quill ]] || all+=(quill_{async,async_formatted})
  say "counting instructions"
  for operation in "${all[@]}"; do
    count_instructions "$BIN" "$operation" "$operation"
  done >"$RESULTS/instructions.jsonl"
  [[ -n $before ]] || return 0
  for operation in "${ours[@]}"; do
    count_instructions "$BIN_BEFORE" "$operation" "${operation/log4zeb/log4zeb_before}"
  done >>"$RESULTS/instructions.jsonl"
}

# count_lines FOLDER NAME: the lines of headers and sources of the library and the tools.
count_lines() {
  local lines
  lines=$(cd -- "$1" && find log4zeb.h appenders config core filters layouts net platform \
    rendering tools '(' -name '*.h' -o -name '*.cpp' ')' -exec cat {} + | wc -l)
  printf '{"probe": "lines", "tree": "%s", "lines": %d}\n' "$2" "$lines" >>"$RESULTS/probes.jsonl"
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
  [[ -z $before ]] || printf 'before: %s\n' "$(git -C "$ROOT" rev-parse --short "$before^{commit}")"
  printf 'valgrind: %s\n' "$(valgrind --version)"
}

ensure_packages "${BENCH_NEEDED[@]}"
say "building the preset bench"
build_bench "$ROOT"
if [[ -n $before ]]; then
  say "building the library of $before"
  take_before
  build_bench "$BEFORE_SOURCE"
fi
rm -rf -- "$RESULTS"
mkdir -p -- "$RESULTS"
cd -- "$ROOT/build-bench"
describe_machine >"$RESULTS/machine.txt"
count_lines "$ROOT" after
[[ -z $before ]] || count_lines "$BEFORE_SOURCE" before
run_paced
run_wakes
run_benchmarks
run_probes
run_instructions
run_calls
python3 -B "$ROOT/bench/report.py" "$RESULTS" "$output"
say "written: $output/results.md and $output/results.svg"
