#!/usr/bin/env bash
# The whole tour as an ordinary user and as root, with its role files: tour_roles.sh TAVSIM TOUR PROFILE
set -euo pipefail
tavsim=$1 tour=$2 profile=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed 's/"machine":/"root": true, "machine":/' "$profile" >"$work/as-root.json"

run() { # PROFILE ROOT
    "$tavsim" run --device "$1" --root "$work/$2" --virtual-time --journal "$work/journal" "$tour" \
        >"$work/output"
}
expect() { # WHAT VALUE EXPECTED
    [ "$2" = "$3" ] || { printf '%s: %s, expected: %s\n' "$1" "$2" "$3" >&2; exit 1; }
}
rescans() { grep -c '"what":"rescan"' "$work/journal" || true; }
changes() { stat --format '%i %y' "$pub" "$prv"; }

run "$profile" user
expect 'rescans for an ordinary user' "$(rescans)" 0
expect 'its role store' "$(ls "$work/user/var")" kora
cp "$work/output" "$work/as-user"

roles=$work/root/var/vire/ks2/roles
pub=$roles/pub/com.example.tour.json prv=$roles/prv/com.example.tour.json
run "$work/as-root.json" root
expect 'rescans at the first start' "$(rescans)" 2
expect 'mode of the store' "$(stat --format %a "$roles" "$roles/pub" "$roles/prv" | sort -u)" 700
grep -q "\"exeName\": \"$(readlink -f "$tour")\"" "$pub" "$prv"
! grep -q XXX "$pub" "$prv"
diff "$work/as-user" "$work/output"

before=$(changes)
run "$work/as-root.json" root
expect 'rescans at the second start' "$(rescans)" 0
expect 'role files at the second start' "$(changes)" "$before"

rm "$prv"
run "$work/as-root.json" root
expect 'rescans after one was deleted' "$(rescans)" 1
expect 'the other one' "$(changes | head -n 1)" "$(head -n 1 <<<"$before")"
