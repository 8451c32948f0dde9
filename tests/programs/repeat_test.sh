#!/usr/bin/env bash
# A warning in force goes out again after its minute, and no more once it is cancelled; what waits
# while its event is over is taken out of its queue.
#   repeat_test.sh BIN SOURCE
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
station=$work/station
arrivals=$station/KvData/RxFiles

# drop NAME ACTION NUMBER [BYTES]: a product of a tornado warning's event, issued now, for an hour.
drop() {
  local now begins ends area
  now=$(date -u +%d%H%M) begins=$(date -u +%y%m%dT%H%MZ) ends=$(date -u -d '+1 hour' +%y%m%dT%H%MZ)
  area=$(date -u -d '+1 hour' +%d%H%M)
  [ "$2" = NEW ] || begins=000000T0000Z
  {
    printf 'WFUS53 KDMX %s\r\n%sDMX\r\n\r\nIAC169-%s-\r\n/O.%s.KDMX.TO.W.%s.%s-%s/\r\n\r\n' \
      "$now" "${1:0:3}" "$area" "$2" "$3" "$begins" "$ends"
    head -c "${4:-100}" /dev/zero | tr '\0' x | fold -w 60
    printf '\r\n$$\r\n'
  } >"$arrivals/.product"
  mv "$arrivals/.product" "$arrivals/$1"
}
repeat() { "$station/ostrel-repeat" "$@"; }
sent() { [ "$("$station/ostrel-queue" history "$1" --csv | grep -c ',sent,')" -eq "$2" ]; }
waits() { "$station/ostrel-queue" list | grep -q "$1"; }
says() { repeat --list | grep -q "$1"; }

mkdir -p "$station/ports" "$arrivals"
cp "$source"/packaging/station/* "$bin"/ostrel-{headless,queue,repeat,settings,monitor} "$station"
for setting in 'ComBaud 115200' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  "$station/ostrel-settings" set $setting
done
printf 'TOR*\r\nSVS*\r\n' >"$station/RtList1.txt"
printf '' >"$station/RtList12.txt"
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 115200 --out "$work/received"
until_true 10 test -L "$station/ports/COM1"
unset DISPLAY
status=0
repeat --once 2>"$work/complained" || status=$?
[ "$status" -eq 78 ] || fail "without a Repeat.toml it ends with $status"
printf 'share = 100\ninterval = 1\nexpired = "delete"\n[[repeat]]\nkinds = ["TOR"]\nminutes = 1\n' \
  >"$station/Repeat.toml"
start "$station/ostrel-headless"
until_true 20 "$station/ostrel-queue" list

drop TORDMXIA.TXT NEW 0001
until_true 20 sent TORDMXIA.TXT 1
until_true 5 says 'TORDMXIA.TXT: KDMX.TO.W.0001, for IAC169'
says 'next 20' || fail "it does not say when it goes out next"
start "$station/ostrel-repeat"
until_true 10 grep -q '"KDMX.TO.W.0001"' "$station/KvData/InForce.json"
until_true 90 sent TORDMXIA.TXT 2
until_true 10 test -f "$work/received/TORDMXIA.TXT"

# Told anew while it waits behind a long one: only what tells anew goes out.
drop TORLONG.TXT NEW 0002 120000
until_true 20 waits TORLONG.TXT
drop TORDVNIA.TXT NEW 0003
until_true 10 waits TORDVNIA.TXT
drop SVSDMXIA.TXT CAN 0003
removed() { "$station/ostrel-queue" history TORDVNIA.TXT --csv | grep ',removed,' >/dev/null; }
until_true 20 removed
drop SVSDMXIA.TXT.1 CAN 0001
until_true 90 sent 'SVSDMXIA*' 2
! says KDMX.TO.W.0001 || fail "a cancelled warning is in force"
[ "$(repeat --list --json | python3 -c 'import json,sys; print([json.loads(line)["name"] for line in sys.stdin])')" = \
  "['TORLONG.TXT']" ] || fail "the list is $(repeat --list)"
