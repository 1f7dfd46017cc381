#!/usr/bin/env bash
# Checks that the documents and the man pages mention every name that a user can use, that the man
# pages format without warnings, and that links have targets: check_documented.sh TAVSIM
# PROJECT_FOLDER
set -euo pipefail
tavsim=$1
cd "$2"

work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
page=$work/tavsim.1
for manual in tavsim.1 tavsim-panel.1 tav-page.1; do
    groff -man -ww -rHY=0 -rLL=200n -Tutf8 -P -c "docs/$manual" 2>>"$work/complaints" |
        sed 's/.\x08//g; s/‐/-/g; s/−/-/g' >"$work/$manual"
done
missing=0
complain() {
    echo "$1" >&2
    missing=1
}
[ ! -s "$work/complaints" ] || complain "$(<"$work/complaints")"
# Each name that the pattern finds in the sources must be in the text as a whole word.
expect_in() {
    local text=$1 pattern=$2 names name
    shift 2
    names=$(grep --no-filename --only-matching --perl-regexp -- "$pattern" "$@" | sort --unique)
    for name in $names; do
        grep --quiet --word-regexp --fixed-strings -- "$name" "$text" ||
            complain "$text says nothing about $name"
    done
}

expect_in docs/guide.md '^TAV_API .*?\K(TAV|TAVNet)_\w+(?=\()' include/tav.h
expect_in docs/testing.md '^TAVSIM_API .*?\KTAVSim_\w+(?=\()' include/tavsim.h
expect_in docs/testing.md '^    def \K[a-z]\w*' python/tavsim/run.py
# Fields of profiles and of a service program's lines are rows of tables: {"field", handler}.
expect_in docs/simulator.md '\{+"\K\w+(?=",( (json::)?\w+\(&| \[|$))' simulator/device/{profile,service_reader}.cpp simulator/bus/program_line.cpp
for text in docs/simulator.md "$page"; do
    expect_in "$text" '"\K(TAVSIM_[A-Z]|TAV_TRACE)[A-Z_]*(?=")' helper/*.cpp base/*.cpp simulator/*/*.cpp tools/*.cpp tools/*/*.cpp
    expect_in "$text" '"\K--[a-z-]+(?=")' tools/*.cpp tools/{control,new,panel,process,test}/*.cpp
done
expect_in "$work/tav-page.1" '"\K(--[a-z-]+|TAV_[A-Z_]*)(?=")' tools/page/*.cpp linux/host/page.cpp

# All lists of the commands of `tavsim ctl` must be the same. In the man page, a description may
# follow a short command on its line.
"$tavsim" ctl --help | sed -n '/^Commands:/,$ s/^  \([a-z].*\)/\1/p' >"$work/commands"
sed -n '/^| Command /,/^$/ s/^| `\([^`]*\)` |.*/\1/p' docs/simulator.md | sed 's/\\|/|/g' |
    diff "$work/commands" - >&2 || missing=1
sed -i 's/$/  /' "$page"
while read -r usage; do
    grep --quiet --fixed-strings "       $usage  " "$page" ||
        complain "the man page lacks the command $usage"
done <"$work/commands"

# The anchors of a file's headings: in lower case, without punctuation, with dashes for blanks.
anchors() {
    sed -n 's/^##* //p' "$1" | tr '[:upper:]' '[:lower:]' | tr -cd '[:alnum:] \n-' | tr ' ' '-'
}

for text in *.md docs/*.md; do
    for link in $(grep --only-matching --perl-regexp '\]\(\K[^)]+(?=\))' "$text"); do
        file=${link%%#*} anchor=
        [[ $link != *#* ]] || anchor=${link#*#}
        target=${file:+$(dirname "$text")/$file}
        target=${target:-$text}
        [[ $link == http* ]] && continue
        [[ -e $target && (-z $anchor || $'\n'$(anchors "$target")$'\n' == *$'\n'"$anchor"$'\n'*) ]] ||
            complain "$text: $link leads nowhere"
    done
done
exit $missing
