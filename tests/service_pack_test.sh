#!/usr/bin/env bash
# service_pack_test.sh BUILDDIR SOURCEDIR: service packs and hot fixes: installed, taken back,
# committed, and refused.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

install_tree
content tree >"$work/before"
expect_check 0 'may be installed' sp1 tree
expect_check 1 'HF1' hf1 tree
run 0 service-pack "$media/sp1" "$work/tree"
run 0 verify "$work/tree"
grep -q 'setting up Modeler for SP1' "$work/scratch/kwinst.log" || fail 'no post-install program'
expect_refusal 'tevstart -run TEVSoftwareMgt' service-pack "$media/sp2" "$work/tree"
expect_check 1 'Commit' hf1 tree
# What was changed here after the pack is kept.
echo later | tee "$system/code/bin/TEVRepair" >"$system/code/bin/TEVModeler"
run 0 undo-service-pack "$work/tree"
for file in "$system/code/bin/TEV"{Modeler,Repair}.site; do
  expect_text "kept as $file"
  [[ $(<"$file") == later ]] || fail "$file is lost"
  rm "$file"
done
expect_content before tree
run 3 undo-service-pack "$work/tree"
run 0 service-pack "$media/sp1" "$work/tree"
run 0 commit "$work/tree"
run 3 undo-service-pack "$work/tree"
expect_text 'waiting for a commit'
run 3 commit "$work/tree"
content tree >"$work/committed"
expect_check 3 'already installed' sp1 tree
run 0 service-pack "$media/sp2" "$work/tree"
run 0 undo-service-pack "$work/tree"
expect_content committed tree

# A post-install program that is killed is run again, though the last one goes well.
mkdir "$work/site" "$work/sp1"
compress -d -c "$media/sp1/SP1.Z" | tar -C "$work/site" -xf -
echo TEVSite TEVPostBase >"$work/site/aix_a/control/CAFPost.list"
tar -C "$work/site" -cf "$work/sp1/SP1" aix_a
cp "$media/sp1/TOC" "$work/sp1"
rm -r "$work/site"
(umask 077 && run 0 install "$media/ga/aix_a" "$work/site")
expect_content before site
modeler=$work/site/aix_a/code/bin/TEVModeler
echo ours >"$modeler"
# shellcheck disable=SC2016
printf '%s\n' '#!/bin/sh' 'echo at site' 'kill -9 $$' >"$work/site/aix_a/code/bin/TEVSite_SP1"
chmod +x "$work/site/aix_a/code/bin/TEVSite_SP1"
run 4 service-pack "$work/sp1" "$work/site"
grep -qx 'at site' "$work/scratch/kwinst.log" || fail 'the output is not in the log'
expect_refusal 'not finished' commit "$work/site"
run 4 service-pack "$work/sp1" "$work/site"
sed -i /kill/d "$work/site/aix_a/code/bin/TEVSite_SP1"
run 0 service-pack "$work/sp1" "$work/site"
expect_text "$modeler; a commit keeps it"
# A file that was changed here is kept, also when a hot fix fails and is repeated.
run 0 commit "$work/site"
expect_text "$modeler.site"
drafting=$work/site/aix_a/code/bin/TEVDrafting
echo ours >"$drafting"
mkdir "$work/fix" "$work/hf1"
tar -C "$work/fix" -xf "$media/hf1/HF1"
mv "$work/fix/aix_a/code/bin/"TEV{Modeler,Drafting}
sed -i s/TEVModeler/TEVDrafting/ "$work/fix/aix_a/control/HF1"
cp "$media/hf1/TOC" "$work/hf1"
tar -C "$work/fix" -cf "$work/hf1/HF1" aix_a
cp -r "$work/hf1" "$work/bad"
sed -i 's/hot fix 1/hot fix 9/' "$work/bad/HF1"
expect_refusal 'TEVDrafting: content has changed' hot-fix "$work/bad" "$work/site"
[[ $(<"$drafting") == ours ]] || fail 'a damaged hot fix was not taken back'
run 0 hot-fix "$work/hf1" "$work/site"
run 3 hot-fix "$work/hf1" "$work/site"
[[ $(<"$modeler.site") == ours && $(<"$drafting.site") == ours && ! -e $drafting.site.2 ]] ||
  fail 'the files of the site are lost'
