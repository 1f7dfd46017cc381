#!/usr/bin/env bash
# An installed copy: programs are built against it with pkg-config and with CMake. Under tavsim they
# receive a reply on a simulated device. Without it they run on this machine, where there is no bus,
# unless they were linked with the simulated device first.
source "$(dirname "$0")/check.sh"

cmake --install "$TAV_BUILD" --prefix "$work/before" --strip >/dev/null
# The copy must work after it was moved.
prefix=$work/installed
mv "$work/before" "$prefix"
libraries=$prefix/$TAV_LIBDIR
unset CFLAGS LDFLAGS CPPFLAGS
read -ra flags <<<"${TAV_FLAGS:-}"

platform=tavsim
[ "$TAV_LINUX" = OFF ] || platform=tavlinux
for file in bin/tavsim bin/tavsim-panel bin/tav-page include/tav.h include/tavsim.h \
    share/man/man1/tavsim.1 share/man/man1/tav-page.1 share/tavsim/panel/index.html \
    share/tavsim/devices/quern.json share/bash-completion/completions/tavsim \
    lib/python3/dist-packages/tavsim/py.typed "$TAV_LIBDIR/lib$platform.so"; do
    [ -f "$prefix/$file" ] || fail "$file is not installed"
done
[ -n "$(find "$prefix/share/doc" -name LICENSE)" ] || fail 'the licence is not installed'
for name in tav tavsim "${platform/tavsim/tav}"; do
    grep -q "soname: \[lib$name.so.3\]" <<<"$(readelf -d "$libraries/lib$name.so")" ||
        fail "the soname of lib$name.so is wrong"
done

# No installed file holds the path where it was built or first installed. Instrumented builds do.
folders=("$work/before")
[ -n "${TAV_FLAGS:-}" ] || folders+=("$TAV_BUILD" "$TAV_SOURCE")
for folder in "${folders[@]}"; do
    named=$(grep -rlF "$folder" "$prefix" || true)
    [ -z "$named" ] || fail "$named: names $folder"
