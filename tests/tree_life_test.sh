#!/usr/bin/env bash
# tree_life_test.sh BUILDDIR SOURCEDIR: the life of a tree and its SDK with kwbatch: what may be
# installed next and what is refused, service packs, hot fixes, tasks, registration.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# content TREE: everything in it with its mode, and the content of the files.
content() {
  cd "$work/$1"
  find . -printf '%p %y %m %U %l\n' | sort
  find . -type f -exec cksum {} + | sort
  cd "$work"
}

# expect_content NAME TREE: the tree is as it was when that was noted.
expect_content() { content "$2" | diff "$work/$1" - || fail "the $2 is not as it was $1"; }

# times: what changes when anything is written.
times() { (cd "$work" && find tree sdk -printf '%p %T@ %s\n'); }

# expect_check STATUS TEXT MEDIUM TREE [OPTION...]: the check says the text, and writes nothing.
expect_check() {
  local before
  before=$(times)
  run "$1" check "$media/$3" "$work/$4" "${@:5}"
  expect_text "$2"
  [[ $before == "$(times)" ]] || fail "the check of $3 on $4 wrote something"
}

check_products() {
  expect_check 0 'may be installed' ga new
  expect_check 1 'Nothing is installed' sp1 new
  run 0 install "$media/ga" "$work/tree" --os aix_a
  expect_check 0 "$work/tree/solaris_a" ga tree
  expect_check 1 'already installed' ga/aix_a tree
  expect_check 1 'operating system hpux_b' other-os tree
  expect_check 1 'level R13' other-level tree
  run 0 verify "$work/tree"
}

check_sdk() {
  expect_check 1 '--code' sdk sdk
  expect_check 0 'may be installed' sdk sdk --code "$work/tree"
  run 0 install "$media/sdk" "$work/sdk" --code "$work/tree"
  [[ $(<"$work/tree/ZEBDir.txt") == "$work/sdk" ]] || fail 'the code does not name its SDK'
  grep -q Simulation "$work/sdk/control/PRESENT" && fail 'an SDK package without its code'
  expect_check 1 'is not installed' sdk sdk
  run 0 verify "$work/sdk"
  expect_check 1 'Service Pack level' sp1-sdk sdk
}

check_samples() {
  run 0 install "$media/samples" "$work/tree"
  [[ -d $system/samples/ModelerSamples ]] || fail 'no samples'
  expect_check 1 'already installed' samples tree
}

check_service_packs() {
  content tree >"$work/before"
  expect_check 0 'may be installed' sp1 tree
  expect_check 1 'HF1' hf1 tree
  run 0 service-pack "$media/sp1" "$work/tree"
  run 0 verify "$work/tree"
  grep -q 'setting up Modeler for SP1' "$work/scratch/kwinst.log" || fail 'no post-install program'
  expect_refusal 'tevstart -run TEVSoftwareMgt' service-pack "$media/sp2" "$work/tree"
  expect_check 1 'Commit' hf1 tree
  expect_check 1 'not committed' sp1-sdk sdk
  run 0 undo-service-pack "$work/tree"
  expect_content before tree
  run 1 undo-service-pack "$work/tree"
  run 0 service-pack "$media/sp1" "$work/tree"
  run 0 commit "$work/tree"
  expect_refusal 'waiting for a commit' undo-service-pack "$work/tree"
  run 1 commit "$work/tree"
  content tree >"$work/committed"
  expect_check 1 'already installed' sp1 tree
  run 0 service-pack "$media/sp2" "$work/tree"
  run 0 undo-service-pack "$work/tree"
  expect_content committed tree
}

# A transfer that fails in its middle, as on a full disk, and then goes well: nothing of what was
# saved is lost.
check_interruption() {
  mkdir "$work/bin"
  cat >"$work/bin/tar" <<'TAR'
#!/bin/sh
[ "$1 $#" = "-xf 2" ] || exec /bin/tar "$@"
/bin/tar "$@" aix_a/code/bin/TEVModeler
exit 2
TAR
  chmod +x "$work/bin/tar"
  PATH=$work/bin:$PATH run 1 service-pack "$media/sp2" "$work/tree"
  [[ -e $system/code/bin/TEVModeler.beforeSPK ]] || fail 'nothing was saved'
  expect_refusal 'not finished' commit "$work/tree"
  expect_refusal 'not finished' service-pack "$media/sp1" "$work/tree"
  run 0 undo-service-pack "$work/tree"
  expect_content committed tree
  PATH=$work/bin:$PATH run 1 service-pack "$media/sp2" "$work/tree"
  run 0 service-pack "$media/sp2" "$work/tree"
  # Once more, over a file of the pack that is missing.
  rm "$system/code/bin/TEVDrafting"
  run 0 service-pack "$media/sp2" "$work/tree"
  run 0 verify "$work/tree"
  # An undo that cannot rename a file, and is repeated.
  mv "$system/code/bin/TEVModeler" "$work/TEVModeler"
  mkdir -p "$system/code/bin/TEVModeler/full"
  run 1 undo-service-pack "$work/tree"
  rm -r "$system/code/bin/TEVModeler"
  run 0 undo-service-pack "$work/tree"
  expect_content committed tree
  # A committed pack that is set over a damaged file stays committed.
  rm "$system/code/bin/TEVRepair"
  expect_refusal 'code/bin/TEVRepair: is missing' verify "$work/tree"
  expect_check 1 'again' hf1 tree
  expect_check 0 'may be installed' sp1 tree
  PATH=$work/bin:$PATH run 1 service-pack "$media/sp1" "$work/tree"
  run 1 undo-service-pack "$work/tree"
  run 0 service-pack "$media/sp1" "$work/tree"
  expect_content committed tree
}

