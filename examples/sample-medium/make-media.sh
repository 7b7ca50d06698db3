#!/usr/bin/env bash
# make-media.sh OUTDIR: writes the sample media, the same bytes at every run: directories with what
# a build would leave, and lists of which kwmedium (or the program that KWMEDIUM names) makes media.
#
#   ga            general availability R12 for two operating systems: OSUNIX, and a medium for each
#   sdk           development kits of R12, one of them for a product that ga does not have
#   samples       samples of R12
#   sp1, sp2      service packs for the code of R12, level 1 and 2
#   sp1-sdk       service pack for the development kits of R12, level 1
#   hf1, hf2      hot fixes for the code of R12 with service pack 1
#   other-os      general availability R12 for an operating system that ga does not have
#   other-level   general availability R13
#
# All but ga are media for one operating system: other-os for hpux_b, the others for aix_a.
set -euo pipefail
export LC_ALL=C SOURCE_DATE_EPOCH=1000000000
umask 022

readonly languages=(French German Italian Japanese Simplified_Chinese Korean)
declare -A ready=([English]='ready' [French]='prêt' [German]='bereit' [Italian]='pronto'
  [Japanese]='準備完了' [Simplified_Chinese]='就绪' [Korean]='준비 완료')
declare -A stopped=([English]='stopped' [French]='arrêté' [German]='beendet' [Italian]='terminato'
  [Japanese]='停止' [Simplified_Chinese]='已停止' [Korean]='중지됨')

# begin_medium NAME OS [LEVEL]: a list for kwmedium, whose lines are of this operating system.
begin_medium() {
  medium=$1
  os=$2
  level=${3:-R12}
  list=$stage/$medium.list
}

# begin_component TYPE KIND NAME [KEY=VALUE...]: a component, its line of the list and its directory.
begin_component() {
  local IFS=:
  component=$3
  tree=$stage/$medium/$os/$component
  mkdir -p "$tree"
  printf '%s\n' "$*:from=$medium/$os/$component" >>"$list"
}

# add_parts TYPE NAME...: the parts of a service pack, a table line each.
add_parts() {
  printf "$1:FSP:%s\n" "${@:2}" >>"$list"
}

