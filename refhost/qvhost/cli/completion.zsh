#compdef qvhost
# Completion of qvhost in zsh. The program itself knows its commands, options, modules and tables, and what
# they mean.
_qvhost() {
    local -a found words_found explained
    local line kind
    found=("${(@f)$(${words[1]} complete-explained "${(@)words[2,CURRENT]}" 2>/dev/null)}")
    kind=${found[1]}
    for line in "${(@)found[2,-1]}"; do
        [[ -n $line ]] || continue
        words_found+=("${line%%$'\t'*}")
        if [[ $line == *$'\t'* ]]; then
            explained+=("${line%%$'\t'*} -- ${line#*$'\t'}")
        else
            explained+=("$line")
        fi
    done
    (( $#words_found )) || return 1
    if [[ $kind == paths ]]; then
        # A directory on the way is not the end of the word.
        local -a ends onward
        ends=("${(@)words_found:#*/}")
        onward=("${(@M)words_found:#*/}")
        (( $#ends )) && compadd -f -- "${ends[@]}"
        (( $#onward )) && compadd -f -S '' -- "${onward[@]}"
        return 0
    fi
    compadd -l -d explained -- "${words_found[@]}"
}
if [[ ${funcstack[1]} == _qvhost ]]; then _qvhost "$@"; else compdef _qvhost qvhost; fi
