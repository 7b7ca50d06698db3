#!/usr/bin/env bash
# install_medium_test.sh BUILDDIR SOURCEDIR: installs the sample media with kwbatch, as a user does.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# component_files TABLE SUFFIX: the files control/NAMESUFFIX of the components in the table.
component_files() { cut -d : -f 3 "$1" | sed "s|.*|control/&$2|" | xargs cat; }

# check_system DIRECTORY PATTERN: every listed file is as listed, and of the others only those
# that the pattern names are there.
check_system() {
  cd "$1"
  component_files control/PRESENT '' | paste -d ' ' - - | sort >"$work/listed"
  cut -d ' ' -f 1 "$work/listed" >"$work/paths"
  xargs stat -c '%n %a %s' <"$work/paths" >"$work/found"
  xargs cksum <"$work/paths" | cut -d ' ' -f 1 | paste -d ' ' "$work/found" - |
    diff "$work/listed" - || fail "files in $1 that differ from their manifest"
  find . -type f -printf '%P\n' | grep -vxFf "$work/paths" |
    grep -vxE "NLS.txt|control/[A-Za-z]+|$2" >"$work/output" || true
  [[ ! -s $work/output ]] || fail "files in $1 that should not be there"
  component_files "$medium/${1##*/}/TOC" .toc | cmp - control/PRESENT ||
    fail "$1/control/PRESENT is not the components' tables"
  cd "$work"
}

check_media_are_reproducible() {
  (umask 077 && TZ=Asia/Tokyo "$make_media" "$work/again")
  diff -r "$work/media" "$work/again" || fail 'two sample media differ'
}

check_two_systems() {
  local tree=$work/tree os languages='resources/msgcatalog/(French|Japanese)/[A-Za-z]+\.msg'
  new_scratch
  run 0 install "$medium" "$tree" --languages French,Japanese
  cmp "$medium/OSUNIX" "$tree/OSUNIX" || fail 'OSUNIX'
  [[ ! -e $tree/ErrorTar.log ]] || fail 'ErrorTar.log is left behind'
  for os in aix_a solaris_a; do
    check_system "$tree/$os" "$languages"
    (($(find "$tree/$os" | grep -cE "$languages") == 2 * $(wc -l <"$medium/$os/TOC"))) ||
      fail "catalogs of the chosen languages are missing in $os"
    printf 'French\nJapanese\n\n' | cmp - "$tree/$os/NLS.txt" || fail "$os/NLS.txt"
  done
  (($(grep -cxE '={58}' "$work/scratch/kwinst.log") == 2)) ||
    fail 'kwinst.log lacks its banner or its closing line'
}

check_one_system_with_fonts() {
  new_scratch
  run 0 install "$medium" "$work/one" --os solaris_a --languages none --fonts
  [[ $(<"$work/one/OSUNIX") == solaris_a && ! -e $work/one/aix_a ]] || fail 'more than one system'
  check_system "$work/one/solaris_a" 'resources/fonts/Stroke/(SICH|TRCH|KANJ|KOHG|SSS4)\.font'
  (($(find "$work/one" -name '*.font' | wc -l) == 6)) || fail 'fonts are missing'
}

check_later_runs() {
  # A name with a slash at its end; other languages; a run that finds everything there.
  new_scratch
  run 0 install "$medium" "$work/one/" --os aix_a --languages French
  expect_refusal 'already installed' install "$medium" "$work/one" --languages all
  printf 'French\n\n' | cmp - "$work/one/aix_a/NLS.txt" || fail 'the record of languages changed'
  printf 'Language-indexed fonts\n\n' | cmp - "$work/one/solaris_a/NLS.txt" || fail 'fonts'
  cmp "$medium/aix_a/TOC" "$work/one/aix_a/control/PRESENT" || fail 'installed twice'
  mkdir -p "$work/nls/aix_a/NLS.txt" "$work/nls/aix_a/control"
  touch "$work/nls/aix_a/control/PRESENT"
  echo aix_a >"$work/nls/OSUNIX"
  expect_refusal "$work/nls/aix_a/NLS.txt" install "$medium" "$work/nls"
}

