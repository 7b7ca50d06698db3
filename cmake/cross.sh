#!/usr/bin/env bash
# cross.sh ARCH: builds for another processor by Debian's cross compiler, below build/cross/ARCH, and
# runs the tests under QEMU. The programs that kwbatch starts are those of this machine, and so is the
# kwmedium that makes the media: it needs libarchive.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
case ${1-} in
  aarch64 | s390x) compiler=$1-linux-gnu processor=$1 ;;
  i386) compiler=i686-linux-gnu processor=i686 ;;
  *)
    echo 'Usage: ./run cross aarch64|i386|s390x' >&2
    exit 2
    ;;
esac
dir=$PWD/build/cross/$1
emulator=$dir/emulator

# What emulation cannot do: the tests' names, and why.
left_out=(
  '^medium_=they are about kwmedium, which is of this machine'
  '^packaging_test=it builds and runs programs of this machine'
  '^configurations_test=it configures for this machine'
)

say() { printf '== %s\n' "$*"; }

# configure SOURCE DIRECTORY OPTION...
configure() {
  cmake -S "$1" -B "$dir/$2" -G Ninja -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_SYSTEM_PROCESSOR="$processor" -DCMAKE_CXX_COMPILER="$compiler-g++" \
    -DCMAKE_CROSSCOMPILING_EMULATOR="$emulator" "${@:3}" >/dev/null
}

mkdir -p "$dir"
start="qemu-$1 -L /usr/$compiler"
# This processor knows that one's instructions, and under QEMU 7.2 a kwbatch for it never ends.
[[ $1 != i386 ]] || start="/usr/$compiler/lib/ld-linux.so.2 --library-path /usr/$compiler/lib"
printf '#!/bin/sh\nexec %s "$@"\n' "$start" >"$emulator"
chmod +x "$emulator"
say "Building GoogleTest for $1"
configure /usr/src/googletest googletest -DCMAKE_C_COMPILER="$compiler-gcc" -DBUILD_GMOCK=OFF \
  -DCMAKE_INSTALL_PREFIX="$dir/prefix"
cmake --build "$dir/googletest" --target install -- --quiet >/dev/null
say "Building for $1"
configure . build -DCMAKE_PREFIX_PATH="$dir/prefix" -DKWINSTUTIL_BUILD_KWMEDIUM=OFF
cmake --build "$dir/build" -- --quiet
cmake --preset dev >/dev/null
cmake --build --preset dev --target kwmedium -- --quiet
mkdir -p "$dir/build/kwmedium"
ln -sf "$PWD/build/dev/kwmedium/kwmedium" "$dir/build/kwmedium"
for test in "${left_out[@]}"; do say "Left out: ${test%%=*}: ${test#*=}"; done
names=("${left_out[@]%%=*}")
KWBATCH_WRAPPER=$emulator ctest --test-dir "$dir/build" -j "$(nproc)" --output-on-failure \
  --exclude-regex "$(IFS='|' && echo "${names[*]}")"
