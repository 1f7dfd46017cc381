#!/usr/bin/env bash
# Everything that a user can name is in the documents: check_documented.sh PROJECT_FOLDER
set -euo pipefail
cd "$1"

missing=0
# Each name that the pattern finds in the sources must stand in the text as a word of its own.
expect_in() {
    local text=$1 pattern=$2 names name
    shift 2
    names=$(grep --no-filename --only-matching --perl-regexp -- "$pattern" "$@" | sort --unique)
    for name in $names; do
        grep --quiet --word-regexp --fixed-strings -- "$name" "$text" && continue
        echo "$text says nothing about $name" >&2
        missing=1
    done
}

expect_in docs/guide.md '^TAV_API .*?\K(TAV|TAVNet)_\w+(?=\()' include/tav.h
# Profile fields are rows of tables: {"field", handler}.
expect_in docs/simulator.md '^ *\{+"\K\w+(?=",( \w+\(&| \[|$))' simulator/profile.cpp
expect_in docs/simulator.md '\{"\K\w+(?=", \w+\},)' simulator/commands.cpp
expect_in docs/simulator.md '"\K(TAVSIM|TAV_TRACE)[A-Z_]*(?=")' simulator/*.cpp tools/*.cpp
expect_in docs/simulator.md '"\K--[a-z-]+(?=")' tools/*.cpp
exit $missing