# A medium whose table leads out of the target.
check_foreign_names() {
  mkdir -p "$work/foreign" "$work/victim/resources/msgcatalog/French"
  echo 'code:PRD:X:os=../victim' >"$work/foreign/TOC"
  expect_refusal ../victim install "$work/foreign" "$work/new" --languages none
  printf '%s\n' 'code:PRD:X;touch:os=aix_a' 'code:PRD:../X' >"$work/foreign/TOC"
  expect_refusal 'X;touch' install "$work/foreign" "$work/new"
  [[ -d $work/victim/resources/msgcatalog/French ]] || fail 'a directory outside was removed'
}

check_refusals() {
  mkdir "$work/empty"
  touch "$work/file"
  new_scratch
  expect_refusal "$work/empty" install "$work/empty" "$work/new"
  expect_refusal relative install "$medium" relative
  expect_refusal "$work/file" install "$medium" "$work/file/tree"
  expect_refusal "$work/with blank" install "$medium" "$work/with blank"
  [[ ! -e $work/new && ! -e $work/relative && ! -e "$work/with blank" ]] ||
    fail 'a refused target was made'
}

check_damaged_archive() {
  local archive=$work/damaged/Modeler.Z
  cp -r "$medium/aix_a" "$work/damaged"
  head -c 9000 "$medium/aix_a/BASE" >"$work/damaged/BASE"
  new_scratch
  expect_refusal "$work/damaged/BASE" install "$work/damaged" "$work/broken"
  cp "$medium/aix_a/BASE" "$work/damaged"
  head -c 9000 "$medium/aix_a/Modeler.Z" >"$archive"
  expect_refusal "$archive" install "$work/damaged" "$work/broken"
  expect_refusal "$archive" install "$work/damaged" "$work/broken" --quiet --log /dev/full
  expect_text 'Filesystem information'
  expect_text 'tar: '
  grep -qF "$(sum -r "$archive")" "$work/scratch/kwinst.log" || fail 'no checksum in kwinst.log'
  # In a bare root directory df may know no file system, and then prints nothing.
  grep -qF "$(df -k -i 2>/dev/null | head -n 1)" "$work/scratch/kwinst.log" ||
    fail 'no file systems in kwinst.log'
  [[ -z $(find "$work/broken" -name TEVInsErrorTransfer.log) ]] || fail 'a side log is left behind'
  # The installation is taken up where it failed.
  cp "$medium/aix_a/Modeler.Z" "$work/damaged"
  run 0 install "$work/damaged" "$work/broken"
  cmp "$medium/aix_a/TOC" "$work/broken/aix_a/control/PRESENT" || fail 'PRESENT after a failure'
}

# install_on_disk SIZE TEXT: an installation that the disk is too small for, and says so.
install_on_disk() {
  new_scratch
  # shellcheck disable=SC2016
  expect_exit 1 unshare -m bash -c \
    'mount -t tmpfs -o size="$4" none "$2" && exec "$0" install "$1" "$2/tree" --scratch "$3"' \
    "$kwbatch" "$medium" "$work/small" "$work/scratch" "$1"
  expect_text "$2"
}

check_full_disk() {
  mkdir "$work/small"
  if ! unshare -m mount -t tmpfs none "$work/small" 2>/dev/null; then
    echo 'Not tried: a full disk, because this user may not mount one.'
    return
  fi
  install_on_disk 64k "$work/small/tree"
  # Small files take more of a disk than archives show: this one fills up on the way.
  install_on_disk 1500k "cd $work/small/tree;"
}

# The options of one machine serve another; what the command line says comes first.
check_answers() {
  local site=$work/site.ini
  new_scratch
  expect_exit 0 "$kwbatch" check "$medium" "$work/answered" --scratch "$work/scratch" --fonts \
    --os aix_a --languages French --metasearch-server ' "a;b", #d' --save-answers "$site"
  [[ $(stat -c %a "$site") == 600 ]] || fail 'others may read the answers'
  expect_exit 0 "$kwbatch" install "$medium" "$work/answered" --answers "$site" --quiet \
    --languages Korean --log "$work/own.log" --save-answers "$work/again.ini"
  [[ ! -s $work/output ]] || fail 'not quiet'
  [[ ! -e $work/answered/solaris_a && ! -e $work/scratch/kwinst.log ]] || fail 'unread answers'
  printf 'Language-indexed fonts\nKorean\n\n' | cmp - "$work/answered/aix_a/NLS.txt" || fail languages
  (($(grep -cxE '={58}' "$work/own.log") == 2)) || fail 'own.log lacks its banner or closing line'
  sed -e 's/^languages = French/languages = Korean/' -e "s|^;log =.*|log = $work/own.log|" \
    -e 's/^;quiet =.*/quiet = yes/' "$site" | diff - "$work/again.ini" || fail 'answers are lost'
  # What the log does not take is shown, and the exit status tells it.
  expect_exit 1 "$kwbatch" install "$medium" "$work/unlogged" --answers "$site" --quiet \
    --log /dev/full
  expect_text 'cannot be written'
  expect_text '] done'
}

