#!/usr/bin/env bash
# configurations_test.sh BUILDDIR SOURCEDIR: the ways to configure the project, alone and as a part.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
build=$1 source=$2

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

# configure STATUS DIRECTORY OPTION...: a directory is configured anew, if not for the first time.
configure() {
  expect_exit "$1" cmake -S "$from" -B "$work/$2" -G Ninja \
    -DCMAKE_CXX_COMPILER="$(cached CMAKE_CXX_COMPILER)" \
    -DCMAKE_PREFIX_PATH="$(cached CMAKE_PREFIX_PATH)" "${@:3}"
}

command -v ninja >/dev/null || skip 'there is no ninja, which lists the files that are built'

# targets DIRECTORY: the libraries and programs that are built there.
targets() {
  cmake --build "$work/$1" --target help |
    grep -oE '\<(kwbatch|kwmedium|fixture|KWINSTUTIL|libKWINSTUTIL\.(a|so))\>' | sort -u | xargs
}

from=$source
without=(-DKWINSTUTIL_BUILD_TESTS=OFF)
# What is missing, its Debian package, and the option that leaves out what needs it.
while read -r missing debian option; do
  configure 1 alone -DCMAKE_DISABLE_FIND_PACKAGE_"$missing"=ON
  expect_text "$debian"
  expect_text "-DKWINSTUTIL_BUILD_$option=OFF"
  rm "$work/alone/CMakeCache.txt"
done <<'TEXT'
CLI11 libcli11-dev KWBATCH
LibArchive libarchive-dev KWBATCH
nlohmann_json nlohmann-json3-dev KWBATCH
GTest libgtest-dev TESTS
TEXT
configure 0 alone "${without[@]}"
grep -qx 'CMAKE_BUILD_TYPE:STRING=RelWithDebInfo' "$work/alone/CMakeCache.txt" || fail 'build type'
[[ $(targets alone) == 'KWINSTUTIL kwbatch kwmedium libKWINSTUTIL.so' ]] || fail "$(targets alone)"

# Without kwbatch no script is a test.
configure 0 alone -DKWINSTUTIL_BUILD_TESTS=ON -DKWINSTUTIL_BUILD_KWBATCH=OFF \
  -DKWINSTUTIL_BUILD_KWMEDIUM=OFF -DCMAKE_UNITY_BUILD=ON -DBUILD_SHARED_LIBS=OFF
[[ $(targets alone) == 'KWINSTUTIL fixture libKWINSTUTIL.a' ]] || fail "$(targets alone)"
tests=$(ctest --test-dir "$work/alone" -N | sed -nE 's/.*: ([a-z_]+_test)$/\1/p')
[[ ! $tests ]] || fail "$tests"

# A library directory that does not move with the prefix.
configure 0 alone "${without[@]}" -DBUILD_SHARED_LIBS=ON -DKWINSTUTIL_BUILD_KWBATCH=ON \
  -DCMAKE_INSTALL_LIBDIR=/opt/k/lib64
grep -qx 'libdir=/opt/k/lib64' "$work/alone/cmake/kwinstutil.pc" || fail 'libdir of pkg-config'
grep -qF 'NEW_RPATH "/opt/k/lib64:' "$work/alone/kwbatch/cmake_install.cmake" || fail 'RPATH'

# Another project gets the libraries alone, and installs them only if it wants to.
from=$work/whole
mkdir "$from"
cat >"$from/CMakeLists.txt" <<TEXT
cmake_minimum_required(VERSION 3.21)
project(whole LANGUAGES CXX)
include(FetchContent)
FetchContent_Declare(kwinstutil SOURCE_DIR "$source")
FetchContent_MakeAvailable(kwinstutil)
add_executable(whole "$source/examples/program/program.cc")
target_link_libraries(whole PRIVATE KWINSTUTIL::KWINSTUTIL)
TEXT
configure 0 part
[[ $(targets part) == 'KWINSTUTIL libKWINSTUTIL.so' ]] || fail "$(targets part)"
grep -qx 'CMAKE_BUILD_TYPE:STRING=' "$work/part/CMakeCache.txt" || fail 'build type of the whole'
expect_exit 0 cmake --install "$work/part" --prefix "$work/none"
[[ ! -e $work/none ]] || fail 'a part was installed'
configure 0 part -DKWINSTUTIL_INSTALL=ON
grep -q 'file(INSTALL' "$work/part/_deps/kwinstutil-build/src/cmake_install.cmake" || fail 'install'
