#!/usr/bin/env bash
# The boundary between an application, the simulated device and the machine: the device, or what is for
# Linux, is in front of SDL and libc, or it refuses to work and says what to do; and the device follows
# nothing that others put into its root folder.
source "$(dirname "$0")/check.sh"
libtav=$TAV_BUILD/$TAV_LIBDIR/libtav.so
# Role files, written by root alone, are what a mistake would do the most harm with.
sed 's/"machine"/"root": true, "machine"/' "$TAV_SOURCE/simulator/devices/cinnabar.json" \
    >"$work/root.json"

# What may leak: nothing of the device may come to be on this machine.
on_this_machine() { find /var/kora /var/vire /proc/nduid 2>/dev/null || true; }
there_before=$(on_this_machine)

# Which of the three a program was linked with first.
for order in 'libtavsim ' 'libSDL _sdl_first' 'libc.so _c_first'; do
    program=$programs/service_reply${order#* }
    grep -m 1 -E '\[lib(tavsim|SDL|c\.so)' <<<"$(readelf -d "$program")" |
        grep -qF "[${order% *}" || fail "$program is not linked in its order"
done

export TAVSIM_DEVICE=$work/root.json
# What is loaded in place of being linked seems to leak to a sanitizer.
export ASAN_OPTIONS=${ASAN_OPTIONS:-}:detect_leaks=0
expect_nothing_here() {
    [ "$(on_this_machine)" = "$there_before" ] || fail "$command: left $(on_this_machine)"
}
works() {
    says 0 "$1" '' run --device "$TAVSIM_DEVICE" "${@:2}"
    expect_nothing_here
}
# refuses LINE COMMAND…: the library's calls fail, with one line that says why.
refuses() {
    local said=$1
    shift
    run env HOME="$XDG_RUNTIME_DIR" "$@"
    [ "$status" -ne 0 ] || fail "$command: works: $out"
    # The pattern is one.
    # shellcheck disable=SC2053
    [[ $(grep '^tav' <<<"$err") == $said ]] || fail "$command said: $err"
    [[ $err == *'no call: '* ]] || fail "$command: $out $err"
    [[ $command != *.py* || $out == $'name:\nid:\ndata:' ]] ||
        fail "$command: something was found: $out"
    [ ! -e "$XDG_RUNTIME_DIR" ] || fail "$command: left $(find "$XDG_RUNTIME_DIR")"
    expect_nothing_here
    expect_nothing_left "$command"
}
python=(/usr/bin/python3 "$TAV_SOURCE/tests/programs/loads_library.py")
simulator=$TAV_BUILD/$TAV_LIBDIR/libtavsim.so
no_device='tavsim: *before the simulated device*refuses*`tavsim run`*`pkg-config --libs tavsim`*'
no_linux='tav: *before libtav*refused*`tavsim run --real`*`pkg-config --libs tav`*'
[ "$TAV_LINUX" = ON ] || no_linux=$no_device
refuses "$no_device" "$programs/service_reply_sdl_first"
refuses "$no_device" "$programs/service_reply_c_first"
refuses "$no_linux" "$programs/service_reply_linux_sdl_first"
refuses "$no_linux" env LD_PRELOAD="$sanitizer" "${python[@]}" "$libtav"
refuses "$no_device" env LD_PRELOAD="$sanitizer" "${python[@]}" "$simulator" "$libtav"
if [ "$TAV_LINUX" = ON ]; then
    # Put in front, it finds that there is no bus.
    says 2 '*' 'no call: Unable to dispatch service call' \
        run --real "$programs/service_reply_linux_sdl_first"
fi
for order in '' _sdl_first _c_first _linux _linux_sdl_first; do
    works $'unknown\npercent 72' "$programs/service_reply$order"
done
works 'Kitchen percent 72' "${python[@]}" "$libtav"
unset TAVSIM_DEVICE

# A test that has the device in its own process gets none where that is not in front.
for test in "$programs"/alarm_test_*_first; do
    run "$test"
    expect 1 '**' 'this program finds * before the simulated device**'
    says 0 '0 failures' 'tavsim: *: did not use the device: *' run "$test"
done

# Nor does a difference show otherwise.
"$tavsim" run --virtual-time "$TAV_BUILD/bin/tour" >"$work/tour"
"$tavsim" run --virtual-time "$programs/tour_sdl_first" 2>&1 | diff -u "$work/tour" - ||
    fail 'the order of linking shows under tavsim run'

# Every way to a device's file leads below the root folder; the library's own ways have names that
# no order of libraries changes.
for program in device_files device_files_large; do run "$programs/$program" && expect 0 '' ''; done
run sh -c 'nm -D --undefined-only "$1" | awk "{print \$NF}" | grep -xE "$2"' - "$libtav" \
    '(f?open|stat|mkdir|system|getuid|sqlite3_open)[_a-z0-9]*(@.*)?'
expect 1 '' ''

# A process that does not use the library is left alone.
says 1 '' '**' run cat /proc/nduid

# A root folder that somebody else can change is refused, whoever names it, and nothing in it is
# written, followed or run. The rescan program would run with the rights of the user.
mkdir "$work/elsewhere"
refuses_root() {
    local expected=$1 folder=$2
    for way in "$tavsim run --root $folder" "env TAVSIM_ROOT=$folder"; do
        read -ra words <<<"$way"
        TAVSIM_DEVICE=$work/root.json run "${words[@]}" "$programs/service_reply"
        expect 2 '' "tavsim: $expected"
        [ -z "$(ls -A "$work/elsewhere")" ] || fail "$way wrote through a link: $expected"
    done
}
fresh_root() {
    root=$work/root
    rm -rf "$root" && mkdir -p "$root/var" "$root/usr/bin" "$root/proc"
    printf '#!/bin/sh\necho >"%s/run"\n' "$work/elsewhere" >"$root/usr/bin/ks-control"
    chmod 755 "$root/usr/bin/ks-control"
}
# refuses_after REASON PATHS COMMAND…: with each of these paths in the root folder as its last word.
refuses_after() {
    for path in $2; do
        fresh_root
        "${@:3}" "$root/$path"
        refuses_root "$(realpath -ms "$root/$path"): $1" "$root"
    done
}
refuses_after 'other users can write to it *' '. var usr/bin usr/bin/ks-control' chmod o+w
refuses_after 'is a symbolic link, *' \
    'var/vire usr/bin/ks-control proc/nduid running.json control verdict recorded' \
    ln -sf "$work/elsewhere"
refuses_after 'is a symbolic link, *' proc/nduid ln -s nduid
refuses_after 'is neither a file nor a folder' 'proc/nduid running.json control' mkfifo
mkdir -m 777 "$work/everybodys"
refuses_root "$work/everybodys: other users can write to it *" "$work/everybodys/root"
[ ! -e "$work/everybodys/root" ] || fail 'a root folder that is refused was made'
refuses_root "/: the device's files would be this machine's" /
if [ "$(id -u)" -eq 0 ]; then
    refuses_after 'belongs to another user, *' '. var usr/bin/ks-control' chown 65534
    fresh_root
    mkdir -m 1777 "$work/temporary"
    ln -s "$root" "$work/temporary/planted"
    chown -h 65534 "$work/temporary/planted"
    refuses_root "$work/temporary/planted: belongs to another user, *" "$work/temporary/planted"
else
    refuses_after 'cannot be read' var chmod 0
    chmod 755 "$root/var"
fi
# One that is the user's own is used, and used again, whatever is made in it by default.
fresh_root
for _ in 1 2; do
    (umask 0 && TAVSIM_DEVICE=$work/root.json TAVSIM_ROOT=$root "$programs/service_reply") \
        >/dev/null || fail 'a root folder of the user is refused'
done
[ -f "$work/elsewhere/run" ] || fail "the user's own rescan program did not run"
