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

# begin MEDIUM OS [LEVEL]: what follows is of this medium, operating system and level.
begin() {
  medium=$1 os=$2 level=${3:-R12}
}

# line WORD...: a line of the medium's list, with colons between the words.
line() {
  local IFS=:
  printf '%s\n' "$*" >>"$stage/$medium.list"
}

# component TYPE KIND NAME [KEY=VALUE...]: its line, and the directory of the files that follow.
component() {
  name=$3
  tree=$stage/$medium/$os/$name
  mkdir -p "$tree"
  line "$@" "from=$medium/$os/$name"
}

# file PATH [MODE]: with the content of standard input.
file() {
  mkdir -p "$tree/${1%/*}"
  cat >"$tree/$1"
  chmod "${2:-644}" "$tree/$1"
}

# program NAME TEXT: says where it runs from.
program() {
  file "code/bin/$1" 755 <<PROGRAM
#!/bin/sh
# $1: $2 ($os)
tree=\$(cd "\$(dirname "\$0")/../.." && pwd) || exit 1
echo "$1: $2, from \$tree"
[ \$# -eq 0 ] || echo "$1: arguments: \$*"
PROGRAM
}

# post_programs: they run once the service pack is installed; and their list.
post_programs() {
  local program
  for program in TEVPostModeler TEVPostBase; do
    echo "$program"
    file "code/bin/${program}_$name" 755 <<PROGRAM
#!/bin/sh
# ${program}_$name: sets up ${program#TEVPost} after the installation of $name
echo "${program}_$name: setting up ${program#TEVPost} for $name"
echo "LD_LIBRARYN32_PATH=\$LD_LIBRARYN32_PATH"
echo "TEVInstallPath=\$TEVInstallPath"
PROGRAM
  done | file control/CAFPost.list
}

# series DIRECTORY PREFIX COUNT: numbered files with a table of figures in each.
series() {
  local number row text
  mkdir -p "$tree/$1"
  for ((number = 1; number <= $3; number++)); do
    printf -v text '# %s %d of %d\nname = %s%03d\n' "$name" "$number" "$3" "$2" "$number"
    for ((row = 1; row <= 8 + number % 9; row++)); do
      printf -v text '%s%d %d.%02d %d.%02d\n' "$text" "$row" \
        $((number * row % 360)) $((number * 37 % 100)) $((row * row)) $((row * 61 % 100))
    done
    printf '%s' "$text" >"$tree/$1/$2$(printf %03d "$number").dat"
  done
}

# header NAME PART TEXT: a header of NAME's development kit.
header() {
  file "include/TEV$1/TEV$1$2.h" <<HEADER
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

# catalogs: the component's messages, in English and in every other language.
catalogs() {
  local language ready stopped
  while IFS='|' read -r language ready stopped; do
    file "resources/msgcatalog/${language/English/.}/$name.msg" <<CATALOG
# $language
Title = "$name $level"
Ready = "$name: $ready\n"
Stopped = "$name: $stopped {1}\n"
CATALOG
  done <<'TEXT'
English|ready|stopped
French|prêt|arrêté
German|bereit|beendet
Italian|pronto|terminato
Japanese|準備完了|停止
Simplified_Chinese|就绪|已停止
Korean|준비 완료|중지됨
TEXT
}

# font NAME GLYPHS: a stroke font, some made-up strokes to a glyph.
font() {
  local glyph
  {
    printf 'STROKEFONT %s %d\n' "$1" "$2"
    for ((glyph = 0; glyph < $2; glyph++)); do
      printf 'G%04X M %d %d L %d %d L %d %d\n' $((glyph + ${#1})) \
        $((glyph % 16)) $((glyph / 16 % 16)) $((glyph * 7 % 16)) \
        $((glyph * 11 % 16)) $((glyph * 13 % 16)) $((glyph * 5 % 16))
    done
  } | file "resources/fonts/Stroke/$1.font"
}

base() {
  component code FWK BASE "os=$os" "ga=$level" compress=no
  program TEVSoftwareMgt 'software management'
  program TEVSysDemon 'system daemon'
  program TEVDeviceBroker 'device broker'
  program TEVSession 'interactive session'
  file code/command/tevstart 755 <<'PROGRAM'
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
  series resources/graphic icon 60
  catalogs
}

# product NAME FILES TEXT [KEY=VALUE...]: one program and a series of data files.
product() {
  component code PRD "$1" "${@:4}"
  program "TEV$1" "$3"
  series "code/data/$1" template "$2"
  catalogs
}

ga() {
  begin ga "$1"
  base
  product Modeler 160 'solids and surfaces'
  product Drafting 70 'drawings and sheets' compress=no
  component code PRD Visualization
  program TEVVisualization 'shaded and annotated views'
  series resources/materials material 90
  font LATN 96
  for font in SICH TRCH KANJ KOHG SSS4; do font "$font" 400; done
  catalogs
  component code SLT MechanicalDesign compress=no
  printf '%s\n' Modeler Drafting Visualization | file code/data/MechanicalDesign/products.lst
  catalogs
}

# kit KIND NAME [KEY=VALUE...]: the headers and the library stub of a product.
kit() {
  local part
  component zeb2 "$1" "$2.zeb2" "${@:3}" compress=no
  for part in Session Document Attribute; do header "$2" "$part" "$level"; done
  printf "TEV$2%s\n" {Create,Delete}{Session,Document,Attribute} | file "lib/libTEV$2.stub"
}

# other MEDIUM OS LEVEL: a small suite.
other() {
  begin "$@"
  base
  product Modeler 20 'solids and surfaces'
}

# hot_fix NUMBER COMPRESS PROGRAM TEXT: a new version of one program. The first line of its table is
# the service pack that the fix is for.
hot_fix() {
  begin "hf$1" aix_a
  line code SPK SP1 "os=$os" "ga=$level" level=1
  component code HFX "HF$1" "compress=$2"
  program "$3" "$4, service pack 1, hot fix $1"
}

if (($# != 1)); then
  echo "Usage: $0 OUTDIR" >&2
  exit 2
fi
mkdir -p "$1"
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

ga aix_a
ga solaris_a
other other-os hpux_b R12
other other-level aix_a R13

begin sdk aix_a
kit PRD Modeler "os=$os" "ga=$level"
kit PRD Drafting
kit SLT MechanicalDesign
kit PRD Simulation

begin samples aix_a
component samples SMP ModelerSamples "os=$os" "ga=$level"
series samples/ModelerSamples sample 20
component samples SMP DrawingSamples
series samples/DrawingSamples sample 12

begin sp1 aix_a
component code SPK SP1 "os=$os" "ga=$level" level=1
line code FSP SP1-BASE
line code FSP SP1-Modeler
program TEVModeler 'solids and surfaces, service pack 1'
program TEVSysDemon 'system daemon, service pack 1'
program TEVRepair 'repair of documents'
series code/data/Modeler template 2
post_programs

begin sp2 aix_a
component code SPK SP2 "os=$os" "ga=$level" level=2 compress=no
for part in BASE Modeler Drafting; do line code FSP "SP2-$part"; done
program TEVModeler 'solids and surfaces, service pack 2'
program TEVDrafting 'drawings and sheets, service pack 2'
post_programs

begin sp1-sdk aix_a
component zeb2 SPK SP1.zeb2 "os=$os" "ga=$level" level=1 compress=no
line zeb2 FSP SP1-Modeler.zeb2
header Modeler Document "$level, service pack 1"

hot_fix 1 no TEVModeler 'solids and surfaces'
hot_fix 2 yes TEVSysDemon 'system daemon'

for list in "$stage"/*.list; do
  medium=$1/$(basename "$list" .list)
  rm -rf "$medium"
  "${KWMEDIUM:-kwmedium}" product "$list" "$medium" --quiet
done
