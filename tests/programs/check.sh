#!/usr/bin/env bash
# Helpers of the whole-program tests, each of which sources this file. ctest sets TAV_BUILD and
# TAV_SOURCE, the two trees' folders; CC, CXX and TAV_FLAGS, the compilers and what they need to be
# given; and PATH and LD_LIBRARY_PATH as the user has them.
set -euo pipefail

tavsim=$TAV_BUILD/bin/tavsim
programs=$TAV_BUILD/tests/programs
# A sanitizer's library in a program without it wants to be in front too, and to find C++'s there.
sanitizer=
[[ ${TAV_FLAGS:-} != *address* ]] ||
    sanitizer="$("$CC" -print-file-name=libasan.so):$("$CC" -print-file-name=libstdc++.so)"
work=$(mktemp -d)
# A temporary folder of its own shows what a run leaves in it, and keeps the devices of tests that
# run at the same time apart.
export TMPDIR=$work/tmp
mkdir "$TMPDIR"
export SDL_VIDEODRIVER=dummy XDG_CACHE_HOME=$work/cache
# Without a simulated device, nothing of this machine's user is reached.
export XDG_RUNTIME_DIR=$work/runtime
export DBUS_SESSION_BUS_ADDRESS=unix:path=$work/none DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/none

finish() {
    local running
    running=$(jobs -p)
    # The list is of process ids. What a substitution runs may wait for this shell.
    # shellcheck disable=SC2086
    [ -z "$running" ] || { kill $running 2>/dev/null || true; wait $running || true; }
    rm -rf "$work"
}
trap finish EXIT

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}

# Runs a command and keeps its exit status and its two outputs.
run() {
    command=$*
    status=0
    "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
    out=$(<"$work/out")
    err=$(<"$work/err")
}

# The same with no more descriptors than that, which a sanitizer has not enough of for itself.
run_with_descriptors() {
    run bash -c 'exec 3>&- 4>&- && ulimit -n "$1" && exec "${@:2}"' - "$@"
}

# Whether a text has the pattern's form, line for line: * stands for any text within a line, ** also
# for lines.
has_form() {
    local text=$1 pattern=$2
    # The pattern is one.
    # shellcheck disable=SC2053
    [[ $text == $pattern && ($pattern == *'**'* || ${text//[^$'\n']/} == "${pattern//[^$'\n']/}") ]]
}

# expect STATUS OUTPUT ERRORS: how the last command ended and what it said, as patterns.
expect() {
    [ "$status" -eq "$1" ] || fail "$command: status $status in place of $1: $out $err"
    has_form "$out" "$2" || fail "$command: printed: $out"$'\n'"expected: $2"
    has_form "$err" "$3" || fail "$command: complained: $err"$'\n'"expected: $3"
}

# says STATUS OUTPUT ERRORS ARGUMENTS…: the same for tavsim with these arguments.
says() {
    run "$tavsim" "${@:4}"
    expect "${@:1:3}"
}

# complains ERROR ARGUMENTS…: tavsim begins nothing with these arguments.
complains() { says 2 '' "tavsim: $1" "${@:2}"; }

# Tries a command until it succeeds.
wait_until() {
    local tries
    for ((tries = 0; tries < 600; ++tries)); do
        ! "$@" >/dev/null 2>&1 || return 0
        sleep 0.1
    done
    fail "$*: did not come true within a minute"
}

# Asks a process to end, and says whether it has.
ends_when_asked() {
    kill -TERM "$1" 2>/dev/null
    ! kill -0 "$1" 2>/dev/null
}

# script FILE COMMANDS: a program that runs them in a shell.
script() {
    printf '#!/bin/sh\n%s\n' "$2" >"$1"
    chmod +x "$1"
}

# A display without a screen. SDL tries it before it opens it for good, and is not to find it reset; what
# its own library keeps is not the program's.
start_display() {
    echo 'leak:libX11' >"$work/suppressions"
    export LSAN_OPTIONS=suppressions=$work/suppressions:print_suppressions=0
    Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 800x600x24 3>"$work/display" 2>"$work/Xvfb.log" &
    display=$!
    wait_until test -s "$work/display"
    DISPLAY=:$(<"$work/display")
    export DISPLAY
}

expect_nothing_left() {
    local left
    left=$(find "$TMPDIR" -mindepth 1)
    [ -z "$left" ] || fail "$1 left behind: $left"
}
