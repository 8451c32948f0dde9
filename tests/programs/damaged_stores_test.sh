#!/usr/bin/env bash
# The real station with stores that are damaged, held, or on a full disk: within ten seconds it is on
# the air with its own settings, or it has said why not and ended with 1.
#   damaged_stores_test.sh BIN SOURCE
# As root it also tries a full disk and a store that may not be written.
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
disk=$work/disk
end_more() { ! mountpoint -q "$disk" || umount -l "$disk"; }

# make STATION: one that has run, with settings of its own.
make() {
  mkdir -p "$1/ports" "$1/KvData/RxFiles"
  cp "$source"/packaging/station/* "$1"
  cp "$bin"/ostrel-{headless,settings,status} "$1"
  strip "$1"/ostrel-*
  ln -sf "$work/line" "$1/ports/COM1"
  "$1/ostrel-settings" set CWIDText 'DE KX1ABC'
  "$1/ostrel-settings" set ComBaud 9600
}
answers() { "$1/ostrel-status" --json 2>/dev/null | grep -q '"rate":9600'; }
run_as=()
# begin STATION: leaves in `outcome` whether it is "on the air" or "off the air", and its own words in
# the file "said".
begin() {
  local pid deadline=$((SECONDS + 10)) status=0
  "${run_as[@]}" "$1/ostrel-headless" 2>"$work/said" &
  pid=$!
  pids+=("$pid")
  until answers "$1"; do
    if ! kill -0 "$pid" 2>/dev/null; then
      wait "$pid" || status=$?
      [ "$status" -eq 1 ] || fail "it ended with $status"
      [ -s "$work/said" ] || fail "it said nothing"
      outcome="off the air"
      return
    fi
    [ "$SECONDS" -lt "$deadline" ] || fail "neither on the air nor at its end after ten seconds"
    sleep 0.1
  done
  kill -TERM "$pid"
  wait "$pid" || fail "it ended badly"
  outcome="on the air"
}
said() { grep -q "$1" "$work/said" || fail "it did not say \"$1\" but: $(cat "$work/said")"; }
# expect OUTCOME STATION WORDS
expect() {
  begin "$2"
  [ "$outcome" = "$1" ] || fail "$outcome: $(cat "$work/said")"
  [ -z "${3:-}" ] || said "$3"
}
own() { [ "$("$1/ostrel-settings" get CWIDText)" = 'DE KX1ABC' ] || fail "other settings"; }

start "$bin/ostrel-monitor" --link "$work/line" --baud 9600 --out "$work/received"
until_true 10 test -L "$work/line"
station=$work/station
make "$station"
expect "on the air" "$station"
"$station/ostrel-settings" dump >"$work/station.toml"
mkdir "$work/whole"
cp "$station"/KvRegistry.* "$work/whole"
mend() {
  rm -rf "$station"/KvRegistry.{db,copy.db}
  cp "$work/whole"/* "$station"
}
database() { python3 -c 'import sqlite3, sys
store = sqlite3.connect(sys.argv[1], isolation_level=None)
for command in sys.argv[2:]: store.execute(command)' "$@"; }

store=$station/KvRegistry.db
# shellcheck disable=SC2034 # in what is evaluated
size=$(stat -c %s "$store")
for damage in 'truncate -s 0 $store' 'truncate -s 5000 $store' 'truncate -s $((size - 1)) $store' \
  'rm $store' 'rm $store; mkdir $store' 'ln -sf /dev/zero $store' 'rm $store; mkfifo $store' \
  'head -c $size /dev/urandom >$store'; do
  mend
  eval "$damage"
  expect "on the air" "$station"
  grep -q 'Its copy of the last save has taken its place' "$station/RtLog.txt" || fail "the log is silent"
  own "$station"
  mend
  eval "$damage"
  rm "$station/KvRegistry.copy.db"
  expect "off the air" "$station" 'ostrel-settings apply FILE'
  ! "$station/ostrel-settings" set ComBaud 1200 2>/dev/null || fail "a store of one setting was made"
  expect "off the air" "$station"
  printf '[settings]\nComBaud = "9600"\n' >"$work/part.toml"
  ! "$station/ostrel-settings" apply "$work/part.toml" 2>"$work/said" || fail "a part of the settings will do"
  said 'does not name.*CWIDText'
  "$station/ostrel-settings" apply "$work/station.toml" >/dev/null 2>"$work/doubts"
  [ ! -s "$work/doubts" ] || fail "its own text is doubted: $(cat "$work/doubts")"
  expect "on the air" "$station"
  own "$station"
done
[ "$(find "$station" -name 'KvRegistry.damaged-*' | wc -l)" -gt 5 ] || fail "what was damaged is gone"

# Neither damaged nor touched: held by another, of another version.
mend
python3 -c 'import sqlite3, sys, time
store = sqlite3.connect(sys.argv[1], isolation_level=None)
store.execute("BEGIN EXCLUSIVE")
print(flush=True)
time.sleep(60)' "$store" >"$work/held" &
pids+=($!)
until_true 10 test -s "$work/held"
expect "off the air" "$station" locked
kill "${pids[-2]}"
expect "on the air" "$station"
own "$station"
mend
database "$store" 'PRAGMA user_version = 99'
expect "off the air" "$station" 'later version'
mend
database "$store" 'DROP TABLE seal' 'DROP TRIGGER setting_added' 'DROP TRIGGER setting_changed' \
  'DROP TRIGGER setting_removed' 'PRAGMA user_version = 0' 'PRAGMA journal_mode = WAL'
expect "on the air" "$station"
own "$station"

if [ "$(id -u)" -ne 0 ]; then
  echo "skipped without root: a full disk, a store that may not be written"
  exit 0
fi
mend
chown -R nobody "$station"
chmod a+x "$work"
chmod a+rw "$work/line"
chmod 444 "$station"/KvRegistry.*
run_as=(setpriv --reuid nobody --clear-groups)
expect "on the air" "$station"
own "$station"
run_as=()

mkdir "$disk"
programs=$(du -cm "$bin"/ostrel-{headless,settings,status} | tail -n 1 | cut -f 1)
mount -t tmpfs -o size=$((programs + 32))m none "$disk"
make "$disk/station"
expect "on the air" "$disk/station"
dd if=/dev/zero of="$disk/full" bs=4k status=none 2>/dev/null || true
expect "on the air" "$disk/station"
own "$disk/station"
truncate -s 100 "$disk/station/KvRegistry.db"
expect "on the air" "$disk/station"
own "$disk/station"
