#!/usr/bin/env bash
# sandbox.sh CLONE COMMAND...: runs a command in namespaces of its own: all mounts read-only, an empty
# /tmp that holds a copy of the clone which can be written, own processes, own network. What a mutant
# deletes, kills or fills is gone with the namespaces.
if [[ $1 != --inside ]]; then
  exec unshare -m -p -n -f --kill-child --mount-proc "$0" --inside "$@"
fi
set -e
clone=$2 below=${2#/tmp/}
shift 2
mount --make-rprivate /
mount -t tmpfs -o size=2g,mode=1777 tmpfs /mnt
mkdir -p "/mnt/$below" /mnt/cwd /mnt/.changed /mnt/.work
mount -t overlay -o "lowerdir=$clone,upperdir=/mnt/.changed,workdir=/mnt/.work" overlay "/mnt/$below"
mount --rbind /mnt /tmp
umount -l /mnt
mount -t tmpfs tmpfs /dev/shm
awk -v own="/tmp/$below" '$2 !~ /^\/proc/ && $2 != "/tmp" && $2 != own && $2 !~ /^\/dev\/shm/ { print $2 }' \
  /proc/self/mounts | sort -u |
  while read -r place; do mount -o remount,bind,ro "$place" 2>/dev/null || true; done
ip link set lo up 2>/dev/null || true
cd /tmp/cwd
ulimit -t "${CPU_LIMIT:-12}" -c 0 -v 8000000
exec "$@"
