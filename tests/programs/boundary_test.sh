#!/usr/bin/env bash
# Symbol interposition: the simulated device, or the platform library for Linux, comes before SDL
# and libc, or else it refuses to work and says what to do. And the device's root folder: the device
# does not follow what other users have put into it.
source "$(dirname "$0")/check.sh"
libtav=$TAV_BUILD/$TAV_LIBDIR/libtav.so
# The simulated root user writes role files: on the real machine these would do the most harm.
sed 's/"machine"/"root": true, "machine"/' "$TAV_SOURCE/simulator/devices/cinnabar.json" \
    >"$work/root.json"

# The device's paths, which must not appear on this machine.
on_this_machine() { find /var/kora /var/vire /proc/nduid 2>/dev/null || true; }
there_before=$(on_this_machine)

# Each program must be linked with the library that its name says first.
for order in 'libtavsim ' 'libSDL _sdl_first' 'libc.so _c_first'; do
    program=$programs/service_reply${order#* }
    grep -m 1 -E '\[lib(tavsim|SDL|c\.so)' <<<"$(readelf -d "$program")" |
        grep -qF "[${order% *}" || fail "$program is not linked in its order"
done

export TAVSIM_DEVICE=$work/root.json
# To LeakSanitizer, libraries that are loaded at run time seem to leak.
export ASAN_OPTIONS=${ASAN_OPTIONS:-}:detect_leaks=0
expect_nothing_here() {
    [ "$(on_this_machine)" = "$there_before" ] || fail "$command: left $(on_this_machine)"
}
works() {
    says 0 "$1" '' run --device "$TAVSIM_DEVICE" "${@:2}"
    expect_nothing_here
}
# refuses LINE COMMAND…: the library's calls fail, and one line on standard error says why.
refuses() {
    local said=$1
    shift
    run env HOME="$XDG_RUNTIME_DIR" "$@"
    [ "$status" -ne 0 ] || fail "$command: works: $out"
    # shellcheck disable=SC2053 # a pattern
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
    # When preloaded, it works as far as it can without a bus.
    says 2 '*' 'no call: Unable to dispatch service call' \
        run --real "$programs/service_reply_linux_sdl_first"
fi
for order in '' _sdl_first _c_first _linux _linux_sdl_first; do
    works $'unknown\npercent 72' "$programs/service_reply$order"
done
works 'Kitchen percent 72' "${python[@]}" "$libtav"
unset TAVSIM_DEVICE

# A test with the device in its own process gets no device in a wrong link order.
for test in "$programs"/alarm_test_*_first; do
    run "$test"
    expect 1 '**' 'this program finds * before the simulated device**'
    says 0 '0 failures' 'tavsim: *: did not use the device: *' run "$test"
done

# Under tavsim run, the link order makes no difference.
"$tavsim" run --virtual-time "$TAV_BUILD/bin/tour" >"$work/tour"
"$tavsim" run --virtual-time "$programs/tour_sdl_first" 2>&1 | diff -u "$work/tour" - ||
    fail 'the order of linking shows under tavsim run'

# Every function that takes a path is redirected into the root folder. The library does not call
# such functions by names that the order of libraries can change.
for program in device_files device_files_large; do run "$programs/$program" && expect 0 '' ''; done
run sh -c 'nm -D --undefined-only "$1" | awk "{print \$NF}" | grep -xE "$2"' - "$libtav" \
    '(f?open|stat|mkdir|system|getuid|sqlite3_open)[_a-z0-9]*(@.*)?'
expect 1 '' ''

# For a process that does not use the library, paths are not redirected.
says 1 '' '**' run cat /proc/nduid

# A root folder that another user can change is refused, and nothing in it is written, followed or
# run: the rescan program in it would run with the rights of this user.
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
# refuses_after REASON PATHS COMMAND…: runs the command with each path in the root folder as its
# last argument. The folder is then refused.
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
# The user's own root folder is accepted, and accepted again after a run with a umask of 0.
fresh_root
for _ in 1 2; do
    (umask 0 && TAVSIM_DEVICE=$work/root.json TAVSIM_ROOT=$root "$programs/service_reply") \
        >/dev/null || fail 'a root folder of the user is refused'
done
[ -f "$work/elsewhere/run" ] || fail "the user's own rescan program did not run"
