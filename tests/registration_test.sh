#!/usr/bin/env bash
# registration_test.sh BUILDDIR SOURCEDIR: what a tree has to do with its machine: ports and daemons,
# environments, and programs that run.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

install_tree
grep -q '^morvelk7run      20051/tcp  #' "$work/scratch/services" || fail 'no run port'
mkdir "$work/satellite" "$work/parts"
install /dev/stdin "$work/parts/ray.sh" <<<'#!/bin/sh'
tar -C "$work/parts" -cf - ray.sh | compress -f >"$work/satellite/LumaforgeSatellite.Z"
echo 2048 >"$work/satellite/LFSFS"
run 0 install "$media/ga" "$work/silent" --os aix_a --no-services --satellite "$work/satellite"
[[ -e $work/silent/satellite/ray.sh ]] || fail 'no satellite'
! grep -q 'mi-ray\|silent' "$work/scratch/services" "$work/scratch/inetd.conf" || fail '--no-services'
# The daemon is registered when the services are known already.
: >"$work/scratch/inetd.conf"
run 0 check "$media/ga" "$work/tree" --os aix_a
expect_text TEVSysDemon
# A given port that is taken, here by itself, is refused.
taken=(install "$media/ga" "$work/other" --os aix_a --run-port 20061 --bb-port 20061)
expect_refusal 20061 "${taken[@]}"
[[ ! -e $work/other ]] || fail 'a port that is taken was not refused at once'
run 0 check "${taken[@]:1}" --next-free
# So is the port of another service, and one on which a program listens with IPv6.
echo 'other 20081/tcp#' >>"$work/scratch/services"
expect_refusal 'Free is 20082' check "$media/ga" "$work/other" --run-port 20081
listener='socket(S, AF_INET6, SOCK_STREAM, 0) && setsockopt(S, 41, 26, pack("i", 1)) &&
  bind(S, pack_sockaddr_in6(20091, IN6ADDR_ANY)) && listen(S, 1) && print("here\n") && sleep 60'
coproc perl -MSocket=:DEFAULT,IN6ADDR_ANY,pack_sockaddr_in6 -e "\$| = 1; $listener"
if read -r _ <&"${COPROC[0]}"; then
  expect_refusal 'Free is 20092' check "$media/ga" "$work/other" --run-port 20091
  expect_refusal 20091 check "$media/ga" "$work/other" --orb-port 20091
  run 0 check "$media/ga" "$work/other" --orb-port 20091 --next-free
  expect_text 'Free is 20092'
  # There inetd may listen for the service whose port it is already.
  sed -i s/20051/20091/ "$work/scratch/services"
  run 0 check "$media/ga" "$work/other" --run-port 20091 --bb-port 20095
  expect_text 'ports 20095, 20091 and 20052'
  sed -i s/20091/20051/ "$work/scratch/services"
  kill "$COPROC_PID"
else
  echo 'Not tried: a port on which somebody listens with IPv6, because there is none.'
fi
# A setup program that is killed: what it printed is in the log, and the same command runs it again.
mkdir -p "$work/tree/solaris_a/"{control,code/bin}
update=$work/tree/solaris_a/code/bin/DRXPeopleUpdate
touch "$work/tree/solaris_a/control/Q8M.prd"
# shellcheck disable=SC2016
printf '%s\n' '#!/bin/sh' 'echo updating' 'kill -9 $$' >"$update"
chmod +x "$update"
run 4 install "$media/ga" "$work/tree" --os solaris_a --satellite "$work/satellite"
grep -qx updating "$work/scratch/kwinst.log" || fail 'the output is not in the log'
grep -q "solaris_a/code/bin/TEVSysDemon  #" "$work/scratch/inetd.conf" || fail 'no daemon'
expect_text 'pkill -HUP'
grep -q '^mi-ray ' "$work/scratch/inetd.conf" || fail 'no satellite'

run 4 install "$media/ga" "$work/tree" --os solaris_a
sed -i /kill/d "$update"
run 0 install "$media/ga" "$work/tree" --os solaris_a
run 3 install "$media/ga" "$work/tree" --os solaris_a

