# shellcheck shell=bash
# Sourced by the tests in which commands fail everywhere, with BUILDDIR, SOURCEDIR and TEXT: see
# kill_test.sh.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
fault_at=$1/tests/fault_at
[[ -x $fault_at ]] || skip 'processes cannot be traced on this machine'

# On a file system in memory, in a namespace of its own: what killed commands leave there goes with it.
if [[ ! ${SWEEP-} ]]; then
  unshare -m true 2>/dev/null || skip 'this user may not mount anything'
  tmp=/tmp
  # That would hide the programs.
  [[ "$1 $2" != */tmp/* ]] || tmp=/mnt
  # shellcheck disable=SC2016
  SWEEP=1 TMPDIR=$tmp exec unshare -m bash -ec 'mount -t tmpfs none "$TMPDIR" && exec bash "$@"' - "$0" "$@"
fi

take_media
# Not --scratch, which would bring inetd's file back.
export VRK_ODT_IN=1 VRK_ODT_OUT=1 VRK_ODT_TMP=$work/scratch
parts=(tree sdk made)
# state: all that the commands may change.
state() {
  local part
  # Of an uninstalled tree, an empty directory may be left.
  for part in "${parts[@]}"; do [[ ! $(ls -A "$work/$part" 2>/dev/null) ]] || content "$part"; done
  (cd "$work" && shopt -s nullglob && find tre[e] scratch \( -name Registered -o -path 'scratch/*' ! -name kwinst.log \) \
    -type f | sort | xargs tail -n +1)
}
# use STATE: begins where `keep STATE` was called.
keep() {
  local part
  mkdir "$work/$1"
  for part in "${parts[@]}" scratch; do [[ ! -e $work/$part ]] || cp -a "$work/$part" "$work/$1"; done
}
use() { (cd "$work" && rm -rf "${parts[@]}" scratch && cp -a "$work/$1/." .); }

faults=0 wanted=${3-}
# sweep STATE AGAIN COMMAND...: lets a command fail everywhere, in each way that `effects` has, at as
# many calls as that says. One that says "done" has done it. Otherwise it is repeated, or AGAIN is run
# if that is not empty. Then the state is that of a run without a fault, or STATE after an undo.
sweep() {
  local begin=$1 again=$2 effect
  shift 2
  use "$begin"
  [[ ! $again ]] || state >"$work/wanted"
  expect_exit 0 "$@"
  [[ "$begin $*" == *"$wanted"* ]] || return 0
  if [[ ! $again ]]; then
    state >"$work/wanted"
    use "$begin"
    ! state | diff "$work/wanted" - >"$work/output" || fail "nothing was done: $*"
  fi
  # shellcheck disable=SC2154 # each test has its own
  for effect in "${!effects[@]}"; do sweep_effect "$@"; done
}
sweep_effect() {
  local calls call step
  use "$begin"
  calls=$(cd "$work" && "$fault_at" 1000000 "$effect" "$@") || (($? == 99)) || fail "not traced: $*"
  echo "$begin, $effect, $calls calls: ${*//$work\//}"
  step=${KWINSTUTIL_EVERY:-$((calls / effects["$effect"] + 1))}
  for ((call = step; call <= calls; call += step)); do
    use "$begin"
    try "$@" || break
    ((++faults))
  done
}
# try COMMAND...: false when the call was not reached, or when what is done cannot be undone.
try() {
  local status=0
  (cd "$work" && "$fault_at" "$call" "$effect" "$@" >/dev/null) || status=$?
  ((status != 99)) || return
  if [[ $again ]]; then
    # What is being committed cannot be undone.
    if grep -qs HFX "$system/control/PRESENT"; then
      grep -qs ^installing "$system/control/SPK.journal" || return
    fi
    run_again "$kwbatch" "$again" "$work/tree"
  # Where it is done, only its last words were lost.
  elif ((status != 0)); then
    state >"$work/got"
    cmp -s "$work/wanted" "$work/got" || run_again "$@"
  fi
  state >"$work/got"
  diff "$work/wanted" "$work/got" >"$work/output" ||
    fail "after status $status with $effect at call $call: $*"
}
# run_again COMMAND...: there may be nothing left to do.
run_again() {
  "$@" >"$work/output" 2>&1 || (($? == 3)) ||
    fail "status $? after status $status with $effect at call $call: $*"
}
sweep_kwbatch() { sweep "$1" "$2" "$kwbatch" "${@:3}"; }
