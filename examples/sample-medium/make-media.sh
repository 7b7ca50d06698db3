#!/usr/bin/env bash
# make-media.sh OUTDIR: writes the sample media, the same bytes at every run.
#
#   OUTDIR/ga   general availability R12 for two operating systems: OSUNIX, and a medium for each
#
# A medium is a directory with a table of contents and an archive for each component in it.
set -euo pipefail
export LC_ALL=C
umask 022

readonly level=R12
readonly languages=(French German Italian Japanese Simplified_Chinese Korean)
declare -A ready=([English]='ready' [French]='prêt' [German]='bereit' [Italian]='pronto'
  [Japanese]='準備完了' [Simplified_Chinese]='就绪' [Korean]='준비 완료')
declare -A stopped=([English]='stopped' [French]='arrêté' [German]='beendet' [Italian]='terminato'
  [Japanese]='停止' [Simplified_Chinese]='已停止' [Korean]='중지됨')

# begin_medium DIRECTORY ROOT: an empty medium. Its archives unpack in ROOT of the target tree: the
# operating system's directory, or "." for content that is the same on all of them.
begin_medium() {
  medium=$out/$1
  root=$2
  mkdir -p "$medium"
  : >"$medium/TOC"
}

# begin_component TYPE KIND NAME [KEY=VALUE...]: an empty component and its table line.
begin_component() {
  local IFS=:
  component=$3
  tree=$stage/$component/$root
  files=()
  mkdir -p "$tree/control"
  printf '%s\n' "$*" >"$tree/control/$component.toc"
  files+=("control/$component.toc")
}

# add_file PATH: a file with the content of standard input, listed in the manifest. Not to be used
# at the end of a pipe, which is a process of its own: the list would not grow.
add_file() {
  add_removable "$1"
  files+=("$1")
}

