#!/usr/bin/env bash
# Virtual time in programs with and without the library and on several threads. A program that uses
# SDL 2 is left alone.
source "$(dirname "$0")/check.sh"

run "$tavsim" run --virtual-time "$programs/waits"
expect 0 $'1000\n3601000\n3601020' $'tavsim: the program polls without waiting*\ntavsim: *did not use the device*'

loads='import ctypes, sys; sys.exit(ctypes.CDLL(sys.argv[1]).main())'
other=(0 'SDL 2' 'tavsim: *did not use the device*')
for options in '' --virtual-time; do
    # shellcheck disable=SC2086
    says "${other[@]}" run $options "$programs/sdl2"
    # shellcheck disable=SC2086
    says "${other[@]}" run $options /usr/bin/python3 -c "$loads" "$programs/sdl2_module.so"
    # shellcheck disable=SC2086
    says 0 '' '' run $options "$programs/threads"
done
