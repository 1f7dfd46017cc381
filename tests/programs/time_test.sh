#!/usr/bin/env bash
# Time as programs see it: virtual time with and without the library, and on several threads; and a
# program of another SDL, which is left alone.
source "$(dirname "$0")/check.sh"

run "$tavsim" run --virtual-time "$programs/waits"
expect 0 $'1000\n3601000\n3601020' $'tavsim: the program polls without waiting*\ntavsim: *did not use the device*'

for options in '' --virtual-time; do
    # shellcheck disable=SC2086
    run "$tavsim" run $options "$programs/sdl2"
    expect 0 'SDL 2' 'tavsim: *did not use the device*'
    # shellcheck disable=SC2086
    run "$tavsim" run $options /usr/bin/python3 -c 'import ctypes, sys
sys.exit(ctypes.CDLL(sys.argv[1]).main())' "$programs/sdl2_module.so"
    expect 0 'SDL 2' 'tavsim: *did not use the device*'
    # shellcheck disable=SC2086
    run "$tavsim" run $options "$programs/threads"
    expect 0 '' ''
done
