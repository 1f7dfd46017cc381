#!/usr/bin/env bash
# A program that was linked with SDL in front works under `tavsim run` like any other; by itself it
# can receive nothing, and says so once.
source "$(dirname "$0")/check.sh"

sdl_is_first() {
    readelf -d "$1" | awk '/NEEDED/ && /libSDL-/ {sdl = NR} /NEEDED/ && /libtavsim/ {device = NR}
                           END {exit !(sdl && device && sdl < device)}'
}
sdl_is_first "$programs/tour_sdl_first" || fail 'the tour was not linked with SDL first'
sdl_is_first "$TAV_BUILD/bin/tour" && fail 'the example was linked with SDL first'

for tour in "$TAV_BUILD/bin/tour" "$programs/tour_sdl_first"; do
    run "$tavsim" run --virtual-time "$tour"
    [[ $status -eq 0 && -z $err ]] || fail "$tour: status $status: $err"
    printf '%s\n' "$out" >"$work/$(basename "$tour")"
done
diff -u "$work/tour" "$work/tour_sdl_first" || fail 'the order of linking shows under tavsim run'

run "$programs/service_reply_sdl_first" 500
expect 1 '*' 'tavsim: *linked with SDL in front*receive no *`tavsim run`*`pkg-config --libs tav`*'
expect_nothing_left 'a program without tavsim'
