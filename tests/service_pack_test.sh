#!/usr/bin/env bash
# service_pack_test.sh BUILDDIR SOURCEDIR: the life of service packs, with kwbatch.
set -euo pipefail
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# content TREE: everything in it with its mode, and the content of the files.
content() {
  (cd "$1" && find . -printf '%p %y %m %U %l\n' | sort && find . -type f -exec cksum {} + | sort)
}

expect_content() {
  content "$work/tree" | diff "$work/$1" - || fail "the tree is not as it was $1"
}

check_life() {
  run 0 service-pack "$media/sp1" "$work/tree"
  run 0 verify "$work/tree"
  grep -q 'setting up Modeler for SP1' "$work/scratch/kwinst.log" || fail 'no post-install program'
  run 1 service-pack "$media/sp2" "$work/tree"
  expect_text 'not committed'
  run 0 undo-service-pack "$work/tree"
  expect_content before
  run 1 undo-service-pack "$work/tree"
  run 0 service-pack "$media/sp1" "$work/tree"
  run 0 commit "$work/tree"
  run 1 undo-service-pack "$work/tree"
  expect_text 'waiting for a commit'
  run 1 commit "$work/tree"
  content "$work/tree" >"$work/committed"
  run 0 service-pack "$media/sp2" "$work/tree"
  run 0 undo-service-pack "$work/tree"
  expect_content committed
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
  run 1 commit "$work/tree"
  expect_text 'not finished'
  run 1 service-pack "$media/sp1" "$work/tree"
  expect_text 'not finished'
  run 0 undo-service-pack "$work/tree"
  expect_content committed
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
  expect_content committed
  # A committed pack that is set over a damaged file stays committed.
  rm "$system/code/bin/TEVRepair"
  PATH=$work/bin:$PATH run 1 service-pack "$media/sp1" "$work/tree"
  run 1 undo-service-pack "$work/tree"
  run 0 service-pack "$media/sp1" "$work/tree"
  expect_content committed
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
    run 1 service-pack "$work/foreign" "$work/tree"
    expect_text "$path"
  done
  expect_content committed
}

# What a pack would not let come back: a file set aside earlier, and a linked directory.
check_what_stands_in_the_way() {
  touch "$system/code/bin/TEVModeler.beforeSPK"
  run 1 service-pack "$media/sp2" "$work/tree"
  expect_text TEVModeler.beforeSPK
  rm "$system/code/bin/TEVModeler.beforeSPK"
  mv "$system/code/bin" "$work/elsewhere"
  ln -s "$work/elsewhere" "$system/code/bin"
  run 1 service-pack "$media/sp2" "$work/tree"
  expect_text 'symbolic link'
  rm "$system/code/bin"
  mv "$work/elsewhere" "$system/code/bin"
  expect_content committed
}

check_sdk() {
  run 0 install "$media/sdk" "$work/sdk" --code "$work/tree"
  content "$work/sdk" >"$work/sdk_before"
  run 0 service-pack "$media/sp1-sdk" "$work/sdk"
  grep -q SP1-Modeler "$work/sdk/control/PRESENT" || fail 'no fix package'
  run 0 undo-service-pack "$work/sdk"
  content "$work/sdk" | diff "$work/sdk_before" - || fail 'the SDK is not as it was'
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
  grep -qF "$system/code/bin/TEVSysDemon" "$work/scratch/inetd.conf" || fail 'no daemon'
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
new_scratch
run 0 install "$media/ga" "$work/tree" --os aix_a
content "$work/tree" >"$work/before"
check_life
check_interruption
check_foreign_lists
check_what_stands_in_the_way
check_sdk
check_tasks
check_settings
check_registration
