# Bash completion for kwbatch: what its own help lists.
# shellcheck shell=bash

_kwbatch() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local program=${COMP_WORDS[0]} commands options i
  COMPREPLY=()
  commands=$("$program" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
  for ((i = 1; i < COMP_CWORD; i++)); do
    if [[ $'\n'$commands$'\n' == *$'\n'${COMP_WORDS[i]}$'\n'* ]]; then break; fi
  done
  options=$("$program" ${COMP_WORDS[i]:+"${COMP_WORDS[i]}"} --help 2>/dev/null)
  if [[ $before == --languages ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'all none French German Italian Japanese Simplified_Chinese
      Korean' -- "$word")
  elif [[ $before == --* && $options == *"  $before "[A-Z]* ]]; then
    # A value: for the most part a file or a directory, which bash completes by itself.
    return
  elif [[ $word == -* ]]; then
    options=$(sed -nE 's|^  (-h,)?(--[a-z0-9-]+) .*|\2|p' <<<"$options")
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif ((i == COMP_CWORD)); then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  fi
}

complete -o default -F _kwbatch kwbatch