# A pack whose list leads out of the tree, or names what would not be saved.
check_foreign_lists() {
  local path
  for path in ../../victim 3d/model; do
    rm -rf "$work/foreign"
    mkdir -p "$work/foreign/aix_a/control"
    echo code:SPK:SP9:os=aix_a:ga=R12:level=9 | tee "$work/foreign/TOC" \
      >"$work/foreign/aix_a/control/SP9.toc"
    printf '%s\n644 0 4294967295\n' "$path" >"$work/foreign/aix_a/control/SP9"
    (cd "$work/foreign" && tar -cf SP9 aix_a)
    expect_refusal "$path" service-pack "$work/foreign" "$work/tree"
  done
  expect_content committed tree
}

# What a pack would not let come back: a file set aside earlier, and a linked directory.
check_what_stands_in_the_way() {
  touch "$system/code/bin/TEVModeler.beforeSPK"
  expect_refusal TEVModeler.beforeSPK service-pack "$media/sp2" "$work/tree"
  rm "$system/code/bin/TEVModeler.beforeSPK"
  mv "$system/code/bin" "$work/elsewhere"
  ln -s "$work/elsewhere" "$system/code/bin"
  expect_refusal 'symbolic link' service-pack "$media/sp2" "$work/tree"
  rm "$system/code/bin"
  mv "$work/elsewhere" "$system/code/bin"
  expect_content committed tree
}

check_sdk_service_pack() {
  content sdk >"$work/before"
  run 0 service-pack "$media/sp1-sdk" "$work/sdk"
  grep -q SP1-Modeler "$work/sdk/control/PRESENT" || fail 'no fix package'
  run 0 undo-service-pack "$work/sdk"
  expect_content before sdk
  mv "$system/control/PRESENT" "$work/present"
  mkdir "$system/control/PRESENT"
  expect_check 1 'Service Pack level' sp1-sdk sdk
  rmdir "$system/control/PRESENT"
  mv "$work/present" "$system/control/PRESENT"
  [[ ! -e NUL ]] || fail 'a file NUL is left behind'
}

check_hot_fixes() {
  run 1 hot-fix "$media/sp2" "$work/tree"
  run 1 service-pack "$media/hf1" "$work/tree"
  expect_check 0 'may be installed' hf1 tree
  run 0 hot-fix "$media/hf1" "$work/tree"
  run 0 verify "$work/tree"
  expect_check 1 'already installed' hf1 tree
  expect_check 1 'HF1' hf2 tree
  run 0 service-pack "$media/sp2" "$work/tree"
  expect_check 1 'already installed' sp2 tree
  expect_check 1 'level 2' sp1 tree
}

check_tasks() {
  local pid
  cp /bin/sleep "$system/code/bin/TEVSleep"
  "$system/code/bin/TEVSleep" 100 &
  pid=$!
  run 0 tasks "$work/tree"
  expect_text TEVSleep
  run 0 tasks "$work/tree" --stop
  wait "$pid" && fail 'a task was not stopped'
  run 0 tasks "$work/tree"
  expect_text ': 0'
}

check_settings() {
  printf 'default\n' >"$work/tree/prod.lp"
  printf '/etc/opt\n' >"$work/tree/EnvDir.txt"
  run 0 environment "$work/tree" prod
  expect_text /etc/opt/default.txt
  run 1 environment "$work/tree" none
  run 1 install "$media/ga" "$work/other" --timeout 1
  expect_text 35700
  run 1 install "$media/ga" "$work/other" --publish-path relative
  run 1 install "$media/ga" "$work/other" --orb-port 30000 --orb-base 30000
  run 1 install "$media/ga" "$work/other" --run-port 1023
  run 2 install "$media/ga" "$work/other" --run-port many
  run 2 install "$media/ga" "$work/other" --tck-port 20000
  run 1 install "$media/ga" "$work/other" --satellite "$work/none"
  [[ ! -e $work/other ]] || fail 'a refused installation made its target'
}

check_registration() {
  grep -q '^morvelk7run      20051/tcp  #' "$work/scratch/services" || fail 'no run port'
  mkdir "$work/satellite" "$work/parts"
  echo '#!/bin/sh' >"$work/parts/ray.sh"
  (cd "$work/parts" && tar -cf - ray.sh | compress -f >"$work/satellite/LumaforgeSatellite.Z")
  echo 2048 >"$work/satellite/LFSFS"
  run 0 install "$media/ga" "$work/tree" --os solaris_a --satellite "$work/satellite" \
    --run-port 20061
  grep -q '^morvelk7run      20061/tcp   #' "$work/scratch/services" || fail 'no new run port'
  grep -q '^mi-ray ' "$work/scratch/inetd.conf" || fail 'no satellite'
}

make_sample_media
media=$work/media
system=$work/tree/aix_a
mkdir "$work/tree" "$work/sdk"
# No archives: the compressed ones beside them are to be taken.
touch "$media/ga/aix_a/Modeler" "$media/sp1/SP1"
new_scratch
check_products
check_sdk
check_samples
check_service_packs
check_interruption
check_foreign_lists
check_what_stands_in_the_way
check_sdk_service_pack
check_hot_fixes
check_tasks
check_settings
check_registration
