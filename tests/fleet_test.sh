#!/usr/bin/env bash
# fleet_test.sh BUILDDIR SOURCEDIR: the systemd units; the Ansible module; and two machines that it
# keeps, of which one loses its connection and one runs out of disk.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
tree=$work/tree

if command -v systemd-analyze >/dev/null; then
  # Programs that do not exist would be refused.
  install -D -m 755 /bin/true "$tree/code/bin/TEVSysDemon"
  install -D -m 755 /bin/true "$tree/ray.sh"
  cp -r "$2/deploy/systemd" "$work/units"
  sed -i "s,@TREE@,$tree,g; s,@PORT@,20051," "$work"/units/*
  SYSTEMD_UNIT_PATH=$work/units: expect_exit 0 systemd-analyze verify morvelk7run.socket \
    mi-ray.socket morvelk7run@1.service mi-ray@1.service
  [[ ! -s $work/output ]] || fail 'systemd has something to say about the units'
  rm -rf "$tree"
fi

playbook=$(command -v ansible-playbook) || skip 'there is no ansible-playbook'
take_media
mkdir -p "$work/lib/ansible_collections/kwinstutil"
ln -s "$2/deploy/ansible" "$work/lib/ansible_collections/kwinstutil/deploy"
module=$2/deploy/ansible/plugins/modules/kwbatch_tree.py
install /dev/stdin "$work/program" <<<"#!/bin/sh
exec '$kwbatch' \"\$@\" --scratch '$work/scratch'"

# ask CHECK_MODE STATE OPTIONS: the module's answer is left in $work/output.
ask() {
  printf '{"ANSIBLE_MODULE_ARGS": {"executable": "%s", "target": "%s", "os": "aix_a",
    "_ansible_check_mode": %s, "state": "%s" %s}}' "$work/program" "$tree" "$@" |
    PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$work/lib "$(sed -n '1s/^#! *//p' "$playbook")" \
      "$module" >"$work/output" 2>&1 || true
}

# Check mode says what would happen, and writes nothing but the log; then it happens.
while IFS='|' read -r want state list options; do
  [[ -z $list ]] || options+=", \"medium\": \"$list\""
  before=$(times)
  ask true "$state" "$options"
  [[ $before == "$(times)" ]] || fail "check mode wrote something: $state $list"
  expect_text "$want"
  ask false "$state" "$options"
  expect_text "$want"
done <<CASES
"changed": true|installed|$media/ga|, "languages": "French"
"changed": false|installed|$media/ga|
"changed": true|patched|$media/sp1|
"changed": true|absent|$media/sp1|
"changed": true|patched|$media/sp1,$media/hf1|, "commit": true
"changed": true|absent|$media/hf1|
"changed": true|patched|$media/sp1,$media/hf1,$media/sp2|
"changed": false|patched|$media/sp1,$media/hf1|, "commit": true
"changed": true|committed||
"changed": false|patched|$media/sp1,$media/hf1,$media/sp2|
is committed. It cannot be taken out|absent|$media/sp2|
neither a service pack nor a hot fix|absent|$media/ga|
The list of media is empty|absent||, "medium": []
"changed": false|verified||
CASES
rm "$system/code/bin/TEVSession"
for want in true false; do
  ask false verified ", \"medium\": \"$media/sp2,$media/ga\""
  expect_text "\"changed\": $want"
done
ask false absent ', "os": null'
[[ ! -e $tree ]] || fail 'the tree is still there'
"$2/deploy/fleet/fleet.sh" "$1" 2
