#!/usr/bin/env bash
# The man page formats without a complaint and describes everything that the tool itself lists.
source "$(dirname "$0")/check.sh"
page=$TAV_SOURCE/docs/tavsim.1

run groff -man -ww -Tutf8 -z "$page"
expect 0 '' ''
text=$(groff -man -rHY=0 -Tutf8 -P -c "$page" | sed 's/.\x08//g; s/‐/-/g; s/−/-/g')
words=$(
    for command in '' run ctl devices; do
        # shellcheck disable=SC2086
        "$tavsim" $command --help
    done | grep -oE -- '--[a-z][a-z-]+' | sort -u
    "$tavsim" ctl --help | sed -n '/^Commands:/,$ s/^  \([a-z|]\+\) .*/\1/p' | tr '|' '\n'
    cat "$TAV_SOURCE"/{helper,simulator/*,tools}/*.cpp | grep -oE '"TAV(SIM)?_[A-Z_]+"' | tr -d '"' | sort -u
)
[ "$(wc -l <<<"$words")" -gt 20 ] || fail "the tool lists too little: $words"
for word in $words; do
    grep -qw -- "$word" <<<"$text" || fail "the man page does not describe $word"
done
