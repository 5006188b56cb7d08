# SPDX-License-Identifier: MIT

# complete.zsh FOLDER LINE: completes the line in an interactive zsh on a terminal of its own and
# prints the candidates. FOLDER/completions has the completions.
zmodload zsh/zpty
folder=$1
cat >$folder/start <<'START'
PS1=
autoload -Uz compinit && compinit -D -u
source $folder/completions
zstyle ':completion:*' insert-tab false
# Every completion passes its candidates to compadd. It returns those that match, instead of showing
# them, with -O; calls that ask for arrays themselves add nothing.
compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-[OAD]\ * || "$*" == *-[OAD]\ * ]]; then
    builtin compadd "$@"
    return
  fi
  local -a matching
  builtin compadd -O matching "$@"
  (($#matching)) && print -rl -- $matching >>$folder/candidates
  builtin compadd "$@"
}
finish() { exit }
comppostfuncs=(finish)
bindkey '^I' complete-word
START
typeset -x folder
zpty complete zsh -f -i
zpty -w complete "source \$folder/start"
zpty -w -n complete "$2"$'\t'
while zpty -r complete output; do :; done
[[ -e $folder/candidates ]] && cat $folder/candidates
true
