# complete.bash BASH_COMPLETION LINE WORD...: what is offered at the end of the line in the folder $PLACE, one a line.
. "$1"
cd "$PLACE" || exit 1
COMP_LINE=$2
shift 2
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
COMP_POINT=${#COMP_LINE}
COMP_TYPE=9
_completion_loader "$1" # as at the first completion of a command
[[ $(complete -p "$1") =~ -F\ ([^ ]+) ]] || exit 1
"${BASH_REMATCH[1]}" "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
[[ ${#COMPREPLY[@]} -eq 0 ]] || printf '%s\n' "${COMPREPLY[@]}"
