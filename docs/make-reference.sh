#!/usr/bin/env bash
# Makes the reference below build/docs from the comments of the headers: HTML, and man pages.

set -euo pipefail
cd "$(dirname "$0")/.."

pages=build/docs/man/man3
rm -rf build/docs
mkdir -p build/docs/man/man1
awk -f docs/effects.awk include/kwinstutil/*.h >build/docs/effects.md
KWINSTUTIL_VERSION=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt) \
  doxygen docs/Doxyfile
# Only the man pages of headers and classes are of use. "env.h" alone could be anybody's header.
rm -f "$pages"/*.md.3 "$pages"/*.dox.3 "$pages"/md_* "$pages"/_* "$pages"/effects.3
for page in "$pages"/*.h.3; do mv "$page" "$pages/kwinstutil_${page##*/}"; done
cp docs/kwbatch.1 docs/kwmedium.1 build/docs/man/man1
