#!/usr/bin/env bash
# The settings tool against registry tools that are not ours: hivexregedit reads an export into an
# empty registry and holds every value; a file with other programs' keys is taken whole and given
# back whole; a damaged one changes nothing. Usage: registry_tool_test.sh OSTREL_SETTINGS
set -euo pipefail

readonly tool=$1
readonly root='HKEY_LOCAL_MACHINE\Software'
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

settings() { "$tool" --station "$work/$1" "${@:2}"; }
plain() { iconv -f UTF-16 -t UTF-8 "$1" | tr -d '\r'; }
same() {
  diff -u "$1" "$2" && return
  echo "$3" >&2
  exit 1
}

# A registry with nothing in it: header, one bin of 4 KiB with the root, its security, and free room.
empty_hive() {
  perl -e '
    my $cell = sub { my $body = shift; my $size = (4 + length($body) + 7) & ~7;
                     pack("l<", -$size) . $body . "\0" x ($size - 4 - length $body) };
    my $none = 0xffffffff;
    my $root = pack("a2 S< x8 V V V V V V V V V V V5 S< S< a*", "nk", 0x2c, 0, 0x20, 0, 0, $none,
                    $none, 0, $none, 0x80, $none, 0, 0, 0, 0, 0, 4, 0, "root");
    my $bin = "hbin" . pack("V V x8 x8 V", 0, 0x1000, 0) . $cell->($root);
    die "the security is elsewhere" if length $bin > 0x80;
    $bin .= pack("l<", 0x80 - length $bin) . "\0" x (0x7c - length $bin) if length $bin < 0x80;
    $bin .= $cell->(pack("a2 S< V V V V x20", "sk", 0, 0x80, 0x80, 1, 20));
    my $room = 0x1000 - length $bin;
    $bin .= pack("l<", $room) . "\0" x ($room - 4);
    my $head = "regf" . pack("V V x8 V V V V V V V x64", 1, 1, 1, 3, 0, 1, 0x20, 0x1000, 1);
    $head .= "\0" x (0x1fc - length $head);
    my $sum = 0; $sum ^= $_ for unpack "V*", $head;
    print $head, pack("V", $sum), "\0" x 0xe00, $bin'
}

# What the registry holds, a line each: name, tab, value.
values_of_hive() {
  hivexregedit --export --prefix "$root" "$1" '\Corvain' | perl -0777 -MEncode -ne '
    s/\\\n\s*//g;
    while (/^"(.*)"=hex\(1\):(.*)$/mg) {
      my ($name, $text) = ($1, decode("UTF-16LE", join "", map { chr hex } split /,/, $2));
      $text =~ s/\0$//;
      print encode("UTF-8", "$name\t$text\n");
    }' | sort
}

mkdir "$work/ours" "$work/theirs"

# Every setting, each with a value of its own; in some what text is made difficult with.
settings ours list | awk 'NR > 1 { print $1 "\t" substr($0, 58) }' >"$work/settings"
[ "$(wc -l <"$work/settings")" -gt 40 ]
number=0
while IFS=$'\t' read -r key value; do
  case $key in
    CWIDText) value='DE "W1AW" \ é 😀 = [x] ; @' ;;
    IngestPath | FillFile) value="/srv/in coming/$key\\" ;;
    TxDelay) value='' ;;
    Main*) value=2 ;;
    PurgeTime) value=$((number += 1)) ;;
  esac
  settings ours set "$key" "$value"
  printf '%s\t%s\n' "$key" "$value"
done <"$work/settings" | sort >"$work/wanted"
settings ours export "$work/ours.txt"
[ "$(head -c 2 "$work/ours.txt" | od -An -tx1)" = ' ff fe' ]
empty_hive >"$work/hive"
plain "$work/ours.txt" | PERL_UNICODE=SD hivexregedit --merge --prefix "$root" "$work/hive"
values_of_hive "$work/hive" >"$work/held"
same "$work/wanted" "$work/held" "hivexregedit does not hold what was exported."

# What it writes comes back to us.
hivexregedit --export --prefix "$root" "$work/hive" '\Corvain' >"$work/hive.reg"
settings theirs import "$work/hive.reg"
settings theirs export "$work/theirs.txt"
same <(plain "$work/ours.txt") <(plain "$work/theirs.txt") "Values of hivexregedit's file differ."

