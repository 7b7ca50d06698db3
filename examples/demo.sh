#!/usr/bin/env bash
# demo.sh BUILDDIR: makes sample media beside the build directory, and uses them with its kwbatch.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$1" && pwd)
dir=${build%/*}
# kwbatch refuses paths with blanks or with characters that mean something to the shell.
if [[ $dir == *[!A-Za-z0-9/._+,=@%:-]* ]]; then
  dir=$(mktemp -d /tmp/kwbatch-demo-XXXXXX)
  printf '== Media and tree are in %s: kwbatch would refuse the path %s\n' "$dir" "${build%/*}"
fi
media=$dir/medium tree=$dir/tree scratch=$dir/scratch
export TEVMsgCatalogPath=$root/resources/msgcatalog

say() { printf '== %s\n' "$*"; }

# kwbatch COMMAND WORD...: shows the command and runs it, with the demo's own log and system files.
kwbatch() {
  set -- "$@" --scratch "$scratch"
  printf '\n$ kwbatch %s\n' "$*"
  "$build/kwbatch/kwbatch" "$@" 2>&1
}

say 'Making the sample media'
rm -rf "$media" "$tree" "$scratch"
KWMEDIUM=$build/kwmedium/kwmedium "$root/examples/sample-medium/make-media.sh" "$media"
mkdir -p "$scratch"
printf 'ftp\t\t21/tcp\nssh\t\t22/tcp\n' >"$scratch/services"
printf 'ftp stream tcp nowait root /usr/sbin/ftpd ftpd\n' >"$scratch/inetd.conf"

say 'A product is installed'
kwbatch check "$media/ga" "$tree"
kwbatch install "$media/ga" "$tree" --languages French,Japanese --timeout 30
printf '\n$ cat %s\n' "${tree#"$PWD"/}/aix_a/NLS.txt"
cat "$tree/aix_a/NLS.txt"
# A refusal is what is to be seen here.
kwbatch check "$media/ga" "$tree" || true

say 'A service pack goes on, and is taken out again'
kwbatch check "$media/sp1" "$tree"
kwbatch service-pack "$media/sp1" "$tree"
kwbatch verify "$tree"
kwbatch undo-service-pack "$tree"
kwbatch verify "$tree"

say 'The end of the log'
tail -n 12 "$scratch/kwinst.log"
