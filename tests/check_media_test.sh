#!/usr/bin/env bash
# check_media_test.sh BUILDDIR SOURCEDIR: every refusal, seen with a real medium.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# expect_check STATUS TEXT MEDIUM TREE [OPTION...]: the check says the text, and writes nothing.
expect_check() {
  local before
  before=$(cd "$work" && find tree sdk -printf '%p %T@ %s\n')
  run "$1" check "$media/$3" "$work/$4" "${@:5}"
  expect_text "$2"
  [[ $before == "$(cd "$work" && find tree sdk -printf '%p %T@ %s\n')" ]] ||
    fail "the check of $3 on $4 wrote something"
}

check_products() {
  expect_check 0 'may be installed' ga new
  expect_check 1 'Nothing is installed' sp1 new
  run 0 install "$media/ga" "$work/tree" --os aix_a --languages none
  expect_check 0 "$work/tree/solaris_a" ga tree
  expect_check 1 'already installed' ga/aix_a tree
  expect_check 1 'operating system hpux_b' other-os tree
  expect_check 1 'level R13' other-level tree
  run 0 verify "$work/tree"
}

check_sdk_and_samples() {
  expect_check 1 '--code' sdk sdk
  expect_check 0 'may be installed' sdk sdk --code "$work/tree"
  run 0 install "$media/sdk" "$work/sdk" --code "$work/tree"
  [[ $(<"$work/tree/ZEBDir.txt") == "$work/sdk" ]] || fail 'the code does not name its SDK'
  grep -q Simulation "$work/sdk/control/PRESENT" && fail 'an SDK package without its code'
  expect_check 1 'is not installed' sdk sdk
  run 0 verify "$work/sdk"
  expect_check 1 'Service Pack level' sp1-sdk sdk
  run 0 install "$media/samples" "$work/tree"
  [[ -d $system/samples/ModelerSamples ]] || fail 'no samples'
  expect_check 1 'already installed' samples tree
}

check_updates() {
  expect_check 0 'may be installed' sp1 tree
  expect_check 1 'HF1' hf1 tree
  run 0 service-pack "$media/sp1" "$work/tree"
  expect_check 1 'tevstart -run TEVSoftwareMgt' sp2 tree
  expect_check 1 'Commit' hf1 tree
  expect_check 1 'not committed' sp1-sdk sdk
  run 0 commit "$work/tree"
  expect_check 1 'already installed' sp1 tree
  expect_check 0 'may be installed' sp2 tree
  expect_check 0 'may be installed' sp1-sdk sdk
  expect_check 0 'may be installed' hf1 tree
  rm "$system/code/bin/TEVRepair"
  run 1 verify "$work/tree"
  expect_text 'code/bin/TEVRepair: is missing'
  expect_check 1 'again' hf1 tree
  expect_check 0 'may be installed' sp1 tree
  run 0 service-pack "$media/sp1" "$work/tree"
  run 1 hot-fix "$media/sp2" "$work/tree"
  run 1 service-pack "$media/hf1" "$work/tree"
  run 0 hot-fix "$media/hf1" "$work/tree"
  run 0 verify "$work/tree"
  expect_check 1 'already installed' hf1 tree
  expect_check 1 'HF1' hf2 tree
  run 0 service-pack "$media/sp2" "$work/tree"
  expect_check 1 'already installed' sp2 tree
  mv "$system/control/PRESENT" "$work/present"
  mkdir "$system/control/PRESENT"
  expect_check 1 'PRESENT' sp1-sdk sdk
  rmdir "$system/control/PRESENT"
  mv "$work/present" "$system/control/PRESENT"
  expect_check 1 'level 2' sp1 tree
  : >"$system/control/Modeler"
  run 1 verify "$work/tree"
  expect_text 'control/Modeler: lists no file'
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
