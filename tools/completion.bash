# Completes the command line of tavsim in bash. What there is to choose from is what its help says.

_tavsim() {
    local tool=${COMP_WORDS[0]/#\~/$HOME} word=${COMP_WORDS[COMP_CWORD]}
    local before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local options valued usages place='' choice='' at
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        choice=$("$tool" --help 2>/dev/null | sed -nE \
            '/^Subcommands:/,$ s/^  ([a-z]+) .*/\1/p; s/^  (-[a-z],)?(--[a-z-]+).*/\2/p')
        mapfile -t COMPREPLY < <(compgen -W "$choice" -- "$word")
        return
    fi
    usages=$("$tool" "$command" --help 2>/dev/null)
    options=$(sed -nE 's/^  (-[a-z],)?(--[a-z-]+).*/\2/p' <<<"$usages")
    valued=$(sed -nE 's/^  (-[a-z],)?(--[a-z-]+) [A-Z].*/\2/p' <<<"$usages")
    usages=$(sed -nE '/^Commands:/,$ s/^  ([a-z].*)/\1/p' <<<"$usages")

    # "--option=value" are three words here.
    if [[ $word == '=' ]]; then
        word=''
    elif [[ $before == '=' ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    # The first word that is no option and no value of one.
    for ((at = 2; at < COMP_CWORD; ++at)); do
        if grep -qxFe "${COMP_WORDS[at]}" <<<"$valued"; then
            [[ ${COMP_WORDS[at + 1]} != '=' ]] || ((++at))
            ((++at))
        elif [[ ${COMP_WORDS[at]} != -?* ]]; then
            place=${COMP_WORDS[at]}
            break
        fi
    done

    if [[ -n $place ]]; then
        # What the usages of `tavsim ctl` that fit so far name for the next word, such as on|off.
        choice=$(awk -v line="${COMP_WORDS[*]:at:COMP_CWORD-at}" '{
                gsub(/[][]/, "")
                count = split(line, given, " ")
                for (i = 1; i <= count; ++i)
                    if ($i !~ /[A-Z]/ && !index("|" $i "|", "|" given[i] "|")) next
                print $(count + 1)
            }' <<<"$usages" | tr '|' '\n' | sed '/[A-Z]/d')
    elif [[ $before == --device ]]; then
        choice=$("$tool" devices 2>/dev/null | sed 's/ .*//')
    elif grep -qxFe "$before" <<<"$valued"; then
        return
    elif [[ $word == -* ]]; then
        choice=$options
    elif [[ $command == run ]]; then
        mapfile -t COMPREPLY < <(compgen -c -- "$word")
    else
        choice=$(sed 's/ .*//' <<<"$usages" | sort -u)
    fi
    # Without an answer bash completes the names of files.
    [[ -z $choice ]] || mapfile -t COMPREPLY < <(compgen -W "$choice" -- "$word")
}
complete -o bashdefault -o default -F _tavsim tavsim