# Keys of other programs of the family, of every kind.
cat >"$work/family" <<'END'
Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\Software\Corvain]
@="the family"

[HKEY_LOCAL_MACHINE\Software\Corvain\Brask]

[HKEY_LOCAL_MACHINE\Software\Corvain\Brask\Receiver]
"Bytes"=hex:01,02,fe,ff
"Level"=dword:0000002a
"Long"=hex(b):01,00,00,00,00,00,00,80
"Path"=hex(2):25,00,54,00,25,00,00,00
"Title"="Größe \"L\" \\ n"

[HKEY_LOCAL_MACHINE\Software\Corvain\Ostrel]

[HKEY_LOCAL_MACHINE\Software\Corvain\Ostrel\Settings]
"CWIDText"="DE TEST"
END
sed 's/$/\r/' "$work/family" | iconv -f UTF-8 -t UTF-16 >"$work/family.reg"
rm -r "$work/theirs"
mkdir "$work/theirs"
settings theirs import "$work/family.reg"
settings theirs export "$work/again.txt"
same "$work/family" <(plain "$work/again.txt" | sed '$d') "The family's keys are not what they were."
[ "$(settings theirs get CWIDText)" = 'DE TEST' ]

# A path in another code page makes the round too; a log that cannot be written changes nothing of
# what was taken; an export that failed is in the log.
mkdir "$work/third" "$work/third/RtLog.txt"
settings theirs set FillFile $'/srv/\xe9\xc3/fill.txt'
settings theirs export "$work/page.txt"
settings third import "$work/page.txt" 2>/dev/null
[ "$(settings third get FillFile)" = $'/srv/\xe9\xc3/fill.txt' ]
settings theirs set FillFile /srv/fill.txt
settings theirs export "$work/again.txt"
settings theirs export "$work/none/again.txt" 2>/dev/null && exit 1
grep -q 'Settings .*Export to .*none/again.txt failed: ' "$work/theirs/RtLog.txt"

# Cut off anywhere behind its header, in the middle of a character or not, a file changes nothing.
sed -i 's/the family/the house/; s/0000002a/0000002b/' "$work/family"
sed 's/$/\r/' "$work/family" | iconv -f UTF-8 -t UTF-16 >"$work/family.reg"
for cut in 61 200 333 450 801; do
  head -c "$cut" "$work/family.reg" >"$work/damaged.reg"
  printf '"' | iconv -f UTF-8 -t UTF-16LE >>"$work/damaged.reg"
  if settings theirs import "$work/damaged.reg" 2>/dev/null; then
    echo "A file cut off behind $cut bytes was taken." >&2
    exit 1
  fi
  settings theirs export "$work/after.txt"
  cmp "$work/again.txt" "$work/after.txt"
done
# Nor does a setting with which the station could not start, whoever brings it.
{
  head -n 2 "$work/family"
  printf '%s\n' "[$root\\corvain\\Ostrel\\Settings]" '"CWIDText"="NEW"' '"udpport"="70000"'
} >"$work/dead.reg"
if settings theirs import "$work/dead.reg" 2>/dev/null; then
  echo 'An import took a port of 70000.' >&2
  exit 1
fi
sed 's/"udpport"="70000"/"ComPort"="12"/' "$work/dead.reg" >"$work/far.reg"
settings third import "$work/far.reg"
[ "$(settings third get CWIDText)" = NEW ] || {
  echo 'A port of another machine kept an import away.' >&2
  exit 1
}
while read -r key value; do
  if settings theirs set "$key" "$value" 2>/dev/null; then
    echo "$key was set to $value." >&2
    exit 1
  fi
done <<'END'
ComBaud abc
ComPort 12
UdpPort 0
UdpAddress localhost
UdpAddress 127.0.0.1.1
UdpAddress 127.0.0.256
UdpAddress 127.0.0.010
MainState 3
CWSpeed -2500
CWSpeed 33
TxDelay soon
PurgeTime 2.5x
LogDaily 7
IngestPath /
IngestPath /home/operator/
IngestPath /srv/../root
END
settings theirs export "$work/after.txt"
cmp "$work/again.txt" "$work/after.txt"
grep -q 'refused, .*UdpPort cannot be "70000"' "$work/theirs/RtLog.txt"
grep -q 'Settings .*refused, nothing was changed' "$work/theirs/RtLog.txt"