run 0 verify "$work/site"
echo later >"$drafting"
run 0 undo-hot-fix "$work/site"
[[ $(<"$drafting") == ours && $(<"$drafting.site.2") == later ]] || fail 'a later change is lost'

# A pack whose list leads out of the tree, or names what would not be saved.
for path in ../../victim /etc/victim; do
  rm -rf "$work/foreign"
  mkdir -p "$work/foreign/aix_a/control"
  echo code:SPK:SP9:os=aix_a:ga=R12:level=9 | tee "$work/foreign/TOC" \
    >"$work/foreign/aix_a/control/SP9.toc"
  printf '%s\n644 0 4294967295\n' "$path" >"$work/foreign/aix_a/control/SP9"
  (cd "$work/foreign" && tar -cf SP9 aix_a)
  expect_refusal "$path" service-pack "$work/foreign" "$work/tree"
done

# What a pack would not let come back: a file set aside earlier, and a linked directory.
touch "$system/code/bin/TEVModeler.beforeSPK"
expect_refusal TEVModeler.beforeSPK service-pack "$media/sp2" "$work/tree"
rm "$system/code/bin/TEVModeler.beforeSPK"
mv "$system/code/bin" "$work/elsewhere"
ln -s "$work/elsewhere" "$system/code/bin"
expect_refusal 'aix_a/code/bin is a symbolic link' service-pack "$media/sp2" "$work/tree"
expect_check 1 'aix_a/code/bin is a symbolic link' hf1 tree
run 1 hot-fix "$media/hf1" "$work/tree"
rm "$system/code/bin"
mv "$work/elsewhere" "$system/code/bin"
expect_content committed tree

# Hot fixes. Those of one service pack go with the next.
run 1 hot-fix "$media/sp2" "$work/tree"
run 1 service-pack "$media/hf1" "$work/tree"
expect_check 0 'may be installed' hf1 tree
rm "$system/code/bin/TEVDrafting"
run 0 hot-fix "$media/hf1" "$work/tree"
expect_text 'code/bin/TEVDrafting: is missing'
tar -xf "$media/ga/aix_a/Drafting" -C "$work/tree" aix_a/code/bin/TEVDrafting
run 0 verify "$work/tree"
expect_check 3 'already installed' hf1 tree
expect_check 1 'HF1' hf2 tree
run 0 service-pack "$media/sp2" "$work/tree"
expect_check 3 'already installed' sp2 tree
expect_check 1 'level 2' sp1 tree
expect_refusal 'HF1' hot-fix "$media/hf1" "$work/tree"

# Products that are added below a service pack, which goes on again above them.
cp -r "$media/ga/aix_a" "$work/few"
sed -i /Modeler/d "$work/few/TOC"
run 0 install "$work/few" "$work/late"
unfinished=$work/late/aix_a/control/Install.unfinished
printf 'medium /none\nend\n' >"$unfinished"
expect_refusal 'not finished' service-pack "$media/sp1" "$work/late"
# A record that a power cut has emptied forbids nothing, if all files are in place.
: >"$unfinished"
mv "$work/late/aix_a/code/bin/TEVDrafting" "$work/kept"
expect_refusal 'not finished' service-pack "$media/sp1" "$work/late"
mv "$work/kept" "$work/late/aix_a/code/bin/TEVDrafting"
run 0 service-pack "$media/sp1" "$work/late"
run 0 commit "$work/late"
run 0 hot-fix "$media/hf1" "$work/late"
expect_refusal '--with-pack' install "$media/ga/aix_a" "$work/late"
expect_refusal 'not that of' install "$media/ga/aix_a" "$work/late" --with-pack "$media/sp2"
echo ours >"$work/late/aix_a/code/bin/TEVSysDemon"
run 0 install "$media/ga/aix_a" "$work/late" --with-pack "$media/sp1"
expect_text "kept as $work/late/aix_a/code/bin/TEVSysDemon.site"
[[ -z $(find "$work/late" -name '*.site' ! -name TEVSysDemon.site) ]] || fail 'kept what is not ours'
run 0 verify "$work/late"
grep -q 'service pack 1, from' "$work/late/aix_a/code/bin/TEVModeler" || fail 'an older file'
run 0 hot-fix "$media/hf1" "$work/late"
# Files of the pack that were replaced by older ones.
tar -xf "$media/ga/aix_a/BASE" -C "$work/late" aix_a/code/bin/TEVSysDemon
run 0 service-pack "$media/sp1" "$work/late"
run 0 verify "$work/late"
