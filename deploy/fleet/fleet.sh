#!/usr/bin/env bash
# fleet.sh BUILDDIR [N]: shows on N machines (8) how the Ansible collection keeps a tree on many
# machines: it installs and patches, one machine loses its connection in the middle and one runs out
# of disk, a second run completes both; then a service pack is tried, and taken out again. All is in
# BUILDDIR/fleet. The exit status is 1 if it does not come out so, 77 if this machine lacks something.
set -euo pipefail
export LC_ALL=C.UTF-8
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
deploy=$root/deploy

say() { printf '\n== %s\n' "$*"; }

die() {
  printf 'fleet.sh: %s\n' "$*" >&2
  exit 1
}

# prepare BUILDDIR DIR: the collection, and the share with kwbatch and the media.
prepare() {
  rm -rf "$2"
  mkdir -p "$2/share"
  cmake --install "$1" --prefix "$2/share/programs" >"$2/log"
  KWMEDIUM=$1/kwmedium/kwmedium "$root/examples/sample-medium/make-media.sh" "$2/share/media"
  (
    # Not what this machine's user has set.
    cd "$2"
    ansible-galaxy collection build "$deploy/ansible" --output-path "$2"
    ansible-galaxy collection install "$2"/kwinstutil-deploy-*.tar.gz -p "$2/collections"
  ) >>"$2/log" 2>&1 || die "the collection cannot be built: see $2/log"
}

on() { ssh -F "$dir/ssh_config" "$@" </dev/null; }

# play STATUS PLAYBOOK OPTION...: shows the table at the end.
play() {
  local want=$1 status=0
  printf '$ ansible-playbook %s\n' "${*:2}"
  ansible-playbook "$deploy/ansible/examples/$2" "${@:3}" >"$dir/output" 2>&1 || status=$?
  cat "$dir/output" >>"$dir/log"
  sed -n '/^machine  /,$p' "$dir/output"
  ((status == want)) || die "the exit status is $status instead of $want: see $dir/log"
}

# expect NAMES TEXT: the last table says so of these machines, a pattern.
expect() {
  local name
  for name in $1; do
    sed -n '/^machine  /,$p' "$dir/output" | awk -v name="$name" '/^ws/ { is = $1 == name } is' | grep -Fq -- "$2" ||
      die "the table does not say '$2' of $name"
  done
}

# when_it_begins NAME COMMAND: does something in the middle of the installation on a machine.
when_it_begins() {
  on "$1" 'until [ -e /opt/suite/aix_a ]; do sleep 0.02; done'
  eval "$2"
}

# digest NAME: of all files of a tree.
digest() { on "$1" 'cd /opt/suite && find . -type f -exec cksum {} + | sort | cksum'; }

# demonstrate COUNT: beside the machines.
demonstrate() {
  local all rest name
  all=$(printf 'ws%d ' $(seq "$1"))
  rest=${all#ws1 ws2 }
  {
    printf '[workstations:vars]\ntree_kwbatch=/net/programs/bin/kwbatch\ntree_media_dir=/net/media\n'
    printf 'tree_os=aix_a\ntree_languages=["French"]\ntree_patches=["sp1", "hf1"]\ntree_commit=true\n'
  } >>"$dir/inventory.ini"
  # The last of three or more has no share: the media are copied to it.
  (($1 < 3)) || sed -i "s,^ws$1 .*,& tree_media_source=$dir/share/media tree_media_dir=/srv/media," "$dir/inventory.ini"

  say "GA, a service pack and a hot fix on $1 machines: ws1 loses its connection, the disk of ws2 fills up"
  on ws2 mount -t tmpfs -o size=8m tmpfs /opt
  when_it_begins ws1 'ip link set ws1 down' &
  when_it_begins ws2 'on ws2 "head -c 9m /dev/zero >/opt/other 2>/dev/null"' || true &
  play 4 site.yml
  expect ws1 UNREACHABLE
  expect ws2 FAILED
  # shellcheck disable=SC2086 # names
  expect "$rest" 'product BASE'

  say 'Both are put in order, and the run is repeated'
  ip link set ws1 up
  on ws2 rm /opt/other
  play 0 site.yml
  expect 'ws1 ws2' 'hot fix HF1, installed'
  expect "$rest" 'nothing to do'
  patched=$(digest ws1)

  say 'The next service pack is tried'
  play 0 site.yml -e '{"tree_patches": ["sp1", "hf1", "sp2"], "tree_commit": false}'
  expect "$all" 'service pack SP2, pending'

  say 'It is taken out again'
  play 0 take_out.yml -e '{"take_out": ["sp2"]}'
  expect "$all" '- service pack SP2'
  for name in $all; do
    [[ $(digest "$name") == "$patched" ]] || die "the tree of $name is not what it was"
  done
  say "All $1 trees are what they were before that service pack, to the byte. The log: $dir/log"
}

if [[ $1 == beside ]]; then
  dir=$2
  export ANSIBLE_COLLECTIONS_PATH=$dir/collections
  demonstrate "$3"
else
  for program in ansible-playbook cmake compress; do
    command -v "$program" >/dev/null || { echo "Skipped: there is no $program" && exit 77; }
  done
  build=$(realpath "$1")
  ((${2:-8} >= 2)) || die 'it takes two machines'
  # One at a time in a build directory.
  exec 9>"$build/fleet.lock"
  flock 9
  prepare "$build" "$build/fleet"
  "$deploy/fleet/machines.sh" "${2:-8}" "$build/fleet" "${BASH_SOURCE[0]}" beside "$build/fleet" "${2:-8}"
fi