# add_file PATH: a file with the content of standard input.
add_file() {
  [[ -d $tree/${1%/*} ]] || mkdir -p "$tree/${1%/*}"
  cat >"$tree/$1"
}

# add_program NAME TEXT: a program that says where it runs from.
add_program() {
  add_file "code/bin/$1" <<PROGRAM
#!/bin/sh
# $1: $2 ($os)
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
  done
}

# add_post_programs NAME...: programs that run once the service pack is installed, and their list.
add_post_programs() {
  local name
  add_file control/CAFPost.list <<<"$(printf '%s\n' "$@")"
  for name in "$@"; do
    add_file "code/bin/${name}_$component" <<PROGRAM
#!/bin/sh
# ${name}_$component: sets up ${name#TEVPost} after the installation of $component
echo "${name}_$component: setting up ${name#TEVPost} for $component"
echo "LD_LIBRARYN32_PATH=\$LD_LIBRARYN32_PATH"
echo "TEVInstallPath=\$TEVInstallPath"
PROGRAM
    chmod 755 "$tree/code/bin/${name}_$component"
  done
}

# add_header NAME PART LEVEL: a header of NAME's development kit.
add_header() {
  add_file "include/TEV$1/TEV$1$2.h" <<HEADER
/* TEV$1$2.h: $2 of $1, $3 */
#ifndef TEV$1$2_h
#define TEV$1$2_h

#define TEV$1$2Level "$3"

typedef struct TEV$1$2 TEV$1$2;

TEV$1$2* TEV$1Create$2(const char* name);
int TEV$1Delete$2(TEV$1$2* object);

#endif
HEADER
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
    catalog "$language" | add_file "resources/msgcatalog/$language/$component.msg"
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

base() {
  begin_component code FWK BASE "os=$os" "ga=$level" compress=no
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
}

# product NAME COMPRESS FILES TEXT: a product with one program and a series of data files.
product() {
  begin_component code PRD "$1" "compress=$2"
  add_program "TEV$1" "$4"
  add_series "code/data/$1" template "$3"
  add_catalogs
}

visualization() {
  local name
  begin_component code PRD Visualization
  add_program TEVVisualization 'shaded and annotated views'
  add_series resources/materials material 90
  add_file resources/fonts/Stroke/LATN.font <<<"$(font LATN 96)"
  for name in SICH TRCH KANJ KOHG SSS4; do
    font "$name" 400 | add_file "resources/fonts/Stroke/$name.font"
  done
  add_catalogs
}

# solution NAME PRODUCT...: the list of the products that it brings together.
solution() {
  begin_component code SLT "$1" compress=no
  add_file "code/data/$1/products.lst" <<<"$(printf '%s\n' "${@:2}")"
  add_catalogs
}

make_ga() {
  local system
  for system in aix_a solaris_a; do
    begin_medium ga "$system"
    base
    product Modeler yes 160 'solids and surfaces'
    product Drafting no 70 'drawings and sheets'
    visualization
    solution MechanicalDesign Modeler Drafting Visualization
  done
}

# development_kit KIND NAME [KEY=VALUE...]: the headers and the library stub of a product.
development_kit() {
  local part
  begin_component zeb2 "$1" "$2.zeb2" "${@:3}" compress=no
  for part in Session Document Attribute; do add_header "$2" "$part" "$level"; done
  add_file "lib/libTEV$2.stub" <<<"$(printf "TEV$2%s\n" \
    {Create,Delete}{Session,Document,Attribute})"
}

make_sdk() {
  begin_medium sdk aix_a
  development_kit PRD Modeler "os=$os" "ga=$level"
  development_kit PRD Drafting
  development_kit SLT MechanicalDesign
  development_kit PRD Simulation
}

# sample NAME FILES [KEY=VALUE...]
sample() {
  begin_component samples SMP "$1" "${@:3}"
  add_series "samples/$1" sample "$2"
}

make_samples() {
  begin_medium samples aix_a
  sample ModelerSamples 20 "os=$os" "ga=$level"
  sample DrawingSamples 12
}

make_service_packs() {
  begin_medium sp1 aix_a
  begin_component code SPK SP1 "os=$os" "ga=$level" level=1
  add_parts code SP1-BASE SP1-Modeler
  add_program TEVModeler 'solids and surfaces, service pack 1'
  add_program TEVSysDemon 'system daemon, service pack 1'
  add_program TEVRepair 'repair of documents'
  add_series code/data/Modeler template 2
  add_post_programs TEVPostModeler TEVPostBase

  begin_medium sp2 aix_a
  begin_component code SPK SP2 "os=$os" "ga=$level" level=2 compress=no
  add_parts code SP2-BASE SP2-Modeler SP2-Drafting
  add_program TEVModeler 'solids and surfaces, service pack 2'
  add_program TEVDrafting 'drawings and sheets, service pack 2'
  add_post_programs TEVPostModeler TEVPostBase

  begin_medium sp1-sdk aix_a
  begin_component zeb2 SPK SP1.zeb2 "os=$os" "ga=$level" level=1 compress=no
  add_parts zeb2 SP1-Modeler.zeb2
  add_header Modeler Document "$level, service pack 1"
}

# hot_fix NAME COMPRESS PROGRAM TEXT: a medium with a new version of one program. The first line of
# its table is the service pack that the fix is for.
hot_fix() {
  begin_medium "${1/HF/hf}" aix_a
  echo "code:SPK:SP1:os=$os:ga=$level:level=1" >>"$list"
  begin_component code HFX "$1" "compress=$2"
  add_program "$3" "$4"
}

make_other() {
  begin_medium other-os hpux_b
  base
  product Modeler yes 20 'solids and surfaces'

  begin_medium other-level aix_a R13
  base
  product Modeler yes 20 'solids and surfaces'
}

if (($# != 1)); then
  echo "Usage: $0 OUTDIR" >&2
  exit 2
fi
mkdir -p "$1"
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
make_ga
make_sdk
make_samples
make_service_packs
hot_fix HF1 no TEVModeler 'solids and surfaces, service pack 1, hot fix 1'
hot_fix HF2 yes TEVSysDemon 'system daemon, service pack 1, hot fix 2'
make_other
for list in "$stage"/*.list; do
  medium=$1/$(basename "$list" .list)
  rm -rf "$medium"
  "${KWMEDIUM:-kwmedium}" product "$list" "$medium" --quiet
done
