#!/usr/bin/env bash
# The real program on a line whose keying is recorded: an independent decoder reads the Morse that the
# transmitter would have sent, and the archives that a receiver got unzip, by two other zip programs,
# to the products they were made of. Takes up to a minute and a half of real time.
# Usage: on_the_air_test.sh FOLDER_OF_PROGRAMS SOURCE_FOLDER
set -euo pipefail

readonly programs=$1 source=$2
work=$(mktemp -d)
station=$work/station
received=$work/received
pids=()
finish() {
  local pid
  for pid in "${pids[@]}"; do kill -TERM "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true; done
  rm -rf "$work"
}
trap finish EXIT

fail() {
  echo "FAILED: $*" >&2
  tail -n 15 "$station/RtLog.txt" >&2 || true
  exit 1
}

wait_for() { # SECONDS WHAT COMMAND...
  local limit=$((SECONDS + $1)) what=$2
  until "${@:3}"; do
    [ "$SECONDS" -lt "$limit" ] || fail "$what"
    sleep 0.5
  done
}

# A tone where the transmitter was keyed for less than a second; longer is the carrier of the stream.
morse_to_wav() { # KEYING_LOG WAV
  perl -e '
    my ($log, $wav) = @ARGV;
    my ($rate, $on, $since, $sound, $phase) = (22050, 0, 0, "", 0);
    open my $events, "<", $log or die;
    while (<$events>) {
      my ($time, $rts, $dtr) = /^\d+ (\d+) .* RTS=(\d) DTR=(\d)/ or next;
      my $keyed = $rts && $dtr;
      next if $keyed == $on;
      my $length = $since ? ($time - $since) / 1e6 : 0;
      $length = 1 if $length > 1;
      my $tone = $on && $length < 1;
      $sound .= pack "s<*", map { $tone ? int(12000 * sin($phase += 6.2832 * 800 / $rate)) : 0 }
                               1 .. int($length * $rate + 0.5);
      ($on, $since) = ($keyed, $time);
    }
    open my $out, ">:raw", $wav or die;
    print $out pack("a4 V a4 a4 V S< S< V V S< S< a4 V", "RIFF", 36 + length $sound, "WAVE", "fmt ",
                    16, 1, 1, $rate, 2 * $rate, 2, 16, "data", length $sound), $sound;' "$1" "$2"
}

mkdir -p "$station/ports" "$station/KvData/RxFiles" "$received"
cp "$source"/packaging/station/* "$programs/ostrel" "$station/"
ln -s ../line "$station/ports/COM1"
settings() { "$programs/ostrel-settings" --station "$station" "$@"; }
settings set ComBaud 38400
settings set CWIDTime 1
settings set LogProgram 1
settings set CompressPri4 1
settings set CompressNbrFiles 3
for list in {0..12}; do : >"$station/RtList$list.txt"; done
printf 'AFD*.TXT\r\nHML*.TXT\r\n' >"$station/RtList4.txt"
printf 'CLI*.TXT\r\nPTS*.TXT\r\nTCP*.TXT\r\n' >"$station/RtList10.txt"

"$programs/ostrel-monitor" --link "$station/line" --baud 38400 --out "$received" >"$work/monitor.log" &
pids+=($!)
wait_for 10 "the monitor made no line" test -L "$station/line"
QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=verify_asan_link_order=0 KEYING_LOG="$work/keying" \
  LD_PRELOAD="$programs/libkeying_shim.so" "$station/ostrel" &
pids+=($!)

products=()
for name in AFDDMXIA HMLDMXIA CLIDMHVA PTSDY2OK TCPAT4FL; do
  product=$source/samples/products/$name.TXT
  products+=("$product")
  cp "$product" "$station/KvData/RxFiles/.$name"
  mv "$station/KvData/RxFiles/.$name" "$station/KvData/RxFiles/$name.TXT"
done

archives_came() { [ "$(find "$received" -name '*.ZIP' | wc -l)" -ge 3 ]; }
wait_for 60 "the archives did not come back" archives_came
mkdir "$work/unzipped"
for archive in "$received"/*.ZIP; do
  unzip -tq "$archive" >"$work/zip.log" 2>&1 || fail "unzip finds $archive damaged"
  7z t "$archive" >"$work/zip.log" 2>&1 || fail "7z finds $archive damaged"
  unzip -qo "$archive" -d "$work/unzipped"
done
for product in "${products[@]}"; do
  cmp "$product" "$work/unzipped/$(basename "$product")" || fail "a product came back otherwise"
done

wait_for 100 "no identification was sent" grep -q 'CW ID .*Sent - DE EMWIN TEST' "$station/RtLog.txt"
morse_to_wav "$work/keying" "$work/morse.wav"
read_text=$(multimon-ng -q -t wav -a MORSE_CW -d 40 -g 40 "$work/morse.wav" 2>/dev/null | tr -s ' \n' ' ')
[[ $read_text == *"DE EMWIN TEST"* ]] || fail "the Morse was read as: $read_text"
echo "Read by an independent decoder:$read_text"
