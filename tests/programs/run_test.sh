#!/usr/bin/env bash
# The command `tavsim run`: what it starts, what it refuses, and what it says.
source "$(dirname "$0")/check.sh"
unused='tavsim: *: did not use the device: nothing reached it *'
print=(sh -c 'printf "%s\n" "$@"' sh)

# refuses ERROR OPTIONS…: nothing is started.
refuses() { complains "$@" "${print[@]}" started; }

# A device that cannot be had: one line that names the file and the field.
while IFS='|' read -r complaint json; do
    printf '%b' "$json" >"$work/profile.json"
    refuses "$work/profile.json: $complaint" run --device "$work/profile.json"
done <<'EOF'
not JSON: *|{"machine":
machien: unknown field; did you mean "machine"[?]|{"machien": "cinnabar"}
machine: stands there twice|\xEF\xBB\xBF{"machine": "cinnabar", "machine": "fern"}
compass.interval: must be *|{"compass": {"interval": "soon"}}
EOF
refuses "$work/missing.json: no such device profile" run --device "$work/missing.json"
refuses 'no device "no-such-device"; `tavsim devices` *' run --device no-such-device
refuses 'no device "cinabar"; did you mean "cinnabar"[?]' run --device cinabar
for option in device page scenario; do
    run timeout 60 "$tavsim" run --$option /dev/zero "${print[@]}" started
    expect 2 '' "*/dev/zero: is no regular file"
done
complains 'run: no program given' run ''
refuses "$work/missing.js: no such file" run --page "$work/missing.js"
for journal in "$work/missing/journal" "$work"; do
    refuses "$journal: the journal cannot be written there" run --journal "$journal"
done
root=$work/profile.json/root
refuses "$root: the device's root folder cannot be made" run --root "$root"

# Nor does a program run on without what it was to write, or with a trace that nobody writes.
uses=(run "$programs/service_reply")
complains '/dev/full: the journal cannot be written: No space left on device' run \
    --journal /dev/full "${uses[1]}"
export TAV_TRACE=all TAV_TRACE_FILE=/dev/full
complains 'TAV_TRACE_FILE: cannot write /dev/full: No space left on device' "${uses[@]}"
TAV_TRACE_FILE=$work/missing/trace
complains "TAV_TRACE_FILE: cannot write $TAV_TRACE_FILE: No such file or directory" "${uses[@]}"
TAV_TRACE=tav_e,tav_x
complains 'TAV_TRACE: "tav_x" is none of tav_f, tav_e, tav_1, tav_2, tav_9, all' "${uses[@]}"
unset TAV_TRACE TAV_TRACE_FILE

# A program that cannot be started: its name and why.
printf 'no program' >"$work/text"
says 127 '' 'tavsim: no-such-program: No such file or directory' run no-such-program
says 127 '' "tavsim: $work/text: Permission denied" run "$work/text"
chmod +x "$work/text"
says 127 '' "tavsim: $work/text: Exec format error" run "$work/text"

# A program that no device can be put in front of: why, and nothing is started. A script is what its
# interpreter is.
refuses_program() {
    printf '#!%s\n' "$1" >"$work/script"
    chmod +x "$work/script"
    for program in "$1" "$work/script"; do complains "$1: $2" run "$program"; done
}
foreign=$(command -v su)
if [ "$(id -u)" -eq 0 ]; then
    foreign=$work/foreign
    cp "$programs/waits" "$foreign"
    chown 1 "$foreign"
    chmod u+s "$foreign"
fi
refuses_program "$foreign" 'runs with rights *; run a copy *'
for change in '4 \x03' '5 \x03' '18 \xff'; do # word size, order of bytes, processor
    cp "$programs/waits" "$work/other"
    # The bytes are an escape sequence.
    # shellcheck disable=SC2059
    printf "${change#* }" | dd of="$work/other" bs=1 seek="${change% *}" conv=notrunc status=none
    refuses_program "$work/other" 'is built for another processor or word size *; run one *'
done
echo 'int main(void) { return 0; }' | "$CC" -static -o "$work/static" -x c -
complains "$work/static: is linked statically*; link it dynamically*" run "$work/static"

# The program's own end; what is no ordinary one is named.
for code in 0 1 7 255; do
    says "$code" '' "$unused" run sh -c "exit $code"
done
ulimit -c 0
export ASAN_OPTIONS=${ASAN_OPTIONS:-}:handle_segv=0
kill=(sh -c 'kill -"$0" $$')
says 143 '' "$unused" run "${kill[@]}" 15
for signal in '6 SIGABRT (Aborted)' '9 SIGKILL (Killed)' '11 SIGSEGV (Segmentation fault)'; do
    says $((128 + ${signal%% *})) '' "tavsim: sh: ended by ${signal#* }; *--journal*"$'\n'"$unused" \
        run "${kill[@]}" "${signal%% *}"
done
says 137 '' "tavsim: sh: ended by SIGKILL *; its journal is $work/journal"$'\n'"$unused" \
    run --journal "$work/journal" "${kill[@]}" 9

# Without its folder it is not known whether one was on the device.
says 0 '' '' run sh -c 'rm -r "$TAVSIM_ROOT"'

# Everything from the program's name on is the program's; -- may stand before it.
says 0 $'--device\nnothing\n-h' "$unused" run --device quern "${print[@]}" --device nothing -h
says 0 --journal "$unused" run --device quern -- "${print[@]}" --journal
says 0 $'a\n--\nb\n--\nc' "$unused" run "${print[@]}" a -- b -- c
says 0 $'--\nb' "$unused" run -- "${print[@]}" -- b
says 127 '' 'tavsim: -odd: No such file or directory' run -- -odd
for option in --no-such-option -x --device= --timeout={x,,0,-1,nan,inf,1e300}; do
    for end in '' --; do
        # shellcheck disable=SC2086
        says 2 '' '**' run "$option" $end "${print[@]}" started
    done
done
says 2 '' $'*: must be a number of seconds above 0 and at most 604800\n*' run --timeout 1e9 true
refuses 'run: no option "--no-such-option"' run --no-such-option --
refuses 'run: no option "--devise"; did you mean "--device"[?]' run --devise=quern
complains 'no command "rnu"; did you mean "run"[?]' rnu
complains 'no option "--verison"; did you mean "--version"[?]' --verison
complains 'run: no program given' run
for words in '' no-such-command 'devices too many' 'devices -- x' -x; do
    # shellcheck disable=SC2086
    says 2 '**' '?**' $words
done

# The list for other programs.
says 0 '[[]{"name":"cinnabar","file":"*cinnabar.json","title":"Cinnabar: *"},*,{"name":"unknown",*}]' \
    '' devices --json

# On this machine there is no device to describe, and the program is what it would be alone.
for option in '--device quern' '--timeout 5' --virtual-time; do
    # shellcheck disable=SC2086
    refuses 'run: --real stands alone: *' run --real $option
done
if [ "$TAV_LINUX" = ON ]; then
    real=(env LD_PRELOAD="$sanitizer" "$tavsim" run --real)
    run "${real[@]}" "${print[@]}" --device nothing
    expect 0 $'--device\nnothing' ''
    says 127 '' 'tavsim: no-such-program: No such file or directory' run --real no-such-program
    # Nor does a trace that cannot be had end it.
    for where in TAV_TRACE_FILE={"$work/missing/trace",/dev/full}; do
        run env TAV_TRACE=tav_x,tav_f "$where" "$tavsim" run --real "$programs/service_reply_linux"
        expect 2 unknown 'tav: TAV_TRACE: "tav_x" is none of *'$'\n'"tav: *cannot write *"$'\nno call: *'
    done
    run "${real[@]}" cat /proc/nduid
    expect 1 '' '**'
fi

# The devices that come with it are the ones that it lists.
run "$tavsim" devices
diff <(cut -d ' ' -f 1 <<<"$out" | sort) \
    <(cd "$TAV_SOURCE/simulator/devices" && printf '%s\n' *.json | sed 's/\.json$//' | sort) ||
    fail "tavsim devices: $out"

# Without a display nothing is drawn into the terminal, if nothing else was chosen.
told=$'tavsim: there is no display: *\n'
for chosen in UNRELATED= DISPLAY=:7 WAYLAND_DISPLAY=a SDL_VIDEODRIVER=other; do
    run env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER "$chosen" \
        "$tavsim" run sh -c 'echo "driver ${SDL_VIDEODRIVER#other}"'
    [ "$chosen" = UNRELATED= ] || told=
    expect 0 "driver ${told:+dummy}" "$told$unused"
done

# An inherited preload list is kept behind the simulator.
LD_PRELOAD='' says 0 whole "$unused" run "${print[@]}" whole

# A root folder that was asked for stays, without a trace of who was on it.
says 0 $'*\npercent 72' '' run --root "$work/kept" "$programs/service_reply"
[ -f "$work/kept/proc/nduid" ] || fail 'the root folder asked for did not stay'
[ -z "$(find "$work/kept" -type l)" ] || fail 'the run left its claims'
expect_nothing_left 'the runs'
