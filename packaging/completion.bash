# Completion of commands, options and files for the programs of Tamrin's updates. Commands and options
# are those that the program itself answers to --help.
_tamrin_tool() {
  local program=$1 word=$2 help command= i
  # shellcheck disable=SC2034 # COMPREPLY is the answer
  COMPREPLY=()
  help=$("$program" --help 2>/dev/null) || return 0
  for ((i = 1; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == -* ]] || { command=${COMP_WORDS[i]}; break; }
  done
  local name=${program##*/} commands
  commands=$(sed -n "s/^  $name \([a-z][a-z]*\).*/\1/p" <<<"$help")
  if [[ $word == -* ]]; then
    if [[ -n $command ]] && grep -qx -- "$command" <<<"$commands"; then
      help=$("$program" "$command" --help 2>/dev/null)
    fi
    mapfile -t COMPREPLY < <(compgen -W "$(grep -oE -- '(^|[ |[])--?[a-z0-9]+(-[a-z0-9]+)*' <<<"$help" |
      tr -d ' |[')" -- "$word" | sort -u)
  elif [[ -z $command && -n $commands ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  fi
  # Whatever else: files (by -o default).
}
complete -o default -o bashdefault -F _tamrin_tool TmWebUpdate TmSupport TmRollback tmpublish jetsql
