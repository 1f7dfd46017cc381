#!/usr/bin/env bash
# The simulated device is in front of SDL and libc, or it refuses to work and says what to do: in
# programs that were linked in another order, or that load the library themselves. Under
# `tavsim run` all of them work.
source "$(dirname "$0")/check.sh"
libtav=$TAV_BUILD/$TAV_LIBDIR/libtav.so
# Role files, written by root alone, are what a mistake would do the most harm with.
sed 's/"machine"/"root": true, "machine"/' "$TAV_SOURCE/simulator/devices/cinnabar.json" \
    >"$work/root.json"

# What may leak: nothing of the device may come to be on this machine.
on_this_machine() {
    find /var/kora /var/vire /proc/nduid 2>/dev/null || true
}
there_before=$(on_this_machine)

# Whether of two libraries the first comes before the other, as a program was linked.
is_needed_before() {
    readelf -d "$1" | awk -v first="$2" -v second="$3" '
        /NEEDED/ && index($0, "[" first) {a = NR} /NEEDED/ && index($0, "[" second) {b = NR}
        END {exit !(a && (!b || a < b))}'
}
is_needed_before "$programs/service_reply" libtavsim libSDL || fail 'the simulator is not in front'
is_needed_before "$programs/service_reply_sdl_first" libSDL libtavsim || fail 'SDL is not first'
is_needed_before "$programs/service_reply_libc_first" libc.so libtavsim || fail 'libc is not first'

export TAVSIM_DEVICE=$work/root.json
works() {
    run env ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0" "$tavsim" run --device "$TAVSIM_DEVICE" \
        "${@:2}"
    expect 0 "$1" ''
    [ "$(on_this_machine)" = "$there_before" ] || fail "$command: left $(on_this_machine)"
}
# The library's calls fail, with one line that says why.
refuses() {
    run env ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0" "$@"
    [ "$status" -ne 0 ] || fail "$command: works: $out"
    local said='tavsim: *before the simulated device*refuses*`tavsim run`*`pkg-config --libs tav`*'
    [[ $(grep -c '^tavsim:' <<<"$err") -eq 1 && $err == *$said* ]] || fail "$command said: $err"
    [[ $err == *'no call: '* ]] || fail "$command: $out $err"
    [ "$(on_this_machine)" = "$there_before" ] || fail "$command: left $(on_this_machine)"
    expect_nothing_left "$command"
}
python=(/usr/bin/python3 "$TAV_SOURCE/tests/programs/loads_library.py" "$libtav")
refuses "$programs/service_reply_sdl_first"
refuses "$programs/service_reply_libc_first"
refuses "${python[@]}"
[[ $out == *'name: '*$'\n''id: '* ]] || fail "the database or the id was found: $out"
for order in '' _sdl_first _libc_first; do
    works $'unknown\npercent 72' "$programs/service_reply$order"
done
works 'Kitchen percent 72' "${python[@]}"
unset TAVSIM_DEVICE

# Nor does a difference show otherwise.
for tour in "$TAV_BUILD/bin/tour" "$programs/tour_sdl_first"; do
    run "$tavsim" run --virtual-time "$tour"
    [[ $status -eq 0 && -z $err ]] || fail "$tour: status $status: $err"
    printf '%s\n' "$out" >"$work/$(basename "$tour")"
done
diff -u "$work/tour" "$work/tour_sdl_first" || fail 'the order of linking shows under tavsim run'

# Every way to a device's file leads below the root folder; the library's own ways have names that
# no order of libraries changes.
for program in device_files device_files_large; do
    run "$programs/$program"
    expect 0 '' ''
done
run sh -c 'nm -D --undefined-only "$1" | awk "{print \$NF}" | grep -xE "$2"' - "$libtav" \
    '(f?open|stat|mkdir|system|getuid|sqlite3_open)[_a-z0-9]*(@.*)?'
expect 1 '' ''

# A process that does not use the library is left alone.
run "$tavsim" run cat /proc/nduid
[ "$status" -ne 0 ] || fail 'a program without the library sees the device'

# An application's own names are its own.
run "$programs/own_names"
expect 0 Kitchen ''
