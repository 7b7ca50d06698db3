#!/usr/bin/env bash
# packaging_test.sh BUILDDIR SOURCEDIR: an installed copy, used as another project does.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
build=$1 source=$2

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

compiler=$(cached CMAKE_CXX_COMPILER)
sanitizers=$(cached KWINSTUTIL_SANITIZE)
read -ra flags <<<"$(cached CMAKE_CXX_FLAGS) ${sanitizers:+-fsanitize=$sanitizers}"

# The copy is moved after its installation, so a path fixed in it would lead nowhere.
install_copy() {
  cmake --install "$build" --prefix "$work/first" >/dev/null
  mv "$work/first" "$work/copy"
  library=$(compgen -G "$work/copy/lib*/libKWINSTUTIL.so" ||
    compgen -G "$work/copy/lib/*/libKWINSTUTIL.so") || fail 'no libKWINSTUTIL.so is installed'
  libdir=${library%/*}
  unset TEVMsgCatalogPath
}

check_no_fixed_paths() {
  local found
  found=$(cd "$libdir" && grep -rnF -e "$build" -e "$source" -e "$work" pkgconfig cmake) || return 0
  fail "paths of this machine in the installed files: $found"
}

check_catalogs() {
  diff -r "$source/resources/msgcatalog" "$(find "$work/copy" -name msgcatalog)" || fail 'the catalogs'
}

# build_with_cmake DIRECTORY TARGET: a project that looks for the library's package.
build_with_cmake() {
  cmake -S "$source/$1" -B "$work/$2" -G "$(cached CMAKE_GENERATOR)" \
    -DCMAKE_PREFIX_PATH="$work/copy" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_FLAGS="${flags[*]}" \
    -DCMAKE_EXE_LINKER_FLAGS="$(cached CMAKE_EXE_LINKER_FLAGS)" >/dev/null
  expect_exit 0 cmake --build "$work/$2" --target "$2"
}

# expect_answer PROGRAM: the example's program says whether /opt/suite is fit.
expect_answer() {
  "$1" >"$work/output" || true
  grep -qE '^(3|-1) ' "$work/output" || fail "the answer of $1"
}

check_example() {
  # shellcheck disable=SC2016
  sed -n '/^```cpp$/,/^```$/{/^```/!p}' "$source/README.md" |
    diff - "$source/examples/program/program.cc" || fail 'README.md and examples/program differ'
}

check_cmake_package() {
  build_with_cmake kwbatch kwbatch
  kwbatch=$work/kwbatch/kwbatch
  new_scratch
  expect_refusal "$work/none" check "$work/none" "$work/tree"
  build_with_cmake examples/program program
  expect_answer "$work/program/program"
}

check_pkg_config() {
  local options
  read -ra options <<<"$(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs kwinstutil)"
  "$compiler" -std=c++17 "${flags[@]}" "$source/examples/program/program.cc" \
    -o "$work/with_pkg_config" "${options[@]}"
  LD_LIBRARY_PATH=$libdir expect_answer "$work/with_pkg_config"
}

# declared_names HEADERS MACRO: the functions and variables that the macro exports, and the
# members of such classes that are not private, without parameters: an overloaded one several times.
declared_names() {
  sed -E 's|//.*||; /^#/d' "$1"/*.h | tr -s '\n ' ' ' | sed 's/[;{}]/&\n/g' | awk -v macro="$2" '
    match($0, "(class|struct) " macro " [A-Za-z]+") {
      class = substr($0, RSTART, RLENGTH)
      sub(/.* /, "", class)
      end = depth
    }
    / private:/ { class = "-" }
    (class != "" ? class != "-" && /\(/ : index($0, macro)) && !/= delete;/ {
      sub(/[([;].*/, "")
      sub(/.*[ *&]/, "")
      print (class != "" ? class "::" : "") $0
    }
    /\{$/ { ++depth }
    /\}$/ && --depth == end { class = "" }
  ' | LC_ALL=C sort
}

exported_symbols() {
  nm -DC --defined-only "$1" | sed -nE 's/^[0-9a-f]+ [TWVBDRGSiu] //p' | sed 's/@@.*//' | LC_ALL=C sort -u
}

