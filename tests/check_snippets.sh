#!/usr/bin/env bash
# Checks the C programs of a text: check_snippets.sh TAVSIM FOLDER FILE.md COMPILER [OPTIONS…]
#
# Every block of C must compile, and one with a main must link. When a "console" block that begins
# with "$ tavsim run" comes next, that command is run and must print the rest of the block. A block
# whose kind is followed by a name is a file that the programs use. OPTIONS go to the compiler and
# name libraries too.
set -euo pipefail
tavsim=$1 folder=$2 text=$(realpath "$3")
shift 3
compile=("$@")
export SDL_VIDEODRIVER=dummy

rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
awk '
    /^```/ && target { close(target); target = ""; next }
    /^```c$/ { target = sprintf("%02d.c", ++count); next }
    /^```[a-z]+ [a-z.]+$/ { target = $2; next }
    /^```console$/ { starts = 1; next }
    starts { starts = 0; if (/^\$ tavsim run/ && count) target = sprintf("%02d.console", count) }
    target { print > target }
' "$text"

failures=0
fail() {
    echo "$text: program ${1%.c}: $2" >&2
    failures=$((failures + 1))
}

for source in [0-9]*.c; do
    name=${source%.c}
    if ! grep --quiet '^int main(' "$source"; then
        "${compile[@]}" -c -o "$name.o" "$source" || fail "$source" "does not compile"
    elif ! "${compile[0]}" -o "$name" "$source" "${compile[@]:1}"; then
        fail "$source" "does not compile and link"
    elif [ -f "$name.console" ]; then
        read -ra words <"$name.console"
        # The options are between "$ tavsim run" and the program's name.
        "$tavsim" run "${words[@]:3:${#words[@]}-4}" "./$name" >"$name.printed" 2>&1 ||
            fail "$source" "ended with status $?"
        tail -n +2 "$name.console" | diff --unified - "$name.printed" >&2 ||
            fail "$source" "prints something else"
    fi
done
[ "$failures" -eq 0 ]
