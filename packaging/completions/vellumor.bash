# Completion of vellumor for bash.

_vellumor() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} IFS=$'\n' name
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W $'status\n--help\n--version' -- "$word")
        return
    fi
    [[ ${COMP_WORDS[1]} == status ]] || return
    case $before in
        --account)
            while read -r name; do
                [[ $name == "$word"* ]] && COMPREPLY+=("$(printf %q "$name")")
            done < <(vellumor status --format '{name}' 2>/dev/null)
            ;;
        --format | --separator) ;;
        *)
            mapfile -t COMPREPLY < <(compgen -W \
                $'--json\n--waybar\n--format\n--separator\n--account\n--watch\n--help\n--version' -- "$word")
            ;;
    esac
}
complete -F _vellumor vellumor
