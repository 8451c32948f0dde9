# What a long build or test says meanwhile. Sourced from the top folder.
# shellcheck shell=bash

# spell SECONDS: in words.
spell() {
  local seconds=${1%.*}
  if [ "$seconds" -lt 60 ]; then
    echo "$seconds s"
  else
    echo "$((seconds / 60)) min $((seconds % 60 / 10 * 10)) s"
  fi
}

# build PRESET [TARGET...]: on a terminal one line tells how far it is and roughly how long it still
# takes; elsewhere it is silent. A failure says what the compiler said.
build() {
  local log=build/build-$1.log status=0
  mkdir -p build
  NINJA_STATUS='[%f/%t %e] ' scripts/build "$@" 2>&1 | tee "$log" | show_build || status=$?
  [ "$status" -eq 0 ] || grep -v '^\[' "$log" | tail -n 60 >&2
  return "$status"
}

show_build() {
  local line ready all took left=''
  while IFS= read -r line; do
    [[ -t 1 && $line =~ ^\[([0-9]+)/([0-9]+)\ ([0-9]+)[0-9.]*\] ]] || continue
    ready=${BASH_REMATCH[1]} all=${BASH_REMATCH[2]} took=${BASH_REMATCH[3]}
    # The first files are no measure: they wait for what is read once for all.
    [ "$took" -lt 15 ] || left=", about $(spell $((took * (all - ready) / ready))) left"
    printf '\r  %d of %d steps%s \033[K' "$ready" "$all" "$left"
  done
  [ -z "${all:-}" ] || printf '\r\033[K'
}

# is_built PRESET TARGET...: nothing is to be built for these.
is_built() {
  [ -e "build/$1/build.ninja" ] || return 1
  ninja -C "build/$1" -n "${@:2}" 2>/dev/null | grep -q 'no work to do'
}
