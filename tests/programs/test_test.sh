#!/usr/bin/env bash
# `tavsim test`: which scenarios it runs, how, and what it reports.
source "$(dirname "$0")/check.sh"
cd "$work"

# All scenarios below a folder, each once, in the order of their names.
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
reply=$programs/service_reply
says 1 '**1 scenario: 0 passed, 1 failed in **' '**' \
    test suite/no-program.scenario --program "$reply" --device ember
says 0 '1 scenario: 1 passed in *' '' test --program "$reply" -- suite/no-program.scenario
for words in '' empty nowhere suite/nowhere.scenario '--jobs 0 suite' '--junit nowhere/x suite'; do
    # shellcheck disable=SC2086
    says 2 '' '?**' test $words
done

# Scenarios chosen by name or by their last failure, tables with a case for each row, and the report
# about scenarios that pass.
mkdir some
printf '%s\n' 'table row what' 'good percent' '"not good" nothing' end "program $reply" \
    'expect output "${what}*"' >some/rows.scenario
printf 'program %s\n' "$reply" >some/idle.scenario
idle='some/idle.scenario: expects nothing, so it passes unless the program fails'
says 1 "$idle"$'\nFAILED some/rows.scenario[[]not good] (**3 scenarios: 2 passed, 1 failed in *' '' \
    test --jobs 1 some
says 1 'FAILED **1 scenario: 0 passed, 1 failed in *' '' test --failed some
says 0 $'passed some/rows.scenario[[]good] (* s)\nthe slowest:\n  * s  some/rows.scenario[[]good]\n1 *' '' \
    test --verbose --filter 's*[good' some
says 2 '' 'tavsim: test: no scenario has "gold" in its name' test --filter gold some
sed -i s/nothing/percent/ some/rows.scenario
says 0 '1 scenario: 1 passed in *' '' test --failed some
says 0 'none of the scenarios failed when it last ran' '' test --failed some
on_terminal() { run python3 -c 'import pty, sys; pty.spawn(sys.argv[1:])' "$tavsim" test --jobs 1 "$@"; }
on_terminal some/idle.scenario
expect 0 $'**\r\e[[]K1 of 1 scenario\r**' ''
on_terminal some
expect 0 $'**\r\e[[]K1 of 3 scenarios**\r\e[[]K3 scenarios: 3 passed in *' ''

# Pictures that differ: files show the difference beside the report, until --update-pictures.
printf 'device quern\nprogram %s\nat 1s: picture a.png\n' "$TAV_BUILD/bin/instruments" >show.scenario
anew=$'show.scenario:*/a.png: written anew, * \n1 scenario: 1 passed in *'
says 0 "${anew/ \* / there was none}" '' test --update-pictures show.scenario
says 0 '1 scenario: 1 passed in *' '' test --update-pictures show.scenario
sed -i 's/^at 1s/at 500ms: key tap c\n&/' show.scenario
difference=report-pictures/1-show/a.difference.png
says 1 "FAILED **pixels differ, by up to *; see $PWD/$difference**" '' test --junit report.xml show.scenario
[ -f "$difference" ] || fail 'the difference is not beside the report'
grep -q "ATTACHMENT|$difference" report.xml || fail 'the report does not name the difference'
says 0 "${anew/ \* / * of 128000 pixels differ, by up to *}" '' \
    test --junit report.xml --update-pictures show.scenario
[ ! -e report-pictures ] || fail 'the difference of an earlier run is still there'

# Without a free descriptor, no run can be started.
if [ -z "${TAV_FLAGS:-}" ]; then
    run_with_descriptors 6 "$tavsim" test suite/first.scenario
    expect 2 'NOT RUN suite/first.scenario (*s)
suite/first.scenario: Too many open files
1 scenario: 0 passed, 1 not run in * s' ''
fi

# Two scenarios that wait for each other pass only when they run at the same time.
mkdir pair
mkfifo fifo
script pair/write "echo >fifo; exec $programs/service_reply"
script pair/read "read -r line <fifo; exec $programs/service_reply"
for name in write read; do
    printf 'limit 20\nprogram ./%s\nexpect status 0\n' "$name" >"pair/$name.scenario"
done
says 0 '2 scenarios: 2 passed in *' '' test --jobs 2 pair

# A program with endless output that is no valid text, and one that prints a line like an error of
# the simulator.
script floods 'printf "\1\377<&]]>\n"; exec yes "$(printf "\1\377")"'
printf 'limit 1\nprogram ./floods\n' >floods.scenario
script speaks 'echo "tavsim: speaks:1: this"; exit 1'
echo 'program ./speaks' >speaks.scenario
says 1 '**' '**' test --junit report.xml floods.scenario speaks.scenario
[ "${#out}" -lt 3000000 ] || fail "a flood: printed ${#out} bytes"
run cases
expect 0 "**('failure', 'speaks:1: this')**" '**'

# When tavsim test is interrupted or killed, all programs end, even those that ignore SIGTERM.
sleeps="$work/sleep 600"
cp "$(command -v sleep)" "$work"
script stubborn "trap '' TERM; $sleeps & exec $sleeps"
echo 'program ./stubborn' | tee long1.scenario >long2.scenario
start() {
    "$tavsim" test --jobs 2 long1.scenario long2.scenario >said 2>told &
    tester=$!
    wait_until all_run
}
programs_left() { pgrep -cf "$sleeps$"; }  # an emulator's name can come first
all_run() { [ "$(programs_left)" -eq 4 ]; }
nothing_is_left() { [[ $(programs_left) -eq 0 && -z $(find "$TMPDIR" -mindepth 1) ]]; }
start
kill -KILL "$tester"
wait_until nothing_is_left
start
wait_until ends_when_asked "$tester"
wait "$tester" && status=0 || status=$?
command='an interrupted test' out=$(<said) err=$(<told)
expect 143 '2 scenarios: 0 passed, 2 not finished in *' ''
wait_until nothing_is_left
