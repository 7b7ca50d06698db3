#!/usr/bin/env bash
# fleet_test.sh BUILDDIR SOURCEDIR: the Ansible module; and two machines that it keeps, of which
# one loses its connection and one runs out of disk.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
tree=$work/tree

playbook=$(command -v ansible-playbook) || skip 'there is no ansible-playbook'
take_media
mkdir -p "$work/lib/ansible_collections/kwinstutil"
ln -s "$2/deploy/ansible" "$work/lib/ansible_collections/kwinstutil/deploy"
install /dev/stdin program <<<"#!/bin/sh
exec '$kwbatch' \"\$@\" --scratch '$work/scratch'"

# ask CHECK_MODE STATE OPTIONS: the module's answer is left in $work/output.
ask() {
  printf '{"ANSIBLE_MODULE_ARGS": {"executable": "%s", "target": "%s", "_ansible_check_mode": %s,
    "state": "%s" %s}}' "$work/program" "$tree" "$@" |
    PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$work/lib "$(sed -n '1s/^#! *//p' "$playbook")" \
      "$work/lib/ansible_collections/kwinstutil/deploy/plugins/modules/kwbatch_tree.py" &>output || true
}

# Check mode says what would happen, and writes nothing but the log; then it happens.
while IFS='|' read -r want state list options; do
  before=$(times)
  for mode in true false; do
    ask $mode "$state" "${list:+, \"medium\": \"$list\"} $options"
    [[ $mode == false || $before == "$(times)" ]] || fail "check mode wrote something: $state $list"
    expect_text "$want"
  done
done <<CASES
"changed": true|installed|$media/ga|, "languages": "French", "os": "aix_a"
"changed": true|patched|$media/sp1|
"changed": true|absent|$media/sp1|
"changed": true|patched|$media/sp1,$media/hf1|, "commit": true
"changed": true|absent|$media/hf1|
"changed": true|patched|$media/sp1,$media/hf1,$media/sp2|
"changed": false|installed|$media/ga|, "os": "aix_a"
"changed": false|patched|$media/sp1,$media/hf1|, "commit": true
"changed": true|committed||
is committed. It cannot be taken out|absent|$media/sp2|
The list of media is empty|absent||, "medium": []
CASES
rm "$system/code/bin/TEVSession"
for want in true false; do
  ask false verified ", \"medium\": \"$media/sp2,$media/ga\""
  expect_text "\"changed\": $want"
done
for mode in true false; do ask $mode absent '' && expect_text '"changed": true'; done
[[ ! -e $tree ]] || fail 'the tree is still there'
"$2/deploy/fleet/fleet.sh" "$1" 2
