#!/usr/bin/env bash
# A station that runs alone, for real: without windows, asked over its socket, by HTTP, by a browser
# and by a broker, and started again when it hangs.
#   alone_test.sh BIN SOURCE [STOPS]    how often it is made to hang; three times unless told otherwise
set -euo pipefail
PATH=$PATH:/usr/sbin
bin=$(realpath "$1")
source=$(realpath "$2")
stops=${3:-3}
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
# shellcheck source=tests/programs/browser.sh
source "$(dirname "${BASH_SOURCE[0]}")/browser.sh"
station=$work/station

mkdir -p "$station/ports" "$station/KvData/RxFiles"
cp "$source"/packaging/station/* "$bin"/ostrel-{headless,status,watch,settings,monitor} "$station"
settings() { "$station/ostrel-settings" set "$@"; }
settings ComBaud 9600
settings StationName "Shed <7>"
settings CWIDTime 1
settings TxUpTime 1
settings TxDownTime 3
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 9600 --out "$work/received"
monitor=${pids[-1]}
until_true 10 test -L "$station/ports/COM1"
unset DISPLAY
start "$station/ostrel-watch" --starts-an-hour 60 -- "$station/ostrel-headless"
watch=${pids[-1]}
status() { "$station/ostrel-status" "$@"; }
says() { status --json | grep -q "$1"; }
until_true 20 says '"state":"[si]'

# Over HTTP: the same in three forms, and nothing for any other wish.
port=$((20000 + $$ % 20000))
cat >"$work/Alarms.toml" <<END
interval = 1
command = 'echo "\$OSTREL_EVENT \$OSTREL_TEXT" >>$work/alarms; cat >>$work/json'
[[alarm]]
when = "port"
[[alarm]]
when = "no answer"
seconds = 30
END
start "$station/ostrel-status" --serve "$port" --watch "$work/Alarms.toml"
get() { curl -sf --max-time 10 "http://127.0.0.1:$port/$1"; }
until_true 10 get metrics >/dev/null
get metrics | promtool check metrics || fail "promtool has something to say"
get status.json | grep -q '"version"' || fail "no status"
for way in 'POST /status.json' 'DELETE /' 'GET /../RtLog.txt'; do
  read -r method path <<<"$way"
  ! curl -sf --path-as-is -X "$method" "http://127.0.0.1:$port$path" >"$work/wrong" || fail "$way was served"
done

# A page of strangers that gives its own name this address learns nothing.
asked_as() { curl -s --max-time 10 -o /dev/null -w '%{http_code}' -H "Host: $1" "http://127.0.0.1:$port/status.json"; }
[ "$(asked_as evil.example)/$(asked_as "localhost:$port")" = 421/200 ] || fail "anybody's name is served"
curl -s -D - -o /dev/null "http://127.0.0.1:$port/" | grep -qi "^content-security-policy: default-src 'none'" ||
  fail "the page allows more than it has"

# In a browser: a queue that fills and empties, a narrow screen, the dark.
browse "http://127.0.0.1:$port/" $((port + 1))
cell() { echo "document.querySelectorAll('#queues tr')[$1].cells[1].textContent"; }
for product in "$source"/samples/products/{SVR,TOR}*; do cp "$product" "$station/KvData/RxFiles"; done
until_true 30 in_browser "Number($(cell 0)) > 0"
in_browser "document.title == 'Shed <7>' && document.querySelector('h1').textContent == document.title" ||
  fail "the page does not say whose it is"
in_browser "document.getElementById('state').textContent.startsWith('Sending')" || fail "the page does not send"
until_true 10 in_browser "document.querySelectorAll('#day svg.course path').length == 5"
until_true 10 in_browser "/SVR|TOR/.test(document.getElementById('entries').textContent)"
in_browser "document.documentElement.scrollWidth <= window.innerWidth" || fail "the page is wider than a phone"
in_browser "getComputedStyle(document.body).backgroundColor == 'rgb(20, 23, 26)'" || fail "the page is light in the dark"
until_true 90 in_browser "$(cell 0) == '0'"
[ -s "$work/received/TORDMXIA.TXT" ] || fail "the product did not come back"

# The port vanishes: the page, an alarm that begins and ends once, and a broker.
broker_port=$((port + 2))
mkdir "$work/trusted"
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=broker -addext subjectAltName=IP:127.0.0.1 \
  -keyout "$work/key.pem" -out "$work/trusted/broker.pem" 2>"$work/openssl.log"
openssl rehash "$work/trusted"
cat >"$work/mosquitto.conf" <<END
user $(id -un)
allow_anonymous true
listener $broker_port 127.0.0.1
listener $((port + 3)) 127.0.0.1
certfile $work/trusted/broker.pem
keyfile $work/key.pem
END
start mosquitto -c "$work/mosquitto.conf"
# The reason that is looked for is the first one: it must not be a broker that is not up yet.
listens() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }
until_true 30 listens "$((port + 3))"
publish() { start "$@" "$station/ostrel-status" --publish "mqtts://127.0.0.1:$((port + 3))/stations/shed"; }
publish env
until_true 30 grep -q 'does not answer (A TLS error' "$work/env.log"
kill -KILL "${pids[-1]}"
publish env SSL_CERT_DIR="$work/trusted"
publisher=${pids[-1]}
heard() { mosquitto_sub -p "$broker_port" -t 'stations/+' -C 1 -W 5 | grep -q "$1"; }
until_true 30 heard '"version"'
kill -KILL "$monitor"
until_true 30 in_browser "document.getElementById('state').textContent == 'Off the air: device gone'"
until_true 10 grep -q 'begin port: ' "$work/alarms"
until_true 10 in_browser "document.getElementById('alarms').textContent.includes('has vanished')"
start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 9600 --out "$work/received"
until_true 30 grep -q 'end port: it is over' "$work/alarms"
[ "$(wc -l <"$work/alarms")" -eq 2 ] || fail "alarms came more than once"
grep -q '"event":"begin","station":"Shed <7>","text":"port: ' "$work/json" || fail "the command got no JSON"
end_more
kill -KILL "$publisher"
until_true 30 heard '"gone"'

# It hangs, in the midst of whatever it does: killed and back within 15 s beyond the 8 s that an
# identification takes at most, and what it had is not lost.
settle() { says '"keyed":true'; }
product=$source/samples/products/AFDDMXIA.TXT
all_came_back() {
  for ((stop = 0; stop < stops; ++stop)); do
    cmp -s "$product" "$work/received/AFD$stop.TXT" || return 1
  done
}
for ((stop = 0; stop < stops; ++stop)); do
  until_true 30 settle
  cp "$product" "$station/KvData/RxFiles/AFD$stop.TXT"
  sleep "$((RANDOM % 8)).$((RANDOM % 9 + 1))"
  hanging=$(pgrep -f "^$station/ostrel-headless$" | head -n 1)
  allowed=23 # an identification that has just begun included
  kill -STOP "$hanging"
  from=$EPOCHSECONDS
  until_true $allowed test ! -d "/proc/$hanging"
  until_true $((from + allowed + 1 - EPOCHSECONDS)) settle
done
[ "$(grep -c 'is killed: it does not answer' "$work/ostrel-watch.log")" -eq "$stops" ] || fail "not killed each time"
until_true $((60 + 10 * stops)) all_came_back

# A stop goes through to the station.
kill -TERM "$watch"
until_true 15 test ! -d "/proc/$watch"
grep -q 'Program Stopped' "$station/RtLog.txt" || fail "the station did not stop in order"
[ ! -e "$station/station.sock" ] || fail "the socket is left"
! status 2>"$work/silent.log" || fail "a stopped station answers"
echo "Asked, shown, alarmed, killed and back."
