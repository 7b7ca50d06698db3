#!/usr/bin/env bash
# cross.sh ARCH: builds for another processor by Debian's cross compiler, below build/cross/ARCH, and
# runs the tests under QEMU. libarchive is that of Debian for the processor. The programs that kwbatch
# starts are those of this machine, and so is the kwmedium that makes the media.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
case ${1-} in
  aarch64) compiler=$1-linux-gnu processor=$1 debian=arm64 libraries=$1-linux-gnu ;;
  s390x) compiler=$1-linux-gnu processor=$1 debian=$1 libraries=$1-linux-gnu ;;
  i386) compiler=i686-linux-gnu processor=i686 debian=$1 libraries=$1-linux-gnu ;;
  *)
    echo 'Usage: ./run cross aarch64|i386|s390x' >&2
    exit 2
    ;;
esac
dir=$PWD/build/cross/$1
emulator=$dir/emulator
system=$dir/system

# What emulation cannot do: the tests' names, and why.
left_out=(
  '^fleet_test=it installs programs for this machine on others'
  '^kill_test=emulation lets nobody trace a process'
  'ProcessesAreWaitedForOrLeftOrRefused=under emulation a program that cannot start has a status'
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

# fetch_libraries: unpacks what Debian has for the processor below $system. Changes nothing here:
# apt-get keeps its lists and its packages there, too.
fetch_libraries() {
  local apt=$system/apt package
  mkdir -p "$apt"/{lists,cache/archives}/partial
  : >"$apt/status"
  local get=(apt-get -qq -o "APT::Architecture=$debian" -o "APT::Architectures::=$debian"
    -o "Dir::State=$apt" -o "Dir::State::status=$apt/status" -o "Dir::Cache=$apt/cache"
    -o Debug::NoLocking=1 -o APT::Sandbox::User= -o APT::Install-Recommends=0)
  "${get[@]}" update
  "${get[@]}" -y --download-only install libarchive-dev libstdc++6 libc-bin
  for package in "$apt"/cache/archives/*.deb; do dpkg-deb --extract "$package" "$system"; done
  # Where everything is below "usr", links lead there.
  for package in lib lib64; do
    [[ -e $system/$package || ! -e $system/usr/$package ]] || ln -s "usr/$package" "$system/$package"
  done
  : >"$apt/done"
}

mkdir -p "$dir"
[[ -e $system/apt/done ]] || {
  say "Fetching the libraries for $1"
  fetch_libraries
}
start="qemu-$1 -L $(printf %q "$system")"
# This processor knows that one's instructions, and under QEMU 7.2 a kwbatch for it never ends.
[[ $1 != i386 ]] || start=$(printf '%q --library-path %q:%q' "$system/lib/ld-linux.so.2" \
  "$system/lib/$libraries" "$system/usr/lib/$libraries")
printf '#!/bin/bash\nexec %s "$@"\n' "$start" >"$emulator"
chmod +x "$emulator"
say "Building GoogleTest for $1"
configure /usr/src/googletest googletest -DCMAKE_C_COMPILER="$compiler-gcc" -DBUILD_GMOCK=OFF \
  -DCMAKE_INSTALL_PREFIX="$dir/prefix"
cmake --build "$dir/googletest" --target install -- --quiet >/dev/null
say "Building for $1"
configure . build -DCMAKE_PREFIX_PATH="$dir/prefix" -DKWINSTUTIL_BUILD_KWMEDIUM=OFF \
  -DLibArchive_INCLUDE_DIR="$system/usr/include" \
  -DLibArchive_LIBRARY="$system/usr/lib/$libraries/libarchive.so" \
  -DCMAKE_EXE_LINKER_FLAGS="-Wl,-rpath-link,$system/usr/lib/$libraries:$system/lib/$libraries"
cmake --build "$dir/build" -- --quiet
cmake --preset dev >/dev/null
cmake --build --preset dev --target kwmedium -- --quiet
mkdir -p "$dir/build/kwmedium"
ln -sf "$PWD/build/dev/kwmedium/kwmedium" "$dir/build/kwmedium"
for test in "${left_out[@]}"; do say "Left out: ${test%%=*}: ${test#*=}"; done
names=("${left_out[@]%%=*}")
KWBATCH_WRAPPER=$emulator ctest --test-dir "$dir/build" -j "$(nproc)" --output-on-failure \
  --exclude-regex "$(IFS='|' && echo "${names[*]}")"
