# Completion of qvhost in fish. The program itself knows its commands, options, modules and tables, and what
# they mean.
function __qvhost_complete
    set -l typed (commandline -opc) (commandline -ct)
    set -l found ($typed[1] complete-explained $typed[2..-1] 2>/dev/null)
    test (count $found) -gt 1; and printf '%s\n' $found[2..-1]
end
complete -c qvhost -f -a '(__qvhost_complete)'
