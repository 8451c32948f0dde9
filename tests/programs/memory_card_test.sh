#!/usr/bin/env bash
# The station's data on a memory card as cameras format it: no second names, no permissions, and no
# word about who has a file open. A burst of products and their copies goes out once each, and none
# waits for another to stand still. Needs root, a loop device and FUSE.
#   memory_card_test.sh BIN SOURCE
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
station=$work/station
device=
end_more() {
  umount "$station/KvData" 2>/dev/null || umount -l "$station/KvData" 2>/dev/null || true
  [ -z "$device" ] || losetup -d "$device" || true
}
skip() {
  echo "SKIPPED: $*"
  exit 77
}
[ "$(id -u)" -eq 0 ] || skip "only root can mount"
mkdir -p "$station/ports" "$station/KvData"
truncate -s 32M "$work/card"
mkfs.exfat "$work/card" >/dev/null || skip "no mkfs.exfat"
device=$(losetup -f --show "$work/card" 2>/dev/null) || skip "no loop device"
mount.exfat-fuse "$device" "$station/KvData" >/dev/null 2>&1 || skip "no FUSE"
touch "$station/KvData/one"
! ln "$station/KvData/one" "$station/KvData/two" 2>/dev/null || fail "the card knows second names"

cp "$source"/packaging/station/* "$bin"/ostrel-{headless,queue,settings,monitor} "$station"
printf 'TOR*.TXT | C=2\r\n' >"$station/RtList12.txt"
for setting in 'ComBaud 115200' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  "$station/ostrel-settings" set $setting
done
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 115200 --out "$work/received"
until_true 10 test -L "$station/ports/COM1"
unset DISPLAY
start "$station/ostrel-headless"
until_true 20 "$station/ostrel-queue" list

arrivals=$station/KvData/RxFiles
mkdir -p "$arrivals"
for i in $(seq 12); do
  head -c 500 /dev/zero | tr '\0' "\\$((100 + i))" >"$arrivals/.$i"
  mv "$arrivals/.$i" "$arrivals/TOR$i.TXT"
done
all_in() { [ "$(find "$work/received" -name 'TOR*' -size 500c | wc -l)" -eq 24 ]; }
# Each has to stand still for 10 s, all of them at once: far from 24 times as long.
until_true 60 all_in
[ -z "$(ls "$arrivals")" ] || fail "something is left: $(ls "$arrivals")"
[ "$(find "$station/KvData/RtSent" -name 'TOR*' | wc -l)" -eq 24 ] || fail "not all are among those sent"
