#!/usr/bin/env bash
# A session with keys and clicks from the X server is recorded and then played in virtual time. Both
# journals must be the same, byte for byte.
source "$(dirname "$0")/check.sh"
cd "$work"
start_display

SDL_VIDEODRIVER=x11 "$tavsim" run --device "$TAV_SOURCE/examples/cache-hunt/device.json" \
    --record session.scenario --journal session.journal --timeout 300 "$TAV_BUILD/bin/cache-hunt" &
session=$!

ctl() { says 0 '*' '' ctl --timeout 60 "$@"; }
sees() { ctl wait "$@" within 60s; }

sees ready
timeout 60 xdotool search --sync --onlyvisible --name 'Cache hunt' windowfocus --sync

xdotool key h
sees what=reply uri=*getItemInfo
# Two commands: the application must have handled its events twice before it takes keys again.
ctl compass follow on
ctl location every 700ms 4m 7
ctl walk 60 52.5140,13.3500 52.5152,13.3500
xdotool click 1
ctl compass hold 90
ctl pause
ctl compass hold 45
ctl step
ctl location lost
ctl step delivery
ctl compass hold off
ctl location found
ctl resume
ctl speed 5
xdotool key h
sees what=reply uri=*purchaseItem
sees what=vibrator outcome=off
xdotool key q
wait "$session" || fail "the session ended with $?"
kill "$display"

[ "$(grep -oE 'touch (down|up)' session.scenario | xargs)" = 'touch down touch up' ] ||
    fail "a touch was recorded as $(grep touch session.scenario)"
run "$tavsim" run --virtual-time --scenario session.scenario --journal replay.journal
expect 0 '* s: found the old oak' ''
diff session.journal replay.journal || fail 'the replay differs from the session'
expect_nothing_left 'the session'
