#!/usr/bin/env bash
# tree_life_test.sh BUILDDIR SOURCEDIR: products, their development kit and samples: what may be
# installed next, and what is refused.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

take_media
# Some checks write a file of this name in their current directory.
echo precious >precious
ln -s precious NUL
expect_check 0 'may be installed' ga new
expect_check 1 'Nothing is installed' sp1 new
run 0 install "$media/ga" "$work/tree" --os aix_a
expect_check 0 "$work/tree/solaris_a" ga tree
expect_check 3 'already installed' ga/aix_a tree
expect_check 0 'already installed' ga/aix_a tree --if-needed
expect_check 1 'operating system hpux_b' other-os tree
expect_check 1 'level R13' other-level tree
run 0 verify "$work/tree"

expect_check 1 '--code' sdk sdk
expect_check 0 'may be installed' sdk sdk --code "$work/tree"
run 0 install "$media/sdk" "$work/sdk" --code "$work/tree"
[[ $(<"$work/tree/ZEBDir.txt") == "$work/sdk" ]] || fail 'the code does not name its SDK'
grep -q Simulation "$work/sdk/control/PRESENT" && fail 'an SDK package without its code'
expect_check 3 'is not installed' sdk sdk
run 0 verify "$work/sdk"
# The two trees find each other again after one of them, or both, moved.
expect_pointers() {
  [[ $(<"$work/$1/ZEBDir.txt") == "$work/$2" && $(<"$work/$2/CodeDir.txt") == "$work/$1" ]] ||
    fail "$1 and $2 do not name each other"
}
mv tree code
run 0 register "$work/code"
expect_pointers code sdk
mv sdk kit
run 0 register "$work/kit"
expect_pointers code kit
run 3 register "$work/kit"
mv kit sdk
mv code tree
expect_refusal '--code' register "$work/sdk"
run 0 register "$work/sdk" --code "$work/tree"
expect_pointers tree sdk
run 0 register "$work/tree"
mkdir around
mv sdk around
expect_check 1 'The directory' ga around
expect_refusal 'Nothing is installed' tasks "$work/around"
mv around/sdk .
expect_refusal 'level R13' repair "$media/other-level" "$work/tree"

expect_exit 0 "$kwbatch" install media/samples "$work/tree" --scratch scratch --log own.log
[[ -s own.log ]] || fail 'no log at a relative path'
[[ -d $system/samples/ModelerSamples ]] || fail 'no samples'
expect_check 3 'already installed' samples tree

# A service pack for the SDK needs the same one, committed, in the code.
expect_check 1 'Service Pack level' sp1-sdk sdk
run 0 service-pack "$media/sp1" "$work/tree"
expect_check 1 'not committed' sp1-sdk sdk
run 0 commit "$work/tree"
content sdk >"$work/before"
run 0 service-pack "$media/sp1-sdk" "$work/sdk"
grep -q SP1-Modeler "$work/sdk/control/PRESENT" || fail 'no fix package'
run 0 undo-service-pack "$work/sdk"
expect_content before sdk
mv "$system/control/PRESENT" "$work/present"
mkdir "$system/control/PRESENT"
expect_check 1 'Service Pack level' sp1-sdk sdk
[[ $(<precious) == precious ]] || fail 'the file behind a link NUL was written'
