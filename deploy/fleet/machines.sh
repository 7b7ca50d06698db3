#!/usr/bin/env bash
# machines.sh N DIR COMMAND...: runs COMMAND beside N machines ws1 to wsN, which end with it.
#
# A machine is an sshd with mounts, processes, a network and a host name of its own. It sees this
# machine's files, but what it writes, below /etc for example, only it sees. DIR/share is /net on each
# of them, read-only. Their cables (ws1 ...) lead to one bridge, which this machine's network does not
# know. COMMAND finds DIR/ssh_config, DIR/inventory.ini and ANSIBLE_CONFIG. The exit status is 77 if
# this machine lacks what that needs.
set -euo pipefail

readonly network=10.77.0

skip() {
  printf 'Skipped: %s\n' "$*"
  exit 77
}

# start_machine NUMBER DIR
start_machine() {
  local name=ws$1
  ip netns add "$name"
  ip link add "$name" type veth peer name eth0 netns "$name"
  ip link set "$name" master fleet up
  ip -n "$name" link set lo up
  ip -n "$name" address add "$network.$(($1 + 1))/24" dev eth0
  ip -n "$name" link set eth0 up
  ip netns exec "$name" unshare --mount --pid --uts --fork --kill-child \
    bash "${BASH_SOURCE[0]}" machine "$name" "$2" 2>"$2/$name.log" &
}

# be_machine NAME DIR: the first program of a machine.
be_machine() {
  local dir=$2/machines/$1
  local root=$dir/root
  mkdir -p "$dir"/{written,work,root}
  mount -t overlay overlay -o "lowerdir=/,upperdir=$dir/written,workdir=$dir/work" "$root"
  mkdir -p "$root/net"
  mount --bind -o ro "$2/share" "$root/net"
  mount --rbind /dev "$root/dev"
  mount -t proc proc "$root/proc"
  mount -t tmpfs tmpfs "$root/run"
  mount -t tmpfs tmpfs "$root/tmp"
  mkdir "$root/run/sshd"
  hostname "$1"
  rm -rf "$root/opt/suite"
  touch "$root/etc/inetd.conf"
  # A locked account could not log in, not even with a key.
  sed -i 's/^root:[^:]*/root:*/' "$root/etc/shadow"
  cp "$2/key.pub" "$root/etc/ssh/fleet_keys"
  install -m 600 "$2/host_key" "$root/etc/ssh/fleet_host_key"
  exec chroot "$root" /usr/sbin/sshd -D -e -f /dev/null -o HostKey=/etc/ssh/fleet_host_key \
    -o AuthorizedKeysFile=/etc/ssh/fleet_keys -o StrictModes=no -o PidFile=none \
    -o 'Subsystem=sftp internal-sftp'
}

# describe COUNT DIR: how ssh and Ansible reach the machines.
describe() {
  local number
  cat >"$2/ssh_config" <<CONFIG
Host ws*
  User root
  IdentityFile $2/key
  IdentitiesOnly yes
  UserKnownHostsFile $2/known_hosts
  ServerAliveInterval 1
  ServerAliveCountMax 3
  ConnectTimeout 3
CONFIG
  printf '[workstations]\n' >"$2/inventory.ini"
  for ((number = 1; number <= $1; number++)); do
    printf 'Host ws%d\n  HostName %s.%d\n' "$number" "$network" $((number + 1)) >>"$2/ssh_config"
    printf 'ws%d ansible_python_interpreter=/usr/bin/python3\n' "$number" >>"$2/inventory.ini"
  done
  printf '%s.* %s\n' "$network" "$(cut -d ' ' -f 1,2 "$2/host_key.pub")" >"$2/known_hosts"
  cat >"$2/ansible.cfg" <<CONFIG
[defaults]
inventory = $2/inventory.ini
forks = 10
callbacks_enabled = kwinstutil.deploy.table
retry_files_enabled = false
[ssh_connection]
pipelining = true
control_path_dir = /run/fleet
ssh_args = -F $2/ssh_config -o ControlMaster=auto -o ControlPersist=60
CONFIG
}

# await NAME DIR: until a machine can be reached.
await() {
  local try
  for ((try = 0; try < 100; try++)); do
    ! ssh -F "$2/ssh_config" "$1" true </dev/null 2>/dev/null || return 0
    sleep 0.1
  done
  cat "$2/$1.log" >&2
  skip "the machine $1 did not start"
}

# run_beside COUNT DIR COMMAND...: the first program of the world of the machines.
run_beside() {
  local count=$1 dir=$2 number
  shift 2
  mount -t tmpfs tmpfs /run
  mkdir -p /run/netns "$dir/machines" "$dir/share"
  mount -t tmpfs tmpfs "$dir/machines"
  rm -f "$dir"/{key,host_key}{,.pub}
  ssh-keygen -q -t ed25519 -N '' -f "$dir/key"
  ssh-keygen -q -t ed25519 -N '' -f "$dir/host_key"
  describe "$count" "$dir"
  ip link set lo up
  ip link add fleet type bridge
  ip address add "$network.1/24" dev fleet
  ip link set fleet up
  for ((number = 1; number <= count; number++)); do start_machine "$number" "$dir"; done
  for ((number = 1; number <= count; number++)); do await "ws$number" "$dir"; done
  ANSIBLE_CONFIG=$dir/ansible.cfg "$@"
}

case $1 in
  machine) be_machine "${@:2}" ;;
  beside) run_beside "${@:2}" ;;
  *)
    ((EUID == 0)) || skip 'only root can start machines'
    for program in ip /usr/sbin/sshd ssh unshare; do
      command -v "$program" >/dev/null || skip "there is no $program"
    done
    unshare --mount --net --pid --uts --fork mount -t tmpfs tmpfs /run 2>/dev/null ||
      skip 'this user may not make namespaces'
    mkdir -p "$2"
    exec unshare --mount --net --pid --uts --fork --kill-child --mount-proc \
      bash "${BASH_SOURCE[0]}" beside "$1" "$(realpath "$2")" "${@:3}"
    ;;
esac
