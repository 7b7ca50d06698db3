#!/usr/bin/env bash
# medium_build_test.sh BUILDDIR SOURCEDIR: kwmedium makes media, and kwbatch installs them.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# expect_no_medium TEXT ARGUMENT...: kwmedium refuses to make $work/out, and leaves nothing of it.
expect_no_medium() {
  expect_exit 1 "$KWMEDIUM" "${@:2}"
  expect_text "$1"
  [[ ! -e $work/out && -z $(compgen -G "$work/.out-*") ]] || fail "left over: $1"
}

# make NAME COMMAND...: a medium without faults.
make() {
  expect_exit 0 "$KWMEDIUM" "${@:2}" "$work/$1"
  expect_exit 0 "$KWMEDIUM" check "$work/$1"
}

take_media
mkdir -p one/base/code/bin one/modeler/{code/bin,resources/msgcatalog/French}
printf '#!/bin/sh\n' | tee one/base/code/bin/TEVSysDemon >one/modeler/code/bin/TEVModeler
echo 'a = "é"' >'one/modeler/resources/msgcatalog/French/Modeler é.msg'
chmod 755 one/*/code/bin/*
ln -s TEVSysDemon one/base/code/bin/daemon
cat >one/suite.list <<'TEXT'
# A comment
code:FWK:BASE:os=aix_a:ga=R12:from=base:compress=zstd
code:PRD:Modeler:from=modeler
code:FWK:BASE:os=hpux_b:ga=R12:from=base:compress=gzip
code:PRD:Modeler:from=modeler:compress=no
TEXT
# The same bytes, whoever makes them.
export SOURCE_DATE_EPOCH=1500000000
make ga product one/suite.list
cp -r one two
(umask 077 && LC_ALL=fr_FR.UTF-8 TZ=Asia/Tokyo "$KWMEDIUM" product two/suite.list again --quiet)
diff -r ga again || fail 'the same input gave other bytes'
[[ $(stat -c %a again again/TOC again/*/BASE 2>/dev/null | sort -u | xargs) == '644 755' ]] ||
  fail 'not everybody may read the medium'
tar -tvf ga/aix_a/BASE | awk '$2 != "0/0" || $4 != "2017-07-14" { exit 1 }' || fail 'owners and times'

# Faults of a list, with its line. The list is there line by line.
line=code:PRD:X:from=one/modeler
printf 'code:FWK:BASE:os=aix_a:ga=R12:from=one/base\n' >first_line
mkdir empty foreign pipe own
touch "foreign/$(printf 'a\377')"
mkfifo pipe/x
mkdir own/control
touch own/control/PRESENT
while IFS='|' read -r text command; do
  cp first_line list
  printf '%b\n' "$command" >>list
  expect_no_medium "list:2: $text" product list out
done <<TEXT
The directory none does not exist|code:PRD:X:from=none
The directory of its files is missing|code:PRD:X
There are no files|code:PRD:X:from=empty
The name foreign/a? is not UTF-8|code:PRD:X:from=foreign
pipe/x is no file|code:PRD:X:from=pipe
own/control/PRESENT is in the directory control|code:PRD:X:from=own
The name BASE is in line 1 already|code:PRD:BASE:from=one/base
The name TOC is that of another|code:PRD:TOC:from=one/base
"kode" is no type|kode:PRD:X
The line is not UTF-8|code:PRD:\\0377
There is no key "form"|$line:form=x
compress= is|$line:compress=7
The operating system "a123456789abcdef" has more|$line:os=a123456789abcdef
Only service packs|$line:level=1
one/base/code/bin/daemon is no regular|code:SPK:X:from=one/base
one/modeler/resources/msgcatalog/French/Modeler é.msg |code:SPK:X:from=one/modeler
TEXT
echo code:PRD:X:from=one/base >list
expect_no_medium 'list:1: No line up to here' product list out
expect_no_medium 'none: The list' product none out
# What an installation would refuse, before anything is packed.
expect_no_medium 'first_line:1: out/TOC: an installation refuses it' product first_line out
expect_exit 1 "$KWMEDIUM" product one/suite.list ga
expect_text 'ga exists already'

# No compress, one that is killed, and one that fails at its end.
mkdir bin
while IFS='|' read -r text path command; do
  printf '#!/bin/sh\n%s\n' "$command" >bin/compress
  chmod +x bin/compress
  expect_exit 1 env PATH="$path" "$KWMEDIUM" product one/suite.list out
  expect_text "$text"
