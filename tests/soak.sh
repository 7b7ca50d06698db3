#!/usr/bin/env bash
# soak.sh BUILDDIR SOURCEDIR [SECONDS [SEED]]: for ten minutes, or so long, kwbatch installs, patches,
# takes back, commits, repairs and uninstalls at random on a small disk. Some of its runs are killed,
# some find the disk full. A plain model says what must be there after each. It prints the seed; the
# same seed makes the same choices. It needs root, and is run by hand.
seconds=${3:-600}
RANDOM=${4:-$$}
seed=${4:-$$}
if [[ ! ${SOAK-} ]]; then
  # shellcheck disable=SC2016
  SOAK=1 exec unshare -m bash -ec 'image=$(mktemp) && truncate -s 24M "$image" && mkfs.ext4 -q "$image"
    disk=$(mktemp -d) && mount -o loop "$image" "$disk" && rm "$image"
    TMPDIR=$disk exec bash "$@"' - "$0" "$1" "$2" "$seconds" "$seed"
fi
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"
echo "Seed $seed, $seconds seconds"

# The model: the places where a tree can be, and the commands that lead from one to another.
place=none
declare -A leads_to=(
  [none]='ga' [ga]='sp1-pending none' [sp1-pending]='ga sp1' [sp1]='sp2-pending hf1 none'
  [sp2-pending]='sp1 sp2' [sp2]='none' [hf1]='sp1 none')
# command PLACE: how the tree gets from $place to the PLACE.
command() {
  case $place=$1 in
    none=ga) echo install "$media/ga/aix_a" "$tree" --languages French ;;
    *=none) echo uninstall "$tree" ;;
    *=sp?-pending) echo service-pack "$media/${1%-pending}" "$tree" ;;
    sp1-pending=sp1 | sp2-pending=sp2) echo commit "$tree" ;;
    *=hf1) echo hot-fix "$media/hf1" "$tree" ;;
    hf1=sp1) echo undo-hot-fix "$tree" ;;
    *) echo undo-service-pack "$tree" ;;
  esac
}
tree=$work/tree
model=$work/model

# kwbatch_run ARGUMENT...: sets $got. Another kwbatch that was killed may have left its programs.
kwbatch_run() {
  got=0
  "$kwbatch" "$@" --scratch "$work/scratch" --wait 60 >"$work/output" 2>&1 || got=$?
}

# looks: what is in the tree but for what its administrator added.
looks() {
  # The directories above what was added stay.
  content tree 2>/dev/null | grep -vE '/own-[0-9]|^\.(/aix_a(/code)?)? d ' || true
  tail -n +1 "$work"/scratch/{services,inetd.conf}
}

# check: the tree is where the model says, and nothing of anybody's is lost.
check() {
  looks | diff "$model/$place" - >"$work/difference" || {
    cat "$work/difference"
    fail "step $steps: the tree is not as it is at $place"
  }
  local file
  for file in "$work"/own/*; do
    [[ ! -e $file ]] || cmp "$file" "$tree/aix_a/code/${file##*/}" || fail "step $steps: lost $file"
  done
  [[ $place == none ]] && return
  kwbatch_run verify "$tree"
  ((got == 0)) || fail "step $steps: verify ends with $got at $place"
}

# add_own: the administrator adds a file.
add_own() {
  [[ -d $tree/aix_a/code ]] || return 0
  local file=own-$steps
  echo "$RANDOM" >"$work/own/$file"
  cp "$work/own/$file" "$tree/aix_a/code/"
}

# damage: a file of the product is lost, and put back.
damage() {
  [[ $place == ga || $place == sp? ]] || return 0
  local files medium
  mapfile -t files < <(find "$tree/aix_a/code" -type f ! -name 'own-*' | sort)
  rm "${files[RANDOM % ${#files[@]}]}"
  kwbatch_run verify "$tree"
  ((got == 1)) || fail "step $steps: verify ends with $got after a loss"
  for medium in ga/aix_a sp1 sp2; do
    kwbatch_run repair "$media/$medium" "$tree"
    [[ ${medium%/*} != "$place" ]] || break
  done
}

# killed ARGUMENT...: kwbatch alone, or all its programs with it.
killed() {
  local process group
  setsid "$kwbatch" "$@" --scratch "$work/scratch" >"$work/output" 2>&1 &
  process=$!
  ((RANDOM % 2)) && group=- || group=
  sleep "0.$(printf '%03d' $((RANDOM % 400)))"
  kill -KILL -- "$group$process" 2>/dev/null || true
  got=0
  wait "$process" 2>/dev/null || got=$?
  ((++kills))
}

# on_full_disk ARGUMENT...: there is little room left.
on_full_disk() {
  local room
  room=$(df --output=avail -k "$work" | tail -1)
  fallocate -l "$((room - RANDOM % 300))K" "$work/filler" 2>/dev/null || true
  kwbatch_run "$@"
  rm -f "$work/filler"
  ((++full))
}

# go TO: a step of the model.
go() {
  local to=$1 arguments
  # An installation wants an empty directory: its administrator takes away what was kept.
  [[ $place != none ]] || rm -rf "$tree" "$work"/own/*
  mapfile -t arguments < <(command "$to" | tr ' ' '\n')
  case $((RANDOM % 5)) in
    0 | 1) kwbatch_run "${arguments[@]}" ;;
    2 | 3) killed "${arguments[@]}" ;;
    4) on_full_disk "${arguments[@]}" ;;
  esac
  if ((got != 0)); then
    # What was begun is taken back at times; there may be nothing to take back.
    if [[ $to == *-pending ]] && ((RANDOM % 3 == 0)); then
      kwbatch_run undo-service-pack "$tree"
      to=$place
    else
      kwbatch_run "${arguments[@]}"
    fi
    ((got == 0 || got == 3)) || fail "step $steps: ${arguments[*]} ends with $got after a fault"
  fi
  place=$to
}

take_media
echo 'foreign 7000/tcp' >"$work/scratch/services"
echo 'foreign stream tcp nowait root /bin/true' >"$work/scratch/inetd.conf"
mkdir "$model" "$work/own"
steps=0 kills=0 full=0
looks >"$model/none"
# One round without faults shows what each place looks like.
for to in ga sp1-pending sp1 hf1 sp1 sp2-pending sp2 none; do
  read -ra arguments < <(command "$to")
  kwbatch_run "${arguments[@]}"
  ((got == 0)) || fail "$to: $got"
  place=$to
  [[ -e $model/$to ]] || looks >"$model/$to"
  check
done
while ((SECONDS < seconds)); do
  ((++steps))
  read -ra next <<<"${leads_to[$place]}"
  case $((RANDOM % 8)) in
    0) add_own ;;
    1) damage ;;
    *) go "${next[RANDOM % ${#next[@]}]}" ;;
  esac
  check
done
echo "$steps steps, $kills kills, $full full disks: nothing was lost"
