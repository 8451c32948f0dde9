#!/usr/bin/env bash
# What every program owes its user: --help and --version, which make no station and need no display, and
# for wrong usage one line that names --help, and status 2.
#   usage_test.sh BIN
set -euo pipefail
bin=$(realpath "$1")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"
unset DISPLAY WAYLAND_DISPLAY

# run ARGUMENT...: of $program, in a folder of its own; leaves its status.
run() {
  status=0
  "$work/station/$program" "$@" >"$work/said" 2>"$work/complained" </dev/null || status=$?
}
version=''
for program in ostrel ostrel-{feed,headless,ingest,monitor,queue,repeat,settings,simulate,status,watch} Brask; do
  mkdir "$work/station"
  cp "$bin/$program" "$work/station/$program"
  run --version
  [ "$status" -eq 0 ] || fail "$program --version ends with $status"
  grep -qE ' [0-9]+\.[0-9]+\.[0-9]+$' "$work/said" || fail "$program has no version"
  version=${version:-$(sed 's/.* //' "$work/said")}
  grep -q " $version\$" "$work/said" || fail "$program has another version"
  run --help
  [ "$status" -eq 0 ] || fail "$program --help ends with $status"
  grep -qi usage: "$work/said" || fail "$program --help tells no usage"
  grep -q '(1) and docs/' "$work/said" || fail "$program --help does not say where to read on"
  run --no-such-word
  [ "$status" -eq 2 ] || fail "$program ends with $status for wrong usage"
  [ "$(grep -c -- --help "$work/complained")/$(wc -l <"$work/complained")" = 1/1 ] ||
    fail "$program says more than a line, or not where to look"
  [ "$(ls -A "$work/station")" = "$program" ] || fail "$program has made something"
  rm -r "$work/station"
done