done <<TEXT
The program compress is missing, which the archives need (package ncompress)|/nowhere|
one/suite.list:3: out/aix_a/Modeler.Z: |$work/bin:$PATH|kill -9 \$\$
one/suite.list:3: out/aix_a/Modeler.Z: |$work/bin:$PATH|cat; exit 1
TEXT
# A file that is written while it is read, and a disk that fills up.
head -c 50000000 /dev/urandom >one/modeler/code/large
(while sleep 0.01; do echo >>one/modeler/code/large; done) &
expect_no_medium "suite.list:3: one/modeler/code/large has changed" product one/suite.list out
kill $!
mkdir small
if unshare -m mount -t tmpfs none small 2>/dev/null; then
  # shellcheck disable=SC2016
  expect_exit 1 unshare -m bash -c 'mount -t tmpfs -o size=1m none small && "$0" product "$1" small/out
    status=$?; [[ -z $(ls -A small) ]] && exit $status' "$KWMEDIUM" one/suite.list
  expect_text 'small/out/aix_a/Modeler.Z: No space left on device'
fi
# One that is stopped: nothing is left either.
"$KWMEDIUM" product one/suite.list out >output 2>&1 &
sleep 0.3
kill $!
wait $! && fail 'a medium was made after a signal'
expect_text Interrupted
expect_no_medium 'none: The list' product none out

# A service pack from two trees, or from two media. What it was made of is what it makes.
run 0 install "$media/ga" "$work/tree" --os aix_a
cp -r tree new
echo '# changed' >>new/aix_a/code/bin/TEVModeler
echo new >new/aix_a/code/data/new
chmod 700 new/aix_a/resources/graphic/icon001.dat
rm new/aix_a/resources/graphic/icon002.dat
echo changed >new/aix_a/resources/msgcatalog/French/BASE.msg
printf '#!/bin/sh\necho set up\n' >TEVPost
chmod 755 TEVPost
pack=(service-pack --name SP1 --level 1 --post TEVPost)
trees=(--from tree --to new)
expect_no_medium '  resources/graphic/icon002.dat' "${pack[@]}" "${trees[@]}" out
trees+=(--leave-removed)
expect_no_medium '  resources/msgcatalog/French/BASE.msg' "${pack[@]}" "${trees[@]}" out
expect_no_medium 'Nothing has changed' "${pack[@]}" --from tree --to tree out
# A wrong level is found before anything is unpacked.
expect_no_medium 'no number above 0' service-pack --from ga --to ga --name SP1 --level x out
grep Unpacking output && fail 'unpacked in vain'
expect_no_medium 'no number above 0' hot-fix --from ga --name HF1 --pack SP1 --pack-level 0 out code/bin/TEVModeler
grep Unpacking output && fail 'unpacked in vain'
make pack "${pack[@]}" "${trees[@]}" --leave-languages
printf '%s\n' code:SPK:SP1:os=aix_a:ga=R12:level=1 code:FSP:SP1-BASE code:FSP:SP1-Modeler | diff - pack/TOC
run 0 service-pack "$work/pack" "$work/tree"
run 0 verify "$work/tree"
run 0 commit "$work/tree"
for file in code/bin/TEVModeler code/data/new resources/graphic/icon001.dat; do
  cmp {new,tree}/aix_a/$file || fail "$file after the service pack"
done
[[ $(compress -dc pack/SP1.Z | tar -t | grep -vc '/$') == 7 ]] || fail 'too much in the pack'
expect_exit 0 "$KWMEDIUM" hot-fix --from new --name HF1 --pack SP1 --pack-level 1 fix code/bin/TEVModeler
expect_exit 0 "$KWMEDIUM" check fix
run 0 hot-fix "$work/fix" "$work/tree"
# Of two media, for all their systems.
echo '# changed' >>two/base/code/bin/TEVSysDemon
chmod u+s two/base/code/bin/TEVSysDemon
make ga2 product two/suite.list
# The archives' owner is root; whoever makes the pack may be another user.
user=(unshare --user --map-user=1000 --map-group=1000)
"${user[@]}" true 2>/dev/null || user=()
expect_exit 0 "${user[@]}" "$KWMEDIUM" service-pack --from ga --to ga2 --name SP1 --level 1 both
expect_exit 0 "$KWMEDIUM" check both
compress -dc both/aix_a/SP1.Z | tar -tv | grep '^-rws.*/TEVSysDemon$' >output || fail 'not set-user-id'
[[ $(<both/hpux_b/TOC) == code:SPK:SP1:os=hpux_b:ga=R12:level=1$'\n'code:FSP:SP1-BASE ]] || fail 'the pack of media'
[[ $(xargs <both/OSUNIX) == 'aix_a hpux_b' ]] || fail 'the systems of the pack'