# add_removable PATH: a file that the installation may leave out, and the manifest therefore does.
add_removable() {
  [[ -d $tree/${1%/*} ]] || mkdir -p "$tree/${1%/*}"
  cat >"$tree/$1"
}

# add_program NAME TEXT: a program that says where it runs from.
add_program() {
  add_file "code/bin/$1" <<PROGRAM
#!/bin/sh
# $1: $2 ($root)
tree=\$(cd "\$(dirname "\$0")/../.." && pwd) || exit 1
echo "$1: $2, from \$tree"
[ \$# -eq 0 ] || echo "$1: arguments: \$*"
PROGRAM
  chmod 755 "$tree/code/bin/$1"
}

# add_series DIRECTORY PREFIX COUNT: numbered files with a table of figures in each.
add_series() {
  local number row path text
  mkdir -p "$tree/$1"
  for ((number = 1; number <= $3; number++)); do
    printf -v path '%s/%s%03d.dat' "$1" "$2" "$number"
    printf -v text '# %s %d of %d\nname = %s%03d\n' "$component" "$number" "$3" "$2" "$number"
    for ((row = 1; row <= 8 + number % 9; row++)); do
      printf -v text '%s%d %d.%02d %d.%02d\n' "$text" "$row" \
        $((number * row % 360)) $((number * 37 % 100)) $((row * row)) $((row * 61 % 100))
    done
    printf '%s' "$text" >"$tree/$path"
    files+=("$path")
  done
}

catalog() {
  printf '# %s\nTitle = "%s %s"\n' "$1" "$component" "$level"
  printf 'Ready = "%s: %s\\n"\n' "$component" "${ready[$1]}"
  printf 'Stopped = "%s: %s {1}\\n"\n' "$component" "${stopped[$1]}"
}

# add_catalogs: the component's messages, in English and in every other language.
add_catalogs() {
  local language
  add_file "resources/msgcatalog/$component.msg" <<<"$(catalog English)"
  for language in "${languages[@]}"; do
    catalog "$language" | add_removable "resources/msgcatalog/$language/$component.msg"
  done
}

# font NAME GLYPHS: a stroke font, some made-up strokes to a glyph.
font() {
  local glyph
  printf 'STROKEFONT %s %d\n' "$1" "$2"
  for ((glyph = 0; glyph < $2; glyph++)); do
    printf 'G%04X M %d %d L %d %d L %d %d\n' $((glyph + ${#1})) \
      $((glyph % 16)) $((glyph / 16 % 16)) $((glyph * 7 % 16)) \
      $((glyph * 11 % 16)) $((glyph * 13 % 16)) $((glyph * 5 % 16))
  done
}

# Path, then mode, size and checksum of each listed file.
manifest() {
  local path mode size crc
  cd "$tree"
  stat -c '%n %a %s' "${files[@]}" >"$stage/files"
  cksum "${files[@]}" | cut -d ' ' -f 1 | paste -d ' ' "$stage/files" - | sort |
    while read -r path mode size crc; do
      printf '%s\n%s %s %s\n' "$path" "$mode" "$size" "$crc"
    done
}

# pack_component plain|compressed: writes the archive and the component's lines of the table.
pack_component() {
  local archive=$medium/$component
  (manifest) >"$stage/manifest"
  mv "$stage/manifest" "$tree/control/$component"
  (cd "$stage/$component" && tar --sort=name --mtime=@1000000000 --owner=0 --group=0 \
    --numeric-owner --format=ustar -cf "$archive" -- *)
  if [[ $1 == compressed ]]; then compress -f "$archive"; fi
  cat "$tree/control/$component.toc" >>"$medium/TOC"
  rm -rf "${stage:?}/$component"
}

base() {
  begin_component code FWK BASE "os=$root" "ga=$level"
  add_program TEVSoftwareMgt 'software management'
  add_program TEVSysDemon 'system daemon'
  add_program TEVDeviceBroker 'device broker'
  add_program TEVSession 'interactive session'
  add_file code/command/tevstart <<'PROGRAM'
#!/bin/sh
# tevstart -run "PROGRAM [ARGUMENT...]" [-env NAME] [-direnv DIRECTORY]: runs a program of this tree
tree=$(cd "$(dirname "$0")/../.." && pwd) || exit 1
while [ $# -ge 2 ]; do
  case $1 in
    -run) run=$2 ;;
    -env) TEVEnvName=$2 ;;
    -direnv) TEVEnvDirectory=$2 ;;
    *) break ;;
  esac
  shift 2
done
# The program and its arguments are one word with blanks between them.
set -- $run "$@"
if [ $# -eq 0 ] || [ ! -x "$tree/code/bin/$1" ]; then
  echo "tevstart: no program \"$1\" in $tree/code/bin" >&2
  exit 1
fi
TEVInstallPath=$tree
export TEVInstallPath TEVEnvName TEVEnvDirectory
program=$1
shift
exec "$tree/code/bin/$program" "$@"
PROGRAM
  chmod 755 "$tree/code/command/tevstart"
  add_series resources/graphic icon 60
  add_catalogs
  pack_component plain
}

# product NAME PACKING FILES TEXT: a product with one program and a series of data files.
product() {
  begin_component code PRD "$1"
  add_program "TEV$1" "$4"
  add_series "code/data/$1" template "$3"
  add_catalogs
  pack_component "$2"
}

visualization() {
  local name
  begin_component code PRD Visualization
  add_program TEVVisualization 'shaded and annotated views'
  add_series resources/materials material 90
  add_file resources/fonts/Stroke/LATN.font <<<"$(font LATN 96)"
  for name in SICH TRCH KANJ KOHG SSS4; do
    font "$name" 400 | add_removable "resources/fonts/Stroke/$name.font"
  done
  add_catalogs
  pack_component compressed
}

# solution NAME PRODUCT...: the list of the products that it brings together.
solution() {
  begin_component code SLT "$1"
  add_file "code/data/$1/products.lst" <<<"$(printf '%s\n' "${@:2}")"
  add_catalogs
  pack_component plain
}

make_ga() {
  local os
  rm -rf "$out/ga"
  for os in aix_a solaris_a; do
    begin_medium "ga/$os" "$os"
    base
    product Modeler compressed 160 'solids and surfaces'
    product Drafting plain 70 'drawings and sheets'
    visualization
    solution MechanicalDesign Modeler Drafting Visualization
    printf '%s\n' "$os" >>"$out/ga/OSUNIX"
  done
}

if (($# != 1)); then
  echo "Usage: $0 OUTDIR" >&2
  exit 2
fi
mkdir -p "$1"
out=$(cd "$1" && pwd)
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
make_ga
