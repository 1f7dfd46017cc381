#!/usr/bin/env bash
# The command `tavsim ctl` and a running program.
source "$(dirname "$0")/check.sh"

run "$tavsim" ctl state
expect 2 '' 'tavsim: ctl: no device is running; *'
run "$tavsim" ctl --root "$work/nowhere" state
expect 2 '' "tavsim: ctl: $work/nowhere: no device is running there"
run env TAVSIM_ROOT="$work/nowhere" "$tavsim" ctl state
expect 2 '' "tavsim: ctl: $work/nowhere: no device is running there"
run "$tavsim" ctl
expect 2 '' 'tavsim: ctl: no command given (*)'
run "$tavsim" ctl $'state\nquit'
expect 2 '' 'tavsim: ctl: a command is one line'
run "$tavsim" ctl list
expect 0 '' ''

"$tavsim" run --device quern "$programs/wait_for_quit" >"$work/first" &
first=$!
wait_until "$tavsim" ctl state
run "$tavsim" ctl state
[ "$status" -eq 0 ] || fail "ctl state: status $status"
for line in 'machine: quern' 'plugin: off' 'keyboard: shown'; do
    grep -qx "$line" <<<"$out" || fail "ctl state printed: $out"
done
run "$tavsim" ctl journal
grep -q 'wait_for_quit' <<<"$out" || fail "ctl journal: $out"
run "$tavsim" ctl dance
expect 1 '' 'tavsim: no command "dance"; *'

# An application that is busy does not answer, and is told apart from one that is gone.
pkill -STOP -P "$first"
run "$tavsim" ctl --timeout 0.1 state
expect 2 '' 'tavsim: ctl: the application has not handled *'
run "$tavsim" ctl list
expect 0 "$TMPDIR/*  quern: $programs/wait_for_quit" ''
pkill -CONT -P "$first"

# With two devices the user is shown how to choose, and chooses.
"$tavsim" run --root "$work/second root" "$programs/wait_for_quit" again >"$work/second" &
second=$!
wait_until "$tavsim" ctl --root "$work/second root" state
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
run env TAVSIM_ROOT="$work/second root" "$tavsim" ctl quit
expect 0 '' ''
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
