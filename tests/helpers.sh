# shellcheck shell=bash
# Sourced by the end-to-end tests with BUILDDIR and SOURCEDIR as $1 and $2: a directory $work of
# their own, and what they have in common.
export LC_ALL=C TEVMsgCatalogPath=$2/resources/msgcatalog
umask 022
kwbatch=$1/kwbatch/kwbatch
make_media=$2/examples/sample-medium/make-media.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

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

new_scratch() {
  rm -rf "$work/scratch"
  mkdir "$work/scratch"
  touch "$work/scratch/services" "$work/scratch/inetd.conf"
}

skip() {
  printf 'Skipped: %s\n' "$*"
  exit 77
}

# The sample media, in $work/media.
make_sample_media() {
  command -v compress >/dev/null || skip 'there is no compress'
  cd "$work" || exit
  "$make_media" "$work/media"
}
