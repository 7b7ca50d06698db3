#!/usr/bin/env bash
# kill_test.sh BUILDDIR SOURCEDIR [TEXT]: kwbatch and its programs are killed before calls that change
# files; the same command, or an undo, then leads to where a run without a kill leads. With
# KWINSTUTIL_EVERY=N every Nth call is tried, otherwise a few of each command; with TEXT, only those
# commands whose line "STATE ARGUMENT..." holds it.
# shellcheck source=tests/sweep.sh
source "$2/tests/sweep.sh"
declare -A effects=([kill]=3)

echo 'foreign 7000/tcp' >"$work/scratch/services"
echo 'foreign stream tcp nowait root /bin/true' >"$work/scratch/inetd.conf"
mkdir "$work/tree"
keep empty
sweep_kwbatch empty '' install "$media/ga/aix_a" "$work/tree" --languages French
echo ours >"$system/code/bin/TEVModeler"
echo ours >"$system/code/own"
keep products
sweep_kwbatch products undo-service-pack service-pack "$media/sp1" "$work/tree"
sweep_kwbatch products '' service-pack "$media/sp1" "$work/tree"
use products
run 0 service-pack "$media/sp1" "$work/tree"
keep pending
sweep_kwbatch pending '' undo-service-pack "$work/tree"
sweep_kwbatch pending '' commit "$work/tree"
use pending
run 0 commit "$work/tree"
keep committed
sweep_kwbatch committed undo-service-pack hot-fix "$media/hf1" "$work/tree"
sweep_kwbatch committed '' hot-fix "$media/hf1" "$work/tree"
sweep_kwbatch committed '' languages "$work/tree" "$media/ga/aix_a" --add German
sweep_kwbatch committed '' install "$media/sdk" "$work/sdk" --code "$work/tree"
use committed
run 0 install "$media/sdk" "$work/sdk" --code "$work/tree"
keep developed
sweep_kwbatch developed '' uninstall "$work/sdk"
use developed
touch "$work/sdk/site" "$work/sdk/control/site"
keep extended
sweep_kwbatch extended '' uninstall "$work/sdk" --purge
use committed
printf 'morvelk7run 20071/tcp  #Brovik Communication ports\n' >"$work/scratch/services"
echo 'morvelk7run stream tcp nowait root /old/aix_a/code/bin/TEVSysDemon  #TEVSysDemon' \
  >"$work/scratch/inetd.conf"
keep moved
sweep_kwbatch moved '' register "$work/tree"
mkdir -p "$work/scratch/systemd/system"
keep units
sweep_kwbatch units '' register "$work/tree" --systemd
echo ours >"$system/code/bin/TEVSysDemon"
keep listening
sweep_kwbatch listening '' uninstall "$work/tree"
use committed
echo ours >"$system/code/bin/TEVSysDemon"
keep changed
sweep_kwbatch changed '' service-pack "$media/sp1" "$work/tree"
use committed
run 0 hot-fix "$media/hf1" "$work/tree"
keep fixed
sweep_kwbatch fixed '' undo-hot-fix "$work/tree"
use committed
rm "$system/code/bin/TEVDrafting" "$system/code/data/Drafting/"*
keep damaged
sweep_kwbatch damaged '' repair "$media/ga/aix_a" "$work/tree"
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
sweep_kwbatch few '' install "$media/ga/aix_a" "$work/tree" --with-pack "$media/sp1"
echo "kwbatch: $faults faults"