# The version script has a name on each line: in quotes as it is, else with patterns.
check_exported_symbols() {
  local script=$source/src/kwinstutil.map pattern name
  # What is inline, and the members for derived classes, which are the library's own.
  local inside='TEVUnicodeChar::TEVUnicodeChar|TEVUnicodeString::~TEVUnicodeString|TEVINSToc::(TEVINSToc|table)'
  declared_names "$source/include/kwinstutil" KWINSTUTIL_EXPORT >"$work/declared"
  sed -nE 's/^ +"?([A-Za-z_][A-Za-z_0-9:~]*).*;$/\1/p' "$script" | LC_ALL=C sort |
    diff "$work/declared" - || fail 'the headers (<) and the version script (>) differ'
  sed -nE 's/^ +([A-Za-z_].*);$/\1/; t bare
    s/^ +"(.*)";$/\1/; T; s/[][().*?+{}|^$]/\\&/g; p; b
    :bare; s/\*/.*/g; p' "$script" >"$work/patterns"
  exported_symbols "$library" >"$work/exported"
  if grep -vxEf "$work/patterns" "$work/exported"; then fail 'exported, but not in the version script'; fi
  while read -r pattern; do
    grep -qxE -- "$pattern" "$work/exported" || fail "in the version script, but not exported: $pattern"
  done <"$work/patterns"
  for name in kb0core qtoclib; do
    declared_names "$source/framework/$name/include/$name" "${name^^}_EXPORT" | uniq >"$work/declared"
    exported_symbols "$libdir/lib${name^^}.so" | sed 's/(.*//' | LC_ALL=C sort -u |
      LC_ALL=C comm -3 "$work/declared" - | grep -vxE "$inside" >"$work/exported" || true
    [[ ! -s $work/exported ]] ||
      fail "lib${name^^}: in its headers, or (indented) exported, only: $(<"$work/exported")"
  done
}

# Relocations are read-only and bound at once, and the stack is not executable.
check_hardened() {
  local file text
  for file in "$libdir"/lib*.so; do
    readelf --wide --program-headers --dynamic "$file" >"$work/elf"
    for text in GNU_RELRO '\(FLAGS.*\bBIND_NOW|Flags:.*\bNOW' 'GNU_STACK.* RW +0x'; do
      grep -qE -- "$text" "$work/elf" || fail "${file##*/} lacks what readelf calls $text"
    done
  done
}

# A program that loads the library: the environment outlives dlclose(), and the catalog is read
# before there are too many open files.
check_loaded_by_hand() {
  cat >"$work/loader.cc" <<'TEXT'
#include <dlfcn.h>
#include <kwinstutil/kwinstutil.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

int main(int, char** argv) {
  void* library = dlopen(argv[1], RTLD_NOW);
  auto export_home = reinterpret_cast<decltype(&ExportJavaHome)>(
      dlsym(library, "_Z14ExportJavaHomePcP16TEVUnicodeString"));
  auto check_dir = reinterpret_cast<decltype(&TEVInsCheckExistDir)>(
      dlsym(library, "_Z19TEVInsCheckExistDirPcP16TEVUnicodeString"));
  if (chdir("/") != 0) return 1;
  char there[] = "/tmp", none[] = "/none", home[] = "/java";
  TEVUnicodeString message;
  check_dir(there, &message);
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit few = {3, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  check_dir(none, &message);
  export_home(home, nullptr);
  setrlimit(RLIMIT_NOFILE, &limit);
  dlclose(library);
  std::cout << message.ConvertToChar() << std::getenv("JAVA_HOME") << std::endl;
  return std::system("test $JAVA_HOME = /java");
}
TEXT
  "$compiler" -std=c++17 "${flags[@]}" -I"$work/copy/include" "$work/loader.cc" -o "$libdir/loader" \
    -L"$libdir" -lKB0CORE -ldl
  cp -r "$work/copy" "$work/moved:copy"
  libdir=$work/moved:copy/${libdir#"$work/copy/"}
  cd "$libdir"
  LD_LIBRARY_PATH=. expect_exit 0 ./loader ./libKWINSTUTIL.so
  expect_text 'The directory /none'
}

install_copy
check_no_fixed_paths
check_catalogs
check_exported_symbols
check_hardened
check_example
check_pkg_config
check_cmake_package
check_loaded_by_hand
