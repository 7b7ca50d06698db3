#!/usr/bin/env bash
# install_medium_test.sh BUILDDIR SOURCEDIR: installs the sample media with kwbatch, as a user does.
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

take_media
medium=$media/ga
(umask 077 && TZ=Asia/Tokyo "$make_media" "$work/again")
diff -r "$sample_media" "$work/again" || fail 'two sample media differ'

tree=$work/tree
languages='resources/msgcatalog/(French|Japanese)/[A-Za-z]+\.msg'
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

new_scratch
run 0 install "$medium" "$work/one" --os solaris_a --languages none --fonts
[[ $(<"$work/one/OSUNIX") == solaris_a && ! -e $work/one/aix_a ]] || fail 'more than one system'
check_system "$work/one/solaris_a" 'resources/fonts/Stroke/(SICH|TRCH|KANJ|KOHG|SSS4)\.font'
(($(find "$work/one" -name '*.font' | wc -l) == 6)) || fail 'fonts are missing'

# A name with a slash at its end; other languages; a run that finds everything there.
new_scratch
run 0 install "$medium" "$work/one/" --os aix_a --languages French
run 3 install "$medium" "$work/one" --languages all
expect_text 'already installed'
printf 'French\n\n' | cmp - "$work/one/aix_a/NLS.txt" || fail 'the record of languages changed'
printf 'Language-indexed fonts\n\n' | cmp - "$work/one/solaris_a/NLS.txt" || fail 'fonts'
cmp "$medium/aix_a/TOC" "$work/one/aix_a/control/PRESENT" || fail 'installed twice'
mkdir -p "$work/nls/aix_a/NLS.txt" "$work/nls/aix_a/control"
touch "$work/nls/aix_a/control/PRESENT"
echo aix_a >"$work/nls/OSUNIX"
expect_refusal "$work/nls/aix_a/NLS.txt" install "$medium" "$work/nls"
