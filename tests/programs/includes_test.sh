#!/usr/bin/env bash
# Which headers a file may include. In the library: its own headers and those of the platform, SDL,
# SQLite, GLib, C and C++. In an implementation of the platform: those of its own folder and of the
# folders below it in this list.
source "$(dirname "$0")/check.sh"
cd "$TAV_SOURCE"

# From top to bottom.
rooms=(tools tools/panel tools/page tools/web tools/test tools/new tools/control tools/process
    simulator/interface simulator/front simulator/scenario simulator/control simulator/language simulator/input
    simulator/screen simulator/page simulator/bus simulator/host simulator/world simulator/device
    simulator/process simulator/time
    linux/host linux/services linux/bus linux/application
    bridge input screen front helper base/json base platform)

# The inclusions of some folders, each as a line "FILE HEADER".
inclusions() {
    grep -rE '^[[:space:]]*#[[:space:]]*include' --include='*.cpp' --include='*.h' "$@" |
        sed -E 's/:[[:space:]]*#[[:space:]]*include[[:space:]]*/ /; s/[[:space:]]*\/\/.*//'
}

standard='^<[a-z_]+>$'
system='^<((sys|net|netinet|arpa)/[a-z]+|unistd|strings)\.h>$'
others='^<(sqlite3|glib)\.h>$'
is_the_librarys() {
    local name=${1:1:-1}
    case $1 in
    '"SDL.h"' | '"tav.h"') ;;
    '"platform/'*) [ -f "$name" ] ;;
    '"'*) [ -f "src/$name" ] ;;
    *) [[ $1 =~ $standard || $1 =~ $system || $1 =~ $others ]] ;;
    esac
}

declare -A place
for index in "${!rooms[@]}"; do place[${rooms[index]}]=$index; done

count=0
while read -r file header; do
    is_the_librarys "$header" || fail "$file includes $header"
    count=$((count + 1))
done < <(inclusions src)
[ "$count" -gt 100 ] || fail "only $count inclusions were found"
! grep -rniE 'tavsim|simulator|tavsim::' src --include='*.cpp' --include='*.h' ||
    fail 'the library knows of the simulator'

count=0
while read -r file header; do
    [[ $header == '"'* && $header != '"SDL.h"' ]] || continue
    name=${header:1:-1}
    folder=${file%/*} included=$folder
    [[ $name != */* ]] || included=${name%/*}
    from=${place[$folder]:-} to=${place[$included]:-}
    [ -n "$from" ] || fail "$folder is none of the rooms"
    [[ -n $to && $to -ge $from ]] || fail "$file includes $header"
    count=$((count + 1))
done < <(inclusions tools simulator linux bridge input screen front helper base platform)
! grep -rn '"linux/' tools simulator bridge input screen front helper base platform --include='*.cpp' --include='*.h' ||
    fail 'something else includes what is for Linux'
! grep -rn '"simulator/' linux || fail 'what is for Linux includes the simulator'
[ "$count" -gt 100 ] || fail "only $count inclusions were found in the rooms"
