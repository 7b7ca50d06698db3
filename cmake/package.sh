#!/usr/bin/env bash
# package.sh: builds the preset "package", and makes a .tar.gz and Debian packages of it in
# build/package, and RPM packages if there is rpmbuild. The same sources give the same bytes, with git
# or without: every date in them is that of the newest entry of CHANGELOG.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
dir=build/package
build=$dir/build

say() { printf '== %s\n' "$*"; }

# make_tarball: what an installation lays out, in a fixed order, of no user.
make_tarball() {
  local name
  name=kwinstutil-$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$build/CMakeCache.txt")-$(uname -m)
  rm -rf "$build/tarball"
  cmake --install "$build" --strip --prefix "$build/tarball/$name" >/dev/null
  tar -C "$build/tarball" --sort=name --owner=0 --group=0 --numeric-owner \
    --mtime="@$SOURCE_DATE_EPOCH" -cf - "$name" | gzip -9n >"$dir/$name.tar.gz"
}

# repack FILE: CPack's Installed-Size depends on the file system (Debian counts KiB, and one for each
# directory and link), and its scripts call ldconfig, which the package's trigger does.
repack() {
  local content=$1.content size
  dpkg-deb --raw-extract "$1" "$content"
  rm -f "$content"/DEBIAN/post{inst,rm}
  size=$(find "$content" -name DEBIAN -prune -o -type f -printf '%s\n' -o -printf '1\n' |
    awk '{ size += int(($1 + 1023) / 1024) } END { print size }')
  sed -i "s/^Installed-Size: .*/Installed-Size: $size/" "$content/DEBIAN/control"
  dpkg-deb --root-owner-group -Zxz --build "$content" "$1" >/dev/null
  rm -rf "$content"
}

# pack GENERATOR
pack() {
  cpack --config "$build/CPackConfig.cmake" -G "$1" >"$dir/cpack.log" 2>&1 || {
    cat "$dir/cpack.log" >&2
    exit 1
  }
}

# make_rpms: with the libraries where the systems look for them that use RPM.
make_rpms() {
  say 'Building package for RPM'
  cmake --preset package -DCMAKE_INSTALL_LIBDIR="$(rpm --eval %_lib)" >/dev/null
  cmake --build --preset package -- --quiet
  pack RPM
}

newest=$(sed -nE '/^## /{s/.*([0-9]{4}-[0-9]{2}-[0-9]{2}).*/\1/p;q}' CHANGELOG.md)
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(date -u -d "${newest:?}" +%s)}
export SOURCE_DATE_EPOCH
umask 022
# Debian's CXXFLAGS, CPPFLAGS and LDFLAGS, with all hardening; with them the compiler leaves no path
# of this machine in what it makes.
flags=$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --export=sh)
eval "$flags"
# The library directory is chosen anew: make_rpms changes it.
say 'Configuring package'
cmake --preset package -U CMAKE_INSTALL_LIBDIR >/dev/null
say 'Building package'
cmake --build --preset package -- --quiet
say 'Packing'
rm -rf "$dir"/*.{tar.gz,deb,rpm,content}
make_tarball
pack DEB
for deb in "$dir"/*.deb; do repack "$deb"; done
if command -v rpmbuild >/dev/null; then make_rpms; fi
cmake/check-packages.sh "$dir"
if command -v lintian >/dev/null; then
  say 'Lintian'
  lintian --fail-on error "$dir"/*.deb
fi
cd "$dir"
find . -maxdepth 1 -name '*.tar.gz' -o -name '*.deb' -o -name '*.rpm' | sort | sed 's|^\./||' |
  xargs sha256sum --
