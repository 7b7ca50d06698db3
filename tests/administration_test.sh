#!/usr/bin/env bash
# administration_test.sh BUILDDIR SOURCEDIR: what an administrator of many machines asks of kwbatch:
# reports for machines, who owns a file, and how everything goes away again.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
check=(${KWBATCH_WRAPPER:+"$KWBATCH_WRAPPER"} "$1/tests/json_check" "$2/docs/kwbatch.schema.json")

# expect_json STATUS FIELDS ARGUMENT...: the object on standard output is as the schema says, and has
# these fields, each "POINTER=VALUE".
expect_json() {
  local want=$1 fields=$2 got=0 field
  "$kwbatch" "${@:3}" --json --scratch "$work/scratch" >"$work/object" 2>"$work/output" || got=$?
  ((got == want)) || fail "exit $got instead of $want: ${*:3}"
  for field in "/status=$want" $fields; do
    [[ $("${check[@]}" "${field%%=*}" <"$work/object") == "${field#*=}" ]] ||
      fail "no $field: $(cat "$work/object")"
  done
}

take_media
tree=$work/tree first=/systems/0
steps="$media/ga/aix_a $media/sp1 $media/hf1 $work/steps --no-services"
while IFS='|' read -r status fields arguments; do
  # shellcheck disable=SC2086 # words
  expect_json "$status" "$fields" $arguments
done <<CASES
3|/kind="none" /changed=false|status $tree
0|/kind="medium" $first/level="R12" /systems/1/name="solaris_a"|status $media/ga
0|$first/service_packs/0/state="required" $first/hot_fixes/0/name="HF1"|status $media/hf1
0|/changed=false /done=[]|check $media/ga $tree --os aix_a
0|/changed=true|install $media/ga $tree --os aix_a --languages French
3|/changed=false|install $media/ga $tree --os aix_a
0|/changed=false|install $media/ga $tree --os aix_a --if-needed
1|/changed=false|hot-fix $media/hf1 $tree
0|/changed=true|service-pack $media/sp1 $tree
3|/changed=false|install $media/ga $media/sp1 $tree --os aix_a
0|$first/service_packs/0/state="pending" $first/languages=["French"] $first/registered/current=true|status $tree
0|/changed=true|commit $tree
0|/changed=true|hot-fix $media/hf1 $tree
0|$first/service_packs/0/state="committed" $first/hot_fixes/0/state="installed"|status $tree
2|/changed=false|install $media/ga/aix_a $work/old --only Modler
0|/changed=true|install $media/ga/aix_a $work/old --only Modeler --languages French --run-port 20071
0|$first/products=["BASE","Modeler"]|status $work/old
3|/changed=false|install $media/ga/aix_a $work/old --only Modeler
0|/changed=true|languages $work/old $media/ga --add German --os aix_a
3|/changed=false|languages $work/old $media/ga/aix_a --add German
0|$first/languages=["French","German"]|status $work/old
0|/changed=true|install $media/ga/aix_a $media/sp1 $work/steps --no-services --only Drafting
3|/changed=false|install $media/ga/aix_a $media/sp1 $work/steps --no-services --only Drafting
2|/changed=false|install $media/ga/aix_a $media/sp1 $work/few --no-services --only Draftin
0|/changed=true|undo-service-pack $work/steps
0|/changed=true|install $steps --commit
3|/changed=false|install $steps --commit
1|/changed=false|install $media/other-level $media/sp1 $work/steps --no-services
3|/changed=false|languages $work/steps $media/sp1 --add German
0|/changed=true|undo-hot-fix $work/steps
3|/changed=false|undo-hot-fix $work/steps
0|$first/hot_fixes=[] $first/service_packs/0/state="committed"|status $work/steps
0|/changed=false|verify $work/steps
CASES