# Only what a known key has signed is installed, if there is a keyring.
if ! command -v gpg gpgv >/dev/null; then
  echo 'Not tried: signatures, because there is no gpg.'
  exit
fi
export GNUPGHOME=$work/gnupg
mkdir -m 700 "$GNUPGHOME"
for key in one two old; do
  gpg --batch --quiet --faked-system-time 20240101T000000 --passphrase '' \
    --quick-generate-key $key@example.com default default "$([[ $key == old ]] && echo 1y || echo never)"
  gpg --export $key@example.com >$key.gpg
done 2>/dev/null
gpg --export --armor >armored.gpg
cat one.gpg old.gpg >both.gpg
run 0 check "$work/ga2" "$work/signed"
expect_text 'ga2 is not signed'
expect_refusal 'is not signed.' install "$work/ga2" "$work/signed" --keyring one.gpg
expect_exit 1 "$KWMEDIUM" sign ga2 --key old@example.com
[[ ! -e ga2/SHA256SUMS ]] || fail 'half a signature'
expect_exit 0 "$KWMEDIUM" sign ga2 --key one@example.com
expect_exit 0 "$KWMEDIUM" check ga2
# A key that does not exist takes no signature away.
cp ga2/SHA256SUMS.sig .
expect_exit 1 "$KWMEDIUM" sign ga2 --key none@example.com
cmp SHA256SUMS.sig ga2/SHA256SUMS.sig || fail 'the signature is gone'
[[ -z $(compgen -G 'ga2/*.new') ]] || fail 'half a signature'
mkdir dir.gpg
touch empty.gpg
while read -r keyring text; do
  expect_refusal "$text" install "$work/ga2" "$work/signed" --keyring "$keyring"
done <<'TEXT'
two.gpg not signed with a key of
armored.gpg gpg --dearmor
dir.gpg is no regular file
empty.gpg is empty
none.gpg does not exist
TEXT
while IFS='|' read -r text command; do
  rm -rf bad
  cp -r ga2 bad
  (cd bad && eval "$command")
  expect_refusal "$text" install "$work/bad" "$work/signed" --keyring both.gpg
done <<'TEXT'
was changed after it was signed|printf x | dd of=aix_a/BASE conv=notrunc bs=1 seek=200 status=none
has the file aix_a/Other, which is not signed|touch aix_a/Other
cannot be copied|rm hpux_b/BASE
it is no regular file|ln -sf /etc/passwd OSUNIX
not signed with a key of|sed -i s/BASE/X/ SHA256SUMS
not signed with a key of|echo >SHA256SUMS.sig
has the file link, which|ln -s aix_a link
outside the medium|echo 'x  ../ga2/OSUNIX' >SHA256SUMS; gpg --yes --quiet -u one@example.com -b SHA256SUMS
"a;b" cannot be used|echo 'x  a;b' >SHA256SUMS; gpg --yes --quiet -u one@example.com -b SHA256SUMS
has expired or was revoked|gpg --yes --quiet --faked-system-time 20240201T000000 -u old@example.com -b SHA256SUMS
TEXT
[[ ! -e signed ]] || fail 'something was installed from a medium that is not genuine'
echo >>bad/OSUNIX
expect_exit 1 "$KWMEDIUM" check bad
expect_text 'fault: The medium bad was changed'
# Messages and records name the medium, not the copy that is used.
run 0 check "$work/ga2" "$work/signed" --keyring one.gpg --deep
expect_text "  $work/ga2/aix_a/BASE"
run 0 install "$work/ga2" "$work/signed" --keyring one.gpg
expect_text 'ga2 is genuine'
run 0 verify "$work/signed"
expect_refusal 'not signed with a key of' languages "$work/signed" "$work/bad" --add French --keyring one.gpg
# The log of a failed transfer names the medium, too, and not the copy.
run 0 install "$work/ga2" "$work/kept" --keyring one.gpg --os aix_a --only BASE
mkdir -p kept/aix_a/code/bin/TEVModeler/directory
run 1 install "$work/ga2" "$work/kept" --keyring one.gpg --os aix_a
expect_text "$work/ga2/aix_a/Modeler.Z"
grep -r kwbatch-private scratch output && fail 'the path of the copy'
grep -q "$work/ga2/aix_a/Modeler.Z$" scratch/kwinst.log || fail 'no checksum of the archive'
