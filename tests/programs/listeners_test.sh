#!/usr/bin/env bash
# What listeners see of a real station over the air: warnings, pictures, strangers' texts; and the
# command that is run for what is in force at home.
#   listeners_test.sh BIN SOURCE
set -euo pipefail
bin=$(realpath "$1")
source=$(realpath "$2")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
# shellcheck source=tests/programs/browser.sh
source "$(dirname "${BASH_SOURCE[0]}")/browser.sh"
station=$work/station

mkdir -p "$station/ports" "$station/KvData/RxFiles"
cp "$source"/packaging/station/* "$bin"/ostrel-{headless,settings,monitor} "$station"
for setting in 'ComBaud 38400' 'CWIDTime 0' 'TxUpTime 0'; do
  # shellcheck disable=SC2086
  "$station/ostrel-settings" set $setting
done
tell() { printf 'cat >>"%s/told"; echo >>"%s/told"' "$work" "$work"; }
listen() {
  : >"$work/ostrel-monitor.log"
  start "$station/ostrel-monitor" --link "$station/ports/COM1" --baud 38400 --out "$work/received" \
    --serve 0 --home 42.03,-93.62 --areas IAC169,IAZ048 --on-warning "$(tell)"
  monitor=${pids[-1]}
  until_true 10 grep -q 'find it at http://127.0.0.1:' "$work/ostrel-monitor.log"
  url=$(sed -n 's/.*find it at //p' "$work/ostrel-monitor.log")
}
page() { curl -sf "$url$1"; }
# To its end: who stops reading earlier fails the other end.
shows() { page "" | grep -F -- "$1" >/dev/null; }
told() { [ "$(grep -c "\"event\":\"$1\"" "$work/told")" -eq "$2" ]; }
drop() {
  cat >"$work/arriving"
  mv "$work/arriving" "$station/KvData/RxFiles/$1"
}
# warning ACTION NAME: a tornado warning around home, from now on for an hour.
warning() {
  local day
  day=$(date -u -d '1 hour' +%d%H%M)
  printf 'WFUS53 KDMX %s\r\r\nTORDMX\r\r\nIAC127-169-%s-\r\r\n' "$(date -u +%d%H%M)" "$day"
  printf '/O.%s.KDMX.TO.W.0043.%s-%s/\r\r\n\r\r\n' "$1" "$(date -u +%y%m%dT%H%MZ)" \
    "$(date -u -d '1 hour' +%y%m%dT%H%MZ)"
  printf 'Take <script>cover</script> now.\r\r\n\r\r\nLAT...LON 4192 9376 4224 9376 4229 9279\r\r\n$$\r\r\n'
}

listen
shows 'Nothing heard yet' || fail "it claims to have heard something"
if shows 'Nothing is in force at home'; then fail "it knows what it cannot know"; fi
unset DISPLAY
port=${url//[!0-9]/}
browse "$url" "$((${port#127001} + 1))"
words() { echo "document.getElementById('$1').textContent.includes('$2')"; }
in_browser "$(words hearing 'Nothing heard yet')" || fail "the browser does not show the page"
start "$station/ostrel-headless"

warning NEW | drop TORDMXIA.TXT
until_true 30 shows '<h3>Tornado Warning</h3>'
until_true 10 told begin 1
grep -qF '"identity":"KDMX.TO.W.0043"' "$work/told" || fail "the command got no event"
# By itself.
until_true 10 in_browser "$(words home 'Tornado Warning')"
in_browser "document.documentElement.scrollWidth <= window.innerWidth" || fail "the page is wider than a phone"
in_browser "document.querySelectorAll('.map .exact.warning, .map .home').length == 2" || fail "there is no map"
shows 'Last heard ' || fail "it does not say when it heard last"
shows 'Take &lt;script&gt;cover&lt;/script&gt; now.' || fail "the whole text is not there"
page product/TORDMXIA%2ETXT | grep -F '&lt;script&gt;' >/dev/null || fail "the product's page lacks its text"

printf '<html><script>alert(1)</script>' | drop TORFALSE.PNG
drop RADUSUSA.PNG <"$source/samples/products/RADUSUSA.PNG"
until_true 30 shows 'src="picture/RADUSUSA%2EPNG"'
page picture/RADUSUSA%2EPNG | cmp - "$source/samples/products/RADUSUSA.PNG"
curl -sfI "${url}picture/RADUSUSA%2EPNG" | tr -d '\r' >"$work/headers"
for header in 'Content-Type: image/png' 'X-Content-Type-Options: nosniff' \
  "Content-Security-Policy: default-src 'none'; sandbox"; do
  grep -qxF "$header" "$work/headers" || fail "a picture without $header"
done
until_true 30 test -e "$work/received/TORFALSE.PNG"
for path in picture/TORFALSE%2EPNG picture/TORDMXIA%2ETXT product/.warnings \
  product/..%2Fostrel-monitor.log picture/%2E%2E%2Fstation%2FRtMorse.txt; do
  ! page "$path" >/dev/null || fail "$path was served"
done
page news | grep -x 'event: content' >/dev/null || fail "no news are sent"

kill "$monitor"
wait "$monitor" || true
until_true 30 in_browser "$(words link 'lost its receiver')"
listen
shows '<h3>Tornado Warning</h3>' || fail "a restart forgot the warning"
warning CAN | drop TORDMXIA.TXT
until_true 30 told end 1
until_true 10 shows 'Nothing is in force at home'
told begin 1 || fail "a restart told the warning again"