# In another language the texts change, and nothing that a machine reads. A text that the catalog lacks is
# English. The path of the catalogs may be relative.
mkdir -p catalog/German
cp "$2/resources/msgcatalog/kwbatch.msg" catalog
printf '%s\n' 'StatusUpdate = "{1}: {3} (Stufe {2})"' 'StateCommitted = "übernommen"' >catalog/German/kwbatch.msg
in_german=(env LC_ALL=de_DE.UTF-8 TEVMsgCatalogPath=catalog)
expect_exit 0 "${in_german[@]}" "$kwbatch" status "$tree"
expect_text '  service packs: SP1: übernommen (Stufe 1)'
expect_exit 0 "${in_german[@]}" "$kwbatch" status "$tree" --json
for field in "$first/service_packs/0/state=\"committed\"" "$first/state=\"complete\""; do
  [[ $("${check[@]}" "${field%%=*}" <"$work/output") == "${field#*=}" ]] || fail "no $field in German"
done
expect_text 'SP1: übernommen (Stufe 1)'
TEVMsgCatalogPath=$work/none expect_exit 0 "$kwbatch" status "$tree"
expect_text 'SP1 (level 1, committed)'

sed -i s/20051/20061/ "$work/scratch/services"
rm "$system/code/bin/TEVSession"
expect_json 0 "$first/registered/current=false" status "$tree"
expect_json 0 /changed=true repair "$media/ga" "$tree"
expect_json 0 '/files/0/packages=["Modeler","SP1","HF1"] /files/1/packages=["BASE"]' owner "$tree" \
  "$system/code/bin/TEVModeler" aix_a/resources/msgcatalog/French/BASE.msg
expect_json 1 '/files/0/packages=[]' owner "$tree" "$tree/none"
expect_refusal Commit install "$media/ga/aix_a" "$media/sp1" "$media/hf1" "$work/pending" --no-services
run 0 files "$tree" MechanicalDesign
expect_text aix_a/resources/msgcatalog/French/MechanicalDesign.msg
sed -i /morvelk7run/d "$work/scratch/inetd.conf"
expect_json 0 /changed=true install "$media/ga/aix_a" "$media/sp1" "$tree"
expect_json 3 /changed=false install "$media/ga/aix_a" "$media/sp1" "$tree"
# A tree that was moved is registered again.
mv "$work/old" "$work/new"
expect_json 0 /changed=true register "$work/new"
grep -q "$work/new/aix_a/code/bin/TEVSysDemon" "$work/scratch/inetd.conf" || fail 'not registered'
expect_json 3 /changed=false register "$work/new"
[[ -e $work/new/aix_a/resources/msgcatalog/German/Modeler.msg ]] || fail 'no German'
expect_json 0 /changed=true register "$tree"

# Uninstalling: what leads out of the tree, and what is damaged, is refused, and all stays.
mkdir "$work/out" "$work/etc"
touch "$work/out/victim"
ln -s "$work/out" "$system/code/link"
manifest=$system/control/Drafting
journal=$system/control/SPK.journal kept=$system/control/undo/HF1
cp "$manifest" "$work/manifest"
cp "$kept/control/SPK.journal" "$work/journal"
content tree >"$work/before"
for lines in ../../out/victim "$work/out/victim" code/link/victim code/../../../out/victim; do
  printf '%s\n644 0 4294967295\n' "$lines" | cat "$work/manifest" - >"$manifest"
  expect_refusal 'lead' uninstall "$tree" --purge
  for word in saved site new directory; do
    sed "s,^end,$word $lines\n&," "$work/journal" | tee "$journal" >"$kept/control/SPK.journal"
    for command in commit undo-service-pack undo-hot-fix; do expect_refusal 'lead' $command "$tree"; done
    rm "$journal"
    expect_refusal 'lead' undo-hot-fix "$tree"
  done
