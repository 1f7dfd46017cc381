#!/usr/bin/env bash
# The tour prints each device's answers.
source "$(dirname "$0")/check.sh"
expected=$TAV_SOURCE/tests/expected

# The page about the network depends on this machine. The widths of the columns do not matter.
compared() {
    awk '/^Network$/ {skip = 1} /^$/ {skip = 0} !skip' | sed 's/\([^ ]\)  */\1 /g' | cut -c-150
}

for profile in "$TAV_SOURCE"/simulator/devices/*.json; do
    device=$(basename "$profile" .json)
    run "$tavsim" run --device "$device" --virtual-time "$TAV_BUILD/bin/tour"
    expect 0 '**' ''
    compared <"$work/out" >"$work/$device"
    # One line for each device, with the values in which devices differ.
    for line in 'hardware id' 'product name' screen density 'device name' language 'system version' \
        'as integer percent' fix; do
        printf '%s | ' "$(sed -n "s/^  $line //p" "$work/$device" | head -n 1)"
    done | sed "s/^/$device: /; s/ | $/\n/" >>"$work/devices"
done
diff -u "$expected/tour.txt" "$work/cinnabar" || fail 'the tour of cinnabar differs'
diff -u "$expected/devices.txt" "$work/devices" || fail 'the tours of the devices differ'

# For the root user, the first start makes role files with the real path of the program.
echo '{"extends": "cinnabar", "root": true}' >"$work/root.json"
for rescans in 2 0; do
    run "$tavsim" run --device "$work/root.json" --root "$work/root" --virtual-time \
        --journal "$work/journal" "$TAV_BUILD/bin/tour"
    compared <"$work/out" | diff -u "$expected/tour.txt" - || fail "the tour as root differs"
    [ "$(grep -c '"what":"rescan",.*"outcome":"rescanned"' "$work/journal")" -eq $rescans ] || fail "not $rescans rescans"
done
grep -q "\"exeName\": \"$(readlink -f "$TAV_BUILD/bin/tour")\"" \
    "$work"/root/var/vire/ks2/roles/p*/com.example.tour.json || fail "the roles are for another path"
