#!/usr/bin/env bash
# Minimising a window on this machine, with SDL 1.2 itself or on SDL 2: refused without a display.
source "$(dirname "$0")/check.sh"

run "$TAV_BUILD/bin/tav_linux_driver" minimize
expect 0 'minimize 4 Failed IPC communication for minimize' ''
start_display
SDL_VIDEODRIVER=x11 run "$TAV_BUILD/bin/tav_linux_driver" minimize
expect 0 'minimize 0' ''
