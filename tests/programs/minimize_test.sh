#!/usr/bin/env bash
# On this machine a window is minimised with SDL 1.2 as with SDL 1.2 on SDL 2, and refused where there
# is none to see.
source "$(dirname "$0")/check.sh"

run "$TAV_BUILD/bin/tav_linux_driver" minimize
expect 0 'minimize 4 Failed IPC communication for minimize' ''
start_display
SDL_VIDEODRIVER=x11 run "$TAV_BUILD/bin/tav_linux_driver" minimize
expect 0 'minimize 0' ''
