# Completion of ztimport for bash. What there is to complete is asked of ztimport itself, so it is
# always that of the program that is called.

# The words of a section of the help text on standard input, in its first column.
_ztimport_section() {
    sed -n "/^$1:/,/^\$/s/^  \([^ ,]*,\)\{0,1\}\([a-z-][a-zA-Z-]*\).*/\2/p"
}

# Whether the option takes a value: its help then names the kind of value behind it.
_ztimport_takes_value() {
    sed -n 's/^  \(-[^ ]*\) [A-Z].*/\1/p' <<<"$2" | grep -qxFe "$1"
}

# What kind of value the option takes, as its help names it: TEXT, a unit, or the words to choose from,
# TEXT:{csv,jsonl,json}.
_ztimport_kind() {
    sed -n "s/^  $1 \([A-Z][^ =]*\).*/\1/p" <<<"$2"
}

# The record types of a database, given as `show` takes it; nothing where it cannot be read.
_ztimport_types() {
    "$1" show "${@:2}" 2>/dev/null </dev/null | sed -n 's/^\([^ ]\{1,\}\)  *[0-9][0-9,]*$/\1/p'
}

_ztimport() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} command='' help word previous=''
    local -a given=() schema=()
    local i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ -z $command ]]; then
            [[ $word == -* ]] || command=$word
            [[ -z $command ]] || help=$("$program" "$command" --help 2>/dev/null)
            # Of a command that it does not have, the program shows its own help.
            [[ -z $command || $help == *$'\nPositionals:'* ]] || return 0
        elif [[ -n $previous ]]; then
            [[ $previous != --schema ]] || schema=(--schema "$word")
            previous=
        elif [[ $word == -* ]]; then
            if _ztimport_takes_value "$word" "$help"; then previous=$word; fi
        else
            given+=("$word")
        fi
    done

    if [[ -z $command ]]; then
        help=$("$program" --help 2>/dev/null)
        if [[ $current == -* ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$(_ztimport_section Options <<<"$help")" -- "$current")
        else
            mapfile -t COMPREPLY < <(compgen -W "$(_ztimport_section Subcommands <<<"$help")" -- "$current")
        fi
        return 0
    fi
    if [[ -n $previous ]]; then
        word=$(_ztimport_kind "$previous" "$help")
        case $previous:$word in
            *:TEXT:{*) mapfile -t COMPREPLY < <(compgen -W "$(tr '{},' '   ' <<<"${word#TEXT:}")" -- "$current") ;;
            --schema:* | --separator:* | --encoding:*) ;;
            --attachments:* | --rejects:*)
                compopt -o filenames
                mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
            *:TEXT)
                compopt -o filenames
                mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
        esac
        return 0
    fi
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_ztimport_section Options <<<"$help")" -- "$current")
        return 0
    fi
    if [[ $command == show && ${#given[@]} == 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_ztimport_types "$program" "${given[0]}" "${schema[@]}")" -- "$current")
        return 0
    fi
    if [[ $command != show || ${#given[@]} == 0 ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -F _ztimport ztimport
