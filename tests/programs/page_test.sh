#!/usr/bin/env bash
# A plug-in's page: what its program and its server are refused for, and that the page, the program
# and the server end together, on this machine as on a simulated device.
source "$(dirname "$0")/check.sh"

tav_page=$TAV_BUILD/bin/tav-page
app=$work/app
cp -rL "$TAV_BUILD/plugins/calculator" "$app"
# A copy may look for its libraries beside itself.
export LD_LIBRARY_PATH=$TAV_BUILD/$TAV_LIBDIR${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}

client() { timeout 300 python3 "$TAV_SOURCE/tests/programs/page_client.py" "$@"; }
is_linked() { grep -om1 'http://[^ ]*' "$work/out" "$work/err" -h >"$work/link"; }
has_no_program() { ! pgrep -f "$app/calculator"; }

# refuses ERROR INFORMATION ARGUMENTS…: an application with this appinfo.json.
refuses() {
    echo "$2" >"$app/appinfo.json"
    run "$tav_page" "${@:3}" "$app"
    expect 2 '' "tav-page: $1"
}
run "$tav_page" "$work"
expect 2 '' "tav-page: $work/appinfo.json: no such file"
run "$tav_page" --linger long "$work"
expect 2 '' 'tav-page: *--linger*; see tav-page --help'
script "$app/program" 'exit 3'
script "$app/unrunnable" ''
chmod -x "$app/unrunnable"
refuses "$app/appinfo.json: not JSON: *" '{"program": '
refuses "$app/appinfo.json: names no program; *" '{"title": "?"}'
refuses "$app/appinfo.json: program: must be the name of a file in this folder" \
    '{"program": "../program"}'
refuses "$app/none: no such file; $app/appinfo.json names it" '{"program": "none"}'
refuses "$app/none.html: no such file; *" '{"program": "program", "main": "none.html"}'
refuses "$app/appinfo.json: hosts[[]0]: must be an origin, *" \
    '{"program": "program", "hosts": ["https://x; script-src *"]}'
refuses "$app/unrunnable: cannot be started: Permission denied" '{"program": "unrunnable"}'
refuses 'program: has not become a plug-in. The program has ended with status 3. A plug-in calls *' \
    '{"program": "program"}'
information='{"main": "index.html", "program": "calculator"}'
for browser in none-such false "'"; do
    echo "$information" >"$app/appinfo.json"
    run "$tav_page" --browser "$browser" "$app"
    expect 2 'http://127.0.0.1:*' 'tav-page: *--browser*'
done
complains "$app/none.html: no such file" run --page "$app/none.html" "$app/calculator"
complains "$app/index.html: a page in a browser is in real time, not in virtual time" \
    run --virtual-time --page "$app/index.html" "$app/calculator"
expect_nothing_left 'what was refused'

# A scenario whose page is for a browser is played in real time, and the page's server needs none.
cat >"$work/scenario" <<END
page $app/index.html
program $app/calculator
at 10ms: page call add 2 3
expect within 10s what=call method=add outcome=5
at 20ms: quit
END
run "$tavsim" test "$work/scenario"
expect 0 '1 scenario: 1 passed in * s' ''

on_linux() { exec "$tav_page" --browser true --linger 1 "$app"; }
on_device() { exec "$tavsim" run --page "$app/index.html" "$app/calculator"; }

# ends WHERE STATUS SENTENCE ERRORS COMMAND…: how the page hears of the end.
ends() {
    truncate -s 0 "$work"/{out,err,page}
    "$1" >"$work/out" 2>"$work/err" &
    runner=$!
    wait_until is_linked
    client "${method:-add}" "$(<"$work/link")" >"$work/page" &
    local viewer=$!
    wait_until grep -q reply "$work/page"
    "${@:5}"
    wait "$runner" 2>/dev/null && status=0 || status=$?
    command=${*:5} out=$(<"$work/out") err=$(<"$work/err")
    expect "$2" '**' "$4"
    wait "$viewer"
    [ "$(sed 1d "$work/page")" = "$3" ] || fail "$1, ${*:5}: the page says: $(<"$work/page")"
    wait_until has_no_program
    wait_until nothing_is_left  # what was killed is tidied up after by another process
}
kill_runner() { kill "-$1" "$runner"; }
kill_program() { kill "-$1" "$(pgrep -f "$app/calculator")"; }
kill_server() { kill "-$1" "$(pgrep -P "$runner" -f /tav-page)"; }
stop_and_ask() { kill_program STOP && kill_runner INT; }
is_at='tavsim: the page is at http://127.0.0.1:*'
method=quit ends on_linux 0 'The program has ended with status 0.' '' true
ends on_linux 0 'The program has ended with status 0.' '' kill_runner TERM
ends on_linux 0 'The program has ended with status 0.' '' stop_and_ask
ends on_linux 137 'The program was ended by SIGKILL (Killed).' 'tav-page: *SIGKILL*' \
    kill_program KILL
ends on_linux 137 closed '**' kill_runner KILL  # the program may notice it before it is killed
method=divide ends on_linux 0 '' 'tav-page: no page has been open for 1 seconds, *' true
method=quit ends on_device 0 'The program has ended with status 0.' "$is_at" true
asked="$is_at**is asked to end, because its page has ended**"
ends on_device 0 "The page's server was ended." "$asked" kill_server TERM
ends on_device 0 closed "$asked" kill_server KILL
ends on_device 137 'tavsim was killed, and its program with it.' "$is_at" kill_runner KILL

# What the server refuses, and how much it takes from a page and from an application.
run timeout 300 python3 "$TAV_SOURCE/tests/programs/page_attacks.py" "$tav_page" "$work/attacks"
expect 0 "503 {'error': 'the application has not answered for 10 seconds'}
15 (200, {'reply': None})
256 (503, {'error': 'The page was opened anew, and the newer one has the plug-in.'})
9 (503, {'error': 'too many calls are waiting for the application'})
tavsim was killed, and its program with it.
the application takes no more calls, or the call is too long" 'tav-page: the page has sent what is no message, and is closed
tav-page: the page has sent too many messages in a second, and is closed
tav-page: the application has sent what is no message, and is refused
tav-page: the page has its plug-in already, and another one is refused
tav-page: the page does not take the application'"'s calls, which have to wait
tav-page: the application has not answered for 10 seconds
tav-page: the application takes no more calls, or the call is too long"
