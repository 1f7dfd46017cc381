#!/usr/bin/env bash
# Scenarios that are played to whole programs: what their steps do, and how the runs end.
source "$(dirname "$0")/check.sh"
waits=$programs/wait_for_quit
cd "$work"

# plays STATUS OUTPUT ERRORS STEPS [ARGUMENTS…]: plays the steps in virtual time, and expects that.
plays() {
    printf 'program %s\n%s\n' "$waits" "$4" >scenario
    says "${@:1:3}" run --virtual-time --scenario scenario "${@:5}"
}

# All kinds of steps. Every run gives the same journal; in real time, only its times differ.
mkdir sub
printf 'device quern\nprogram %s\nlimit 50\n' "$waits" >sub/app
cat >scenario <<'EOF'
include sub/app
refuse vire://com.vire.battery/status
expect never what=reply
expect within 1s kind=device what=key*
expect what=call uri=*battery* outcome=refused
expect state keyboard shown
expect state "open calls" 0
after 1s: compass 1 90 0.5
when what="compass reading" intValue=1: compass 2 90 0.5
at 1.5s: compass 3 180 0.5
expect intValue=2 doubleValue1=90*
expect intValue=3
expect never for 250ms what=*
expect output q?it
EOF
for options in 'first --virtual-time' 'second --virtual-time' real; do
    # shellcheck disable=SC2086
    says 0 quit '' run --scenario scenario --journal $options
done
cmp first second || fail 'two runs differ'
grep -q '"at":1500,.*"intValue":3,' first || fail "the journal: $(<first)"
diff <(sed 's/"at":[0-9]*//' first) <(sed 's/"at":[0-9]*//' real) || fail 'real time differs'

