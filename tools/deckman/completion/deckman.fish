# Completion of deckman for fish. The program itself knows what may stand where: this asks it.

function __deckman_complete
    set -l words (commandline -opc)
    set -l typed (commandline -ct)
    for line in (command $words[1] help --complete $words[2..-1] "$typed" 2>/dev/null)
        switch $line
            case ':file'
                __fish_complete_path $typed
            case ':dir'
                __fish_complete_directories $typed
            case '*'
                echo $line
        end
    end
end

complete -c deckman -f -a '(__deckman_complete)'
