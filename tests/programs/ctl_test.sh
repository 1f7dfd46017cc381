#!/usr/bin/env bash
# The command `tavsim ctl` and a running program.
source "$(dirname "$0")/check.sh"

run "$tavsim" ctl state
expect 2 '' 'tavsim: ctl: no device is running; *'
run "$tavsim" ctl --timeout 0 --root "$work/nowhere" state
expect 2 '' "tavsim: ctl: $work/nowhere: no device is running there"
run env TAVSIM_ROOT="$work/nowhere" "$tavsim" ctl --timeout 0 state
expect 2 '' "tavsim: ctl: $work/nowhere: no device is running there"
run "$tavsim" ctl
expect 2 '' 'tavsim: ctl: no command given (*)'
run "$tavsim" ctl $'state\nquit'
expect 2 '' 'tavsim: ctl: a command is one line'
run "$tavsim" ctl list
expect 0 '' ''
run "$tavsim" ctl list --json
expect 0 '[[][]]' ''
run "$tavsim" ctl wait ready within 50ms
expect 2 '' 'tavsim: ctl: wait: no device is running; *'
run "$tavsim" ctl --timeout 0 wait ended
expect 0 '' ''
for words in '' =x 'kind="x' 'ready now' 'ended within' 'kind=bus within 3'; do
    # shellcheck disable=SC2086
    run "$tavsim" ctl wait $words
    [[ $status -eq 2 && $err != *'no device'* ]] || fail "wait $words: status $status, said: $err"
done
run "$tavsim" ctl wait redy
expect 2 '' 'tavsim: ctl: wait: "redy" is not MEMBER=GLOB; did you mean "ready"[?]'

"$tavsim" run --device quern "$programs/wait_for_quit" >"$work/first" &
first=$!
run "$tavsim" ctl wait ready within 60s
expect 0 '' ''
run "$tavsim" ctl state
[ "$status" -eq 0 ] || fail "ctl state: status $status"
for line in 'machine: quern' 'plugin: off' 'keyboard: shown'; do
    grep -qx "$line" <<<"$out" || fail "ctl state printed: $out"
done
run "$tavsim" ctl state --json
expect 0 '{"machine":"quern","plugin":false,*"state":{"keyboard":"shown"}}' ''
run "$tavsim" ctl list --json
expect 0 '[[]{"root":"*","device":"quern","program":"*wait_for_quit","process":[1-9]*}]' ''
run "$tavsim" ctl journal
grep -q 'wait_for_quit' <<<"$out" || fail "ctl journal: $out"
run "$tavsim" ctl dance
expect 1 '' 'tavsim: no command "dance"; *'

