#!/usr/bin/env bash
# A file that nobody may read lies in front of warnings: the station names it, the alarm of docs/alarms.md
# clears the way by itself, and the warnings go out. Needs root, which becomes an ordinary account.
#   blocked_test.sh BIN SOURCE
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
if [ "$(id -u)" -ne 0 ] || ! command -v setpriv >/dev/null; then
  echo "SKIPPED: only root can lay a file of another account, and setpriv becomes an ordinary one"
  exit 77
fi
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
station=$work/station
arrivals=$station/KvData/RxFiles

mkdir -p "$station/ports" "$arrivals" "$work/bin"
cp "$source"/packaging/station/* "$bin"/ostrel-{headless,queue,settings,monitor,status} "$station"
# The recipe as it stands in the document, for a station and a log elsewhere.
sed -n '/^## Clearing the way/,/^## /{/^```toml/,/^```$/{/^```/!p}}' "$source/docs/alarms.md" |
  sed "s#/opt/ostrel#$station#" >"$station/Alarms.toml"
grep -q "$station/ostrel-queue set-aside" "$station/Alarms.toml" || fail "the document has no recipe"
printf '#!/bin/sh\nshift 2\n{ [ $# -gt 0 ] && echo "$*" || cat; } >>%s/told\n' "$work" >"$work/bin/logger"
chmod 755 "$work" "$work/bin/logger"
touch "$work/told"
chown -R nobody: "$work"
as() { PATH=$work/bin:$PATH setpriv --reuid nobody --regid nogroup --clear-groups "$@"; }
begin() { as "$@" >>"$work/$(basename "$1").log" 2>&1 & pids+=($!); }
queue() { as "$station/ostrel-queue" "$@"; }
status() { as "$station/ostrel-status"; }
says() { status | grep -q "$1"; }

for setting in 'ComBaud 38400' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  as "$station/ostrel-settings" set $setting
done
begin "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 38400 --out "$work/received"
until_true 10 test -L "$station/ports/COM1"
unset DISPLAY
begin "$station/ostrel-headless"
until_true 20 queue list

queue pause-intake
for i in 1 2 3 4 5 6 7; do
  head -c 500 /dev/zero | tr '\0' "$i" >"$arrivals/TOR$i.TXT"
  chown nobody: "$arrivals/TOR$i.TXT"
done
# A folder has its own order: whichever comes first in it is the one.
# shellcheck disable=SC2012
first=$(ls -U "$arrivals" | head -1)
chown root: "$arrivals/$first"
chmod 000 "$arrivals/$first"
queue resume-intake
until_true 5 says "Held up by  *RxFiles/$first for .*: Permission denied"
until_true 5 says 'In the ingest folder 7'
begin "$station/ostrel-status" --watch "$station/Alarms.toml"
all_but_one() { [ "$(find "$work/received" -name 'TOR*' -size 500c | wc -l)" -eq 6 ]; }
until_true 45 all_but_one
grep -q "begin blocked: RxFiles/$first holds up the ingest folder for 1" "$work/told" || fail "no alarm"
grep -q "$first of RxFiles is set aside: Permission denied" "$work/told" || fail "not by the alarm"
[ -e "$station/KvData/RtQuarantine/$first" ] || fail "it is not in the quarantine"
queue quarantine | grep -q "^$first .* RxFiles .*Permission denied" || fail "its reason is not told"
grep -q "Operator     $first of RxFiles is set aside: Permission denied (nobody)" "$station/RtLog.txt" ||
  fail "the log does not tell who"
set_aside() { queue history --csv "$first" | grep ',set aside,' >/dev/null; }
until_true 5 set_aside
over() { grep -q 'end blocked: it is over' "$work/told"; }
until_true 25 over

chmod 644 "$station/KvData/RtQuarantine/$first"
queue quarantine --restore "$first" | grep -q "$first is restored to RxFiles as $first" || fail "not restored"
until_true 20 test -s "$work/received/$first"

# The folder of the queues goes away: the carrier is empty, and the log tells why, and until when.
log_says() { grep -q "Silence .*$1" "$station/RtLog.txt"; }
chmod 000 "$station/KvData"
until_true 30 log_says 'keyed and carries nothing'
chmod 755 "$station/KvData"
until_true 20 log_says 'Packets go out again'
