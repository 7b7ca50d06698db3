#!/usr/bin/env bash
# interruption_test.sh BUILDDIR SOURCEDIR: commands that are interrupted, by a transfer that fails in
# its middle, by a signal or by the power, and then go well: nothing of what was saved is lost.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# run_interrupted ARGUMENT...: kwbatch fails, since only one file is unpacked.
run_interrupted() { PATH=$work/bin:$PATH run 1 "$@"; }

install_service_pack
mkdir "$work/bin"
cat >"$work/bin/tar" <<'TAR'
#!/bin/sh
[ "$1 $#" = "-xf 2" ] || exec /bin/tar "$@"
/bin/tar "$@" aix_a/code/bin/TEVModeler
exit 2
TAR
chmod +x "$work/bin/tar"
: >"$system/control/SPK.journal"
run_interrupted service-pack "$media/sp2" "$work/tree"
[[ -e $system/code/bin/TEVModeler.beforeSPK ]] || fail 'nothing was saved'
expect_refusal 'not finished' commit "$work/tree"
expect_refusal 'not finished' service-pack "$media/sp1" "$work/tree"
run 0 undo-service-pack "$work/tree"
expect_content committed tree
run_interrupted service-pack "$media/sp2" "$work/tree"
run 0 service-pack "$media/sp2" "$work/tree"
cp "$system/control/SPK.journal" "$work/journal"
# A journal that is not whole counts only where a pack has begun.
: >"$system/control/SPK.journal"
expect_refusal 'SPK.journal is damaged' undo-service-pack "$work/tree"
mv "$work/journal" "$system/control/SPK.journal"
# Once more, over a file of the pack that is missing.
rm "$system/code/bin/TEVDrafting"
run 0 service-pack "$media/sp2" "$work/tree"
run 0 verify "$work/tree"
tail -n 2 "$work/scratch/kwinst.log" | grep -q '] done' || fail 'the verification is not logged'
# An undo that cannot rename a file, and is repeated.
mv "$system/code/bin/TEVModeler" "$work/TEVModeler"
mkdir -p "$system/code/bin/TEVModeler/full"
run 1 undo-service-pack "$work/tree"
rm -r "$system/code/bin/TEVModeler"
run 0 undo-service-pack "$work/tree"
expect_content committed tree
# A committed pack that is set over a damaged file stays committed.
rm "$system/code/bin/TEVRepair"
expect_refusal 'code/bin/TEVRepair: is missing' verify "$work/tree"
expect_text "kwbatch repair MEDIUM $work/tree"
# Each file is put back from the medium that it should be as.
echo changed >"$system/code/bin/TEVDrafting"
run 0 repair "$media/ga" "$work/tree"
expect_text 'code/bin/TEVRepair: is missing'
run 0 repair "$media/sp1" "$work/tree"
expect_content committed tree
rm "$system/code/bin/TEVRepair"
expect_check 1 'again' hf1 tree
expect_check 0 'may be installed' sp1 tree
run_interrupted service-pack "$media/sp1" "$work/tree"
run 1 undo-service-pack "$work/tree"
run 0 service-pack "$media/sp1" "$work/tree"
expect_content committed tree

# Two commands at once, and signals, while a tar takes its time. A killed kwbatch leaves its tar.
mkdir "$work/slow"
# shellcheck disable=SC2016
printf '#!/bin/sh\n[ "$1 $#" = "-xf 2" ] || exec /bin/tar "$@"\ntouch %q\nsleep 2\n' \
  "$work/begun" >"$work/slow/tar"
