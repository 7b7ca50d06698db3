#!/usr/bin/env bash
# command_faults.sh BUILDDIR SOURCEDIR [TEXT]: one system call of kwbatch, kwmedium or of their
# programs fails, or the disk is full from there on. What says "done" has done it; otherwise the same
# command, or an undo, then leads to where a run without a fault leads. KWINSTUTIL_EVERY and TEXT are
# as for kill_test.sh.
# shellcheck source=tests/sweep.sh
source "$2/tests/sweep.sh"
# shellcheck disable=SC2034 # for sweep
declare -A effects=([error]=18 [full]=12)

sweep_kwmedium() { sweep "$1" '' "$KWMEDIUM" "${@:2}"; }

# One package is enough for all kinds of calls.
cp -r "$media/ga/aix_a" "$work/small"
sed -i '/Drafting\|Visualization\|MechanicalDesign/d' "$work/small/TOC"
echo 'foreign 7000/tcp' >"$work/scratch/services"
echo 'foreign stream tcp nowait root /bin/true' >"$work/scratch/inetd.conf"
mkdir "$work/tree"
keep empty
sweep_kwbatch empty '' install "$work/small" "$work/tree" --languages French
echo ours >"$system/code/bin/TEVModeler"
keep products
sweep_kwbatch products undo-service-pack service-pack "$media/sp1" "$work/tree"
sweep_kwbatch products '' service-pack "$media/sp1" "$work/tree"
keep pending
sweep_kwbatch pending '' undo-service-pack "$work/tree"
sweep_kwbatch pending '' commit "$work/tree"
keep committed
sweep_kwbatch committed '' languages "$work/tree" "$work/small" --add German
sweep_kwbatch committed '' hot-fix "$media/hf1" "$work/tree"
keep fixed
sweep_kwbatch fixed '' undo-hot-fix "$work/tree"
use committed
rm "$system/code/bin/TEVModeler"
keep damaged
sweep_kwbatch damaged '' repair "$media/sp1" "$work/tree"
# A file that cannot be read may have been changed, so it would be kept.
sweep_kwbatch committed '' uninstall "$work/tree" --purge
echo "code:FWK:BASE:os=aix_a:ga=R12:from=$work/committed/tree/aix_a/code/bin" >"$work/one.list"
echo "code:PRD:Modeler:from=$work/committed/tree/aix_a/code/data" >>"$work/one.list"
sweep_kwmedium empty product "$work/one.list" "$work/made"
sweep_kwmedium empty service-pack --from "$work/small" --to "$media/ga/aix_a" --name SP1 --level 1 --leave-languages \
  "$work/made"
echo "kwbatch and kwmedium: $faults faults"
