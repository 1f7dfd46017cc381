#!/usr/bin/env bash
# Screenshots, pictures and recordings of applications that draw with OpenGL.
source "$(dirname "$0")/check.sh"
cd "$work"
start_display
# A software renderer on one thread. Memory that the driver keeps is no leak of the program's.
export SDL_VIDEODRIVER=x11 LIBGL_ALWAYS_SOFTWARE=1 LP_NUM_THREADS=0
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0
needle=$TAV_BUILD/bin/needle

says 0 '1 scenario: 1 passed in *' '' test --program "$needle" "$TAV_SOURCE/examples/needle"

# Reading a frame must neither depend on the application's OpenGL settings nor change them.
echo 'at 100ms: screenshot plain.png' >plain.scenario
echo 'at 100ms: picture plain.png' >odd.scenario
echo 'at 50ms: picture plain.png' >early.scenario
says 0 '' '' run --virtual-time --scenario plain.scenario "$programs/gl_settings"
says 0 '' '' run --virtual-time --scenario odd.scenario "$programs/gl_settings" odd
says 3 '' '*: picture: the application * has shown no frame since*
**' run --virtual-time --scenario early.scenario "$needle"

# A screenshot is requested between two frames. Playing the recording gives the same picture.
"$tavsim" run --record session.scenario "$needle" &
says 0 '' '' ctl --timeout 60 wait ready
says 0 '' '' ctl --timeout 60 screenshot seen.png
says 1 '' 'tavsim: ctl: frame is for programs that show the device' ctl --timeout 60 frame
says 0 '' '' ctl --timeout 60 key tap q
wait $!
mv seen.png live.png
says 0 '' '' run --virtual-time --scenario session.scenario "$needle"
cmp seen.png live.png
kill "$display"
