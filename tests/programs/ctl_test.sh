#!/usr/bin/env bash
# `tavsim ctl` with running programs, and without.
source "$(dirname "$0")/check.sh"
waits=$programs/wait_for_quit

complains 'ctl: no device is running; *' ctl state
complains "ctl: $work/nowhere: no device is running there" ctl --timeout 0 --root "$work/nowhere" state
TAVSIM_ROOT=$work/nowhere complains "ctl: $work/nowhere: no device is running there" \
    ctl --timeout 0 state
complains 'ctl: no command given (*)' ctl
complains 'ctl: a command is one line' ctl $'state\nquit'
says 0 '' '' ctl list
says 0 '[[][]]' '' ctl list --json
complains 'ctl: wait: no device is running; *' ctl wait ready within 50ms
says 0 '' '' ctl --timeout 0 wait ended
for words in '' =x 'kind="x' 'ready now' 'ended within' 'kind=bus within 3'; do
    # shellcheck disable=SC2086
    says 2 '' '!(**no device**)' ctl wait $words
done
complains 'ctl: wait: "redy" is not MEMBER=GLOB; did you mean "ready"[?]' ctl wait redy

"$tavsim" run --device quern "$waits" >"$work/first" &
first=$!
says 0 '' '' ctl wait ready within 60s
says 0 '{"device":"quern","program":"*wait_for_quit",*"state":{"keyboard":"shown"}}' '' ctl state --json
says 0 '[[]{"root":"*","device":"quern","program":"*wait_for_quit","process":[1-9]*}]' '' ctl list --json
says 1 '' 'tavsim: no command "dance"; *' ctl dance

# A busy application does not answer. The message must tell it from one that has ended.
pkill -STOP -P "$first"
complains 'ctl: the application has not handled *' ctl --timeout 0.1 state
says 1 '' "tavsim: ctl: wait: the application has not handled SDL's events within 100 ms" \
    ctl --timeout 0.1 wait ready
says 1 '' 'tavsim: ctl: wait: the program has not ended within 100 ms' ctl wait ended within 0.1s
says 0 "$TMPDIR/*  quern: $waits" '' ctl list
# Clients that connect and say nothing fill the queue of the socket, but block no later command.
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
complains "ctl: $root: too many others are waiting for the application" ctl --timeout 0.1 state
"$tavsim" ctl --timeout 60 state >"$work/entry" &
awaiting=$!
pkill -CONT -P "$first"
wait "$awaiting" || fail 'a crowd kept a command from its answer'
exec {crowd[1]}>&-

# Waiting for entries that are there already, that come later, and that never come.
says 0 '{*"what":"keyboard","outcome":"shown"}' '' ctl wait what=keyboard 'outcome="sh?w*"'
"$tavsim" ctl --timeout 60 wait 'what="compass reading"' intValue=7 >"$work/entry" &
awaiting=$!
says 1 '' 'tavsim: ctl: wait: no such entry within 1000 ms; the closest one, at * ms, has outcome "shown", not "hidden"' \
    ctl wait what=keyboard outcome=hidden within 1s
says 0 '{*"outcome":"shown"}' '' ctl journal what=keyboard
"$tavsim" ctl compass 7 90 0.5
wait "$awaiting" || fail 'an entry that came was not seen'
grep -q '"intValue":7' "$work/entry" || fail "the entry that came: $(<"$work/entry")"

# With two devices running, the message shows how to choose one.
second_root="$work/second root"
"$tavsim" run --root "$second_root" "$waits" again >"$work/second" &
second=$!
"$tavsim" ctl --root "$second_root" wait ready within 60s
complains "ctl: several devices are running, choose one with
  --root *: $waits*
  --root *: $waits*" ctl state
says 0 "**$second_root  cinnabar: $waits again**" '' ctl list

# `journal --follow` ends with its device, with an error when the device was killed.
follow() {
    rm -f "$work/lines"
    mkfifo "$work/lines"
    "$tavsim" ctl --root "$1" journal --follow >"$work/lines" 2>"$work/cut" &
    follower=$!
    exec 3<"$work/lines"
    read -r _ <&3 # the first line is there, so it is connected
}
follow "$second_root"
"$tavsim" ctl --root "$second_root" wait what=launched 2>"$work/told" &
awaiting=$!
is_connected() { ls -l "/proc/$awaiting/fd" | grep -q socket:; }
wait_until is_connected
TAVSIM_ROOT="$second_root" says 0 '' '' ctl quit
says 0 '' '' ctl --root "$second_root" wait ended within 60s
[ ! -e "$second_root/.run" ] || fail 'wait: the run had not ended'
! wait "$awaiting" || fail 'an entry that cannot come any more was seen'
grep -q 'the application ended before' "$work/told" || fail "wait: $(<"$work/told")"
wait "$second" || fail 'a program did not end well'
wait "$follower" || fail "following a program that ends: status $?, $(<"$work/cut")"
run "$tavsim" ctl list
first_root=${out%%  *}
follow "$first_root"
pkill -KILL -P "$first"
wait "$follower" && status=0 || status=$?
[[ $status -eq 2 && $(<"$work/cut") == 'tavsim: ctl: the device is gone'* ]] ||
    fail "following a program that is killed: status $status, $(<"$work/cut")"
wait "$first" && fail 'a killed program ended well'
exec 3<&-
[ "$(<"$work/second")" = quit ] || fail 'a program did not receive the quit event'
rm -r "$second_root"
expect_nothing_left 'two devices'

# A paused program can be ended, and its watcher sees that.
"$tavsim" run --record "$work/recording" "$waits" slow >"$work/paused" &
paused=$!
says 0 '' '' ctl wait ready within 60s
says 0 '' '' ctl pause
"$tavsim" ctl --timeout 60 watch >"$work/watched" &
watcher=$!
wait_until grep -q '"paused":true' "$work/watched"
kill "$paused"
wait "$paused" || fail "a paused program ended with $?"
wait "$watcher" || fail "watching a program that ends: status $?"
expect_nothing_left 'a paused program'

# Malformed answers from a process that is no device.
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
    complains 'ctl: *' ctl --root "$work/false" state
done
