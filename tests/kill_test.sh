#!/usr/bin/env bash
# kill_test.sh BUILDDIR SOURCEDIR [TEXT]: kwbatch and its programs are killed before calls that change
# files. The same command, or an undo, then leads to where a run without a kill leads. With
# KWINSTUTIL_ALL_KILLS=N every Nth call is tried, otherwise a few of each command; with TEXT, only those
# commands whose line "STATE ARGUMENT..." holds it.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
kill_at=$1/tests/kill_at
[[ -x $kill_at ]] || skip 'processes cannot be traced on this machine'

# In memory and a namespace of its own, where the killed ones leave their directories.
if [[ ! ${KILL_TEST-} ]]; then
  unshare -m true 2>/dev/null || skip 'this user may not mount anything'
  tmp=/tmp
  # That would hide the programs.
  [[ "$1 $2" != */tmp/* ]] || tmp=/mnt
  # shellcheck disable=SC2016
  KILL_TEST=1 TMPDIR=$tmp exec unshare -m bash -ec 'mount -t tmpfs none "$TMPDIR" && exec bash "$@"' - "$0" "$@"
fi

# state: all that kwbatch may change.
state() {
  local part
  # Of an uninstalled tree, an empty directory may be left.
  for part in tree sdk; do [[ ! $(ls -A "$work/$part" 2>/dev/null) ]] || content "$part"; done
  (cd "$work" && find tree scratch \( -name Registered -o -path 'scratch/*' ! -name kwinst.log \) \
    -type f | sort | xargs tail -n +1)
}
# use STATE: begins where `keep STATE` was called.
keep() {
  local part
  mkdir "$work/$1"
  for part in tree sdk scratch; do [[ ! -e $work/$part ]] || cp -a "$work/$part" "$work/$1"; done
}
use() { rm -rf "$work"/{tree,sdk,scratch} && cp -a "$work/$1/." "$work"; }

kills=0 wanted=${3-}
# sweep STATE AGAIN ARGUMENT...: kills a command everywhere. Then it is repeated, or AGAIN is run if
# that is not empty, and the state is that of a run without a kill, or STATE after an undo.
sweep() {
  local begin=$1 again=$2 calls call step
  shift 2
  use "$begin"
  if [[ "$begin $*" != *"$wanted"* ]]; then
    run_again "$@"
    return
  fi
  [[ $again != undo* ]] || state >"$work/wanted"
  calls=$(cd "$work" && "$kill_at" 1000000 "$kwbatch" "$@") || (($? == 3)) || fail "not traced: $*"
  if [[ ! $again ]]; then
    state >"$work/wanted"
    use "$begin"
    ! state | diff "$work/wanted" - >"$work/output" || fail "nothing was done: $*"
  fi
  echo "$begin, $calls changes: ${*//$work\//}"
  step=${KWINSTUTIL_ALL_KILLS:-$((calls / 3 + 1))}
  for ((call = step; call <= calls; call += step)); do
    use "$begin"
    (cd "$work" && "$kill_at" "$call" "$kwbatch" "$@" >/dev/null) || break
    # What is being committed cannot be undone.
    if [[ $again ]] && grep -qs HFX "$system/control/PRESENT"; then
      grep -qs ^installing "$system/control/SPK.journal" || break
    fi
    if [[ $again ]]; then
      run_again "$again" "$work/tree"
    else
      run_again "$@"
    fi
    state >"$work/got"
    diff "$work/wanted" "$work/got" >"$work/output" || fail "after a kill before change $call: $*"
    ((++kills))
  done
}
# run_again ARGUMENT...: there may be nothing left to do.
run_again() {
  "$kwbatch" "$@" >"$work/output" 2>&1 || (($? == 3)) ||
    fail "status $? after a kill before change $call: $*"
}

take_media
# Where an option would bring inetd's file back.
export VRK_ODT_IN=1 VRK_ODT_OUT=1 VRK_ODT_TMP=$work/scratch
echo 'foreign 7000/tcp' >"$work/scratch/services"
echo 'foreign stream tcp nowait root /bin/true' >"$work/scratch/inetd.conf"
mkdir "$work/tree"
keep empty
sweep empty '' install "$media/ga/aix_a" "$work/tree" --languages French
echo ours >"$system/code/bin/TEVModeler"
echo ours >"$system/code/own"
keep products
sweep products undo-service-pack service-pack "$media/sp1" "$work/tree"
sweep products '' service-pack "$media/sp1" "$work/tree"
use products
run 0 service-pack "$media/sp1" "$work/tree"
keep pending
sweep pending '' undo-service-pack "$work/tree"
sweep pending '' commit "$work/tree"
use pending
run 0 commit "$work/tree"
keep committed
sweep committed undo-service-pack hot-fix "$media/hf1" "$work/tree"
sweep committed '' hot-fix "$media/hf1" "$work/tree"
sweep committed '' languages "$work/tree" "$media/ga/aix_a" --add German
sweep committed '' install "$media/sdk" "$work/sdk" --code "$work/tree"
use committed
run 0 install "$media/sdk" "$work/sdk" --code "$work/tree"
keep developed
sweep developed '' uninstall "$work/sdk"
use committed
printf 'morvelk7run 20071/tcp  #Brovik Communication ports\n' >"$work/scratch/services"
echo 'morvelk7run stream tcp nowait root /old/aix_a/code/bin/TEVSysDemon  #TEVSysDemon' \
  >"$work/scratch/inetd.conf"
keep moved
sweep moved '' register "$work/tree"
mkdir -p "$work/scratch/systemd/system"
keep units
sweep units '' register "$work/tree" --systemd
echo ours >"$system/code/bin/TEVSysDemon"
keep listening
sweep listening '' uninstall "$work/tree"
use committed
echo ours >"$system/code/bin/TEVSysDemon"
keep changed
sweep changed '' service-pack "$media/sp1" "$work/tree"
use committed
run 0 hot-fix "$media/hf1" "$work/tree"
keep fixed
sweep fixed '' undo-hot-fix "$work/tree"
use committed
rm "$system/code/bin/TEVDrafting" "$system/code/data/Drafting/"*
keep damaged
sweep damaged '' repair "$media/ga/aix_a" "$work/tree"
cp -r "$media/ga/aix_a" "$work/some"
sed -i /Modeler/d "$work/some/TOC"
use empty
run 0 install "$work/some" "$work/tree"
run 0 service-pack "$media/sp1" "$work/tree"
run 0 commit "$work/tree"
echo ours >"$system/code/bin/TEVSysDemon"
# Without inetd, only the record tells whose the ports are.
rm "$work/scratch/"{services,inetd.conf}
touch "$work/scratch/services"
keep few
sweep few '' install "$media/ga/aix_a" "$work/tree" --with-pack "$media/sp1"
echo "$kills kills"
