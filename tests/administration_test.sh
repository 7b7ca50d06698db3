#!/usr/bin/env bash
# administration_test.sh BUILDDIR SOURCEDIR: what an administrator of many machines asks of kwbatch:
# reports for machines, who owns a file, and how everything goes away again.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
check=("$1/tests/json_check" "$2/docs/kwbatch.schema.json")

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
tree=$work/tree
first=/systems/0
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
0|$first/service_packs/0/state="pending" $first/languages=["French"] $first/registered/current=true|status $tree
0|/changed=true|commit $tree
3|/changed=false|commit $tree
0|/changed=true|hot-fix $media/hf1 $tree
0|$first/service_packs/0/state="committed" $first/hot_fixes/0/state="installed"|status $tree
0|/changed=false|verify $tree
0|/changed=false|tasks $tree
1|/changed=false|undo-service-pack none
CASES
sed -i s/20051/20061/ "$work/scratch/services"
rm "$system/code/bin/TEVSession"
expect_json 0 "$first/registered/current=false" status "$tree"
expect_json 1 /changed=false verify "$tree"
expect_json 0 /changed=true repair "$media/ga" "$tree"
