# Completion of deckman for bash. The program itself knows what may stand where: this asks it.

_deckman() {
    local words=() glue='' word i
    # bash cuts words at = and : too; the program gets them whole.
    for ((i = 1; i <= COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if ((i > 1)) && [[ $glue || $word == [=:]* ]]; then
            words[${#words[@]} - 1]+=$word
        else
            words+=("$word")
        fi
        glue=''
        if [[ $word == *[=:] ]]; then
            glue=1
        fi
    done
    # As the program gets them: without quotes, with the home folder's name.
    for i in "${!words[@]}"; do
        word=${words[i]//[\'\"\\]/}
        if [[ $word == '~/'* ]]; then
            word=$HOME/${word#'~/'}
        fi
        words[i]=$word
    done

    local typed=${words[-1]} ahead line candidates=()
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
        :file) return ;; # the shell's own completion
        :dir)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "${COMP_WORDS[COMP_CWORD]}")
            return
            ;;
        *) candidates+=("${line%%$'\t'*}") ;;
        esac
    done < <("${COMP_WORDS[0]/#\~\//$HOME/}" help --complete "${words[@]}" 2>/dev/null)
    compopt +o default +o bashdefault 2>/dev/null
    # What bash has cut off ahead of the word is not given back.
    ahead=${typed%"${typed##*[=:]}"}
    for line in "${candidates[@]}"; do
        line=${line#"$ahead"}
        # What the shell would take for its own is quoted, unless a quote stands there already.
        if [[ ${COMP_WORDS[COMP_CWORD]} != [\'\"]* ]]; then
            printf -v line '%q' "$line"
        fi
        COMPREPLY+=("$line")
    done
    # A section's name goes on with a keyword's, and a keyword's with an item.
    if ((${#COMPREPLY[@]} == 1)) && [[ ${COMPREPLY[0]} == */ ]]; then
        compopt -o nospace 2>/dev/null
    fi
}

complete -o bashdefault -o default -F _deckman deckman