chmod +x "$work/slow/tar"
set -m
# begin ARGUMENT...: starts kwbatch as $first, in a process group of its own.
begin() {
  rm -f "$work/begun"
  PATH=$work/slow:$PATH "$kwbatch" "$@" --scratch "$work/scratch" >"$work/first" 2>&1 &
  first=$!
  until [[ -e $work/begun ]]; do sleep 0.05; done
}
expect_interruption() {
  expect_exit 1 wait "$first"
  grep -qF "$1" "$work/first" || fail "no '$1'"
  tail -n 2 "$work/scratch/kwinst.log" | grep -q '] interrupted' || fail 'no trailer'
}
begin service-pack "$media/sp2" "$work/tree"
run 5 verify "$work/tree"
expect_text "process $first "
kill -INT -- "-$first"
expect_interruption "undo it with: kwbatch undo-service-pack $work/tree"
grep -qF "The log is $work/scratch/kwinst.log" "$work/first" || fail 'no path of the log'
begin service-pack "$media/sp2" "$work/tree"
kill -TERM "$first"
expect_interruption 'Repeat the command'
run 0 undo-service-pack "$work/tree"
expect_content committed tree
begin install "$media/ga" "$work/piped" --os aix_a
kill -KILL "$first"
left=$(mktemp -d /tmp/kwbatch-private-XXXXXX)
touch -d '1 hour ago' "$left"
run 5 install "$media/ga" "$work/piped" --os aix_a
run 0 install "$media/ga" "$work/piped" --os aix_a --wait 30
[[ ! -e $left ]] || fail 'the directory of a killed kwbatch is still there'
begin install "$media/ga" "$work/other" --os aix_a
run 5 install "$media/ga" "$work/third" --os aix_a
expect_text "works on $work/scratch"
[[ ! -e $work/third ]] || fail 'a target was made'
kill -HUP "$first"
expect_interruption 'Repeat the command to go on.'
# Nobody reads what it prints.
# shellcheck disable=SC2016
expect_exit 1 bash -c 'set -o pipefail; (sleep 0.5; "$0" "$@") | true' "$kwbatch" install "$media/ga" \
  "$work/other" --os aix_a --scratch "$work/scratch"
expect_text 'Repeat the command to go on.'
run 0 install "$media/ga" "$work/other" --os aix_a
# A development kit is written into the tree of its code too.
begin install "$media/sdk" "$work/sdk" --code "$work/other"
run 5 uninstall "$work/other"
kill -HUP "$first"
expect_interruption 'Repeat the command to go on.'
set +m
# A target that another command removes and makes anew, while this one waits for it.
mkdir "$work/anew"
exec 8<"$work/anew"
flock 8
(sleep 0.5 && rmdir "$work/anew" && mkdir "$work/anew" && exec 9<"$work/anew" && flock 9 &&
  flock -u 8 && sleep 4) &
run 5 install "$media/ga" "$work/anew" --os aix_a --wait 2
[[ -z $(ls "$work/anew") ]] || fail 'a locked directory was written to'
wait $!
exec 8<&-

# The power goes right after "done": the disk has what its image holds.
mkdir "$work/disk"
# shellcheck disable=SC2016
if ! unshare -m bash -c 'truncate -s 24M "$1.img" && mkfs.ext4 -q "$1.img" &&
    mount -o loop "$1.img" "$1"' - "$work/disk" 2>/dev/null; then
  echo 'Not tried: a power cut, because this user may not mount a disk.'
  exit
fi
# shellcheck disable=SC2016
expect_exit 0 unshare -m bash -ec 'mount -o loop "$1.img" "$1"
  "$0" install "$2/ga" "$1/tree" --os aix_a --scratch "$3"
  "$0" service-pack "$2/sp1" "$1/tree" --scratch "$3"
  mkdir "$1/scratch" && "$0" register "$1/tree" --scratch "$1/scratch"
  cp "$1.img" "$1.cut"
  umount "$1"
  mount -o loop "$1.cut" "$1"
  grep morvelk7run "$1/scratch/services"
  grep TEVSysDemon "$1/scratch/inetd.conf"
  "$0" verify "$1/tree" --scratch "$3" && "$0" commit "$1/tree" --scratch "$3"' \
  "$kwbatch" "$work/disk" "$media" "$work/scratch"

# An undo on a disk that is full.
# shellcheck disable=SC2016
expect_exit 0 unshare -m bash -ec 'mount -t tmpfs -o size=8M none "$1"
  "$0" install "$2/ga" "$1/tree" --os aix_a --scratch "$3"
  find "$1/tree" -type f -exec cksum {} + >"$1.before"
  head -c "$(($(df --output=avail -k "$1" | tail -n 1) - 12))K" /dev/zero >"$1/full"
  ! "$0" service-pack "$2/sp1" "$1/tree" --scratch "$3" 2>"$3/refusal" && grep "not enough space" "$3/refusal"
  rm "$1/full"
  "$0" service-pack "$2/sp1" "$1/tree" --scratch "$3"
  cat /dev/zero >"$1/full" || true
  "$0" undo-service-pack "$1/tree" --scratch "$3"
  find "$1/tree" -type f -exec cksum {} + | sort | diff <(sort "$1.before") -' \
  "$kwbatch" "$work/disk" "$media" "$work/scratch"
