#!/usr/bin/env bash
# The ends of runs: by programs, signals and time-outs. No run leaves a folder or a process behind.
source "$(dirname "$0")/check.sh"
waits=$programs/wait_for_quit
stubborn=(sh -c 'trap "" TERM; echo ready; exec sleep 600')

# Starts a run in the background and waits until its program is on the device.
start() {
    "$tavsim" run "$@" >"$work/said" 2>"$work/told" &
    runner=$!
    "$tavsim" ctl wait ready within 60s
    read -r program _ <"$(echo "$TMPDIR"/tavsim-*/*/.device)"
    [ "$(stat -c %a "$TMPDIR"/tavsim-*/*/running.json)" = 600 ] || fail 'others can read what runs'
}

# expect_end STATUS OUTPUT ERRORS: waits for that run to end.
expect_end() {
    wait "$runner" 2>/dev/null && status=0 || status=$?
    command='the run' out=$(<"$work/said") err=$(<"$work/told")
    expect "$@"
}

is_gone() { [[ $(ps -o stat= -p "$1") != [^Z]* ]]; }

says 0 $'*\npercent 72' '' run "$programs/service_reply"
expect_nothing_left 'a program with a device'

start "$waits"
kill -KILL "$program"
expect_end 137 '' "tavsim: $waits: ended by SIGKILL *"
expect_nothing_left 'a killed program'

# `tavsim run` passes SIGTERM on to its program, where SDL turns it into a quit event. When a script
# has started the program on the device, that gets it too.
script "$work/script" "$waits
exit 3"
for row in "0 $waits" "143 $work/script"; do
    start "${row#* }"
    kill -TERM "$runner"
    expect_end "${row%% *}" '*' ''
    is_gone "$program" || fail "$row: still runs after SIGTERM"
    expect_nothing_left 'a run that was asked to end'
done

# No request is lost while the run or its program starts.
for ((n = 0; n < 20; ++n)); do
    "$tavsim" run "$waits" >/dev/null 2>&1 &
    runner=$!
    kill -TERM "$runner"
    wait "$runner" && status=0 || status=$?
    [[ $status -eq 0 || $status -eq 143 ]] || fail "a run asked to end at once: status $status"
done
expect_nothing_left 'runs that were asked to end at once'

# A second SIGTERM kills a program that ignores the first.
"$tavsim" run "${stubborn[@]}" >"$work/said" 2>"$work/told" &
runner=$!
wait_until grep -q ready "$work/said"
wait_until ends_when_asked "$runner"
expect_end 137 ready $'tavsim: sh: was asked *second time*\n*did not use*'

# The time-out asks the program to quit before it kills it.
says 124 '*' "tavsim: $waits: ended after 2 seconds*" run --timeout 2 "$waits"
deaf() { (trap '' TERM && exec "$@"); }
run deaf "$tavsim" run --timeout 1 "${stubborn[@]}"
expect 124 ready $'tavsim: *: ended after 1 seconds*\n*did not use*'
says 5 '' '*did not use*' run --timeout 600 sh -c 'exit 5'
expect_nothing_left 'runs with a time-out'

# No process outlives a run that is killed or asked to end: neither a second device, nor a process
# in a session of its own, which would hold the output open.
script "$work/many" "setsid sleep 600 & $waits & exec $waits"
mkfifo "$work/pipe"
many_run() {
    local devices=("$TMPDIR"/tavsim-*/*)
    [ "${#devices[@]}" -eq 2 ] && for root in "${devices[@]}"; do
        "$tavsim" ctl --root "$root" wait ready
    done
}
for end in 'KILL 0' 'TERM 2' 'HUP 2'; do
    timeout 60 cat "$work/pipe" >"$work/said" &
    reader=$!
    "$tavsim" run "$work/many" >"$work/pipe" 2>&1 &
    runner=$!
    wait_until many_run
    kill -"${end% *}" "$runner"
    wait "$reader" || fail "$end: something still holds the output"
    [ "$(grep -c quit "$work/said")" -eq "${end#* }" ] || fail "$end: $(<"$work/said")"
    wait_until nothing_is_left
done

# Nor does its device, however long the kernel takes to free the program's memory.
start "$waits" big
kill -KILL "$runner"
wait_until nothing_is_left

# A child process that exits does not end the device.
start "$waits" fork
says 0 '' '' ctl quit
expect_end 0 quit ''
expect_nothing_left 'a program that forks'

# A program closes all descriptors and reuses their numbers for its own file. Journal, trace and
# recording stay complete, and nothing is written into that file, not even an error message.
export TAV_TRACE=tav_f TAV_TRACE_FILE=$work/trace
closes=(--journal "$work/journal" "$waits" close "$work/own")
"$tavsim" run --record "$work/recording" "${closes[@]}" >"$work/said" 2>"$work/told" &
runner=$!
wait_until "$tavsim" ctl quit
expect_end 0 quit ''
says 0 quit '' run --scenario "$work/recording" "${closes[@]}"
says 2 '' '' run --journal /dev/fd/9 "${closes[@]:2}" 9>"$work/lost"
unset TAV_TRACE TAV_TRACE_FILE
grep -q '"visible":0' "$work/journal" || fail "the journal: $(<"$work/journal")"
[ "$(grep -c TAV_Quit "$work/trace")" -eq 2 ] || fail "the trace: $(<"$work/trace")"
[ ! -s "$work/own" ] || fail "the program's file: $(<"$work/own")"

# Two programs in one run that overlap have a device and a journal each. One after the other, they
# are on the same device.
script "$work/both" "$programs/service_reply
$waits &
$tavsim ctl wait ready within 60s
$programs/service_reply
$tavsim ctl --root \"\$TAVSIM_ROOT\" quit
wait"
says 0 $'*\npercent 72\n*\npercent 72\nquit' '' run --journal "$work/journal" "$work/both"
registrations() { cat "$@" | grep -c NApp_registerTAV; }
[ "$(registrations "$work/journal")" -eq 2 ] || fail "the journal: $(<"$work/journal")"
[ "$(registrations "$work/journal".*)" -eq 1 ] || fail "the journals: $(ls "$work")"
expect_nothing_left 'two programs'

# A run removes the folders of programs that were killed, but follows no link in them. It keeps the
# folders of living programs.
mkdir "$work/precious"
touch "$work/precious/file"
TAVSIM_CONTROL=1 "$waits" >/dev/null &
killed=$!
"$tavsim" ctl wait ready within 60s
stale=$(echo "$TMPDIR"/tavsim-*/*)
ln -s "$work/precious" "$stale/data/link"
kill -KILL "$killed"
wait "$killed" 2>/dev/null || true
start "$waits"
[ ! -e "$stale" ] || fail 'the folder of a killed program is still there'
[ -f "$work/precious/file" ] || fail 'a link was followed'
says 0 $'*\npercent 72' '' run "$programs/service_reply"
says 0 '' '' ctl quit
expect_end 0 quit ''
expect_nothing_left 'tidying up'
TAVSIM_CONTROL=1 "$waits" thread >/dev/null &
threads=$!
wait_until is_gone "$threads" # its first thread, a zombie now
live=$(echo "$TMPDIR"/tavsim-*/*)
run "$tavsim" run "$programs/service_reply"
[ -e "$live" ] || fail 'the folder of a program whose first thread has ended is gone'
kill -KILL "$threads"
wait "$threads" 2>/dev/null || true