done
sed 1s/pending/installing/ "$work/journal" | tee "$journal" >"$kept/control/SPK.journal"
expect_json 0 "$first/hot_fixes/0/state=\"interrupted\" $first/service_packs/0/state=\"committed\"" status "$tree"
rm "$journal"
cp "$work/journal" "$kept/control/SPK.journal"
# What cannot be undone leaves the tree as it is.
mv "$kept/code/bin/TEVModeler" "$work/TEVModeler"
expect_refusal 'HF1/code/bin/TEVModeler is missing' undo-hot-fix "$tree"
mv "$work/TEVModeler" "$kept/code/bin/TEVModeler"
echo code/bin/cut | cat "$work/manifest" - >"$manifest"
expect_refusal 'damaged' uninstall "$tree"
cp "$work/manifest" "$manifest"
for record in Drafting PRESENT; do
  mv "$system/control/$record" "$work/record"
  expect_refusal "control/$record is missing" uninstall "$tree"
  mv "$work/record" "$system/control/$record"
done
bash -c 'exec -a "$1/code/bin/TEVSession" sleep 100' - "$system" &
expect_refusal 'TEVSession' uninstall "$tree"
kill $!
[[ -e $work/out/victim ]] || fail 'a file outside was deleted'
expect_content before tree

# It fails in the middle, and is repeated. Foreign lines and files stay.
mv "$work/scratch/inetd.conf" "$work/etc/real"
ln -s "$work/etc/real" "$work/scratch/inetd.conf"
printf 'ftp stream tcp nowait root /ftpd\r\n#end' >>"$work/etc/real"
chmod 640 "$work/scratch/services"
echo site >"$system/code/site"
run 0 uninstall "$tree" --dry-run
for text in '  morvelk7run ' "  $system/code/bin/TEVModeler"; do expect_text "$text"; done
rm "$system/code/link"
echo ours >"$system/code/bin/TEVDrafting"
mkdir -p "$system/resources/msgcatalog/Italian/Drafting.msg/directory"
expect_refusal 'Drafting.msg cannot be deleted' uninstall "$tree"
expect_text 'pkill -HUP'
expect_refusal 'Repeat uninstall' verify "$tree"
mv "$tree/Uninstall.unfinished" "$work/record"
: >"$tree/Uninstall.unfinished"
expect_refusal 'is damaged' verify "$tree"
mv "$work/record" "$tree/Uninstall.unfinished"
rm -r "$system/resources/msgcatalog/Italian/Drafting.msg"
expect_json 0 "/kept=[\"$system/code/site\",\"$system/code/bin/TEVDrafting.site\"]" uninstall "$tree"
printf 'ftp stream tcp nowait root /ftpd\r\n#end' | diff - "$work/etc/real" || fail 'inetd.conf'
[[ -L $work/scratch/inetd.conf && $(stat -c %a "$work/scratch/services") == 640 ]] || fail 'mode or link'
[[ $(find "$tree" -type f | sort) == "$system/code/bin/TEVDrafting.site"$'\n'"$system/code/site" && ! -s $work/scratch/services ]] || fail 'something is left'
run 3 uninstall "$tree"
# With --purge also what an interrupted installation has left, and a development kit before its code.
run 0 install "$media/ga" "$tree.2" --os aix_a
run 0 install "$media/sdk" "$work/sdk" --code "$tree.2"
expect_refusal 'development kit' uninstall "$tree.2"
touch "$work/sdk/site" "$work/sdk/control/site"
run 0 uninstall "$work/sdk" --purge
touch "$tree.2/aix_a/control/site"
printf 'medium /none\nend\n' >"$tree.2/aix_a/control/Install.unfinished"
expect_refusal 'not finished' uninstall "$tree.2"
# An empty record says nothing; one of an interrupted --purge counts without the option.
: >"$tree.2/Uninstall.unfinished"
expect_refusal 'not finished' uninstall "$tree.2"
echo purge >"$tree.2/Uninstall.unfinished"
run 0 uninstall "$tree.2"
[[ ! -e $tree.2 && ! -e $work/sdk ]] || fail 'a tree is left'
