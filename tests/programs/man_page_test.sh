#!/usr/bin/env bash
# The man page formats without a complaint and describes everything that the tool itself lists, and
# the commands of `tavsim ctl` are the same wherever they are listed.
source "$(dirname "$0")/check.sh"
page=$TAV_SOURCE/docs/tavsim.1

run groff -man -ww -Tutf8 -z "$page"
expect 0 '' ''
text=$(groff -man -rHY=0 -rLL=200n -Tutf8 -P -c "$page" | sed 's/.\x08//g; s/‐/-/g; s/−/-/g')
words=$(
    for command in '' run ctl test devices; do
        # shellcheck disable=SC2086
        "$tavsim" $command --help
    done | grep -oE -- '--[a-z][a-z-]+' | sort -u
    cat "$TAV_SOURCE"/{helper,simulator/*,tools,tools/*}/*.cpp | grep -oE '"TAV(SIM)?_[A-Z_]+"' | tr -d '"' | sort -u
)
[ "$(wc -l <<<"$words")" -gt 15 ] || fail "the tool lists too little: $words"
for word in $words; do
    grep -qw -- "$word" <<<"$text" || fail "the man page does not describe $word"
done

usages=$("$tavsim" ctl --help | sed -n '/^Commands:/,$ s/^  \([a-z].*\)/\1/p')
[ "$(wc -l <<<"$usages")" -gt 10 ] || fail "the tool lists too few commands: $usages"
listed=$(sed -n '/^| Command /,/^$/ s/^| `\([^`]*\)` |.*/\1/p' "$TAV_SOURCE/docs/simulator.md" | sed 's/\\|/|/g')
[ "$usages" = "$listed" ] || fail "other commands than in simulator.md: $(diff <(cat <<<"$usages") <(cat <<<"$listed"))"
# What a command does may stand behind a short one on its line.
padded=$(sed 's/$/  /' <<<"$text")
while read -r usage; do
    grep -qF "       $usage  " <<<"$padded" || fail "the man page lacks the command $usage"
done <<<"$usages"
