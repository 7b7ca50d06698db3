#!/usr/bin/env bash
# answers_test.sh BUILDDIR SOURCEDIR: the options of one machine serve another. What the
# command line says comes first.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

take_media
medium=$media/ga
site=$work/site.ini
expect_exit 0 "$kwbatch" check "$medium" "$work/answered" --scratch "$work/scratch" --fonts \
  --os aix_a --deep --languages French --metasearch-server ' "a;b", #d' --save-answers "$site"
[[ $(stat -c %a "$site") == 600 ]] || fail 'others may read the answers'
# The answers come through a pipe.
expect_exit 0 "$kwbatch" install "$medium" "$work/answered" --answers <(cat "$site") --quiet \
  --languages Korean --log "$work/own.log" --save-answers "$work/again.ini"
[[ ! -s $work/output ]] || fail 'not quiet'
[[ ! -e $work/answered/solaris_a && ! -e $work/scratch/kwinst.log ]] || fail 'unread answers'
printf 'Language-indexed fonts\nKorean\n\n' | cmp - "$work/answered/aix_a/NLS.txt" || fail languages
(($(grep -cxE '={58}' "$work/own.log") == 2)) || fail 'own.log lacks its banner or closing line'
sed -e 's/^languages = French/languages = Korean/' -e "s|^;log =.*|log = $work/own.log|" \
  -e 's/^;quiet =.*/quiet = yes/' "$site" | diff - "$work/again.ini" || fail 'answers are lost'
run 2 check "$medium" "$work/none" --languages simplified_chines
expect_text $'did you mean Simplified_Chinese?\nLanguages: all, none, or some of French, German'
# What the log does not take is shown, and the exit status tells it.
expect_exit 1 "$kwbatch" install "$medium" "$work/unlogged" --answers "$site" --quiet \
  --log /dev/full
expect_text 'cannot be written'
expect_text '] done'
# Another command loses no answer, whatever stands in it; a failure leaves the file.
# shellcheck disable=SC2016
written=('java-home = "C:\temp"' 'drx = `d`' 'stop = on' 'fonts = No' '; log' "os='\"a\"'")
# shellcheck disable=SC2016
kept=('java-home = C:\temp' 'drx = `d`' 'stop = yes' 'fonts = no' 'os = ""a""' "scratch = $work/scratch")
printf '%s\n' "${written[@]}" >"$site"
run 1 verify "$work/none" --answers /dev/stdin --save-answers "$work/kept.ini" <"$site"
grep -v '^[;[]\|^$' "$work/kept.ini" | sort |
  diff - <(printf '%s\n' "${kept[@]}" | sort) || fail 'answers of other commands'
cp "$work/kept.ini" "$work/before.ini"
run 1 verify "$work/none" --os $'a\nb' --save-answers "$work/kept.ini"
cmp "$work/before.ini" "$work/kept.ini" || fail 'a failure changed the answers'
