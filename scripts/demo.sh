#!/usr/bin/env bash
# Installs what is missing, builds, and shows the library at work: a simulated server, then a real
# file of this machine sent line by line through the command log4zeb into rolling files, where every
# line is looked for. Usage: demo.sh [FILE]; without FILE, /var/log/dpkg.log or another large text.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

LEAST_LINES=100
LEAST_ROLLOVERS=3
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

run_server() {
  say "a server of four threads handles 3000 requests; the console shows WARN and above"
  mkdir -p server/logs
  (cd server && "$BIN/server" "$ROOT/examples/server/server.xml" 3000)
  say "everything it logged is in server/logs: the file and its backups, one line of each"
  show_files server/logs/*
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

ensure_packages
input=$(choose_input "${1-}")
build release log4zeb example_first example_server
rm -rf -- "$DEMO"
mkdir -p -- "$DEMO"
cd -- "$DEMO"
run_server
run_lines "$input"
say "the files are in $DEMO"
