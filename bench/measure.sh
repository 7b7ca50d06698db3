#!/usr/bin/env bash
# measure.sh [PART]: measures the build of the preset "release", and puts the table into
# docs/performance.md; with a part of a line's name, prints that line only.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
release=build/release
# In memory, unless TMPDIR says where: a disk's mood is not to be measured.
work=$(mktemp -d "${TMPDIR:-/dev/shm}/kwinst-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT

# What a table was measured with, and what is no line of it.
facts() {
  local library
  echo "Commit $(git describe --always --dirty 2>/dev/null || echo unknown), $(date -u +%F);" \
    "$(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | sort -u);" \
    "Linux $(uname -r), files in $(stat -f -c %T "$work"); load $(cut -d' ' -f1 /proc/loadavg)."
  echo
  for _ in {1..11}; do "$release/bench/load" "$release/src/libKWINSTUTIL.so"; done | sort -n |
    sed -n '6s/.*/From dlopen to the end of the first call it takes & µs (the median of 11)./p'
  echo 'Stripped sizes:'
  for library in "$release"/{src,framework/*}/lib*.so.1; do
    strip -o "$work/stripped" "$library"
    echo "- \`$(basename "$library")\`: $(stat -c %s "$work/stripped") bytes"
  done
}

TMPDIR=$work "$release/bench/benchmarks" "$@" >"$work/table"
if (($#)); then
  cat "$work/table"
  exit
fi
{ echo && cat "$work/table" && echo && facts && echo; } >"$work/result"
sed -i -e '/^<!-- measured -->$/,/^<!-- end -->$/{//!d}' \
  -e "/^<!-- measured -->$/r $work/result" docs/performance.md
cat "$work/result"
