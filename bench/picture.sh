#!/usr/bin/env bash
# picture.sh: draws the tables of docs/performance.md as docs/performance.svg: the ratio of each line
# that has a goal, and how the time for an item grows over three sizes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
data=$(mktemp)
trap 'rm -f "$data"' EXIT
# Name, ratio, goal, growth at 10× and 100×.
awk -F ' *[|] *' '/≤/ && $8 ~ /^≤/ {
  gsub("`", ""); split($7, ratio, " "); split($8, goal, " "); split($11, growth, ", ")
  name = $2 "  /  " $3
  printf "\"%s\" %s %s %s %s\n", name, ratio[1], goal[2], growth[1], growth[2]
}' docs/performance.md >"$data"
gnuplot <<PLOT
set terminal svg size 1100,640 font "sans-serif,12" background "white" noenhanced
set output "docs/performance.svg"
set multiplot
set style fill solid 0.8 noborder
set yrange [$(wc -l <"$data") - 0.5:-0.5]
set ytics out nomirror
set grid x
set xrange [0:*]
set lmargin at screen 0.36
set rmargin at screen 0.64
set title "Ratio at 100× (bars), goal (lines)"
plot "$data" using (\$2/2):0:(\$2/2):(0.3):ytic(1) with boxxyerror linecolor rgb "#4878a8" notitle, \\
     "$data" using 3:0:(0):(0.45) with vectors nohead linecolor rgb "#c03030" linewidth 3 notitle, \\
     "$data" using 3:0:(0):(-0.45) with vectors nohead linecolor rgb "#c03030" linewidth 3 notitle
set lmargin at screen 0.68
set rmargin at screen 0.98
unset ytics
set logscale x
set xrange [*:*]
set title "Time for an item, 1 at 1×: 10× (hollow), 100×"
plot "$data" using 4:0 with points pointtype 6 pointsize 1 linecolor rgb "#4878a8" notitle, \\
     "$data" using 5:0 with points pointtype 7 pointsize 1 linecolor rgb "#4878a8" notitle
PLOT
