# shellcheck shell=bash
# Sourced by the end-to-end tests with BUILDDIR and SOURCEDIR as $1 and $2: a directory $work of
# their own, and what they have in common.
set -euo pipefail
set -- "$(realpath "$1")" "$(realpath "$2")" "${@:3}"
export LC_ALL=C TEVMsgCatalogPath=$2/resources/msgcatalog
umask 022
kwbatch=$1/kwbatch/kwbatch
export KWMEDIUM=$1/kwmedium/kwmedium
make_media=$2/examples/sample-medium/make-media.sh
sample_media=$1/tests/sample_media
work=$(mktemp -d)
media=$work/media
# shellcheck disable=SC2034 # for the tests
system=$work/tree/aix_a
trap 'rm -rf "$work"' EXIT

# A program that is to run kwbatch, for example one that checks its memory.
if [[ -n ${KWBATCH_WRAPPER-} ]]; then
  printf '#!/bin/bash\nexec %q %q "$@"\n' "$KWBATCH_WRAPPER" "$kwbatch" >"$work/wrapped"
  kwbatch=$work/wrapped
  chmod +x "$kwbatch"
fi

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  [[ ! -f $work/output ]] || sed 's/^/  | /' "$work/output" >&2
  exit 1
}

# expect_exit STATUS COMMAND...: what the command prints is left in $work/output.
expect_exit() {
  local want=$1 got=0
  shift
  "$@" >"$work/output" 2>&1 || got=$?
  ((got == want)) || fail "exit $got instead of $want: $*"
}

# run STATUS ARGUMENT...: runs kwbatch.
run() { expect_exit "$1" "$kwbatch" "${@:2}" --scratch "$work/scratch"; }

expect_text() { grep -qF -- "$1" "$work/output" || fail "no '$1' in the output"; }

# expect_refusal TEXT COMMAND ARGUMENT...: kwbatch fails with a message that holds the text.
expect_refusal() {
  run 1 "${@:2}"
  expect_text "$1"
}

# expect_check STATUS TEXT MEDIUM TREE [OPTION...]: the check says the text, and writes nothing.
expect_check() {
  local before
  before=$(times)
  run "$1" check "$media/$3" "$work/$4" "${@:5}"
  expect_text "$2"
  [[ $before == "$(times)" ]] || fail "the check of $3 on $4 wrote something"
}

# times: what changes when anything but the scratch directory is written.
times() {
  (cd "$work" && find . -path ./scratch -prune -o -mindepth 1 -not -name output -printf '%p %T@ %s\n')
}

# content TREE: everything in it with its mode, and the content of the files. Left out is the record
# of what is registered, which names the tree.
content() {
  (cd "$work/$1" && find . -not -name Registered -printf '%p %y %m %U %l\n' | sort &&
    find . -type f -not -name Registered -exec cksum {} + | sort)
}

# expect_content NAME TREE: the tree is as it was when its content was written to $work/NAME.
expect_content() { content "$2" | diff "$work/$1" - || fail "the $2 is not as it was $1"; }

new_scratch() {
  rm -rf "$work/scratch"
  mkdir "$work/scratch"
  touch "$work/scratch/services" "$work/scratch/inetd.conf"
}

skip() {
  printf 'Skipped: %s\n' "$*"
  exit 77
}

# take_media: a copy of the sample media in $media. The tests of one build directory make them once.
take_media() {
  command -v compress >/dev/null || skip 'there is no compress'
  (
    flock 9
    [[ $sample_media -nt $make_media && $sample_media -nt $KWMEDIUM ]] && exit
    rm -rf "$sample_media"
    "$make_media" "$sample_media.new" && mv "$sample_media.new" "$sample_media"
  ) 9>"$sample_media.lock"
  cp -r "$sample_media" "$media"
  # No archives: the compressed ones beside them are to be taken.
  touch "$media/ga/aix_a/Modeler" "$media/sp1/SP1"
  cd "$work"
  new_scratch
}

# install_tree: the products of one system in $work/tree.
install_tree() {
  take_media
  run 0 install "$media/ga" "$work/tree" --os aix_a
}

# install_service_pack: the products with the first service pack, whose content is $work/committed.
install_service_pack() {
  install_tree
  run 0 service-pack "$media/sp1" "$work/tree"
  run 0 commit "$work/tree"
  content tree >"$work/committed"
}
