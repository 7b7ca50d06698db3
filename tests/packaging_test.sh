#!/usr/bin/env bash
# packaging_test.sh BUILDDIR SOURCEDIR: an installed copy, used as another project does.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
build=$1 source=$2

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

compiler=$(cached CMAKE_CXX_COMPILER)
sanitizers=$(cached KWINSTUTIL_SANITIZE)
flags=(${sanitizers:+"-fsanitize=$sanitizers"})

# The copy is moved after its installation, so a path fixed in it would lead nowhere.
install_copy() {
  cmake --install "$build" --prefix "$work/first" >/dev/null
  mv "$work/first" "$work/copy"
  library=$(compgen -G "$work/copy/lib*/libKWINSTUTIL.so" ||
    compgen -G "$work/copy/lib/*/libKWINSTUTIL.so") || fail 'no libKWINSTUTIL.so is installed'
  libdir=${library%/*}
  export TEVMsgCatalogPath=$work/copy/share/kwinstutil/msgcatalog
  [[ -f $TEVMsgCatalogPath/TEVInstUtil.msg ]] || fail 'no message catalog is installed'
}

check_no_fixed_paths() {
  local found
  found=$(cd "$libdir" && grep -rnF -e "$build" -e "$source" -e "$work" pkgconfig cmake) || return 0
  fail "paths of this machine in the installed files: $found"
}

check_cmake_package() {
  cmake -S "$source/kwbatch" -B "$work/kwbatch" -G "$(cached CMAKE_GENERATOR)" \
    -DCMAKE_PREFIX_PATH="$work/copy" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_FLAGS="${flags[*]}" >/dev/null
  expect_exit 0 cmake --build "$work/kwbatch"
  kwbatch=$work/kwbatch/kwbatch
  new_scratch
  expect_refusal "$work/none" check "$work/none" "$work/tree"
}

# The program that the README shows.
check_pkg_config() {
  local options
  # shellcheck disable=SC2016
  sed -n '/^```cpp$/,/^```$/{/^```/!p}' "$source/README.md" >"$work/program.cc"
  read -ra options <<<"$(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs kwinstutil)"
  "$compiler" -std=c++17 "${flags[@]}" "$work/program.cc" -o "$work/program" "${options[@]}"
  LD_LIBRARY_PATH=$libdir "$work/program" >"$work/output" || true
  grep -qE '^(3|-1) ' "$work/output" || fail 'the README program'
}

# The list in the version script has a name on each line: quoted for C++, bare for C.
check_exported_symbols() {
  sed -nE 's/^[[:space:]]*"([^"]+)";.*/\1/p; s/^[[:space:]]*([A-Za-z_]\w*);.*/\1/p' \
    "$source/src/kwinstutil.map" | sort -u >"$work/wanted"
  nm -DC --defined-only "$library" | sed -nE 's/^[0-9a-f]+ [TWVBDRGSiu] //p' | sed 's/@@.*//' |
    sort -u >"$work/exported"
  [[ -s $work/wanted ]] || fail 'no names in the version script'
  diff "$work/wanted" "$work/exported" || fail 'the version script (<) and the library (>) differ'
  # Names stand in the first column of the tables, without parameters.
  sed 's/(.*//' "$work/wanted" | sort -u >"$work/names"
  cut -s -d '|' -f 2 "$source/docs/functions.md" | grep -vx -e '---' -e ' Function ' |
    tr -d '\140 ' | tr , '\n' | sort >"$work/described"
  diff "$work/names" "$work/described" ||
    fail 'the version script (<) and docs/functions.md (>) differ'
}

install_copy
check_no_fixed_paths
check_exported_symbols
check_pkg_config
check_cmake_package
