#!/usr/bin/env bash
# check_media_test.sh BUILDDIR SOURCEDIR: every refusal, seen with a real medium.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# expect_check STATUS TEXT MEDIUM TREE [OPTION...]: the check says the text, and writes nothing.
expect_check() {
  local before
  before=$(cd "$work" && find tree sdk -printf '%p %T@ %s\n')
  expect_exit "$1" "$kwbatch" check "$media/$3" "$work/$4" --scratch "$work/scratch" "${@:5}"
  grep -qF -- "$2" "$work/output" || fail "no '$2' in the check of $3 on $4"
  [[ $before == "$(cd "$work" && find tree sdk -printf '%p %T@ %s\n')" ]] ||
    fail "the check of $3 on $4 wrote something"
}

# unpack_pack NAME: puts a service pack or a hot fix into the tree by hand.
unpack_pack() {
  if [[ -f $media/${1,,}/$1.Z ]]; then
    compress -dc "$media/${1,,}/$1.Z" | tar -xf - -C "$work/tree"
  else
    tar -xf "$media/${1,,}/$1" -C "$work/tree"
  fi
  cat "$system/control/$1.toc" >>"$system/control/PRESENT"
}

install() {
  expect_exit 0 "$kwbatch" install "$media/$1" "$work/$2" --scratch "$work/scratch" "${@:3}"
}

check_products() {
  expect_check 0 'may be installed' ga new
  expect_check 1 'Nothing is installed' sp1 new
  install ga tree --os aix_a --languages none
  expect_check 0 "$work/tree/solaris_a" ga tree
  expect_check 1 'already installed' ga/aix_a tree
  expect_check 1 'operating system hpux_b' other-os tree
  expect_check 1 'level R13' other-level tree
  expect_exit 0 "$kwbatch" verify "$work/tree"
}

check_sdk_and_samples() {
  expect_check 1 '--code' sdk sdk
  expect_check 0 'may be installed' sdk sdk --code "$work/tree"
  install sdk sdk --code "$work/tree"
  [[ $(<"$work/tree/ZEBDir.txt") == "$work/sdk" ]] || fail 'the code does not name its SDK'
  grep -q Simulation "$work/sdk/control/PRESENT" && fail 'an SDK package without its code'
  expect_check 1 'is not installed' sdk sdk
  expect_exit 0 "$kwbatch" verify "$work/sdk"
  expect_check 1 'Service Pack level' sp1-sdk sdk
  install samples tree
  [[ -d $system/samples/ModelerSamples ]] || fail 'no samples'
  expect_check 1 'already installed' samples tree
}

check_updates() {
  expect_check 0 'may be installed' sp1 tree
  expect_check 1 'HF1' hf1 tree
  unpack_pack SP1
  expect_check 1 'already installed' sp1 tree
  expect_check 0 'may be installed' sp2 tree
  expect_check 0 'may be installed' sp1-sdk sdk
  expect_check 0 'may be installed' hf1 tree
  touch "$system/control/SPK.list"
  expect_check 1 'tevstart -run TEVSoftwareMgt' sp2 tree
  expect_check 1 'Commit' hf1 tree
  expect_check 1 'not committed' sp1-sdk sdk
  rm "$system/control/SPK.list"
  rm "$system/code/bin/TEVRepair"
  expect_exit 1 "$kwbatch" verify "$work/tree"
  grep -q '^code/bin/TEVRepair: is missing' "$work/output" || fail 'a missing file is not told'
  expect_check 1 'again' hf1 tree
  expect_check 0 'may be installed' sp1 tree
  unpack_pack SP1
  unpack_pack HF1
  expect_check 1 'already installed' hf1 tree
  expect_check 1 'HF1' hf2 tree
  unpack_pack SP2
  cp "$system/control/PRESENT" "$work/present"
  expect_check 1 'already installed' sp2 tree
  rm -r "$system/control/PRESENT"
  mkdir "$system/control/PRESENT"
  expect_check 1 'PRESENT' sp1-sdk sdk
  rmdir "$system/control/PRESENT"
  cp "$work/present" "$system/control/PRESENT"
  expect_check 1 'level 2' sp1 tree
  : >"$system/control/Modeler"
  expect_exit 1 "$kwbatch" verify "$work/tree"
  grep -q '^control/Modeler: lists no file' "$work/output" || fail 'an empty manifest'
  [[ ! -e NUL ]] || fail 'a file NUL is left behind'
}

make_sample_media
media=$work/media
system=$work/tree/aix_a
mkdir "$work/tree" "$work/sdk"
new_scratch
check_products
check_sdk_and_samples
check_updates
