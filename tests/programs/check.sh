#!/usr/bin/env bash
# Helpers of the whole-program tests, each of which sources this file. ctest sets TAV_BUILD and
# TAV_SOURCE, the build and the source folder, and CC, CXX and TAV_FLAGS, the compilers and the
# flags that they need.
set -euo pipefail

tavsim=$TAV_BUILD/bin/tavsim
programs=$TAV_BUILD/tests/programs
# In a program without AddressSanitizer, its library must be preloaded first, followed by C++'s.
sanitizer=
[[ ${TAV_FLAGS:-} != *address* ]] ||
    sanitizer="$("$CC" -print-file-name=libasan.so):$("$CC" -print-file-name=libstdc++.so)"
work=$(mktemp -d)
# In a temporary folder of the test's own, leftovers show, and tests that run at the same time do
# not see each other's devices.
export TMPDIR=$work/tmp
mkdir "$TMPDIR"
export SDL_VIDEODRIVER=dummy XDG_CACHE_HOME=$work/cache
# Programs that run without a simulated device reach neither this user's buses nor files.
export XDG_RUNTIME_DIR=$work/runtime
export DBUS_SESSION_BUS_ADDRESS=unix:path=$work/none DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/none

finish() {
    local running
    running=$(jobs -p)
    # Not a plain wait: processes of a substitution may be waiting for this shell.
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
    err=$(sed '/^qemu: uncaught target signal/d' "$work/err") # an emulator tells this itself
}

# run_with_descriptors COUNT COMMAND…: with at most that many descriptors, none but the
# first three open yet. They are too few for a sanitizer.
run_with_descriptors() {
    run bash -c 'for each in /proc/self/fd/*; do
            each=${each##*/}
            [ "$each" -le 2 ] || exec {each}>&-
        done
        ulimit -n "$1" && exec "${@:2}"' - "$@"
}

# has_form TEXT PATTERN: * stands for any text within a line, ** for any text.
has_form() {
    local text=$1 pattern=$2
    # shellcheck disable=SC2053 # a pattern
    [[ $text == $pattern && ($pattern == *'**'* || ${text//[^$'\n']/} == "${pattern//[^$'\n']/}") ]]
}

# expect STATUS OUTPUT ERRORS: the last command's exit status, and patterns for its two outputs.
expect() {
    [ "$status" -eq "$1" ] || fail "$command: status $status in place of $1: $out $err"
    has_form "$out" "$2" || fail "$command: printed: $out"$'\n'"expected: $2"
    has_form "$err" "$3" || fail "$command: complained: $err"$'\n'"expected: $3"
}

# says STATUS OUTPUT ERRORS ARGUMENTS…: runs tavsim with these arguments, and expects that.
says() {
    run "$tavsim" "${@:4}"
    expect "${@:1:3}"
}

# complains ERROR ARGUMENTS…: tavsim refuses these arguments with that message, and starts nothing.
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

# Asks a process to end; fails while it still exists.
ends_when_asked() {
    kill -TERM "$1" 2>/dev/null
    ! kill -0 "$1" 2>/dev/null
}

# script FILE COMMANDS: makes a shell script.
script() {
    printf '#!/bin/sh\n%s\n' "$2" >"$1"
    chmod +x "$1"
}

# Starts a virtual X display. SDL opens a display twice, so the server must not reset in between.
# Memory that libX11 keeps is no leak of the program's.
start_display() {
    echo 'leak:libX11' >"$work/suppressions"
    export LSAN_OPTIONS=suppressions=$work/suppressions:print_suppressions=0
    Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 800x600x24 3>"$work/display" 2>"$work/Xvfb.log" &
    display=$!
    wait_until test -s "$work/display"
    DISPLAY=:$(<"$work/display")
    export DISPLAY
}

nothing_is_left() { [ -z "$(find "$TMPDIR" -mindepth 1)" ]; }

expect_nothing_left() {
    local left
    left=$(find "$TMPDIR" -mindepth 1)
    [ -z "$left" ] || fail "$1 left behind: $left"
}
