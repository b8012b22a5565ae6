#!/usr/bin/env bash
# Makes docs/page.png, the picture of an HTML page in README.md: the command logs some lines as rows
# and makes a page of them, and Chromium shows it.
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

SIZE=960,236
PICTURE="$ROOT/docs/page.png"

ensure_packages 'chromium command:chromium'
build release log4zeb
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
mkdir "$work/logs"
cd -- "$work"
"$ROOT/build/bin/log4zeb" log --config "$ROOT/examples/server/markup.xml" --logger shop.orders \
  --level-from-line <<'LINES'
INFO open for business
DEBUG 3 orders are waiting, <none> is late
INFO order 1 came in
WARN order 2 has an unknown article, asking again
ERROR order 2 is refused: article 4711 does not exist
INFO order 3 came in
FATAL the cash register is gone
INFO closing
LINES
"$ROOT/build/bin/log4zeb" page --title 'A day at the shop' --output page.html logs/rows.html
HOME=$work chromium --headless --no-sandbox --disable-gpu --hide-scrollbars \
  --user-data-dir="$work/browser" --window-size="$SIZE" --screenshot="$PICTURE" \
  "file://$work/page.html" >browser.log 2>&1 || fail "$(tail -n 3 browser.log)"
say "the picture is in ${PICTURE#"$ROOT/"}"
