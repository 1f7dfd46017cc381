#!/usr/bin/env bash
# The command `tavsim test`: which scenarios it runs and how, and what it says of them.
source "$(dirname "$0")/check.sh"
cd "$work"

# Everything below a folder, and only that, in the order of the names.
mkdir -p suite/more empty
cat >suite/first.scenario <<END
device quern
program $programs/service_reply
expect output "percent *"
END
cat >'suite/more/a & <b>.scenario' <<END
program $programs/service_reply
include ../shared.steps
END
echo 'expect output dance' >suite/shared.steps
printf 'device quern\nexpect output lute\n' >suite/no-program.scenario
ln -s .. suite/more/round
run "$tavsim" test --jobs 1 --junit report.xml suite suite/first.scenario
expect 2 'FAILED suite/more/a & <b>.scenario (*s)
*
percent *
suite/shared.steps:1: expect output dance: *
NOT RUN suite/no-program.scenario (*s)
tavsim: run: no program given
3 scenarios: 1 passed, 1 failed, 1 not run in * s' ''
cases() {
    python3 - "$@" <<'END'
import sys, xml.etree.ElementTree
suite = xml.etree.ElementTree.parse("report.xml").getroot().find("testsuite")
print(*(suite.get(name) for name in ("tests", "failures", "errors")))
for case in suite:
    bad = [(each.tag, each.get("message")[:36]) for each in case if each.tag != "system-out"]
    print(case.get("classname"), case.get("name"), float(case.get("time")) < 60, bad)
    print(repr(case.find("system-out").text)[-60:])
END
}
run cases
expect 0 "3 1 1
suite first True [[][]]
'lute\\\\npercent *\\\\n'
suite/more a & <b> True [[]('failure', 'suite/shared.steps:1: expect output ')]
*
suite no-program True [[]('error', 'could not be run')]
*" ''
run "$tavsim" test suite/no-program.scenario --program "$programs/service_reply" --device ember
expect 1 'FAILED suite/no-program.scenario *
*
percent *
suite/no-program.scenario:2: expect output lute: *
1 scenario: 0 passed, 1 failed in *' ''
run "$tavsim" test --program "$programs/service_reply" -- suite/no-program.scenario
expect 0 '1 scenario: 1 passed in *' ''
for words in '' empty nowhere suite/nowhere.scenario '--jobs 0 suite' '--junit nowhere/x suite'; do
    # shellcheck disable=SC2086
    run "$tavsim" test $words
    [[ $status -eq 2 && -z $out && -n $err ]] || fail "test $words: status $status, said: $out $err"
done

# Without another descriptor no run can be begun.
if [ -z "${TAV_FLAGS:-}" ]; then
    run_with_descriptors 6 "$tavsim" test suite/first.scenario
    expect 2 'NOT RUN suite/first.scenario (*s)
suite/first.scenario: Too many open files
1 scenario: 0 passed, 1 not run in * s' ''
fi

# Two that need each other run at once.
mkdir pair
mkfifo fifo
printf '#!/bin/sh\necho >fifo\nexec %s\n' "$programs/service_reply" >pair/write
printf '#!/bin/sh\nread -r line <fifo\nexec %s\n' "$programs/service_reply" >pair/read
chmod +x pair/write pair/read
for name in write read; do
    printf 'limit 20\nprogram ./%s\n' "$name" >"pair/$name.scenario"
done
run "$tavsim" test --jobs 2 pair
expect 0 '2 scenarios: 2 passed in *' ''

# A program whose output does not end, and whose bytes are no text; and one that fails with a line
# like the simulator's own.
printf '#!/bin/sh\nprintf "\\1\\377<&]]>\\n"\nexec yes "$(printf "\\1\\377")"\n' >floods
chmod +x floods
printf 'limit 1\nprogram ./floods\n' >floods.scenario
printf '#!/bin/sh\necho "tavsim: speaks:1: this"\nexit 1\n' >speaks
chmod +x speaks
echo 'program ./speaks' >speaks.scenario
run "$tavsim" test --junit report.xml floods.scenario speaks.scenario
[ "$status" -eq 1 ] || fail "a flood: status $status"
[ "${#out}" -lt 3000000 ] || fail "a flood: printed ${#out} bytes"
run cases
[[ $status -eq 0 && $out == *"('failure', 'speaks:1: this')"* ]] || fail "the report: $out $err"

# An interruption ends all programs, also those that do not listen, and so does an end by force.
printf '#!/bin/sh\n%s stubborn &\nexec %s stubborn\n' "$programs/ends" "$programs/ends" >stubborn
chmod +x stubborn
echo 'program ./stubborn' | tee long1.scenario >long2.scenario
start() {
    "$tavsim" test --jobs 2 long1.scenario long2.scenario >said 2>told &
    tester=$!
    wait_until all_run
}
programs_left() { pgrep -cf "^$programs/ends stubborn"; }
all_run() { [ "$(programs_left)" -eq 4 ]; }
nothing_is_left() { [[ $(programs_left) -eq 0 && -z $(find "$TMPDIR" -mindepth 1) ]]; }
start
kill -KILL "$tester"
wait_until nothing_is_left
start
has_ended_when_asked() {
    kill -TERM "$tester" 2>/dev/null
    ! kill -0 "$tester" 2>/dev/null
}
wait_until has_ended_when_asked
status=0
wait "$tester" || status=$?
command='an interrupted test' out=$(<said) err=$(<told)
expect 143 '2 scenarios: 0 passed, 2 not finished in *' ''
wait_until nothing_is_left
