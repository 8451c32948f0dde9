#!/usr/bin/env bash
# What becomes of each arrival of a simulated day: sent, ruled out, replaced, purged, still waiting.
set -euo pipefail
bin=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/ports" "$work/KvData/RxFiles"
ln -s /dev/null "$work/ports/COM1"
cp packaging/station/* "$work"
for list in {0..12}; do : >"$work/RtList$list.txt"; done
printf 'TOR*\r\n' >"$work/RtList0.txt"
printf 'AFD*\r\n' >"$work/RtList4.txt"
printf 'SFT*\r\n' >"$work/RtList8.txt"
for setting in 'OverWrite4 1' 'PurgeTime 2' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  "$bin/ostrel-settings" --station "$work" set $setting
done

# TORA and TORB keep the line until half past three. AFDA is replaced while it waits, and written over
# in the ingest folder; SFTA is purged, SFTB goes out at last, and SFTC is late.
cat >"$work/day.txt" <<'END'
00:10 TORA.TXT 600000
00:10 TORB.TXT 600000
00:12 SFTA.TXT 800
00:13 LOGO.BMP 900
01:30 AFDA.TXT 700
02:50 AFDA.TXT 701
02:50 AFDA.TXT 702
02:51 SFTB.TXT 801
23:59:59 SFTC.TXT 5000
END
told=$("$bin/ostrel-simulate" --station "$work" --arrivals "$work/day.txt")
echo "$told"
fail() {
  echo "FAILED: $*" >&2
  exit 1
}
[[ $told == *'9 arrivals in 24:00:00: 4 sent; never sent: 1 thrown away'*', 2 replaced'*', 1 purged, 1 still waiting'* ]] ||
  fail "the fates"
[[ $told =~ $'\n'\ +5\ +1\ +702\  ]] || fail "the newest of three is sent"
[[ $told =~ $'\n'\ +9\ +1\ +801\  ]] || fail "what was not purged is sent"
