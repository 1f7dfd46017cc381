#!/usr/bin/env bash
# The tour prints on each device what that device is to answer.
source "$(dirname "$0")/check.sh"
expected=$TAV_SOURCE/tests/expected

# The network page shows the machine's own interfaces, and how wide the columns are is the tour's
# own business.
compared() { awk '/^Network$/ {skip = 1} /^$/ {skip = 0} !skip' | sed 's/\([^ ]\)  */\1 /g'; }

for profile in "$TAV_SOURCE"/simulator/devices/*.json; do
    device=$(basename "$profile" .json)
    run "$tavsim" run --device "$device" --virtual-time "$TAV_BUILD/bin/tour"
    [[ $status -eq 0 && -z $err ]] || fail "the tour of $device: status $status: $err"
    compared <"$work/out" >"$work/$device"
    # What all devices have in common is written down once; of the others, the lines that differ.
    if [ "$device" != cinnabar ]; then
        { diff --unchanged-group-format= --changed-group-format='%>' --new-group-format='%>' \
            --old-group-format='missing: %<' "$expected/tour-cinnabar.txt" "$work/$device" ||
            true; } >"$work/differing"
        mv "$work/differing" "$work/$device"
    fi
    diff -u "$expected/tour-$device.txt" "$work/$device" || fail "the tour of $device differs"
done

# As the root user, it finds roles for the path that it really has, made at its first start.
echo '{"extends": "cinnabar", "root": true}' >"$work/root.json"
for rescans in 2 0; do
    run "$tavsim" run --device "$work/root.json" --root "$work/root" --virtual-time \
        --journal "$work/journal" "$TAV_BUILD/bin/tour"
    compared <"$work/out" | diff -u "$expected/tour-cinnabar.txt" - || fail "the tour as root differs"
    [ "$(grep -c '"what":"rescan",.*"outcome":"rescanned"' "$work/journal")" -eq $rescans ] || fail "not $rescans rescans"
done
grep -q "\"exeName\": \"$(readlink -f "$TAV_BUILD/bin/tour")\"" \
    "$work"/root/var/vire/ks2/roles/p*/com.example.tour.json || fail "the roles are for another path"
