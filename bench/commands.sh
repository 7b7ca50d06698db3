#!/usr/bin/env bash
# commands.sh [ROUNDS]: measures whole commands of the preset "release" beside everyday programs that
# do the same, at three sizes, and prints a table.
set -euo pipefail
export LC_ALL=C
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
kwbatch=$root/build/release/kwbatch/kwbatch
kwmedium=$root/build/release/kwmedium/kwmedium
export TEVMsgCatalogPath=$root/resources/msgcatalog
rounds=${1:-7}
work=$(mktemp -d "${TMPDIR:-/dev/shm}/kwinst-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"

# make_build FILES: what a build leaves, so many files of 4 KB in 20 components, and their list.
make_build() {
  local part dir
  rm -rf build medium list
  for part in {01..20}; do
    dir=build/P$part/code/data/P$part
    mkdir -p "$dir"
    head -c $(($1 * 3000 / 20)) /dev/urandom | base64 | split -b 4053 -a 3 - "$dir/file"
    echo "code:PRD:P$part:from=build/P$part" >>list
  done
  sed -i '1s/PRD\(.*\):from/FWK\1:os=aix_a:ga=R12:from/' list
  "$kwmedium" product <(sed 's/$/:compress=no/;s|build|/proc/self/cwd/build|' list) medium --quiet
}

# timed COMMAND SIDE WORD...: notes size, command, side, microseconds and the peak memory in KB.
timed() {
  local start=${EPOCHREALTIME/./}
  /usr/bin/time -o memory -f %M "${@:3}" >output || { cat output >&2 && return 1; }
  echo "$size $1 $2 $((${EPOCHREALTIME/./} - start)) $(<memory)" >>measured
}

# Each command, and beside it what everyday programs take.
measure_round() {
  local bare=$work/bare
  rm -rf packed "$bare" scratch
  mkdir "$bare" scratch bare.packed
  touch scratch/services scratch/inetd.conf
  timed medium library "$kwmedium" product list packed --quiet
  # shellcheck disable=SC2016 # for the shell that is measured
  timed medium beside sh -c 'for part in build/*; do
    tar -C "$part" -cf - . | compress -c >"bare.packed/${part#build/}.Z"; done; sha256sum bare.packed/* >sums'
  timed install library "$kwbatch" install "$work/medium" "$work/tree" --scratch scratch --quiet
  # shellcheck disable=SC2016
  timed install beside sh -c 'for part in medium/P*; do tar -C bare -xf "$part"; done
    find bare -type f -print0 | xargs -0 cksum >sums; sync -f bare'
  timed verify library "$kwbatch" verify "$work/tree" --scratch scratch --quiet
  timed verify beside sh -c 'find bare -type f -print0 | xargs -0 cksum >sums'
  timed uninstall library "$kwbatch" uninstall "$work/tree" --scratch scratch --quiet
  timed uninstall beside rm -rf "$bare"
  rm -r bare.packed
}

for size in 200 2000 20000; do
  echo "commands: $size files" >&2
  make_build "$size"
  for ((round = 0; round < rounds; ++round)); do measure_round; done
done
awk -f "$root/bench/commands.awk" measured
