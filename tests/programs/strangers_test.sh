#!/usr/bin/env bash
# A product whose name clears a screen, forges a line and opens a tag goes through a real station: what
# each program prints, logs and shows of it stays within its line, in printable ASCII.
#   strangers_test.sh BIN SOURCE
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
station=$work/station
name=$'TOR\e[2J\nFORGED<B>\xC2\x9B\xE2\x80\xAE.TXT'
other=TORB${name#TOR}
shown='\x1B[2J\x0AFORGED<B>\xC2\x9B\xE2\x80\xAE'

mkdir -p "$station/ports" "$station/KvData/RxFiles" "$work/said"
cp "$source"/packaging/station/* "$bin"/ostrel-{headless,queue,settings,monitor,status,feed,simulate,watch} "$station"
for setting in 'ComBaud 1200' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  "$station/ostrel-settings" set $setting
done
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 1200 --out "$work/received"
until_true 10 test -L "$station/ports/COM1"
unset DISPLAY
start "$station/ostrel-headless"
queue() { "$station/ostrel-queue" "$@"; }
waits() { queue list | grep -qF "$shown"; }
until_true 20 queue list
port=$((20000 + $$ % 20000))
start "$station/ostrel-status" --serve "$port"
drop() {
  head -c 9000 /dev/zero | tr '\0' x >"$work/arriving"
  mv "$work/arriving" "$station/KvData/RxFiles/$1"
}
drop "$name"
until_true 20 waits
drop "$other"
other_waits() { queue list | grep -qF "TORB$shown"; }
until_true 20 other_waits

# says PROGRAM ARGUMENT...: what it prints, it may refuse as well.
number=0
says() {
  number=$((number + 1))
  "$station/ostrel-$1" "${@:2}" >"$work/said/$number-$1" 2>&1 </dev/null || true
}
printf '[[folder]]\npaths = ["/\\u001b[2J\\nFORGED<B>\\u009b\\u202e"]\n' >"$station/Feed.toml"
ln -s "/dev/$name" "$station/ports/COM2"
says queue list
says queue history
says queue history --csv
says queue top "$name"
says queue hold "$other"
says queue list
says queue release "$other"
says queue hold A "--$name"
says status
"$station/ostrel-settings" set FillFile "$name"
says settings list
says settings route "$name"
says settings route A "--$name"
says settings set ComBaud "$name"
says settings ports
says settings connect COM1 "$name"
says simulate --station "$station" --arrivals "$name"
says feed --check
says feed --check --name "$name"
says feed --station "$name"
says feed --explain --text "$station/RtList1.txt" "$work/$name"
says watch -- "$name"
says monitor --out "$work/none" "$name"
for printed in "$work"/said/*; do
  grep -qF "$shown" "${printed}" || fail "$(basename "$printed") does not show the name"
done
says settings apply "$work/$name"
says queue list --json
says queue history --json
says status --json
says status --metrics
until_true 30 grep -qF 'TOR\x1B[2J\x0AFORG' "$work/ostrel-monitor.log"

chromium --headless --no-sandbox --disable-gpu --virtual-time-budget=8000 --dump-dom "http://127.0.0.1:$port/" \
  >"$work/page" 2>"$work/chromium.log"
for place in 'id="onAir"[^>]*>TOR' '<td>TORB'; do
  grep -q "$place"'\\x1B\[2J\\x0AFORGED&lt;B&gt;\\xC2\\x9B\\xE2\\x80\\xAE' "$work/page" ||
    fail "the page does not show the name at $place"
done

cp "$station/RtLog.txt" "$work"/ostrel-{monitor,headless}.log "$work/said"
for printed in "$work"/said/*; do
  ! LC_ALL=C grep -n $'[^ -~\t\r]' "$printed" >&2 || fail "$(basename "$printed") obeys a stranger"
  ! grep -n '^[^0-9a-zA-Z]*FORGED' "$printed" >&2 || fail "$(basename "$printed") has a forged line"
done
grep -qF "$shown" "$station/RtLog.txt" || fail "the log does not show the name"
