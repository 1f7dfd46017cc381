#!/usr/bin/env bash
# A new project by an installed copy, from the folder to the installed program; and what is no
# project, and no application.
source "$(dirname "$0")/check.sh"

cmake --install "$TAV_BUILD" --prefix "$work" >/dev/null
tavsim=$work/bin/tavsim
export LD_LIBRARY_PATH=$work/$TAV_LIBDIR${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
unset CFLAGS LDFLAGS CPPFLAGS
cd "$work"
mkdir -p 'My game' none
touch full
complains 'new: no folder given, such as *' new
complains 'new: *full: is a file; name a new folder' new full --name ok
complains 'new: *bin: is not empty; *' new bin
complains 'new: *nowhere: is no folder; make it first' new nowhere/game
complains 'new: "My game" cannot be a program*--name*' new 'My game'
complains 'new: "test" cannot be a program*' new none --name test
complains 'new: "game" is no D-Bus name; *' new none --name ok --id game
# The name is longer than that of a file may be, which only shows when it is written.
complains 'new: *cannot be written: File name too long' new none --name ok --id "org.$(printf 'x%.0s' {1..245})"
complains 'new: *cannot be written: File name too long' new fresh --id "org.$(printf 'x%.0s' {1..245})"
[[ -z $(ls none) && ! -e fresh ]] || fail 'what was refused has left something'

says 0 'star-map: made; *' '' new star-map
[ -z "$(grep -rE '@[A-Z]+@' star-map)" ] || fail 'a placeholder is left'
{
    cmake -S star-map -B build -G Ninja -DCMAKE_PREFIX_PATH="$work" -DCMAKE_C_COMPILER="$CC" \
        -DCMAKE_C_FLAGS="${TAV_FLAGS:-}" -DCMAKE_INSTALL_BINDIR=games &&
        cmake --build build && ctest --test-dir build --output-on-failure &&
        cmake --install build --prefix "$work"
} >log || fail "$(<log)"
program=$work/games/star-map
says 0 '1 scenario: 1 passed *' '' test "$program"
rm -r share/star-map/tests
complains "test: $program: a program without scenarios: $work/share/star-map/tests: *" test "$program"
echo '{"machine": "none"' >share/star-map/device.json
complains "$work/share/star-map/device.json: not JSON: *" run "$program"

# refuses ERROR INFORMATION: on a simulated device, on this machine and with a page.
refuses() {
    echo "$2" >share/star-map/appinfo.json
    complains "$work/share/star-map/$1" run --device quern "$program"
    if [ "$TAV_LINUX" != OFF ]; then
        : >err  # what the last program has complained of
        "$program" 2>err &
        wait_until grep -q . err
        kill $!
        wait $!
        has_form "$(<err)" "tav: $work/share/star-map/$1; *" || fail "complained: $(<err)"
    fi
    run "$work/bin/tav-page" share/star-map
    expect 2 '' "tav-page: $work/share/star-map/$1"
}
refuses 'appinfo.json: not JSON: *' 'id: Star Map'
refuses 'appinfo.json: must be an object' '[]'
refuses 'appinfo.json: id: must be a D-Bus name, *' '{"id": "Star Map", "program": "star-map"}'
refuses 'appinfo.json: id: must be a string' '{"id": 5, "program": "star-map"}'
expect_nothing_left 'an application'