done
while read -r file; do
    rpaths=$({ readelf -d "$file" 2>/dev/null || true; } | sed -n 's/.*R.*PATH.*\[\(.*\)\]/\1/p')
    for path in ${rpaths//:/ }; do
        [[ $path == \$ORIGIN* ]] || fail "$file looks for libraries in $path"
    done
done < <(find "$prefix" -type f)

# The installed tool works without LD_LIBRARY_PATH.
run env -u LD_LIBRARY_PATH "$prefix/bin/tavsim" devices
[[ $status -eq 0 && $(wc -l <<<"$out") -eq 9 ]] || fail "tavsim devices: $status: $out $err"

replies() {
    run env LD_LIBRARY_PATH="$libraries${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" TAVSIM_DEVICE=quern "$@"
    expect 0 $'lute\npercent *' ''
    expect_nothing_left "$1"
}
works() {
    replies "$prefix/bin/tavsim" run --device quern "$1"
    [ "$platform" = tavlinux ] || return 0
    run env LD_LIBRARY_PATH="$libraries${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$1"
    expect 2 '*' 'no call: Unable to dispatch service call'
}

mkdir "$work/consumer"
cd "$work/consumer"
cp "$TAV_SOURCE/tests/programs/service_reply.c" .
export PKG_CONFIG_PATH=$libraries/pkgconfig
[ "$(pkg-config --modversion tav)" = 3.0.0 ] || fail 'pkg-config does not know the version'
read -ra compiling < <(pkg-config --cflags tav)
read -ra linking < <(pkg-config --libs tav)
"$CC" "${flags[@]}" "${compiling[@]}" -o plain service_reply.c "${linking[@]}"
works ./plain
read -ra simulating < <(pkg-config --libs tavsim)
"$CC" "${flags[@]}" "${compiling[@]}" -o simulated service_reply.c "${simulating[@]}"
replies ./simulated
# tavsim can preload the device into a program with AddressSanitizer, which must come first, and
# from a folder whose path LD_PRELOAD cannot hold.
read -ra sanitizing <<<"${TAV_FLAGS:--fsanitize=address}"
"$CC" "${sanitizing[@]}" "${compiling[@]}" -o sanitized service_reply.c "${linking[@]}" \
    -Wl,-rpath,"$libraries"
odd=$work/'a copy: $ORIGIN'
cp -R "$prefix" "$odd"
for tool in "$prefix/bin/tavsim" "$odd/bin/tavsim"; do
    run env -u LD_LIBRARY_PATH "$tool" run --device quern ./sanitized
    expect 0 $'lute\npercent *' ''
done
run env -u LD_LIBRARY_PATH TMPDIR="$odd" "$odd/bin/tavsim" run ./plain
expect 2 '' 'tavsim: *blank, a colon*set TMPDIR *'
if [ "$platform" = tavlinux ]; then
    run env -u LD_LIBRARY_PATH "$odd/bin/tavsim" run --real ./plain
    expect 2 '' "tavsim: $odd/*/libtavlinux.so.3: cannot be preloaded, *"
    rm "$libraries/libtavlinux.so.3"
    run "$prefix/bin/tavsim" run --real ./plain
    expect 2 '' 'tavsim: */libtavlinux.so.3: is not there; *'
    cp "$odd/$TAV_LIBDIR/libtavlinux.so.3" "$libraries"
fi
rm -rf "$odd"
# Some distributions link with --as-needed, which drops a library that the program does not call. A
# program that calls no function of the platform library needs it to be interposed all the same.
printf '#include "tav.h"\nint main(void) { return TAV_GetKOBVersion() != 300; }\n' >silent.c
"$CC" "${flags[@]}" "${compiling[@]}" -Wl,--as-needed -o silent silent.c "${linking[@]}"
grep -q "NEEDED.*lib$platform" <<<"$(readelf -d silent)" ||
    fail 'the platform was dropped as not needed'
# The link order stays right when a program names SDL itself.
read -ra linking < <(pkg-config --libs sdl tav)
"$CC" "${flags[@]}" "${compiling[@]}" -o both service_reply.c "${linking[@]}"
works ./both

builds_and_passes() {
    cmake -S "$1" -B "$1/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$CC" \
        -DCMAKE_C_FLAGS="${TAV_FLAGS:-}" "${@:2}" >"$work/log" &&
        cmake --build "$1/build" >>"$work/log" &&
        ctest --test-dir "$1/build" --output-on-failure >>"$work/log" || fail "$1: $(<"$work/log")"
}
# The examples are projects with tests: one with the device in the test's process, one with
# scenarios.
for example in station-alarm cache-hunt; do
    cp -R "$TAV_SOURCE/examples/$example" "$work/$example"
    builds_and_passes "$work/$example"
    expect_nothing_left "$example"
done

cp "$TAV_SOURCE/tests/programs/consumer.cmake" CMakeLists.txt
printf 'expect output lute\nexpect output "percent *"\n' >replies.scenario
for linker_flags in '' -Wl,--as-needed; do
    rm -rf build
    builds_and_passes . -DCMAKE_EXE_LINKER_FLAGS="$linker_flags"
    works build/consumer
done
echo 'expect output harp' >>replies.scenario
run ctest --test-dir build --output-on-failure
[[ $status -ne 0 && $out == *'replies.scenario:3: expect output harp'* ]] || fail "ctest: $out $err"

# The links by which programs are linked come with a package that is not needed to run them.
find "$libraries" -name '*.so' -delete
works ./plain
if [ "$platform" = tavlinux ]; then
    run env LD_LIBRARY_PATH="$libraries" "$prefix/bin/tavsim" run --real ./plain
    expect 2 '*' 'no call: Unable to dispatch service call'
    # And programs are built where tavsim is not installed.
    for component in library development; do
        cmake --install "$TAV_BUILD" --prefix "$work/library" --component $component >/dev/null
    done
    prefix=$work/library
    rm -rf build
    builds_and_passes .
fi
