#!/usr/bin/env bash
# install_failures_test.sh BUILDDIR SOURCEDIR: media that are foreign or
# damaged, targets that are refused, and full disks.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

take_media
medium=$media/ga

# A medium whose table leads out of the target.
mkdir -p "$work/foreign" "$work/victim/resources/msgcatalog/French"
echo 'code:PRD:X:os=../victim' >"$work/foreign/TOC"
expect_refusal ../victim install "$work/foreign" "$work/new" --languages none
printf '%s\n' 'code:PRD:X;touch:os=aix_a' 'code:PRD:../X' >"$work/foreign/TOC"
expect_refusal 'X;touch' install "$work/foreign" "$work/new"
[[ -d $work/victim/resources/msgcatalog/French ]] || fail 'a directory outside was removed'

mkdir "$work/empty"
touch "$work/file"
expect_refusal "$work/empty" install "$work/empty" "$work/new"
ln -s TOC "$work/empty/TOC"
expect_refusal 'TOC cannot be read' install "$work/empty" "$work/new"
expect_refusal relative install "$medium" relative
expect_refusal "$work/file" install "$medium" "$work/file/tree"
expect_refusal "$work/with blank" install "$medium" "$work/with blank"
[[ ! -e $work/new && ! -e $work/relative && ! -e "$work/with blank" ]] ||
  fail 'a refused target was made'

# A program that the archives need is missing.
mkdir "$work/few"
for program in sh cat tar mkfifo tail tee; do ln -s "$(command -v $program)" "$work/few"; done
run_bare() { PATH=$work/few "$kwbatch" "$@"; }
if [[ ! ${KWBATCH_WRAPPER-} ]]; then
  expect_exit 1 run_bare check "$medium" "$work/new" --scratch "$work/scratch"
  expect_text 'The program compress is missing'
fi
archive=$work/damaged/Modeler.Z
cp -r "$medium/aix_a" "$work/damaged"
head -c 9000 "$medium/aix_a/Modeler.Z" >"$archive"
expect_refusal "$archive" install "$work/damaged" "$work/broken"
cp "$medium/aix_a/Modeler.Z" "$work/damaged"
# Cut between two members, where tar finds nothing wrong.
blocks=$(tar -tRf "$medium/aix_a/BASE" | sed -n 's|^block \(.*\): .*Korean/BASE.msg|\1|p')
head -c $((512 * blocks)) "$medium/aix_a/BASE" >"$work/damaged/BASE"
expect_refusal "$work/damaged/BASE" install "$work/damaged" "$work/broken"
cp "$medium/aix_a/BASE" "$work/damaged"
[[ ! -e $work/broken ]] || fail 'a damaged archive was unpacked'
# A transfer that fails.
mkdir "$work/bin"
# shellcheck disable=SC2016
printf '%s\n' '#!/bin/sh' '[ "$1 $2" = "-xf -" ] || exec /bin/tar "$@"' 'echo tar: no >&2' \
  'exit 2' >"$work/bin/tar"
chmod +x "$work/bin/tar"
PATH=$work/bin:$PATH expect_refusal "$archive" install "$work/damaged" "$work/broken" \
  --languages French
expect_refusal 'damaged in' install "$media/samples" "$work/broken"
PATH=$work/bin:$PATH expect_refusal "$archive" install "$work/damaged" "$work/broken" --quiet --log /dev/full
expect_text 'Filesystem information'
expect_text 'tar: '
grep -qF "$(sum -r "$archive")" "$work/scratch/kwinst.log" || fail 'no checksum in kwinst.log'
# In a bare root directory df may know no file system, and then prints nothing.
grep -qF "$(df -k -i 2>/dev/null | head -n 1)" "$work/scratch/kwinst.log" ||
  fail 'no file systems in kwinst.log'
[[ -z $(find "$work/broken" -name TEVInsErrorTransfer.log) ]] || fail 'a side log is left behind'
# A directory that was moved behind a link stays there.
mv "$work/broken/aix_a/code" "$work/code"
ln -s "$work/code" "$work/broken/aix_a/code"
expect_refusal 'aix_a/code is a symbolic link' install "$work/damaged" "$work/broken"
rm "$work/broken/aix_a/code"
mv "$work/code" "$work/broken/aix_a/code"
# The installation is taken up where it failed, with the languages that were asked for, whatever a
# kill has left of their record.
: >"$work/broken/aix_a/NLS.txt"
sed -i 's/drawings and sheets/drawings and sleets/' "$work/damaged/Drafting"
expect_refusal 'code/bin/TEVDrafting: content has changed' install "$work/damaged" "$work/broken"
expect_refusal 'code/bin/TEVDrafting: content has changed' install "$work/damaged" "$work/broken"
cp "$medium/aix_a/Drafting" "$work/damaged"
run 0 repair "$work/damaged" "$work/broken"
run 0 install "$work/damaged" "$work/broken"
cmp "$medium/aix_a/TOC" "$work/broken/aix_a/control/PRESENT" || fail 'PRESENT after a failure'
printf 'French\n\n' | cmp - "$work/broken/aix_a/NLS.txt" || fail 'the languages after a failure'

mkdir "$work/small"
if ! unshare -m mount -t tmpfs none "$work/small" 2>/dev/null; then
  echo 'Not tried: a full disk, because this user may not mount one.'
  exit
fi

# on_disk STATUS OPTIONS SCRIPT: installs on a tmpfs, in which the script is run then.
on_disk() {
  new_scratch
  # shellcheck disable=SC2016
  expect_exit "$1" unshare -m bash -ec 'mount -t tmpfs -o "$1" none "$3/small"
    "$0" install "$2" "$3/small/tree" --scratch "$3/scratch"; cd "$3/small"; eval "$4"' \
    "$kwbatch" "$2" "$medium" "$work" "${3-}"
}

# What is needed is known before anything is written: the blocks of the files, and their inodes.
on_disk 1 size=1500k
expect_text "not enough space. In $work/small"
on_disk 1 nr_inodes=500
expect_text 'not enough space'
on_disk 0 size=16M,nr_inodes=2000 'df -k --output=used,iused .'
read -r used inodes < <(tail -n 1 "$work/output")
read -r needed files < <(sed -nE 's/^In .*, ([0-9]+) KB and ([0-9]+) inodes are needed.*/\1 \2/p' "$work/output")
((needed >= used && needed < used + 400 && files >= inodes && files < inodes + 40)) ||
  fail "$needed KB and $files inodes were said, $used and $inodes are used"
# shellcheck disable=SC2016
on_disk 1 size=16M 'rm -r tree/aix_a/code/data && head -c "$(($(df --output=avail -k . | tail -n 1) - 400))K" /dev/zero >full
  "$0" repair "$2" "$3/small/tree" --scratch "$3/scratch" || { [[ ! -e tree/aix_a/code/data ]] && exit 1; }'
expect_text 'not enough space'
on_disk 1 ro
expect_text 'is read-only'
# shellcheck disable=SC2016
on_disk 1 size=16M 'mount -o remount,ro . && exec "$0" repair "$2" "$3/small/tree" --scratch "$3/scratch"'
expect_text 'is read-only'
