#!/usr/bin/env bash
# The operator's hand on a real station: what waits and what was, and changes to the queues, against
# what a receiver gets.
#   queue_test.sh BIN SOURCE
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
station=$work/station

mkdir -p "$station/ports" "$station/KvData/RxFiles"
cp "$source"/packaging/station/* "$bin"/ostrel-{headless,queue,settings,monitor} "$station"
for setting in 'ComBaud 19200' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  "$station/ostrel-settings" set $setting
done
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 19200 --out "$work/received"
until_true 10 test -L "$station/ports/COM1"
unset DISPLAY
start "$station/ostrel-headless"
queue() { "$station/ostrel-queue" "$@"; }
waits() { queue list | grep -q " $1 "; }
drop() {
  head -c "$2" /dev/zero | tr '\0' "${3:-x}" >"$work/arriving"
  mv "$work/arriving" "$station/KvData/RxFiles/$1"
}
until_true 20 queue list

drop SVRBUSY.TXT 40000
until_true 10 waits SVRBUSY.TXT
for name in A B C D; do drop "AFD$name.TXT" 3000 "$name"; done
drop JUNK.NIX 100
drop $'TOR\e[31m\nX.TXT' 100
for name in A B C D; do until_true 10 waits "AFD$name.TXT"; done
queue hold afda.txt
queue top AFDD.TXT
queue move AFDC.TXT --priority 2
queue delete AFDB.TXT
! queue top SVRBUSY.TXT 2>"$work/refused" || fail "the one on the air was touched"
grep -q 'is on the air' "$work/refused"
! queue hold 'AFD*' 2>"$work/refused" || fail "a pattern was taken"
grep -q 'Patterns are not taken' "$work/refused"
kill -KILL "${pids[1]}"
"$station/ostrel-settings" set KeepProductDays 2
start "$station/ostrel-headless"
until_true 20 queue list
queue list | grep -q 'AFDA.TXT .*held' || fail "a crash has released it"
until_true 60 test -s "$work/received/AFDC.TXT" -a -s "$work/received/AFDD.TXT"
queue pause-intake
queue list | tail -1 | grep -q 'The intake is paused' || fail "the list hides that the intake is paused"
queue resume-intake
queue release AFDA.TXT
until_true 30 test -s "$work/received/AFDA.TXT"
[ ! -e "$work/received/AFDB.TXT" ] || fail "it was deleted"

# Again: as often as one likes from the sent folder, and from what is kept.
again() {
  rm -f "$work/received/$1"
  queue resend "$2"
  until_true 30 test -s "$work/received/$1"
  tr -d "${1:3:1}" <"$work/received/$1" | cmp - /dev/null || fail "other bytes came back of $1"
}
drop AFDE.TXT 3000 E
id=$(queue history --csv AFDD.TXT | sed -n '2s/,.*//p')
again AFDD.TXT "$id"
again AFDD.TXT "$id"
until_true 30 test -s "$work/received/AFDE.TXT"
until_true 20 rm "$station/KvData/RtSent/AFDE.TXT"
again AFDE.TXT AFDE.TXT

said() { queue history --csv "$1" | grep "$2" >/dev/null; }
# Each sending has its own row.
sent_thrice() { [ "$(queue history --csv AFDD.TXT | grep -c ',1,sent,,')" -eq 3 ]; }
until_true 10 sent_thrice
until_true 10 said AFDA.TXT ',1,sent,'
said AFDB.TXT ',0,removed,' || fail "AFDB.TXT was not removed"
said JUNK.NIX ',0,no rule,' || fail "JUNK.NIX has a rule"
queue history 'TOR*' | grep 'TOR\\x1B\[31M\\x0AX.TXT .* sent' >/dev/null || fail "a name colours the terminal"
queue history --json --since 1h | grep '"sha256":"[0-9a-f]\{64\}"' >/dev/null || fail "no hash"
# What has not ended belongs to every later time.
no_future() { [ "$(queue history --since 2099-01-01 --csv | wc -l)" -eq 1 ]; }
until_true 20 no_future
until_true 20 rm "$station/KvData/RtSent/AFDE.TXT"
queue resend AFDE.TXT &
queue resend AFDE.TXT
wait $! || fail "two operators were in each other's way"
grep -q "Operator     AFDA.TXT of priority [0-9]* is held. ($(id -un))" "$station/RtLog.txt" ||
  fail "the log does not tell who"
kill -TERM "${pids[-1]}"
wait "${pids[-1]}" || fail "the station ended badly"
! queue list 2>/dev/null || fail "an answer from nobody"
queue history AFDA.TXT | grep sent >/dev/null || fail "no history without the station"
echo damaged >"$station/KvHistory.db"
! queue resend AFDD.TXT 2>"$work/refused" || fail "an answer from nobody"
grep -q 'Which priority' "$work/refused" || fail "a damaged history hides the sent folder"
