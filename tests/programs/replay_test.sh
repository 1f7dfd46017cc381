#!/usr/bin/env bash
# A session at a display, with keys from the keyboard, is recorded and then played in virtual time:
# the journals of both are the same, byte for byte.
source "$(dirname "$0")/check.sh"
cd "$work"
# What the display's own library keeps is not the program's.
echo 'leak:libX11' >suppressions
export LSAN_OPTIONS=suppressions=$work/suppressions:print_suppressions=0

# SDL tries the display before it opens it for good; a server that reset in between would refuse it.
Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 800x600x24 3>display 2>Xvfb.log &
display=$!
wait_until test -s display
DISPLAY=:$(<display)
export DISPLAY

SDL_VIDEODRIVER=x11 "$tavsim" run --device "$TAV_SOURCE/examples/cache-hunt/hunt.json" \
    --record session.scenario --journal session.journal --timeout 300 "$TAV_BUILD/bin/cache-hunt" &
session=$!

ctl() {
    run "$tavsim" ctl --timeout 60 "$@"
    [ "$status" -eq 0 ] || fail "$command: $status: $err"
}

sees() {
    ctl wait "$@" within 60s
}

ctl wait ready within 60s
timeout 60 xdotool search --sync --onlyvisible --name 'Cache hunt' windowfocus --sync

xdotool key h
sees what=reply uri=*getItemInfo
# The application takes keys again once it has handled its events twice.
ctl compass follow on
ctl walk 60 52.5140,13.3500 52.5152,13.3500
xdotool click 1
xdotool key h
sees what=reply uri=*purchaseItem
sees what=vibrator outcome=off
xdotool key q
status=0
wait "$session" || status=$?
[ "$status" -eq 0 ] || fail "the session ended with $status"
kill "$display"

[ "$(grep -oE 'touch (down|up)' session.scenario | xargs)" = 'touch down touch up' ] ||
    fail "a touch was recorded as $(grep touch session.scenario)"
run "$tavsim" run --virtual-time --scenario session.scenario --journal replay.journal
expect 0 '* s: found the old oak' ''
diff session.journal replay.journal >difference ||
    fail "the replay differs from the session: $(<difference)"
expect_nothing_left 'the session'
