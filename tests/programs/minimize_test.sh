#!/usr/bin/env bash
# On this machine a window is minimised with SDL 1.2 as with SDL 1.2 on SDL 2, and refused where there
# is none to see.
source "$(dirname "$0")/check.sh"
cd "$work"
echo 'leak:libX11' >suppressions
export LSAN_OPTIONS=suppressions=$work/suppressions:print_suppressions=0

run "$TAV_BUILD/bin/tav_linux_driver" minimize
expect 0 'minimize 4 Failed IPC communication for minimize' ''

Xvfb -displayfd 3 -noreset -nolisten tcp 3>display 2>Xvfb.log &
wait_until test -s display
DISPLAY=:$(<display) SDL_VIDEODRIVER=x11 run "$TAV_BUILD/bin/tav_linux_driver" minimize
expect 0 'minimize 0' ''
