#!/usr/bin/env bash
# The library built without the simulator's sources, against another implementation of the platform,
# and a program that uses both.
source "$(dirname "$0")/check.sh"

mkdir "$work/source"
cd "$TAV_SOURCE"
cp -r CMakeLists.txt LICENSE cmake include platform src "$work/source"
cd "$work"
prefix=$work/installed
{
    cmake -S source -B build -G Ninja -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib \
        -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="${TAV_FLAGS:-}" \
        -DTAV_PLATFORM_LIBRARIES="$TAV_BUILD/$TAV_LIBDIR/libotherplatform.so" &&
        cmake --build build && cmake --install build
} >log 2>&1 || fail "the library alone: $(<log)"
needed=$(readelf -d "$prefix/lib/libtav.so" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p')
grep -qx libotherplatform.so <<<"$needed" || fail "the library needs: $needed"
! grep -q tavsim <<<"$needed" || fail "the library needs: $needed"
[ -z "$(find "$prefix" -name '*tavsim*')" ] || fail 'parts of the simulator were installed'

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
read -ra flags <<<"${TAV_FLAGS:-}"
read -ra linking < <(pkg-config --cflags --libs tav)
"$CC" "${flags[@]}" -o consumer "$TAV_SOURCE/tests/programs/service_reply.c" "${linking[@]}"
run env LD_LIBRARY_PATH="$prefix/lib:$TAV_BUILD/$TAV_LIBDIR${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" \
    ./consumer
expect 0 $'*\npercent *' ''
