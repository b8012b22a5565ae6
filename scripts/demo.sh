#!/usr/bin/env bash
# Installs what is missing, builds, and shows the library at work: a simulated server that logs
# through an asynchronous appender, into XML and HTML, and as event records and syslog datagrams
# over loopback; then a real file of this machine sent line by line through the command log4zeb into
# rolling files, and a document that is edited meanwhile. Each step counts what arrived and fails
# when something is missing. Usage: demo.sh [FILE]; without FILE, /var/log/dpkg.log or another large
# text.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

LEAST_LINES=100
LEAST_ROLLOVERS=3
REQUESTS=3000
# So few that all datagrams of a run fit into a socket's buffer: UDP drops what does not.
DATAGRAM_REQUESTS=40
SECONDS_TO_RECEIVE=60
DEMO="$ROOT/build/demo"
BIN="$ROOT/build/bin"
LOG=logs/lines.log

# A text that can be compared byte by byte with what comes out: UTF-8 of enough lines.
is_usable() {
  [[ -f $1 && -r $1 ]] && (($(wc -l <"$1") >= LEAST_LINES)) &&
    iconv -f UTF-8 -t UTF-8 <"$1" >/dev/null 2>&1
}

# Prints the name of the file to send.
choose_input() {
  local candidate
  if [[ -n ${1-} ]]; then
    is_usable "$1" || fail "'$1' is not a readable UTF-8 text of $LEAST_LINES lines or more"
    (cd -- "$(dirname -- "$1")" && printf '%s/%s' "$PWD" "$(basename -- "$1")")
    return
  fi
  while IFS= read -r candidate; do
    if is_usable "$candidate"; then
      printf '%s' "$candidate"
      return
    fi
  done < <(
    printf '%s\n' /var/log/dpkg.log
    find /var/log /usr/share/common-licenses /usr/share/perl /usr/include -type f -size +32k \
      -printf '%s %p\n' 2>/dev/null | sort -rn | cut -d' ' -f2- || true
  )
  fail "no large text found; name one: demo.sh FILE"
}

show_files() {
  local file
  for file in "$@"; do
    printf '%10d bytes  %s\n            %s\n' "$(wc -c <"$file")" "$file" \
      "$(head -n 1 -- "$file" | tr -d '\r' | cut -c -100)"
  done
}

# Prints the live file's backups, the oldest first.
backups_of() {
  local number=1
  while [[ -e $1.$number ]]; do
    number=$((number + 1))
  done
  while ((--number > 0)); do
    printf '%s\n' "$1.$number"
  done
}

