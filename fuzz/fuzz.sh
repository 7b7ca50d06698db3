#!/usr/bin/env bash
# fuzz.sh [SECONDS]: lets each target of the preset "fuzz" run for that time (60), and keeps the
# inputs that lead to new places.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
seconds=${1:-60}

# fuzz_target TARGET SECONDS: what libFuzzer finds lies below build/fuzz, and of it the inputs that
# reach other code than those that are kept already are copied to them.
# shellcheck disable=SC2317 # called by bash -c below
fuzz_target() {
  local dir=build/fuzz kept=fuzz/corpus/$1 found=build/fuzz/found/$1 status=0 before
  local program=$dir/fuzz/$1_fuzz
  mkdir -p "$found" "$dir/crashes"
  before=$(find "$kept" -type f | wc -l)
  "$program" "$found" "$kept" -max_total_time="$2" -max_len=8192 -timeout=20 -print_final_stats=1 \
    -artifact_prefix="$dir/crashes/$1-" >"$dir/$1.log" 2>&1 || status=1
  if ((status == 0)); then
    "$program" "$kept" "$found" -merge=1 -use_counters=0 >"$dir/$1-merge.log" 2>&1 || status=1
  fi
  printf '%-10s %12s executions, %s new inputs%s\n' "$1" \
    "$(sed -n 's/^stat::number_of_executed_units: *//p' "$dir/$1.log")" \
    "$(($(find "$kept" -type f | wc -l) - before))" \
    "$( ((status == 0)) || echo "; FAILED, see $dir/$1.log and $dir/crashes")" >"$dir/$1.result"
  return "$status"
}

printf '== Fuzzing, %s targets at a time, for %s seconds each\n' "$(nproc)" "$seconds"
# What a crash leaves goes with the directory.
TMPDIR=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap 'rm -rf "$TMPDIR"' EXIT
export TMPDIR ASAN_OPTIONS=malloc_context_size=4
rm -f build/fuzz/*.result
export -f fuzz_target
status=0
for target in build/fuzz/fuzz/*_fuzz; do basename "$target" _fuzz; done |
  xargs -P "$(nproc)" -I{} bash -c "fuzz_target {} $seconds" || status=1
cat build/fuzz/*.result
exit "$status"
