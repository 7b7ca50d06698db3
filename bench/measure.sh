#!/usr/bin/env bash
# measure.sh [PART]: measures the build of the preset "release", and puts the tables into
# docs/performance.md, with their picture; with a part of a line's name, prints that line only, with
# "commands" the whole commands.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
release=build/release
# In memory, unless TMPDIR says where: a disk's mood is not to be measured.
work=$(mktemp -d "${TMPDIR:-/dev/shm}/kwinst-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT

# What a table was measured with.
machine() {
  echo "Commit $(git describe --always --dirty 2>/dev/null || echo unknown), $(date -u +%F);" \
    "$(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | sort -u);" \
    "Linux $(uname -r), files in $(stat -f -c %T "$work"); load $(cut -d' ' -f1 /proc/loadavg)."
}

# The same, and what is no line of the table.
facts() {
  local library
  machine
  echo
  for _ in {1..11}; do "$release/bench/load" "$release/src/libKWINSTUTIL.so"; done | sort -n |
    sed -n '6s/.*/From dlopen to the end of the first call it takes & µs (the median of 11)./p'
  echo 'Stripped sizes:'
  for library in "$release"/{src,framework/*}/lib*.so.1; do
    strip -o "$work/stripped" "$library"
    echo "- \`$(basename "$library")\`: $(stat -c %s "$work/stripped") bytes"
  done
}

# publish MARK FILE: puts the file behind the mark, in place of what is there up to the end.
publish() {
  { echo && cat "$2" && echo; } >"$work/result"
  sed -i -e "/^<!-- $1 -->$/,/^<!-- end -->$/{//!d}" -e "/^<!-- $1 -->$/r $work/result" \
    docs/performance.md
  cat "$2"
}

if [[ ${1-} == commands || $# == 0 ]]; then
  TMPDIR=$work bench/commands.sh >"$work/table"
  { cat "$work/table" && echo && machine; } >"$work/commands"
  publish commands "$work/commands"
fi
if [[ ${1-} != commands ]]; then
  TMPDIR=$work "$release/bench/benchmarks" "$@" >"$work/table"
  if (($#)); then
    cat "$work/table"
    exit
  fi
  { cat "$work/table" && echo && facts; } >"$work/library"
  publish measured "$work/library"
fi
bench/picture.sh
