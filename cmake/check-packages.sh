#!/usr/bin/env bash
# check-packages.sh DIRECTORY: every program and library in the packages there is hardened, and the RPM
# packages can be installed and used together.
set -euo pipefail
dir=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  printf 'check-packages.sh: %s\n' "$*" >&2
  exit 1
}

# expect FILE TEXT...: readelf says each text of the file.
expect() {
  local text
  for text in "${@:2}"; do
    grep -qE -- "$text" "$work/elf" || fail "${1#"$work/"} lacks what readelf calls $text"
  done
}

# check_hardening ROOT: relocations are read-only and bound at once, the stack is not executable and
# has protectors, and the C library's checked functions are used.
check_hardening() {
  local file count=0
  while IFS= read -r file; do
    readelf --wide --program-headers --dynamic --symbols "$file" >"$work/elf"
    expect "$file" 'GNU_RELRO' 'FLAGS.* (BIND_NOW|NOW)\b' 'GNU_STACK.* RW +0x' \
      '__stack_chk_fail'
    # libQTOCLIB calls no function that has a checked form.
    [[ $file == *libQTOCLIB* ]] || expect "$file" '__[a-z]+_chk\b'
    count=$((count + 1))
  done < <(find "$1" -type f \( -path '*/bin/*' -o -name 'lib*.so.*' \))
  ((count == 5)) || fail "not five programs and libraries in $1, but $count"
}

for deb in "$dir"/*.deb; do dpkg-deb --extract "$deb" "$work/deb"; done
check_hardening "$work/deb"
[[ -n $(compgen -G "$dir/*.rpm") ]] || exit 0
mkdir "$work/rpm"
# What they need of the system is not known to a root that has nothing else.
rpm --root "$work/rpm" --install --nodeps --noscripts "$dir"/*.rpm 2>"$work/errors" ||
  fail "$(<"$work/errors")"
check_hardening "$work/rpm"
"$work/rpm/usr/bin/kwbatch" --version >/dev/null || fail 'the kwbatch of the RPM packages does not run'
