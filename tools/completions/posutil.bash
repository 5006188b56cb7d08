# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Completion of posutil for bash. The words come from the help of the installed program, so that
# they are those that it has.
_posutil() {
  local current=${COMP_WORDS[COMP_CWORD]} command='' word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word != -* ]]; then
      command=$word
      break
    fi
  done
  COMPREPLY=()
  if [[ $current == -* ]]; then
    # Word splitting is intended: the help lists options between other words.
    # shellcheck disable=SC2207,SC2086
    COMPREPLY=($(compgen -W "$(posutil $command --help 2>/dev/null |
      sed -n 's/^ *\(-[^ ]*\).*/\1/p' | tr , '\n')" -- "$current"))
  elif [[ -z $command ]]; then
    # shellcheck disable=SC2207
    COMPREPLY=($(compgen -W "$(posutil --help 2>/dev/null |
      sed -n '/^Subcommands:/,/^$/s/^  \([^ ]*\).*/\1/p')" -- "$current"))
  fi
}
complete -o default -F _posutil posutil
