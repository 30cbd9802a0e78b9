# shellcheck shell=bash
# Completion of qvhost in bash. The program itself knows its commands, options, modules and tables.
_qvhost() {
    local found=() word
    mapfile -t found < <("${COMP_WORDS[0]/#\~\//$HOME/}" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    COMPREPLY=("${found[@]:1}")
    # bash quotes what is special in names of files, and ends those of directories with a slash.
    [ "${found[0]:-}" != paths ] || compopt -o filenames 2>/dev/null
    # A directory on the way is not the end of the word.
    for word in "${COMPREPLY[@]}"; do
        case $word in */) compopt -o nospace 2>/dev/null ;; esac
    done
}
complete -F _qvhost qvhost