printf 'default\n' >"$work/tree/prod.lp"
printf '/etc/opt\n' >"$work/tree/EnvDir.txt"
run 0 environment "$work/tree" prod
expect_text /etc/opt/default.txt
run 1 environment "$work/tree" none
expect_refusal 35700 install "$media/ga" "$work/other" --timeout 1
for setting in '--publish-path relative' '--orb-port 30000 --orb-base 30000' '--run-port 1023' \
  "--satellite $work/none" '--run-port many' '--tck-port 20000'; do
  case $setting in *many | --tck*) status=2 ;; *) status=1 ;; esac
  # shellcheck disable=SC2086
  run $status install "$media/ga" "$work/other" $setting
done
[[ ! -e $work/other ]] || fail 'a refused installation made its target'

cp /bin/sleep "$system/code/bin/TEVSleep"
"$system/code/bin/TEVSleep" 100 &
run 0 tasks "$work/tree"
expect_text TEVSleep
run 0 check "$media/samples" "$work/tree"
expect_text "Warning: programs run from $work/tree: 1"
run 0 tasks "$work/tree" --stop
wait $! && fail 'a task was not stopped'
# What started kwbatch is no task of the tree, whatever its command line.
# shellcheck disable=SC2016
expect_exit 0 timeout 60 sh -c '"$@"; exit $?' - "$kwbatch" tasks "$work/tree/" --stop \
  --scratch "$work/scratch"
expect_text ': 0'
printf '#!/bin/sh\necho "PID USER COMMAND"\necho "  $$ root sh"\n' >"$work/parts/ps"
chmod +x "$work/parts/ps"
PATH=$work/parts:$PATH expect_refusal 'cannot be listed' tasks "$work/tree"

# systemd in the place of inetd: the units follow the ports, and go with the tree unless changed.
units=$work/scratch/systemd/system
cp "$work/scratch/"{services,inetd.conf} "$work/parts"
expect_refusal 'no systemd' register "$work/tree" --systemd
mkdir -p "$units/sockets.target.wants"
ln -s ../morvelk7run.socket "$units/sockets.target.wants"
run 0 register "$work/tree" --systemd
! grep -q "$work/tree" "$work/scratch/inetd.conf" || fail 'inetd listens too'
if command -v systemd-analyze >/dev/null; then
  SYSTEMD_UNIT_PATH=$units: expect_exit 0 systemd-analyze verify morvelk7run.socket mi-ray.socket \
    morvelk7run@1.service mi-ray@1.service
  [[ ! -s $work/output ]] || fail 'systemd has something to say about the units'
fi
run 3 register "$work/tree"
run 3 install "$media/ga/aix_a" "$work/tree"
run 0 register "$work/tree" --run-port 20073
grep -qx ListenStream=20073 "$units/morvelk7run.socket" || fail 'systemd listens on the old port'
run 0 status "$work/tree"
expect_text 'still say so'
echo '# ours' >>"$units/mi-ray.socket"
expect_refusal 'mi-ray.socket was changed' register "$work/tree"
run 0 uninstall "$work/tree"
expect_text "kept: $units/mi-ray.socket"
[[ $(cd "$units" && find . -type f -o -type l) == ./mi-ray.socket ]] || fail 'units are left'
cp "$work/parts/"{services,inetd.conf} "$work/scratch"

# System files that are mounts cannot be replaced.
if ! unshare -m true 2>/dev/null; then
  echo 'Not tried: mounted system files, because this user may not mount anything.'
  exit
fi
cp "$work/scratch/services" "$work/mounted"
# shellcheck disable=SC2016
expect_exit 1 unshare -m bash -c 'mount --bind "$2/mounted" "$2/scratch/services" &&
  mount --bind "$2/scratch/inetd.conf" "$2/scratch/inetd.conf" &&
  exec "$0" install "$1" "$2/mounts" --os aix_a --run-port 20071 --scratch "$2/scratch"' \
  "$kwbatch" "$media/ga" "$work"
expect_text 'by hand'
grep -q '^morvelk7run      20071/tcp' "$work/mounted" || fail 'the ports are lost'
[[ $(cd "$work/scratch" && ls -- *.*) == $'inetd.conf\nkwinst.log' ]] || fail 'files are left behind'
