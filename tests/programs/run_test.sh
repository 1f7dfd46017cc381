#!/usr/bin/env bash
# `tavsim run`: what it starts, what it refuses, and its messages.
source "$(dirname "$0")/check.sh"
unused='tavsim: *: did not use the device: nothing reached it *'
print=(sh -c 'printf "%s\n" "$@"' sh)

# refuses ERROR OPTIONS…: tavsim starts no program with these options.
refuses() { complains "$@" "${print[@]}" started; }

# A profile with an error: one line names the file and the field.
while IFS='|' read -r complaint json; do
    printf '%b' "$json" >"$work/profile.json"
    refuses "$work/profile.json: $complaint" run --device "$work/profile.json"
done <<'EOF'
not JSON: *|{"machine":
machien: unknown field; did you mean "machine"[?]|{"machien": "cinnabar"}
machine: stands there twice|\xEF\xBB\xBF{"machine": "cinnabar", "machine": "fern"}
compass.interval: must be *|{"compass": {"interval": "soon"}}
compass.readings: must be a list|{"compass": {"readings": 1}}
compass.readings\[0\]: must be a list of 3 values|{"compass": {"readings": [[1, 2, 3, 4]]}}
plugin: must be true or false|{"plugin": 1}
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

# A run ends with an error when its journal or trace cannot be written.
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
run env TAV_TRACE=tav_f "$tavsim" "${uses[@]}"
expect 0 '**' $'tav_f **\ntav_f TAV_JSQuit --'

# A program that cannot be started: the message names it and the reason.
printf 'no program' >"$work/text"
says 127 '' 'tavsim: no-such-program: No such file or directory' run no-such-program
says 127 '' "tavsim: $work/text: Permission denied" run "$work/text"
chmod +x "$work/text"
says 127 '' "tavsim: $work/text: Exec format error" run "$work/text"

# A program into which no device can be preloaded: the message says why. For a script its
# interpreter counts.
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
# Another group alone gives no rights.
others=$(command -v env)
if [ "$(id -u)" -eq 0 ]; then
    others=$work/env
    cp "$(command -v env)" "$others"
    chgrp 1 "$others"
fi
says 0 '**' '' run "$others" "$programs/service_reply"
for change in '4 \x03' '5 \x03' '18 \xff'; do # word size, order of bytes, processor
    cp "$programs/waits" "$work/other"
    # shellcheck disable=SC2059 # the byte is an escape sequence
    printf "${change#* }" | dd of="$work/other" bs=1 seek="${change% *}" conv=notrunc status=none
    refuses_program "$work/other" 'is built for another processor or word size *; run one *'
done
echo 'int main(void) { return 0; }' | "$CC" -static -o "$work/static" -x c -
complains "$work/static: is linked statically*; link it dynamically*" run "$work/static"

# The exit status is the program's. A signal is named in a message.
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

# When the root folder is gone, tavsim cannot tell whether a program used the device, and is silent.
says 0 '' '' run sh -c 'rm -r "$TAVSIM_ROOT"'

# Everything after the program's name is passed on to the program. A -- may come before it.
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

# The list of devices as JSON.
says 0 '[[]{"name":"cinnabar","file":"*cinnabar.json","title":"Cinnabar: *"},*,{"name":"unknown",*}]' \
    '' devices --json

# --real runs on this machine: options for a device are refused, and the program runs as it does
# without tavsim.
for option in '--device quern' '--timeout 5' --virtual-time; do
    # shellcheck disable=SC2086
    refuses 'run: --real stands alone: *' run --real $option
done
if [ "$TAV_LINUX" = ON ]; then
    real=(env LD_PRELOAD="$sanitizer" "$tavsim" run --real)
    run "${real[@]}" "${print[@]}" --device nothing
    expect 0 $'--device\nnothing' ''
    says 127 '' 'tavsim: no-such-program: No such file or directory' run --real no-such-program
    # A trace that cannot be written does not end it.
    for where in TAV_TRACE_FILE={"$work/missing/trace",/dev/full}; do
        run env TAV_TRACE=tav_x,tav_f "$where" "$tavsim" run --real "$programs/service_reply_linux"
        expect 2 unknown 'tav: TAV_TRACE: "tav_x" is none of *'$'\n'"tav: *cannot write *"$'\nno call: *'
    done
    run "${real[@]}" cat /proc/nduid
    expect 1 '' '**'
fi

# Every device that comes with tavsim is listed.
run "$tavsim" devices
diff <(cut -d ' ' -f 1 <<<"$out" | sort) \
    <(cd "$TAV_SOURCE/simulator/devices" && printf '%s\n' *.json | sed 's/\.json$//' | sort) ||
    fail "tavsim devices: $out"

# Without a display, SDL must not draw into the terminal unless the user has chosen a driver.
told=$'tavsim: there is no display: *\n'
for chosen in UNRELATED= DISPLAY=:7 WAYLAND_DISPLAY=a SDL_VIDEODRIVER=other; do
    run env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER "$chosen" \
        "$tavsim" run sh -c 'echo "driver ${SDL_VIDEODRIVER#other}"'
    [ "$chosen" = UNRELATED= ] || told=
    expect 0 "driver ${told:+dummy}" "$told$unused"
done

# The simulator is preloaded before the libraries of an inherited LD_PRELOAD.
LD_PRELOAD='' says 0 whole "$unused" run "${print[@]}" whole

# A root folder that the user named is kept, without the run's claims in it.
says 0 $'*\npercent 72' '' run --root "$work/kept" "$programs/service_reply"
[ -f "$work/kept/proc/nduid" ] || fail 'the root folder asked for did not stay'
[ -z "$(find "$work/kept" -name '.[dr]*')" ] || fail 'the run left its claims'
expect_nothing_left 'the runs'
