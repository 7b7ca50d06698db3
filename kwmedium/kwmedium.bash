# Bash completion for kwmedium: what its own help lists.
# shellcheck shell=bash

_kwmedium() {
  local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local commands help command='' i
  # "--option=value" comes as three words.
  if [[ $word == = ]]; then
    word=''
  elif [[ $before == = ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  commands=$("$program" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
  for ((i = 1; i < COMP_CWORD; i++)); do
    if grep -qxF -e "${COMP_WORDS[i]}" <<<"$commands"; then command=${COMP_WORDS[i]}; fi
  done
  help=$("$program" ${command:+"$command"} --help 2>/dev/null)
  if [[ $before == --* && $help =~ "  $before "(ID|NAME|N|LEVEL)" " ]]; then
    return
  elif [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W \
      "$(sed -nE 's/^ {2,10}(-h, *)?(--[a-z0-9-]+) .*/\2/p' <<<"$help")" -- "$word")
  elif [[ -z $command ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
    compopt -o filenames 2>/dev/null
  fi
}

complete -F _kwmedium kwmedium
