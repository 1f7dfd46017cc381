#!/usr/bin/env bash
# The command `tavsim ctl` and a running program.
source "$(dirname "$0")/check.sh"

run "$tavsim" ctl state
expect 2 '' 'tavsim: ctl: no device is running; *'
run "$tavsim" ctl --root "$work/nowhere" state
expect 2 '' "tavsim: ctl: $work/nowhere: no device is running there"

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
expect 1 '' 'tavsim: "dance" is no command; *'
run "$tavsim" ctl $'state\nquit'
expect 2 '' 'tavsim: ctl: a command is one line'

# With two devices the user is shown how to choose, and chooses.
"$tavsim" run --root "$work/second root" "$programs/wait_for_quit" >"$work/second" &
second=$!
wait_until "$tavsim" ctl --root "$work/second root" state
"$tavsim" run --device ember "$programs/wait_for_quit" >"$work/third" &
third=$!

three_run() { [ "$(compgen -G "$TMPDIR/tavsim-*/*/control" | wc -l)" -eq 2 ]; }
wait_until three_run
run "$tavsim" ctl state
expect 2 '' $'tavsim: ctl: several devices are running, choose one with\n  --root *\n  --root *'
choices=$(sed -n 's/^  --root //p' <<<"$err")
for root in $choices; do
    run "$tavsim" ctl --root "$root" quit
    expect 0 '' ''
done
run "$tavsim" ctl --root "$work/second root" quit
expect 0 '' ''
wait "$first" "$second" "$third" || fail 'a program did not end well'
[ "$(cat "$work/first" "$work/second" "$work/third")" = $'quit\nquit\nquit' ] ||
    fail 'a program did not receive the quit event'
expect_nothing_left 'three devices'
