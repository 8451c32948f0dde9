# Functions for the scripts that run a station against the monitor. Sourced from the top folder.
# shellcheck shell=bash disable=SC2034

readonly bin=build/release/bin
# What a station needs on its first minute, and what it gets besides.
readonly first_programs=(ostrel ostrel-{monitor,settings})
readonly later_programs=(ostrel-{feed,ingest,queue,repeat,status})
readonly programs=("${first_programs[@]}" "${later_programs[@]}")
readonly baud=38400
readonly main_title='EMWIN ReTransmission Engine - By Corvain'

# deliver FILE FOLDER: the file appears in the ingest folder at once and whole.
deliver() {
  local name
  name=$(basename "$1")
  cp "$1" "$2/.$name"
  mv "$2/.$name" "$2/$name"
}

# make_station DIR: everything a station needs on its first day, the sample products in its ingest
# folder. The whole folder appears at once, so that an interrupted making is simply made again.
make_station() {
  local new=$1.new
  rm -rf "$new"
  mkdir -p "$new/ports" "$new/KvData/RxFiles"
  cp packaging/station/* "$new/"
  ln -s ../line "$new/ports/COM1"
  "$bin/ostrel-settings" --station "$new" set ComBaud "$baud"
  "$bin/ostrel-settings" --station "$new" set LogProgram 1
  local product
  for product in samples/products/*; do deliver "$product" "$new/KvData/RxFiles"; done
  mv "$new" "$1"
}

# advisory_of_now: a product of our own that is in force for an hour, for Marshall and Story county in
# Iowa. Nobody whom it reached by mistake would come to harm.
advisory_of_now() {
  local until begins ends over
  until=$(date -u -d '+1 hour' +%d%H%M)
  begins=$(date -u +%y%m%dT%H%MZ) ends=$(date -u -d '+1 hour' +%y%m%dT%H%MZ)
  over=$(LC_ALL=C TZ=America/Chicago date -d '+1 hour' '+%-I%M %p %Z')
  cat <<END
WWUS73 KDMX $(date -u +%d%H%M)
NPWDMX

Sample Product, Sent by a Trial of a Station
$(LC_ALL=C TZ=America/Chicago date '+%-I%M %p %Z %a %b %d %Y' | tr '[:lower:]' '[:upper:]')

IAC127-169-$until-
/O.NEW.KDMX.FG.Y.0001.$begins-$ends/
Marshall-Story-

...A SAMPLE: DENSE FOG ADVISORY IN EFFECT UNTIL $over...

\$\$
END
}

# free_port FIRST: the first port from there on at which nothing listens on this computer.
free_port() {
  local port=$1
  while (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do port=$((port + 1)); done
  echo "$port"
}

# place_programs DIR PROGRAM...: as last built. Links would not do: a station is where its program
# really is. The companion programs are the feed under other names.
place_programs() {
  local program name
  for program in "${@:2}"; do
    ln -f "$bin/$program" "$1/$program" 2>/dev/null || cp -f "$bin/$program" "$1/$program"
    [ "$program" = ostrel-feed ] || continue
    for name in Brask Tiltor; do ln -sf ostrel-feed "$1/$name"; done
  done
}

# start_monitor STATION RECEIVED LOG OPTION...: leaves its process id in `monitor` and the log open on
# descriptor 3. In a session of its own, like the program: Ctrl+C is for this script alone, which
# ends both in order.
start_monitor() {
  : >"$3"
  exec 3<"$3"
  setsid "$1/ostrel-monitor" --link "$1/line" --baud "$baud" --out "$2" "${@:4}" >>"$3" 2>&1 3<&- &
  monitor=$!
  local _
  for _ in {1..100}; do
    [ ! -L "$1/line" ] || return 0
    sleep 0.1
  done
  cat "$3" >&2
  echo "The monitor did not make its line." >&2
  return 1
}

# start_display FOLDER: a display with a window manager for this script alone. Leaves their process ids
# in `server` and `manager`, and their logs in the folder.
start_display() {
  Xvfb -displayfd 5 -screen 0 1280x900x24 5>"$1/display" 2>"$1/server.log" &
  server=$!
  until [ -s "$1/display" ]; do sleep 0.1; done
  DISPLAY=:$(cat "$1/display")
  export DISPLAY
  openbox --startup "touch $1/managed" >"$1/manager.log" 2>&1 &
  manager=$!
  until [ -e "$1/managed" ]; do sleep 0.1; done
}

# start_program STATION LOG: leaves its process id in `program`.
start_program() {
  setsid "$1/ostrel" >"$2" 2>&1 3<&- 4<&- &
  program=$!
}

# show_products: prints what was received since the last call, and whatever went wrong with it.
show_products() {
  local line
  while read -r line <&3; do
    case $line in
      *FILLFILE.TXT*) ;;
      *" received, "* | *" pause: "* | *DAMAGED* | *" missing "* | *" not whole"* | *" noise: "*)
        echo "$line"
        ;;
    esac
  done
}

# schedule_soon STATION: a sample product goes out once more, in the next minute but one of every day.
schedule_soon() {
  case $1 in
    *' '*) return ;; # an entry has no room for such a path
  esac
  printf '%s %s/samples/products/TORDMXIA.TXT %s/KvData/RtPri1/TORDMXIA.TXT\r\n' \
    "$(date -d '+2 minutes' +%H:%M)" "$PWD" "$1" >"$1/RtSched.txt"
}

# show_log: prints what the station did besides sending files since the last call. Its log is open on
# descriptor 4.
show_log() {
  local line
  while read -t 0.02 -r line <&4; do
    case $line in
      *" CW ID "* | *" Schedule "* | *" checkSched "* | *" Port "*) echo "${line%$'\r'}" ;;
    esac
  done
}

# stop PID: asks a program to end, waits, and gives its status.
stop() {
  local status=0 _
  kill -TERM "$1" 2>/dev/null || true
  for _ in {1..150}; do
    kill -0 "$1" 2>/dev/null || break
    sleep 0.1
  done
  kill -KILL "$1" 2>/dev/null || true
  wait "$1" || status=$?
  return "$status"
}
