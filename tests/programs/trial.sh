# What the trials of real programs share: a folder for the time, programs beside it, waiting for what
# is to come true. Sourced; `end_more` is for what is not a child.
# shellcheck shell=bash disable=SC2034
work=$(mktemp -d)
pids=()
end_more() { :; }
finish() {
  trap - EXIT
  end_more || true
  kill -KILL "${pids[@]}" 2>/dev/null || true
  wait 2>/dev/null || true
  pkill -KILL -f "$work/" || true
  rm -rf "$work"
}
trap finish EXIT
fail() {
  echo "FAILED: $*" >&2
  find "$work" \( -name '*.log' -o -name '*Log.txt' \) -size +0 -exec tail -n 15 {} + >&2 || true
  exit 1
}
# until_true SECONDS COMMAND...
until_true() {
  local end=$((SECONDS + $1))
  shift
  until "$@" 2>/dev/null; do
    [ "$SECONDS" -lt "$end" ] || fail "$* did not come true"
    sleep 0.2
  done
}
# start COMMAND...: its process id is the last of `pids`.
start() {
  "$@" >>"$work/$(basename "$1").log" 2>&1 &
  pids+=($!)
}
# catches_sigterm PID: it ends in its own way then.
catches_sigterm() {
  local mask
  mask=$(sed -n 's/^SigCgt:[[:space:]]*//p' "/proc/$1/status")
  (((0x$mask >> 14) & 1))
}
