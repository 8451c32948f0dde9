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
for setting in 'ComBaud 19200' 'CWIDTime 0' 'TxUpTime 0' 'KeepProductDays 2'; do
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
for name in A B C D; do until_true 10 waits "AFD$name.TXT"; done
queue hold afda.txt
queue top AFDD.TXT
queue move AFDC.TXT --priority 2
queue delete AFDB.TXT
! queue top SVRBUSY.TXT 2>"$work/refused" || fail "the one on the air was touched"
grep -q 'is on the air' "$work/refused"
kill -KILL "${pids[1]}"
start "$station/ostrel-headless"
until_true 20 queue list
queue list | grep -q 'AFDA.TXT .*held' || fail "a crash has released it"
until_true 60 test -s "$work/received/AFDC.TXT" -a -s "$work/received/AFDD.TXT"
queue release AFDA.TXT
until_true 30 test -s "$work/received/AFDA.TXT"
[ ! -e "$work/received/AFDB.TXT" ] || fail "it was deleted"

# Again: from the sent folder, and, once that is empty, from what is kept.
for kept in sent kept; do
  rm -f "$work/received/AFDD.TXT"
  [ "$kept" = sent ] || until_true 20 rm "$station/KvData/RtSent/AFDD.TXT"
  queue resend AFDD.TXT
  until_true 30 test -s "$work/received/AFDD.TXT"
  tr -d D <"$work/received/AFDD.TXT" | cmp - /dev/null || fail "$kept: other bytes came back"
done

said() { queue history --csv "$1" | grep -q "$2"; }
# Each sending has its own row.
sent_thrice() { [ "$(queue history --csv AFDD.TXT | grep -c ',1,sent,,')" -eq 3 ]; }
until_true 10 sent_thrice
until_true 10 said AFDA.TXT ',1,sent,'
said AFDB.TXT ',0,removed,' || fail "AFDB.TXT was not removed"
said JUNK.NIX ',0,no rule,' || fail "JUNK.NIX has a rule"
queue history --json --since 1h | grep -q '"sha256": "[0-9a-f]\{64\}"' || fail "no hash"
[ "$(queue history --since 2099-01-01 --csv | wc -l)" -eq 1 ] || fail "a history of the future"
grep -q "Operator     AFDA.TXT of priority [0-9]* is held. ($(id -un))" "$station/RtLog.txt" ||
  fail "the log does not tell who"
kill -TERM "${pids[-1]}"
wait "${pids[-1]}" || fail "the station ended badly"
! queue list 2>/dev/null || fail "an answer from nobody"
queue history AFDA.TXT | grep -q sent || fail "no history without the station"
