#!/usr/bin/env bash
# The command `tavsim run`: what it starts, what it refuses, and what it says.
source "$(dirname "$0")/check.sh"
ends=$programs/ends
unused='tavsim: *: did not use the device: nothing reached it *'

# A device that cannot be had: one line that names the file and the field, and nothing is started.
refuses_profile() {
    printf '%s' "$2" >"$work/profile.json"
    run "$tavsim" run --device "$work/profile.json" "$ends" print started
    expect 2 '' "tavsim: $work/profile.json: $1"
}
refuses_profile 'not JSON: *' '{"machine": '
refuses_profile 'machien: unknown field; did you mean "machine"[?]' '{"machien": "cinnabar"}'
refuses_profile 'machine: stands there twice' $'\xEF\xBB\xBF{"machine": "cinnabar", "machine": "fern"}'
refuses_profile 'compass.interval: must be *' '{"compass": {"interval": "soon"}}'
run "$tavsim" run --device "$work/missing.json" "$ends" print started
expect 2 '' "tavsim: $work/missing.json: no such device profile"
run "$tavsim" run --device no-such-device "$ends" print started
expect 2 '' "tavsim: no device \"no-such-device\"; \`tavsim devices\` *"
run "$tavsim" run --device cinabar "$ends" print started
expect 2 '' 'tavsim: no device "cinabar"; did you mean "cinnabar"[?]'
for option in device page scenario; do
    run timeout 60 "$tavsim" run --$option /dev/zero "$ends" print started
    expect 2 '' "*/dev/zero: is no regular file"
done
run "$tavsim" run --timeout 1e9 "$ends" print started
expect 2 '' $'*: must be a number of seconds above 0 and at most 604800\n*'
run "$tavsim" run ''
expect 2 '' 'tavsim: run: no program given'
run "$tavsim" run --page "$work/missing.js" "$ends" print started
expect 2 '' "tavsim: $work/missing.js: no such file"
run "$tavsim" run --journal "$work/missing/journal" "$ends" print started
expect 2 '' "tavsim: $work/missing/journal: the journal cannot be written there"
run "$tavsim" run --journal "$work" "$ends" print started
expect 2 '' "tavsim: $work: the journal cannot be written there"
run "$tavsim" run --root "$work/profile.json/root" "$ends" print started
expect 2 '' "tavsim: $work/profile.json/root: the device's root folder cannot be made"

# Nor does a program run on without what it was to write, or with a trace that nobody writes.
run "$tavsim" run --journal /dev/full "$programs/service_reply"
expect 2 '' 'tavsim: /dev/full: the journal cannot be written: No space left on device'
run env TAV_TRACE=all TAV_TRACE_FILE=/dev/full "$tavsim" run "$programs/service_reply"
expect 2 '' 'tavsim: TAV_TRACE_FILE: cannot write /dev/full: No space left on device'
run env TAV_TRACE=all TAV_TRACE_FILE="$work/missing/trace" "$tavsim" run "$programs/service_reply"
expect 2 '' "tavsim: TAV_TRACE_FILE: cannot write $work/missing/trace: No such file or directory"
run env TAV_TRACE=tav_e,tav_x "$tavsim" run "$programs/service_reply"
expect 2 '' 'tavsim: TAV_TRACE: "tav_x" is none of tav_f, tav_e, tav_1, tav_2, tav_9, all'

# A program that cannot be started: its name and why.
printf 'no program' >"$work/text"
run "$tavsim" run no-such-program
expect 127 '' 'tavsim: no-such-program: No such file or directory'
run "$tavsim" run "$work/text"
expect 127 '' "tavsim: $work/text: Permission denied"
chmod +x "$work/text"
run "$tavsim" run "$work/text"
expect 127 '' "tavsim: $work/text: Exec format error"

# A program that no device can be put in front of: why, and nothing is started. A script is what its
# interpreter is.
refuses() {
    printf '#!%s\n' "$1" >"$work/script"
    chmod +x "$work/script"
    for program in "$1" "$work/script"; do
        run "$tavsim" run "$program" print started
        expect 2 '' "tavsim: $1: $2"
    done
}
if [ "$(id -u)" -eq 0 ]; then
    foreign=$work/foreign
    cp "$ends" "$foreign"
    chown 1 "$foreign"
    chmod u+s "$foreign"
else
    foreign=$(command -v su)
fi
refuses "$foreign" 'runs with rights *; run a copy *'
for change in '4 \x03' '5 \x03' '18 \xff'; do # word size, order of bytes, processor
    cp "$ends" "$work/other"
    # The bytes are an escape sequence.
    # shellcheck disable=SC2059
    printf "${change#* }" | dd of="$work/other" bs=1 seek="${change% *}" conv=notrunc status=none
    refuses "$work/other" 'is built for another processor or word size *; run one *'
done
echo 'int main(void) { return 0; }' | "$CC" -static -o "$work/static" -x c -
run "$tavsim" run "$work/static"
expect 2 '' "tavsim: $work/static: is linked statically*; link it dynamically*"

# The program's own end; what is no ordinary one is named.
for code in 0 1 7 255; do
    run "$tavsim" run "$ends" status "$code"
    expect "$code" '' "$unused"
