# A browser on a narrow screen, in the dark, for trials of pages. Sourced after trial.sh.
# shellcheck shell=bash disable=SC2034
session='' # of the browser, which outlives its driver
driver_port=''
end_more() {
  [ -z "$session" ] || curl -s -m 10 -X DELETE "http://127.0.0.1:$driver_port/session/$session"
  session=''
} >/dev/null
drive() { curl -sf --max-time 30 -H 'Content-Type: application/json' "http://127.0.0.1:$driver_port/$1" -d "$2"; }
# browse URL PORT: the driver listens there.
browse() {
  local options
  driver_port=$2
  start chromedriver --port="$driver_port"
  until_true 20 curl -sf "http://127.0.0.1:$driver_port/status" >/dev/null
  options='"--headless","--no-sandbox","--window-size=360,800","--force-dark-mode","--blink-settings=preferredColorScheme=0"'
  session=$(drive session "{\"capabilities\":{\"alwaysMatch\":{\"goog:chromeOptions\":{\"args\":[$options]}}}}" |
    grep -oE '"sessionId":"[^"]+"' | cut -d '"' -f 4)
  drive "session/$session/url" "{\"url\":\"$1\"}" >/dev/null
}
# in_browser EXPRESSION: true in the page.
in_browser() {
  drive "session/$session/execute/sync" "{\"script\":\"return $1\",\"args\":[]}" | grep -q '"value":true'
}
