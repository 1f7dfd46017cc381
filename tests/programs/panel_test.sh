#!/usr/bin/env bash
# The panel's server, from a page's side: what it refuses, what it does for a page, and that a run
# and its panel end together. Its page in a browser is tested by scripts/test-panel.
source "$(dirname "$0")/check.sh"
program=$programs/wait_for_quit

page() { timeout 300 python3 "$TAV_SOURCE/tests/programs/panel_page.py" "$@"; }
is_linked() { grep -om1 'http://[^ ]*' "$1" >"$work/link"; }
port() { cut -d: -f3 <<<"${link%/*/}"; }
is_closed() { ! true <"/dev/tcp/127.0.0.1/$(port)"; }

# Starts a run with a panel in the background and waits until it says where that is.
start() {
    rm -f "$work/told" "$work/page"
    "$tavsim" run --panel "$program" >"$work/said" 2>"$work/told" &
    runner=$!
    wait_until is_linked "$work/told"
    link=$(<"$work/link")
    "$tavsim" ctl wait ready within 60s
}

expect_end() {
    wait "$runner" 2>/dev/null && status=0 || status=$?
    command='the run' out=$(<"$work/said") err=$(<"$work/told")
    expect "$@"
}

complains 'run: --tiles and --port are options of --panel' run --port 8400 "$program"
run timeout 60 "$TAV_BUILD/bin/tavsim-panel" --port 65536
expect 2 '' '--port: **'
complains 'panel: --tiles: an address *' panel --tiles 'https://x;script-src/{z}/{x}/{y}'
start
says 2 '' 'tavsim: panel: port *' run --panel --port "$(port)" "$program"
run page attack "$link"
expect 0 '' ''
run page steer "$link"
expect 0 $'usage: battery PERCENT
the panel follows the device by itself


a recorded track is *
track: ROOT/x.nmea:*
0 quit
3 ROOT/panel.scenario:1: expect within 1s kind=device what=vibrator: **
2 ROOT/panel.scenario:1: *
the panel reads and writes files only in the device\'s folder ROOT, and not /x.png
the panel reads and writes files only in the device\'s folder ROOT, and not ../x.gpx
the panel reads and writes files only in the device\'s folder ROOT, and not ../x.png
the panel plays no scenario with an include or a table
at *ms: location lost
at *ms: track ROOT/a_walk.gpx 2
at *ms: track ROOT/a_walk-2.gpx 2' ''
says 0 '' '' ctl quit
expect_end 0 quit 'tavsim: the device is at http://127.0.0.1:*'
expect_nothing_left 'a run with a panel'

# Whoever ends, the run and its panel end together, and the page says how.
ends() {
    start
    page end "$link" >"$work/page" &
    local viewer=$!
    wait_until grep -q shown "$work/page"
    "${@:3}"
    expect_end "$2" '**' '**'
    wait "$viewer"
    [ "$(sed 1d "$work/page")" = "$1" ] || fail "${*:3}: the page says: $(<"$work/page")"
    wait_until is_closed
    wait_until nothing_is_left  # a killed tavsim is tidied up after by another process
}
# By its command line, because an emulated process has the name of its emulator.
kill_child() { kill "-$1" "$(pgrep -P "$runner" -f "^(\S*-binfmt-P )?\S*/$2( |$)")"; }
ends 'The program has ended with status 0.' 0 "$tavsim" ctl quit
program=$programs/plain
start
run page frames "$link"
picture='480 800 png 0 0 480 800 0'
expect 0 "$picture"$'\n'"$picture"$'\n'"$picture"$'\n'"$picture" ''
kill "$runner"
expect_end 0 '' 'tavsim: the device is at *'
ends 'The program has ended with status 0.' 0 "$tavsim" ctl quit
program=$programs/wait_for_quit
ends 'The program was ended by SIGKILL (Killed).' 137 kill_child KILL wait_for_quit
ends 'The panel was ended.' 0 kill_child TERM tavsim-panel
ends 'closed' 0 kill_child KILL tavsim-panel
ends 'tavsim was killed, and its program with it.' 137 eval 'kill -KILL "$runner"'

# The panel of all devices.
rm -f "$work/told" "$work/page"
"$tavsim" panel >"$work/told" &
panel=$!
wait_until is_linked "$work/told"
link=$(<"$work/link")
"$tavsim" run "$program" >"$work/said" &
page end "$link" >"$work/page" &
viewer=$!
wait_until grep -q shown "$work/page"
says 0 '' '' ctl quit
wait "$viewer"
grep -qx 'The device has ended.' "$work/page" || fail "the page says: $(<"$work/page")"
kill -INT "$panel"
wait "$panel" || fail "the panel ended with status $?"
