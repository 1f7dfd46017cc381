#!/usr/bin/env bash
# The library includes its own headers, the platform's, SDL's, SQLite's, GLib's and those of the C
# and C++ libraries, and nothing else.
source "$(dirname "$0")/check.sh"
cd "$TAV_SOURCE"

standard='^<[a-z_]+>$'
system='^<((sys|net|netinet|arpa)/[a-z]+|unistd|strings)\.h>$'
others='^<(sqlite3|glib)\.h>$'
is_allowed() {
    local name=${1:1:-1}
    case $1 in
    '"SDL.h"' | '"tav.h"') ;;
    '"platform/'*) [ -f "$name" ] ;;
    '"'*) [ -f "src/$name" ] ;;
    *) [[ $1 =~ $standard || $1 =~ $system || $1 =~ $others ]] ;;
    esac
}

count=0
while read -r file header _; do
    is_allowed "$header" || fail "$file includes $header"
    count=$((count + 1))
done < <(grep -rE '^[[:space:]]*#[[:space:]]*include' src | sed 's/:[[:space:]#]*include/ /')
[ "$count" -gt 100 ] || fail "only $count inclusions were found"
! grep -rniE 'tavsim|simulator|tavsim::' src --include='*.cpp' --include='*.h' ||
    fail 'the library knows of the simulator'
