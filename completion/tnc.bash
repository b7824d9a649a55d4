# Completion of tnc for bash: share/bash-completion/completions/tnc. tools/table_docs.py writes the table.
# table: shell_words
_tnc_letters='bwWXoCpPdLDOfFA'
_tnc_with_value='bwWXoCpPDO'
_tnc_long='--help --version'
_tnc_warnings='all 1 2 3 4 5 6 7 8 10 12 13 14 15 16 17 18 19 51'
_tnc_levels='all scope lock capture async'
# end of table

# Completes the piece behind the last comma of a list.
_tnc_list() {
    local word=${COMP_WORDS[COMP_CWORD]} ahead=
    [[ $word != *,* ]] || ahead=${word%,*},
    mapfile -t COMPREPLY < <(compgen -P "$ahead" -W "$1" -- "${word##*,}")
    compopt -o nospace 2>/dev/null || :
}

# The letter whose value is the word at the cursor: of the letters in the word ahead, the first that takes one.
_tnc_letter() {
    local ahead=${COMP_WORDS[COMP_CWORD - 1]}
    [[ $COMP_CWORD -gt 1 && $ahead == -[!-]* && $ahead == *["$_tnc_with_value"]* ]] || return
    local without_value=${ahead%%["$_tnc_with_value"]*}
    echo "${ahead:${#without_value}:1}"
}

_tnc() {
    local word=${COMP_WORDS[COMP_CWORD]} i
    COMPREPLY=()
    compopt -o filenames 2>/dev/null || :
    case $(_tnc_letter) in
        b) mapfile -t COMPREPLY < <(compgen -f -X '!*.so' -- "$word" && compgen -d -- "$word") ;;
        w | W | X) _tnc_list "$_tnc_warnings" ;;
        p | P) _tnc_list "$_tnc_levels" ;;
        C | D | O) ;;
        o) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        *)
            if [[ $word == -* ]]; then
                local options=$_tnc_long
                for ((i = 0; i < ${#_tnc_letters}; i++)); do options+=" -${_tnc_letters:i:1}"; done
                mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$word")
            fi
            ;;
    esac
}

complete -F _tnc tnc