done
run "$tavsim" run "$ends" signal 15
expect 143 '' "$unused"
for signal in '6 SIGABRT (Aborted)' '9 SIGKILL (Killed)' '11 SIGSEGV (Segmentation fault)'; do
    run "$tavsim" run "$ends" signal "${signal%% *}"
    expect $((128 + ${signal%% *})) '' "tavsim: $ends: ended by ${signal#* }; *--journal*"$'\n'"$unused"
done
run "$tavsim" run --journal "$work/journal" "$ends" signal 11
expect 139 '' "tavsim: $ends: ended by SIGSEGV *; its journal is $work/journal"$'\n'"$unused"

# Without its folder it is not known whether one was on the device.
run "$tavsim" run sh -c 'rm -r "$TAVSIM_ROOT"'
expect 0 '' ''

# Everything from the program's name on is the program's; -- may stand before it.
run "$tavsim" run --device quern "$ends" print --device nothing -h
expect 0 $'--device\nnothing\n-h' "$unused"
run "$tavsim" run --device quern -- "$ends" print --journal
expect 0 --journal "$unused"
run "$tavsim" run "$ends" print a -- b -- c
expect 0 $'a\n--\nb\n--\nc' "$unused"
run "$tavsim" run -- "$ends" print -- b
expect 0 $'--\nb' "$unused"
run "$tavsim" run -- -odd
expect 127 '' 'tavsim: -odd: No such file or directory'
for option in --no-such-option -x --device= --timeout={x,,0,-1,nan,inf,1e300}; do
    run "$tavsim" run "$option" "$ends" print started
    [[ $status -eq 2 && -z $out ]] || fail "run $option: status $status, printed: $out"
    run "$tavsim" run "$option" -- "$ends" print started
    [[ $status -eq 2 && -z $out ]] || fail "run $option --: status $status, printed: $out"
done
run "$tavsim" run --no-such-option -- "$ends" print started
expect 2 '' 'tavsim: run: no option "--no-such-option"'
run "$tavsim" run --devise=quern "$ends" print started
expect 2 '' 'tavsim: run: no option "--devise"; did you mean "--device"[?]'
run "$tavsim" rnu "$ends"
expect 2 '' 'tavsim: no command "rnu"; did you mean "run"[?]'
run "$tavsim" --verison
expect 2 '' 'tavsim: no option "--verison"; did you mean "--version"[?]'
run "$tavsim" run
expect 2 '' 'tavsim: run: no program given'
for words in '' no-such-command 'devices too many' 'devices -- x' -x; do
    # shellcheck disable=SC2086
    run "$tavsim" $words
    [[ $status -eq 2 && -n $err ]] || fail "tavsim $words: status $status, said: $err"
done

# The list for other programs.
run "$tavsim" devices --json
expect 0 '[[]{"name":"cinnabar","file":"*cinnabar.json","title":"Cinnabar: *"},*,{"name":"unknown",*}]' ''

# On this machine there is no device to describe, and the program is what it would be alone.
for option in '--device quern' '--timeout 5' --virtual-time; do
    # shellcheck disable=SC2086
    run "$tavsim" run --real $option "$ends" print started
    expect 2 '' 'tavsim: run: --real stands alone: *'
done
if [ "$TAV_LINUX" = ON ]; then
    run "$tavsim" run --real "$ends" print --device nothing
    expect 0 $'--device\nnothing' ''
    run "$tavsim" run --real no-such-program
    expect 127 '' 'tavsim: no-such-program: No such file or directory'
    # Nor does a trace that cannot be had end it.
    for where in TAV_TRACE_FILE={"$work/missing/trace",/dev/full}; do
        run env TAV_TRACE=tav_x,tav_f "$where" "$tavsim" run --real "$programs/service_reply_linux"
        expect 2 unknown 'tav: TAV_TRACE: "tav_x" is none of *'$'\n'"tav: *cannot write *"$'\nno call: *'
    done
    run "$tavsim" run --real cat /proc/nduid
    [ "$status" -ne 0 ] || fail 'a program without the library sees its files'
fi

# The devices that come with it are the ones that it lists.
run "$tavsim" devices
listed=$(cut -d ' ' -f 1 <<<"$out")
there=$(cd "$TAV_SOURCE/simulator/devices" && printf '%s\n' *.json | sed 's/\.json$//' | LC_ALL=C sort)
[ "$(LC_ALL=C sort <<<"$listed")" = "$there" ] || fail "tavsim devices: $out"

# Without a display nothing is drawn into the terminal, if nothing else was chosen.
told=$'tavsim: there is no display: *\n'
for chosen in UNRELATED= DISPLAY=:7 WAYLAND_DISPLAY=a SDL_VIDEODRIVER=other; do
    run env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER "$chosen" \
        "$tavsim" run sh -c 'echo "driver ${SDL_VIDEODRIVER#other}"'
    [ "$chosen" = UNRELATED= ] || told=
    expect 0 "driver ${told:+dummy}" "$told$unused"
done

# An inherited preload list is kept behind the simulator.
run env LD_PRELOAD= "$tavsim" run "$ends" print whole
expect 0 whole "$unused"

# A root folder that was asked for stays, without a trace of who was on it.
run "$tavsim" run --root "$work/kept" "$programs/service_reply"
expect 0 $'*\npercent 72' ''
[ -f "$work/kept/proc/nduid" ] || fail 'the root folder asked for did not stay'
left=$(find "$work/kept" -type l)
[ -z "$left" ] || fail "the run left its claims: $left"
expect_nothing_left 'the runs'
