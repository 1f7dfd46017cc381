#!/usr/bin/env bash
# Completion in bash, whose words come from tavsim itself.
source "$(dirname "$0")/check.sh"
source "$TAV_SOURCE/tools/completion.bash"

# offers EXPECTED WORD…: the sorted completions of the last word. In bash, a = is a word of its own.
offers() {
    COMP_WORDS=("$tavsim" "${@:2}") COMP_CWORD=$(($# - 1))
    _tavsim
    offered=$(printf '%s\n' "${COMPREPLY[@]}" | sort | paste -sd ' ')
    has_form "$offered" "$1" || fail "tavsim ${*:2}: offers $offered in place of $1"
}
offers 'ctl' c
offers '* ctl devices journal new panel run test' ''
offers '--version' --v
offers '--device' run --dev
offers 'harrow harrow+' run --device har
offers 'quern' run --virtual-time --device = q
offers '' run --journal ''
offers '' run --device quern ./game --dev
offers '*paste*' run --device quern pas
offers 'list location' ctl --root x l
offers 'ended ready' ctl --timeout = 5 wait ''
offers 'appinfo preference property' ctl set ''
offers '--json' ctl state -
offers 'off on' ctl compass follow ''
offers '--json' devices --j
offers '--port' panel --p
offers '--jobs --junit' test --j
offers '--failed --filter' test --f
