#!/usr/bin/env bash
# abi.sh [--accept]: compares what the libraries export, in the build of the preset "abi", with what
# cmake/abi says that they did; --accept makes it say that they do. Types of the standard library are
# those of g++ 12, which made the files there.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/abi known=cmake/abi
headers=(--headers-dir include --headers-dir framework/kb0core/include
  --headers-dir framework/qtoclib/include)
status=0

for library in src/libKWINSTUTIL framework/kb0core/libKB0CORE framework/qtoclib/libQTOCLIB; do
  name=${library##*/}
  now=$build/$name.abi before=$build/$name.before.abi
  abidw "${headers[@]}" --drop-private-types --no-show-locs --no-corpus-path \
    --no-comp-dir-path --exported-interfaces-only --out-file "$now" "$build/$library.so"
  if [[ ${1-} == --accept ]]; then
    mkdir -p "$known"
    xz -9 --stdout "$now" >"$known/$name.abi.xz"
    continue
  fi
  xz --decompress --stdout "$known/$name.abi.xz" >"$before"
  if ! abidiff --no-added-syms "$before" "$now"; then
    printf '== %s: programs that use what is named above, and were built before, may break\n' "$name"
    status=1
  elif ! abidiff "$before" "$now"; then
    printf '== %s: programs that use what was added need this version; no other may break\n' "$name"
  else
    printf '== %s: no program that was built before may break\n' "$name"
  fi
done
exit "$status"
