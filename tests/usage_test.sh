#!/usr/bin/env bash
# usage_test.sh BUILDDIR SOURCEDIR: what kwbatch says of itself, and of wrong command lines.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
source=$2

# expect_usage_error TEXT ARGUMENT...
expect_usage_error() {
  expect_exit 2 "$kwbatch" "${@:2}"
  expect_text "$1"
}

expect_usage_error 'which command?'
expect_usage_error 'did you mean service-pack?' servicepack a b
expect_usage_error 'did you mean install?' help instal
expect_usage_error 'TARGET is required' install a
expect_usage_error '"c"' check a b c
expect_usage_error 'did you mean --languages?' install a b --langauges=French
expect_usage_error 'tasks has no option --os; these have it: install' tasks a --os b
expect_usage_error '--os must come after verify' --os a verify b
expect_usage_error '--os' install a b --os
expect_usage_error '--os needs a value' install a b --os=
expect_usage_error '--orb-base needs --orb-port' install a b --orb-base 7
expect_usage_error '--wait needs' status /a --wait -5
expect_usage_error '"7x"' install a b --bb-port 7x --save-answers "$work/wrong.ini"
expect_usage_error "$work/none.ini" install a b --answers "$work/none.ini"
# Wrong lines of a file of answers.
while IFS='|' read -r text lines; do
  printf '\xEF\xBB\xBF; a comment\n[A section]\r\n%b' "$lines" >"$work/wrong.ini"
  expect_usage_error "$text" install a b --answers "$work/wrong.ini"
done <<'CASES'
wrong.ini:4: there is no option "langauges"; did you mean languages?|stop = yes\nlangauges = French\n
wrong.ini:3: fonts is yes or no, not "maybe"|fonts = maybe\n
wrong.ini:4: os is in line 3 too|os =\nos = aix_a\r\n
wrong.ini:5: there is no "="|\n# = \nquiet\n
"7x"|bb-port = '7x'
CASES

red=$'\e[31m'
if script -qc true /dev/null 2>/dev/null; then
  script -qc "TERM=xterm '$kwbatch' none" /dev/null | grep -qF "$red" || fail 'no colour on a terminal'
  ! script -qc "NO_COLOR=1 TERM=xterm '$kwbatch' none" /dev/null | grep -qF "$red" || fail NO_COLOR
else
  echo 'Not tried: colours, because there are no terminals.'
fi
TERM=xterm expect_usage_error '"none"' none
! grep -qF "$red" "$work/output" || fail 'a colour in a file'

# complete_words WORD...: what bash proposes for the last word.
complete_words() {
  COMP_WORDS=("$kwbatch" "$@") COMP_CWORD=$#
  _kwbatch
  printf '%s\n' "${COMPREPLY[*]}"
}

# shellcheck source=kwbatch/kwbatch.bash
source "$source/kwbatch/kwbatch.bash"
export LC_ALL=de_DE.UTF-8
"$kwbatch" help tasks >"$work/output"
expect_text 'Beispiele:'
! grep -q '^[A-Z][a-z]*s:$' "$work/output" || fail 'a heading is not in German'
[[ $(complete_words ver) == verify ]] || fail 'completion of a command'
export LC_ALL=C
[[ $(complete_words --scratch /tmp verify --o) == --os ]] || fail 'completion of an option'
[[ $(complete_words install --languages Ja) == Japanese ]] || fail 'completion of a language'
[[ -z $(complete_words install --os ver) ]] || fail 'completion of a value'

"$kwbatch" help tasks | diff - <("$kwbatch" tasks --help) || fail 'help COMMAND'
# The manuals name what the help does.
for name in kwbatch kwmedium; do
  program=$KWMEDIUM
  [[ $name == kwmedium ]] || program=$kwbatch
  for command in '' $("$program" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'); do
    "$program" ${command:+"$command"} --help
  done | grep -oE -- '--[a-z0-9-]+' | sort -u >"$work/help"
  sed 's/\\-/-/g' "$source/docs/$name.1" | grep -oE -- '--[a-z0-9-]+' | sort -u | diff "$work/help" - ||
    fail "$name --help and $name(1) differ"
done
