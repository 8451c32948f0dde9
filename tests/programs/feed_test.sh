#!/usr/bin/env bash
# The feed as a program: started by a station as its companion, killed at any instant, and between
# stations over a broker.
#   feed_test.sh BIN SOURCE [PRODUCTS [KILLS [CORRECTIONS]]]
#       60 products, 8 kills and 200 corrections unless told otherwise
set -euo pipefail
PATH=$PATH:/usr/sbin
bin=$(realpath "$1")
source=$(realpath "$2")
products=${3:-60}
kills=${4:-8}
corrections=${5:-200}
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
# What area rules would do to a tree: all of it is either taken or passed over by one rule.
mkdir -p "$work/trial/tree/below"
printf '[[area]]\ncodes = ["IA*"]\naction = "take"\n[[area]]\naction = "pass over"\n' >"$work/trial/Feed.toml"
cp "$source"/samples/products/{TORDMXIA,SVRPSRAZ,AFDDMXIA}.TXT "$work/trial/tree/below"
touch "$work/trial/tree/no short name.dat"
"$bin/ostrel-feed" --station "$work/trial" --trial "$work/trial/tree" >"$work/trial/told"
for line in 'Without the rules +3' '  passed over: the rest +1' 'With them +2' 'Kept apart.* +1 '; do
  grep -qE "^$line" "$work/trial/told" || fail "the trial of a tree says: $(cat "$work/trial/told")"
done
nap() { sleep "0.$((RANDOM % 60 + 10))"; }
# long_name SERIAL SHORT
long_name() { printf 'A_WFUS53KDMX161430_C_KWIN_20260516143012_%06d-%d-%s' "$1" $(($1 % 4 + 1)) "$2"; }

# write_tree TREE COUNT: in place, slowly, in subfolders; every third product again under another long
# name, every fifth corrected. Leaves "name content" of what is to come out in TREE.expected.
write_tree() {
  local number short folder content
  local samples=("$source"/samples/products/*.TXT)
  for ((number = 0; number < $2; number++)); do
    folder=$1/$((number % 7))/$((number % 3))
    mkdir -p "$folder"
    short=$(printf 'P%07d.TXT' "$number")
    content=$(cat "${samples[number % ${#samples[@]}]}" && echo "$number")
    put() {
      local path
      path=$folder/$(long_name "$1" "$short")
      {
        head -c 300 <<<"$2"
        [ $((number % 10)) -ne 0 ] || sleep 0.1
        tail -c +301 <<<"$2"
      } >"$path"
    }
    expect() { sha256sum <<<"$1" | sed "s/^/$short /; s/ *-\$//"; }
    put $((number * 10)) "$content"
    expect "$content" >>"$1.expected"
    [ $((number % 3)) -ne 0 ] || put $((number * 10 + 1)) "$content"
    if [ $((number % 5)) -eq 0 ]; then
      put $((number * 10 + 2)) "$content corrected"
      expect "$content corrected" >>"$1.expected"
    fi
  done
}
# consume IN OUT: as a station that takes whatever it sees.
consume() {
  local file number=0
  mkdir -p "$2"
  while :; do
    for file in "$1"/*; do [ ! -e "$file" ] || mv "$file" "$2/$((number++)) ${file##*/}"; done
    sleep 0.05
  done
}
# came OUT: "name hash" of what was consumed, numbers of copies taken off.
came() {
  (cd "$1" && sha256sum -- *) | sed -E 's/^([0-9a-f]+) +[0-9]+ ([^.]*\.[^.]*).*/\2 \1/' | sort
}
all_came() { [ "$(came "$1")" = "$(sort "$2")" ]; }
expect_all() {
  local end=$((SECONDS + 60))
  until all_came "$1" "$2"; do
    [ "$SECONDS" -lt "$end" ] || {
      diff <(came "$1") <(sort "$2") >"$work/difference.log"
      fail "$1 is not $2"
    }
    sleep 0.5
  done
}