# expect_usage_error TEXT ARGUMENT...
expect_usage_error() {
  expect_exit 2 "$kwbatch" "${@:2}"
  expect_text "$1"
}

check_usage_errors() {
  expect_usage_error 'which command?'
  expect_usage_error 'did you mean service-pack?' servicepack a b
  expect_usage_error 'TARGET is required' install a
  expect_usage_error '"c"' install a b c
  expect_usage_error 'did you mean --languages?' install a b --langauges=French
  expect_usage_error 'tasks has no option --os; these have it: install' tasks a --os b
  expect_usage_error '--os must stand behind verify' --os a verify b
  expect_usage_error '--os' install a b --os
  expect_usage_error '--os needs a value' install a b --os=
  expect_usage_error '--orb-base needs --orb-port' install a b --orb-base 7
  expect_usage_error '"7x"' install a b --bb-port 7x --save-answers "$work/wrong.ini"
  expect_usage_error "$work/none.ini" install a b --answers "$work/none.ini"
  printf '; a comment\n[A section]\nstop = yes\nlangauges = French\n' >"$work/wrong.ini"
  expect_usage_error 'did you mean languages?' install a b --answers "$work/wrong.ini"
  echo 'fonts = perhaps' >"$work/wrong.ini"
  expect_usage_error '"perhaps"' install a b --answers "$work/wrong.ini"
}

check_colours() {
  local red=$'\e[31m'
  if ! script -qc true /dev/null 2>/dev/null; then
    echo 'Not tried: colours, because there are no terminals.'
    return
  fi
  script -qc "TERM=xterm $kwbatch none" /dev/null | grep -qF "$red" || fail 'no colour on a terminal'
  ! script -qc "NO_COLOR=1 TERM=xterm $kwbatch none" /dev/null | grep -qF "$red" || fail NO_COLOR
  ! TERM=xterm "$kwbatch" none 2>&1 | grep -qF "$red" || fail 'a colour in a file'
}

# complete_words WORD...: what bash proposes for the last word.
complete_words() {
  COMP_WORDS=("$kwbatch" "$@") COMP_CWORD=$#
  _kwbatch
  printf '%s\n' "${COMPREPLY[*]}"
}

check_completion() {
  # shellcheck source=kwbatch/kwbatch.bash
  source "$source/kwbatch/kwbatch.bash"
  [[ $(complete_words ver) == verify ]] || fail 'completion of a command'
  [[ $(complete_words --scratch /tmp verify --o) == --os ]] || fail 'completion of an option'
  [[ $(complete_words install --languages Ja) == Japanese ]] || fail 'completion of a language'
  [[ -z $(complete_words install --os ver) ]] || fail 'completion of a value'
}

# The manual names what the help does.
check_manual() {
  local command
  for command in '' $("$kwbatch" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'); do
    "$kwbatch" ${command:+"$command"} --help
  done | grep -oE -- '--[a-z0-9-]+' | sort -u >"$work/help"
  sed 's/\\-/-/g' "$source/docs/kwbatch.1" | grep -oE -- '--[a-z0-9-]+' | sort -u |
    diff "$work/help" - || fail 'kwbatch --help and kwbatch(1) differ'
}

source=$2
check_usage_errors
check_colours
check_completion
check_manual
make_sample_media
medium=$work/media/ga
check_media_are_reproducible
check_two_systems
check_one_system_with_fonts
check_later_runs
check_foreign_names
check_refusals
check_answers
check_damaged_archive
check_full_disk
