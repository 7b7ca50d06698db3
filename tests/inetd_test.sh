#!/usr/bin/env bash
# inetd_test.sh BUILDDIR SOURCEDIR: a real inetd serves what kwbatch registered in the system's
# files, which are those of a namespace of this test's own.
export PATH=$PATH:/usr/sbin:/sbin
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# make_etc: an /etc of our own, with an older registration in it, and a /run for inetd's number.
make_etc() {
  mkdir "$work/etc"
  for file in passwd group nsswitch.conf ld.so.cache; do
    [[ ! -e /etc/$file ]] || cp "/etc/$file" "$work/etc"
  done
  printf 'ftp\t\t21/tcp\nmorvelk7run      1/tcp  #old\n' >"$work/etc/services"
  printf 'morvelk7run stream tcp nowait root /nowhere  #TEVSysDemon' >"$work/etc/inetd.conf"
  mount --bind "$work/etc" /etc
  mount -t tmpfs none /run
  ip link set lo up
}

# expect_answer PORT: the daemon answers there, once inetd listens.
expect_answer() {
  local answer tries=0
  until { exec 3<>"/dev/tcp/127.0.0.1/$1"; } 2>/dev/null; do
    ((++tries < 100)) || fail "nothing listens on port $1: $(<"$work/inetd")"
    sleep 0.1
  done
  echo hello >&3
  IFS= read -r -t 10 answer <&3 || fail "no answer on port $1: $(<"$work/inetd")"
  exec 3>&-
  [[ $answer == 'TEVSysDemon hears hello' ]] || fail "the answer is '$answer'"
}

# install SYSTEM RUN: installs a system, with RUN as the daemon's port; getent must find the ports.
install() {
  local names=(morvelk7bb morvelk7run TEVDeviceBroker) ports=(28670 "$2" 28672) i
  expect_exit 0 env HOME="$work" "$kwbatch" install "$work/media/ga" "$work/tree" --os "$1" \
    --languages none --bb-port 28670 --run-port "$2" --broker-port 28672
  for i in 0 1 2; do
    [[ $(getent services "${names[i]}") =~ ^${names[i]}\ +${ports[i]}/tcp$ ]] ||
      fail "getent does not find ${names[i]} with port ${ports[i]}"
  done
  # shellcheck disable=SC2016
  printf '#!/bin/sh\nread -r line && echo "${0##*/} hears $line"\n' \
    >"$work/tree/$1/code/bin/TEVSysDemon"
}

inside() {
  take_media
  chmod 755 "$work"
  make_etc
  install aix_a 28671
  "$inetd" -d >"$work/inetd" 2>&1 &
  trap 'kill $! && wait $! || true; rm -rf "$work"' EXIT
  expect_answer 28671
  install solaris_a 28673
  kill -HUP $!
  expect_answer 28673
  [[ $(grep -c . /etc/inetd.conf) == 1 && $(grep -c . /etc/services) == 4 ]] ||
    fail 'an entry was not replaced, but added'
}

inetd=$(command -v inetd) || skip 'there is no inetd'
command -v ip >/dev/null || skip 'there is no ip, to bring up a network'
if [[ ${3-} ]]; then
  inside
  exit
fi
user=()
((EUID == 0)) || user=(-r)
unshare "${user[@]}" -m -n true 2>/dev/null || skip 'this user may not make namespaces'
unshare "${user[@]}" -m -n bash "${BASH_SOURCE[0]}" "$1" "$2" inside