echo "A station starts its companion, and a file with a long name goes on the air."
station=$work/station
mkdir -p "$station/ports" "$station/KvData/RxFiles"
cp -d "$source"/packaging/station/* "$bin"/ostrel-{headless,settings,monitor,feed} "$bin"/Tiltor "$station"
"$station/ostrel-settings" set Engine 2
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 9600 --out "$work/received"
until_true 10 test -L "$station/ports/COM1"
"$station/ostrel-settings" set ComBaud 9600
unset DISPLAY WAYLAND_DISPLAY
start "$station/ostrel-headless"
until_true 30 test -d "$station/KvData/Received"
mkdir -p "$station/KvData/Received/2026/05"
cp "$source/samples/products/TORDMXIA.TXT" \
  "$station/KvData/Received/2026/05/$(long_name 1 TORDMXIA.TXT)"
until_true 60 cmp "$source/samples/products/TORDMXIA.TXT" "$work/received/TORDMXIA.TXT"
status=0
"$station/ostrel-feed" 2>"$work/second.log" || status=$?
[ "$status" -eq 78 ] && grep -q 'Another feed' "$work/second.log" || fail "a second feed runs"
pkill -TERM -f "$station/" || true

echo "Killed $kills times, it delivers each of $products products once."
killed=$work/killed
mkdir -p "$killed/KvData/RxFiles" "$killed/tree"
cp "$bin/ostrel-feed" "$killed"
printf '[[folder]]\npaths = ["%s"]\n' "$killed/tree" >"$killed/Feed.toml"
inotifywait -q -m -e create,modify,moved_to --format '%e %f' "$killed/KvData/RxFiles" >"$work/seen" &
pids+=($!)
until_true 10 pgrep -f "inotifywait.*$killed" >/dev/null
consume "$killed/KvData/RxFiles" "$work/killed.out" &
pids+=($!)
write_tree "$killed/tree" "$products" &
writer=$!
for ((kill_ = 0; kill_ < kills; kill_++)); do
  start "$killed/ostrel-feed"
  nap
  kill -KILL "${pids[-1]}"
  wait "${pids[-1]}" 2>/dev/null || true
done
start "$killed/ostrel-feed"
feed=${pids[-1]}
wait "$writer"
expect_all "$work/killed.out" "$killed/tree.expected"
grep -q '^MOVED_TO P' "$work/seen" || fail "nothing was seen"
! grep -vE '^MOVED_TO | \.feed-' "$work/seen" || fail "not only renames were seen"
# The runs before may have delivered everything, and this one be no further than its loading.
until_true 10 catches_sigterm "$feed"
kill -TERM "$feed"
wait "$feed" || fail "the feed ended with status $?"

echo "$corrections corrections that come while the version before them is moved away."
moving=$work/moving
mkdir -p "$moving/KvData/RxFiles" "$moving/tree" "$moving/done"
cp "$bin/ostrel-feed" "$moving"
printf '[[folder]]\npaths = ["%s"]\nafterwards = "move"\nmove_to = "%s"\n' "$moving/tree" \
  "$moving/done" >"$moving/Feed.toml"
start "$moving/ostrel-feed"
feed=${pids[-1]}
until_true 10 grep -q watched "$moving/KvData/Feed/FeedLog.txt"
# A new version is renamed over the path 0 to 6 ms after the one before it was delivered.
perl -MTime::HiRes=sleep,time -e '
  my ($moving, $rounds) = @ARGV;
  sub lay {
    my ($path, $text) = @_;
    open my $file, ">", "$moving/next" or die $!;
    print $file $text;
    close $file;
    rename "$moving/next", $path or die $!;
  }
  for my $round (1 .. $rounds) {
    my $name = sprintf "P%07d.TXT", $round;
    my $end = time + 30;
    lay("$moving/tree/$name", "first $round\n");
    until (-e "$moving/KvData/RxFiles/$name") { die "$name does not come" if time > $end }
    my $at = time + rand 0.006;
    1 while time < $at;
    lay("$moving/tree/$name", "other $round\n");
  }' "$moving" "$corrections"
count() { find "$moving/$1" -type f | wc -l; }
all_corrections() { [ "$(count KvData/RxFiles)" -eq $((2 * corrections)) ] && [ "$(count tree)" -eq 0 ]; }
lost() { fail "$((2 * corrections - $(count KvData/RxFiles))) of $((2 * corrections)) versions are lost"; }
for ((look = 0; look < 150; look++)); do ! all_corrections || break; sleep 0.2; done
all_corrections || lost
cat "$moving/KvData/RxFiles"/* | sort >"$work/versions"
seq "$corrections" | sed 's/.*/first &\nother &/' | sort | cmp - "$work/versions" || fail "other versions came"
kill -TERM "$feed"
wait "$feed" || fail "the feed ended with status $?"

echo "One receiver, a broker and two stations, stopped and started at random."
port=$((21000 + $$ % 20000))
cat >"$work/mosquitto.conf" <<END
listener $port 127.0.0.1
allow_anonymous true
user $(id -un)
persistence true
persistence_location $work/
max_queued_messages 0
END
begin_broker() { start mosquitto -c "$work/mosquitto.conf" && broker=${pids[-1]}; }
declare -A feeds
begin() { start "$work/$1/ostrel-feed" && feeds[$1]=${pids[-1]}; }
for name in receiver one two; do
  mkdir -p "$work/$name/KvData/RxFiles" "$work/$name/tree"
  cp "$bin/ostrel-feed" "$work/$name"
  printf '[[broker]]\nurl = "mqtt://127.0.0.1:%s/emwin"\nsession = "%s"\n' "$port" "$name" \
    >"$work/$name/Feed.toml"
done
printf 'deliver = ""\n[publish]\nurl = "mqtt://127.0.0.1:%s/emwin"\n[[folder]]\npaths = ["tree"]\n' \
  "$port" >"$work/receiver/Feed.toml"
begin_broker
for name in one two; do
  begin $name
  until_true 30 grep -q connected "$work/$name/KvData/Feed/FeedLog.txt"
  consume "$work/$name/KvData/RxFiles" "$work/$name.out" &
  pids+=($!)
done
begin receiver
write_tree "$work/receiver/tree" "$products" &
writer=$!
for ((kill_ = 0; kill_ < kills; kill_++)); do
  nap
  case $((RANDOM % 4)) in
    0)
      kill -TERM "$broker" && wait "$broker" || true
      nap
      begin_broker
      ;;
    1) name=receiver ;;&
    2) name=one ;;&
    3) name=two ;;&
    [123])
      kill -KILL "${feeds[$name]}"
      nap
      begin $name
      ;;
  esac
done
wait "$writer"
for name in one two; do expect_all "$work/$name.out" "$work/receiver/tree.expected"; done

# What came damaged over the broker's road is not taken.
publish() { mosquitto_pub -p "$port" -V 5 -q 1 -t "emwin/$1" -m text -D publish user-property sha256 "$2"; }
publish DAMAGED.TXT 0
publish SOUND.TXT "$(printf text | sha256sum | cut -d ' ' -f 1)"
sound() { compgen -G "$work/one.out/* SOUND.TXT"; }
until_true 30 sound >/dev/null
! compgen -G "$work/one.out/* DAMAGED.TXT" || fail "a damaged message was taken"
grep -q 'DAMAGED.TXT came damaged and is not taken' "$work/one/KvData/Feed/FeedLog.txt" || fail "nobody was told"