# check_requests REQUESTS: the server's lines on standard input hold each request once, each with
# its steps in order and on one thread, between the first and the last thing that a server says.
check_requests() {
  awk -v requests="$1" '
    function wrong(why) { print "line " NR ": " why ": " $0; failed = 1; exit 1 }
    { sub(/\r$/, ""); last = $0 }
    NR == 1 && !/ starts with / { wrong("not the first one") }
    !match($0, /\[request [0-9]+/) { next }
    { request = substr($0, RSTART + 9, RLENGTH - 9) + 0; thread = $3 }
    / GET / { if (step[request]++ != 0) wrong("twice"); of[request] = thread; count++ }
    / SELECT / { if (step[request]++ != 1) wrong("out of order") }
    / answered / { if (step[request]++ != 2) wrong("out of order"); answered++ }
    of[request] != thread { wrong("not by the thread of its request") }
    END {
      if (failed) exit 1
      if (count != requests || answered != requests || last !~ " ends after " requests " requests$") {
        print count + 0 " requests and " answered + 0 " answers of " requests ", the last line: " last
        exit 1
      }
      print NR
    }'
}

run_server() {
  local log=server/logs/server.log files lines
  say "a server of four threads handles $REQUESTS requests; the console shows WARN and above"
  mkdir -p server/logs
  (cd server && "$BIN/server" "$ROOT/examples/server/server.xml" "$REQUESTS")
  mapfile -t files < <(backups_of "$log")
  say "an asynchronous appender took all of it to a rolling file, the oldest backup first"
  show_files "${files[@]}" "$log"
  lines=$(cat -- "${files[@]}" "$log" | check_requests "$REQUESTS") ||
    fail "what the server logged is not in the files: $lines"
  ((${#files[@]} >= LEAST_ROLLOVERS)) || fail "only ${#files[@]} rollovers"
  say "$lines lines in ${#files[@]} backups and the file: every request with all its steps in order"
}

# count_lines PATTERN FILE: how many lines match.
count_lines() {
  grep -c -- "$1" "$2" || true
}

# Leaves the number of events in $events, and what they are in markup/logs/events.xml.
run_markup() {
  local ends rows cells
  say "the server logs $DATAGRAM_REQUESTS requests into XML elements and HTML rows"
  mkdir -p markup/logs
  (cd markup && "$BIN/server" "$ROOT/examples/server/markup.xml" "$DATAGRAM_REQUESTS")
  "$BIN/log4zeb" page --title 'A server at work' --output markup/page.html markup/logs/rows.html
  show_files markup/logs/events.xml markup/logs/rows.html markup/page.html
  events=$(count_lines '^<log4j:event ' markup/logs/events.xml)
  ends=$(count_lines '^</log4j:event>' markup/logs/events.xml)
  rows=$(count_lines '^<td title="Message">' markup/logs/rows.html)
  cells=$(count_lines '^<td title="Message">' markup/page.html)
  ((events >= 4 * DATAGRAM_REQUESTS)) || fail "only $events events in XML"
  ((ends == events && rows == events && cells == events)) ||
    fail "$events events begin and $ends end in XML, $rows are HTML rows, $cells are in the page"
  [[ $(head -n 1 markup/page.html) == '<!DOCTYPE HTML '* &&
    $(tail -n 1 markup/page.html | tr -d '\r') == '</body></html>' ]] ||
    fail "markup/page.html is no complete page"
  say "$events events in XML, as many HTML rows, as many in the page markup/page.html"
}

# listen OPTION...: starts log4zeb listen, its output going to network/received, and waits until it
# listens. Leaves its process in $listener. Returns 1 when it has ended instead.
listen() {
  local ready=${!#}
  timeout "$SECONDS_TO_RECEIVE" "$BIN/log4zeb" listen "${@:1:$#-1}" \
    >network/received 2>network/listening &
  listener=$!
  until grep -q "listening for $ready" network/listening; do
    if ! kill -0 "$listener" 2>/dev/null; then
      listener=
      return 1
    fi
    sleep 0.05
  done
}

# Prints the lines that log4zeb listen makes of the events in markup/logs/events.xml, which are
# those of any run with as many requests, sorted. With_syslog is 1 or 0.
expected_datagrams() {
  awk -F'"' -v with_syslog="$1" '
    /^<log4j:event / { category = $2; level = $6 }
    /^<log4j:message>/ {
      gsub(/^<log4j:message><!\[CDATA\[|\]\]><\/log4j:message>\r$/, "")
      print "record " category ": " $0
      if (with_syslog && level != "DEBUG")
        print "syslog local3.emerg: " level " " category " - " $0
    }' markup/logs/events.xml | by_request
}

# Which worker handled how many requests is chance.
by_request() {
  sed -e 's/worker ends after [0-9]* requests/worker ends/' | LC_ALL=C sort
}

run_network() {
  local with_syslog=1 expected port
  mkdir -p network
  expected_datagrams 1 >network/expected
  expected=$(wc -l <network/expected)
  say "the server sends event records and syslog datagrams to log4zeb listen"
  if ! listen --records 0 --syslog 514 --count "$expected" 'syslog datagrams'; then
    say "SKIPPED: THE SYSLOG DATAGRAMS. They go to port 514, which needs root and nobody else there:"
    cat network/listening
    with_syslog=0
    expected_datagrams 0 >network/expected
    expected=$(wc -l <network/expected)
    listen --records 0 --count "$expected" 'event records' || fail "$(cat network/listening)"
  fi
  port=$(sed -n 's/.*event records on .*:\([0-9]*\)$/\1/p' network/listening)
  sed -e "s/\(name=\"Port\" value=\"\)[0-9]*/\1$port/" "$ROOT/examples/server/network.xml" |
    if ((with_syslog)); then cat; else sed -e '/appender-ref ref="SYSLOG"/d'; fi \
      >network/network.xml
  grep -q "name=\"Port\" value=\"$port\"" network/network.xml ||
    fail "the port was not found in network.xml"
  (cd network && "$BIN/server" network.xml "$DATAGRAM_REQUESTS")
  check_datagrams
}

# Waits for the listener and compares what it received with network/expected.
check_datagrams() {
  local status=0
  wait "$listener" || status=$?
  listener=
  ((status == 0)) ||
    fail "log4zeb listen ended with $status after $(wc -l <network/received) of $expected datagrams"
  by_request <network/received >network/sorted
  cmp -- network/expected network/sorted || fail "other datagrams were received than events logged"
  head -n 4 network/received
  say "$(count_lines '^record ' network/received) event records of as many events and" \
    "$(count_lines '^syslog ' network/received) syslog datagrams received, each as it was logged"
}

# fit_document INPUT: writes lines.xml with a file size that makes INPUT roll over several times and
# with places for more backups than that.
fit_document() {
  local bytes lines prefix=80
  bytes=$(wc -c <"$1")
  lines=$(wc -l <"$1")
  maximum=$((bytes / (LEAST_ROLLOVERS + 2)))
  ((maximum <= 2147483647)) || maximum=2147483647
  places=$(((bytes + (lines + 1) * prefix) / maximum + 1))
  sed -e "s/\(name=\"MaximumFileSize\" value=\"\)[0-9]*/\1$maximum/" \
    -e "s/\(name=\"MaxBackupIndex\" value=\"\)[0-9]*/\1$places/" \
    "$ROOT/examples/server/rolling.xml" >lines.xml
  if ! grep -q "\"MaximumFileSize\" value=\"$maximum\"" lines.xml ||
    ! grep -q "\"MaxBackupIndex\" value=\"$places\"" lines.xml; then
    fail "the two numbers were not found in rolling.xml"
  fi
}

# A file is rolled over by the line that reaches the maximum: a backup holds that many bytes or
# more, and fewer without its last line.
check_sizes() {
  local file size
  for file in "${backups[@]}"; do
    size=$(wc -c <"$file")
    ((size >= maximum && size - $(tail -n 1 -- "$file" | wc -c) < maximum)) ||
      fail "$file has $size bytes, but the maximum is $maximum"
  done
  (($(wc -c <"$LOG") < maximum)) || fail "$LOG should have been rolled over"
}

# The numbers of the backups are 1, 2, 3, ... and none is beyond the configured one.
check_numbers() {
  local numbered
  numbered=$(find logs -name 'lines.log.*' | wc -l)
  ((numbered == ${#backups[@]})) || fail "the numbers of the backups have gaps"
  ((numbered >= LEAST_ROLLOVERS)) || fail "only $numbered rollovers, not the several expected"
  ((numbered <= places)) || fail "$numbered backups, but only $places are configured"
}

# check_lines INPUT: every line of INPUT is in the files once and in its place.
check_lines() {
  local in out
  export LC_ALL=C
  # Both sides as lines that end with LF, the log's without what the layout put before them.
  # shellcheck disable=SC1003 # sed's way to end a last line that has no end
  sed -e 's/\r$//' -e '$a\' <"$1" >expected
  cat -- "${backups[@]}" "$LOG" | sed -e 's/^[^|]* | //' -e 's/\r$//' >found
  in=$(wc -l <expected)
  out=$(wc -l <found)
  cmp -- expected found || fail "$in lines went in, $out came out, and they differ"
  say "$in lines went in; each is in the files exactly once and in order"
}

run_lines() {
  local input=lines.txt maximum places backups
  # A copy, because the file may grow meanwhile.
  cp -- "$1" "$input"
  fit_document "$input"
  say "log4zeb log sends $1 into files of $maximum bytes, up to $places backups"
  mkdir -p logs
  "$BIN/log4zeb" log --config lines.xml --logger lines --level-from-line "$input"
  mapfile -t backups < <(backups_of "$LOG")
  say "what it wrote, the oldest first, one line of each"
  show_files "${backups[@]}" "$LOG"
  check_numbers
  check_sizes
  say "${#backups[@]} rollovers, backups numbered 1 to ${#backups[@]}"
  check_lines "$input"
}

# watched_document NAME: prints a document that logs to watch/logs/NAME.log.
watched_document() {
  sed -e "s/logs\/lines\.log/logs\/$1.log/" "$ROOT/examples/server/rolling.xml"
}

# send_until FILE: sends one line after the other until FILE holds one.
send_until() {
  local patience=500
  until [[ -s $1 ]]; do
    ((patience-- > 0)) || fail "no line arrived in $1"
    sent=$((sent + 1))
    printf 'line %d\n' "$sent" | tee -a watch/sent >&"$pipe"
    sleep 0.02
  done
}

run_watch() {
  local sent=0 pipe
  say "log4zeb log --watch logs lines from a pipe while its document is edited"
  mkdir -p watch/logs
  mkfifo watch/pipe
  watched_document before >watch/watched.xml
  (cd watch && exec "$BIN/log4zeb" log --config watched.xml --watch --watch-delay 50 pipe) &
  watcher=$!
  # For reading too, so that this does not wait for a command that has failed.
  exec {pipe}<>watch/pipe
  send_until watch/logs/before.log
  watched_document after >watch/new.xml
  mv watch/new.xml watch/watched.xml
  send_until watch/logs/after.log
  exec {pipe}>&-
  wait "$watcher" || fail "log4zeb log --watch ended with $?"
  watcher=
  cat watch/logs/before.log watch/logs/after.log | sed -e 's/^[^|]* | //' -e 's/\r$//' |
    cmp - watch/sent || fail "the lines in watch/logs are not those that were sent"
  say "$sent lines sent: $(wc -l <watch/logs/before.log) before the edit took effect," \
    "$(wc -l <watch/logs/after.log) after, none lost"
}

# Processes of this script that still run when it fails.
listener=
watcher=
end_processes() {
  local process
  for process in $listener $watcher; do
    kill "$process" 2>/dev/null || true
  done
}
trap end_processes EXIT

ensure_packages
input=$(choose_input "${1-}")
build release log4zeb example_first example_server
rm -rf -- "$DEMO"
mkdir -p -- "$DEMO"
cd -- "$DEMO"
run_server
run_markup
run_network
run_lines "$input"
run_watch
say "the files are in $DEMO"