# An application that is busy does not answer, and is told apart from one that is gone.
pkill -STOP -P "$first"
run "$tavsim" ctl --timeout 0.1 state
expect 2 '' 'tavsim: ctl: the application has not handled *'
run "$tavsim" ctl --timeout 0.1 wait ready
expect 1 '' "tavsim: ctl: wait: the application has not handled SDL's events within 100 ms"
run "$tavsim" ctl wait ended within 0.1s
expect 1 '' 'tavsim: ctl: wait: the program has not ended within 100 ms'
run "$tavsim" ctl list
expect 0 "$TMPDIR/*  quern: $programs/wait_for_quit" ''
# So are others that wait for it and say nothing, however many.
root=$("$tavsim" ctl list | cut -d ' ' -f 1)
coproc crowd { cd "$root" && exec python3 -c '
import socket, sys
crowd = []
try:
    while True:
        crowd.append(socket.socket(socket.AF_UNIX))
        crowd[-1].setblocking(False)
        crowd[-1].connect("control")
except BlockingIOError:
    print(len(crowd), flush=True)
    sys.stdin.read()'; }
read -r _ <&"${crowd[0]}"
run "$tavsim" ctl --timeout 0.1 state
expect 2 '' "tavsim: ctl: $root: too many others are waiting for the application"
"$tavsim" ctl --timeout 60 state >"$work/entry" &
awaiting=$!
run "$tavsim" ctl wait ended within 0.1s
expect 1 '' 'tavsim: ctl: wait: the program has not ended within 100 ms'
pkill -CONT -P "$first"
wait "$awaiting" || fail 'a crowd kept a command from its answer'
exec {crowd[1]}>&-

# Entries that are there already, that come, and that never do.
run "$tavsim" ctl wait what=keyboard 'outcome="sh?w*"'
expect 0 '{*"what":"keyboard","outcome":"shown"}' ''
"$tavsim" ctl --timeout 60 wait 'what="compass reading"' intValue=7 >"$work/entry" &
awaiting=$!
run "$tavsim" ctl wait kind=nothing within 100ms
expect 1 '' 'tavsim: ctl: wait: no such entry within 100 ms'
"$tavsim" ctl compass 7 90 0.5
wait "$awaiting" || fail 'an entry that came was not seen'
grep -q '"intValue":7' "$work/entry" || fail "the entry that came: $(<"$work/entry")"

# With two devices the user is shown how to choose, and chooses.
"$tavsim" run --root "$work/second root" "$programs/wait_for_quit" again >"$work/second" &
second=$!
"$tavsim" ctl --root "$work/second root" wait ready within 60s
run "$tavsim" ctl state
expect 2 '' "tavsim: ctl: several devices are running, choose one with
  --root *: $programs/wait_for_quit*
  --root *: $programs/wait_for_quit*"
run "$tavsim" ctl list
grep -qx "$work/second root  cinnabar: $programs/wait_for_quit again" <<<"$out" || fail "list: $out"

# A follower ends with its device, and says so when the device could not say that it ends.
follow() {
    rm -f "$work/lines"
    mkfifo "$work/lines"
    "$tavsim" ctl --root "$1" journal --follow >"$work/lines" 2>"$work/cut" &
    follower=$!
    exec 3<"$work/lines"
    read -r _ <&3 # it follows
}
follow "$work/second root"
"$tavsim" ctl --root "$work/second root" wait kind=nothing 2>"$work/told" &
awaiting=$!
is_connected() { ls -l "/proc/$awaiting/fd" | grep -q socket:; }
wait_until is_connected
run env TAVSIM_ROOT="$work/second root" "$tavsim" ctl quit
expect 0 '' ''
run "$tavsim" ctl --root "$work/second root" wait ended within 60s
expect 0 '' ''
[ ! -e "$work/second root/.run" ] || fail 'wait: the run had not ended'
! wait "$awaiting" || fail 'an entry that cannot come any more was seen'
grep -q 'the application ended before' "$work/told" || fail "wait: $(<"$work/told")"
wait "$second" || fail 'a program did not end well'
wait "$follower" || fail "following a program that ends: status $?, $(<"$work/cut")"
run "$tavsim" ctl list
first_root=${out%%  *}
follow "$first_root"
pkill -KILL -P "$first"
status=0
wait "$follower" || status=$?
[[ $status -eq 2 && $(<"$work/cut") == 'tavsim: ctl: the device is gone'* ]] ||
    fail "following a program that is killed: status $status, $(<"$work/cut")"
wait "$first" && fail 'a killed program ended well'
exec 3<&-
[ "$(<"$work/second")" = quit ] || fail 'a program did not receive the quit event'
rm -r "$work/second root"
expect_nothing_left 'two devices'

# Whatever answers in place of a device.
answers=('' ok $'ok\nmore' 'error' 'o' 'o\5\0\0\0\0\0\0\0ab' 'z\0\0\0\0\0\0\0\0'
    'o\377\377\377\377\377\377\377\377' 'd\377\377\377\377\0\0\0\0')
mkdir "$work/false"
python3 - "$work/false" "${answers[@]}" <<'END' &
import os, socket, sys
listener = socket.socket(socket.AF_UNIX)
os.chdir(sys.argv[1])
listener.bind("new")
listener.listen()
os.rename("new", "control")
for answer in sys.argv[2:]:
    client = listener.accept()[0]
    client.recv(1000)
    client.send(answer.encode().decode("unicode_escape").encode("latin-1"))
    client.close()
END
wait_until [ -S "$work/false/control" ]
for answer in "${answers[@]}"; do
    run "$tavsim" ctl --root "$work/false" state
    expect 2 '' 'tavsim: ctl: *'
done