# A step that fails ends the run. The message has its line, its text, the reason and the journal.
while IFS='|' read -r steps reason; do
    steps=${steps//; /$'\n'}
    line=$(($(wc -l <<<"$steps") + 1))
    plays 3 '**' "scenario:$line: ${steps##*$'\n'}: $reason**"$'\n  the journal **' "$steps"
done <<'EOF'
location found|location found: it is not lost
after 5ms: expect what=vibrator|the journal has no such entry
expect within 2s what=call uri=*vibrate|the journal has no such entry; the closest one, at 0 ms, has uri "vire://com.vire.battery/status", not "[*]vibrate"
expect within 2s what=call payload.a=1|the journal has no such entry; the closest one, at 0 ms, has no payload.a
when what=vibrator within 1s: quit|the journal has no such entry
expect within 1s what=call; expect what=NApp_registerTAV|the journal has no such entry; it has one at 0 ms, before the entry that line 2 used
expect within 1s what=call; expect what=call|the journal has no such entry; it has one at 0 ms, which line 2 has used
after 1s: compass 1 2 3; expect within 1s intValue=1 doubleValue1>2|the journal has no such entry; the closest one, at 1000 ms, has doubleValue1 2, not >2
after 1s: expect count>1 what=call|such entries so far: 1
after 5ms: expect state keyboard hidden|it is shown
expect ended within 2s|the application still runs
after 1s: quit; after 1s: plugin on|the application ended at 1000 ms before this
EOF

plays 0 quit '' $'after 5ms: quit\nexpect ended\nexpect state battery 72'

# A block of expectations in any order: each entry meets one line, even where it matches several.
readings=$'after 5ms: compass 1 1 1\ncompass 2 2 2\ncompass 1 3 3\nexpect within 1s all\nwhat=compass*\n'
plays 0 quit '' "$readings"$'intValue=2\nintValue=1\nend\nexpect never for 1s what=*'
plays 3 '' 'scenario:8: intValue=3: the journal has no such entry, nor one for 1 more**' \
    "$readings"$'intValue=2\nintValue=3\nintValue=4\nintValue=1\nend'

# A table: each row is a run of its own.
printf '%s\n' 'table n row' '1 "compass r"' '2 compass' end "program $waits" 'after 5ms: compass ${n} 1 1' \
    'expect intValue=2' >table
says 2 '' 'table:1: table: nothing uses the parameter "row"' run --scenario table --row 1
sed -i 's/intValue=2/& what="${row}*"/' table
says 2 '' 'table: has a table, of which --row chooses a row: 1, 2' run --scenario table
says 0 quit '' run --virtual-time --scenario table --row 2
says 3 '' 'table:7: expect intValue=2 what="compass r[*]": **' run --virtual-time --scenario table --row 1
complains 'run: --row *' run --row 2 "$waits"
# What came too late; what repeats is one line; a long value is cut; on a terminal the reason is red.
services=$TAV_BUILD/bin/services
plays 3 '**' '**scenario:2: *; it has one at 2000 ms, 500 ms too late**' \
    'expect within 1500ms reply.tick=2' "$services"
plays 3 '**' '**the application ended at * before this**3 × reply *ticks, from 1000 ms to 3000 ms**' \
    'expect within 9s what=vibrator' "$services"
plays 3 '**' '**scenario:2: *, not "000*…*007"**' \
    "expect within 1s what=callWithResponse payload=$(printf %0250d 7)" "$services"
for colour in '' no; do
    run env NO_COLOR=$colour script -qec "'$tavsim' run --virtual-time --scenario scenario '$services'" /dev/null
    red=$([[ $out == *$'\e[31m'scenario:2:*$'\e[0m'* ]] || echo no)
    [ "$red" = "$colour" ] || fail "with NO_COLOR=$colour: $out"
done

# `expect never` ends the run at once, and holds until the program has ended.
for steps in 'expect never for 1s what=reply' $'expect never what=reply\nafter 1ms: plugin on'; do
    plays 3 '**' "scenario:2: ${steps%%$'\n'*}: the journal has {**" "$steps" "$programs/service_reply"
done

# Expectations about output and status are judged at the end, all of them.
plays 3 $'*\npercent 72' 'scenario:2: expect output percent: no such line was printed
scenario:3: expect output no[*]: no such line was printed
scenario:4: expect status 7: it is 0' \
    $'expect output percent\nexpect output no*\nexpect status 7\nexpect output *' "$programs/service_reply"
printf '"$1"\nprintf half\n' >unended
plays 0 $'*\npercent 72\nhalf' '' 'expect output half' sh unended "$programs/service_reply"
printf 'yes | head -c 100000\n"$1"\n' >more_than_a_pipe_holds
plays 0 '**' '' 'expect output percent*' sh more_than_a_pipe_holds "$programs/service_reply"
plays 3 '*' 'scenario:2: expect output percent[*]: *
scenario: expect status 0: it is 1' 'expect output percent*' "$programs/service_reply" 0
plays 0 '*' '' 'expect status 1' "$programs/service_reply" 0

# Options of the command line override the header. Without steps that wait, the program ends by
# itself.
plays 0 $'*\npercent 52' '' $'device nonsense\nrefuse keyboard' \
    --device fern "$programs/service_reply"

# A malformed scenario, or one for what there is not: nothing is started.
while IFS='|' read -r steps reason; do
    steps=${steps//; /$'\n'}
    plays 2 '' "scenario:$(($(wc -l <<<"$steps") + 1)): $reason" "$steps"
done <<'EOF'
locaton 1 2|no command "locaton"; did you mean "location"[?]
expect kind=buss|no kind "buss"; did you mean "bus"[?]
expect never what=vibrater|no what "vibrater"; did you mean "vibrator"[?]
when what=*ompass urii=x: quit|no member "urii"; did you mean "uri"[?]
expect within 1s what=cancel uri=*|such an entry has no "uri"; it has at, kind, what, token, outcome
expect token.x=1|"token.x": only payload, reply, arguments hold JSON that a path leads into
expect state keybord shown|no state "keybord"; did you mean "keyboard"[?]
key tap retrun|key: no key "retrun"; did you mean "return"[?]
refuse keybord|refuse: "keybord" is no URI and no request that can be refused; did you mean "keyboard"[?]
set preference devicName 1|set preference: no preference "devicName"; did you mean "deviceName"[?]
set property com.vire.properties.versoin 1|set property: no system *; did you mean "com.vire.properties.version"[?]
track nowhere.gpx|track: nowhere.gpx: no such file
screenshot nowhere/a.png|screenshot: nowhere/a.png: no such folder
at 3s: quit; at 2s: quit|this time has passed: the step before is done at 3000 ms at the earliest
after 4294967295ms: quit; after 1ms: quit|it comes after 49 days, when the clock ends
expect ended; expect never what=call|it follows the application's end
expect ended; after 1s: expect what=call|it follows the application's end
EOF
plays 0 '*' 'scenario:2: warning: no service "vire://com.vire.clock/tick"; did you mean "*/ticks"[?]
scenario:3: warning: no service "[*]nowhere"
scenario:4: warning: no "item gold-skni"; did you mean "item gold-skin"[?]' 'silence vire://com.vire.clock/tick
expect never uri=*nowhere
expect never what="item gold-skni"
at 1s: quit'
plays 2 '' 'tavsim: no device "nonsense"; *' 'device nonsense'
says 2 '' 'none: no such file' run --scenario none "$waits"
echo 'expect output x' >expecting
if [ -z "${TAV_FLAGS:-}" ]; then
    run_with_descriptors 6 "$tavsim" run --scenario expecting "$waits"
    expect 2 '' "tavsim: no pipe for the program's output: Too many open files"
fi
says 2 '' '*: is no regular file' run --scenario <(echo quit) "$waits"

# When the run ends while a step waits, the message names that step.
printf 'limit 2\nprogram %s\nat 99s: quit' "$waits" >scenario
says 124 '**' $'**2 seconds, its time-out\nscenario:3: at 99s: quit: * ended **' \
    run --scenario scenario
printf 'limit 2\nprogram %s\nplugin off' "$waits" >setup
says 124 '**' $'**time-out\nsetup: all its steps were done, but **' run --scenario setup
cat >killed <<'EOF'
"$1" &
"$2" ctl --root "$TAVSIM_ROOT" wait ready within 60s
kill -KILL $!
EOF
run "$tavsim" run --scenario scenario --timeout 60 sh killed "$waits" "$tavsim"
expect 3 '' 'scenario:3: at 99s: quit: the application ended before this, which was waited for since * ms'
plays 3 '' $'tavsim: *did not use *\nscenario: was not played*' quit true

# Only the first program plays the scenario: no child process of it and no later program does.
plays 0 quit '' 'after 1s: quit' "$waits" fork
printf '"$1"\n"$1" 5\n' >twice
plays 0 $'*\npercent 72\n*' '' \
    $'expect within 1s what=call*\nexpect within 1s what=reply\nexpect status 1' \
    sh twice "$programs/service_reply"

# A recording of commands that came through the control socket in real time gives the same journal.
"$tavsim" run --device quern --record session --journal recorded "$TAV_BUILD/bin/instruments" &
runner=$!
"$tavsim" ctl wait ready within 60s
for command in 'key tap c' 'compass 1 77 0.5' 'tap 60 300' 'drag 10 10 90 90 100ms' 'set appinfo ${a} $$${' 'key tap v'; do
    # shellcheck disable=SC2086
    "$tavsim" ctl $command
done
"$tavsim" ctl key tap escape
wait "$runner" || fail 'a run that is recorded did not end well'
says 0 '*' '*' run --virtual-time --scenario session --journal played
cmp recorded played || fail "another journal: $(<session)"
grep -q '^expect ended within ' session || fail "the recording: $(<session)"

# The example in docs/scenarios.md.
sed -n '/^```scenario/,/^```/p' "$TAV_SOURCE/docs/scenarios.md" | sed '/^```/d' >battery.scenario
ln -s "$TAV_BUILD/bin/services" services
says 0 '**Tick 2**' '**' run --scenario battery.scenario --virtual-time
expect_nothing_left 'the runs'
