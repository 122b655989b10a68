# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of brimwellpro's options for bash.

_brimwellpro() {
    local word=${COMP_WORDS[COMP_CWORD]} before=("${COMP_WORDS[@]:0:COMP_CWORD}")
    # "=" is a word of its own, in --simulate=TYPE as in --simulate TYPE=PATH.
    if [ "$word" = "=" ]; then
        before+=("=")
        word=
    fi
    case "${before[*]: -2}" in
    *" --simulate" | "--simulate =")
        compopt -o nospace
        mapfile -t COMPREPLY < <(compgen -W "dx20 regular high ultra wireless" -- "$word")
        ;;
    *" --language" | "--language =")
        mapfile -t COMPREPLY < <(compgen -W "en de es fr ja" -- "$word")
        ;;
    *" --import-settings" | *" =")
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        ;;
    *)
        mapfile -t COMPREPLY < <(compgen -W "--simulate --language --technician --import-settings --list-cameras --version --help" -- "$word")
        ;;
    esac
}
complete -F _brimwellpro brimwellpro
