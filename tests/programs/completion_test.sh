#!/usr/bin/env bash
# What the shells offer behind the programs' names: bash is asked, and the others read what they are
# given.
#   completion_test.sh BIN
set -euo pipefail
bin=$(realpath "$1")
# shellcheck source=tests/programs/trial.sh
source "$(dirname "${BASH_SOURCE[0]}")/trial.sh"

# offers WORD...: what bash offers in place of the last word, in one line.
offers() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  "_${1//-/_}"
  echo "${COMPREPLY[*]}"
}
# expect WORDS WORD...
expect() {
  local wanted=$1 offered
  shift
  offered=$(offers "$@")
  [ "$offered" = "$wanted" ] || fail "behind '$*' stands '$offered' instead of '$wanted'"
}
for program in ostrel-{feed,monitor,queue,repeat,settings,simulate,status,watch}; do
  # shellcheck source=/dev/null
  source <("$bin/$program" --completion bash)
  complete -p "$program" >/dev/null || fail "bash completes nothing behind $program"
  expect --version "$program" --vers
  for shell in zsh fish; do
    "$bin/$program" --completion "$shell" >"$work/$shell"
    "$shell" -n "$work/$shell" || fail "$shell cannot read the completion of $program"
  done
done
expect 'history hold' ostrel-queue h
expect '--since' ostrel-queue history TOR* --s
expect '--station' ostrel-queue --s
expect 'list' ostrel-queue --station /srv/shed li
expect '' ostrel-queue hold T
expect '--explain' ostrel-feed --ex
offered=$(fish -c "source '$work/fish'; complete -C 'ostrel-watch --vers'")
[[ $offered == --version* ]] || fail "fish offers '$offered'"
