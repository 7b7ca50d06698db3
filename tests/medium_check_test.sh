#!/usr/bin/env bash
# medium_check_test.sh BUILDDIR SOURCEDIR: kwmedium finds each prepared fault of a medium, and none in
# the sample media.
# shellcheck source=tests/helpers.sh
source "$2/tests/helpers.sh"

# repack ARCHIVE COMMAND: runs the command in the archive's system directory.
repack() {
  mkdir x
  tar -xf "$1" -C x
  (cd x/aix_a && eval "$2")
  tar -C x -cf "$1" aix_a
  rm -r x
}

# check STATUS TEXT MEDIUM COMMAND: what is said of a copy in which the command was run.
check() {
  rm -rf "$work/bad"
  cp -r "$work/$3" "$work/bad"
  (cd "$work/bad" && eval "$4")
  expect_exit "$1" "$KWMEDIUM" check "$work/bad"
  expect_text "$2"
}

take_media
for medium in "$sample_media"/*; do
  expect_exit 0 "$KWMEDIUM" check "$medium" --quiet
  [[ ! -s $work/output ]] || fail "$medium is not without faults"
done
cp -r "$sample_media/other-level" ga
cp -r "$sample_media/sp2" sp
mkdir lf
echo 10 >lf/LFSFS
tar -C "$sample_media" -c ga | compress -c >lf/LumaforgeSatellite.Z
long=$(printf 'x%.0s' {1..48})
list=control/BASE
pack=control/SP2
while IFS='|' read -r status medium text command; do
  check "$status" "$text" "$medium" "$command"
done <<TEXT
1|ga|TOC: no line can be used|rm TOC
1|ga|"kode" is no type|sed -i 's/^code:PRD/kode:PRD/' TOC
1|ga|"PRX" is no kind|sed -i s/PRD/PRX/ TOC
1|ga|more than 47|sed -i s/Modeler/$long/ TOC
1|ga|"Mod eler" cannot be used|sed -i 's/Modeler/Mod eler/' TOC
1|ga|"Mod;eler" cannot be used|sed -i 's/Modeler/Mod;eler/' TOC
1|ga|"../Modeler" cannot be used|sed -i s,Modeler,../Modeler, TOC
1|ga|TOC:3: The name is there twice|tail -n 1 TOC >>TOC
1|ga|no line has os=|sed -i s/:os=aix_a// TOC
1|ga|no line has ga=|sed -i s/:ga=R13// TOC
1|ga|the lines differ in ga=|sed -i '\$s/\$/:ga=R12/' TOC
1|ga|TOC:2: The line is not UTF-8|printf 'code:PRD:\\377\\n' >>TOC; sed -i 2d TOC
1|ga|does not end in .zeb2|echo code:PRD:x >>TOC; sed -i s/^code:PRD/zeb2:PRD/ TOC
1|ga|Modeler: is not installed from a|echo samples:SMP:S >>TOC
1|ga|Modeler: is missing|rm Modeler.Z
1|ga|Modeler.Z: damaged|head -c 300 Modeler.Z >x; mv x Modeler.Z
1|ga|Modeler.Z: not made with compress|compress -dc Modeler.Z | gzip >x; mv x Modeler.Z
1|ga|BASE: damaged|echo no archive >BASE
1|ga|The archive is empty|: >BASE
1|ga|BASE is no regular file|rm BASE; mkfifo BASE
1|ga|TOC is no regular file|rm TOC; mkfifo TOC
1|ga|OSUNIX is no regular file|mkfifo OSUNIX
1|lf|../out: leads out of the target|touch ../out; tar -P -cf x ../out; compress -c x >LumaforgeSatellite.Z
0|lf|x: everybody may write it|touch x; chmod 666 x; tar -cf y x; compress -c y >LumaforgeSatellite.Z
1|ga|Its end is missing|end=\$(tar -tRf BASE | sed -n 's/^block \\(.*\\): .*NULs.*/\\1/p'); truncate -s \$((512 * end)) BASE
1|ga|code/bin/TEVSession: the content is not that|sed -i 's/interactive session/interactive Session/' BASE
1|ga|code/bin/TEVSession: the size is not that|repack BASE 'echo >>code/bin/TEVSession'
1|ga|code/bin/TEVSession: the mode is not that|repack BASE 'chmod 644 code/bin/TEVSession'
1|ga|code/bin/TEVSession: is in the manifest, but|repack BASE 'rm code/bin/TEVSession'
1|ga|code/bin/N: is not in the manifest|repack BASE 'touch code/bin/N'
1|ga|the manifest $list is missing|repack BASE 'rm $list'
1|ga|$list:1: the mode, size and checksum|repack BASE 'sed -i 2s/^/x/ $list'
1|ga|leads out of the target|repack BASE 'printf "../x\\n644 0 1\\n" >>$list'
1|ga|is listed twice|repack BASE 'cat $list $list >x; mv x $list'
1|ga|$list.toc is missing|repack BASE 'rm $list.toc'
1|ga|not what the medium's table says|repack BASE 'echo code:PRD:Other >>$list.toc'
1|ga|../out: leads out of the target|mkdir x; touch out; tar -C x -P -rf BASE ../out
1|ga|is not below aix_a/|touch out; tar -rf BASE out
1|ga|is there twice|mkdir x; tar -xf BASE -C x; tar -C x -rf BASE aix_a
1|ga|which leads out of the target|repack BASE 'ln -s ../../passwd code/x'
1|ga|control/PRESENT: installations use|repack BASE 'touch control/PRESENT'
0|ga|aix_a/code/x: a link to bin|repack BASE 'ln -s bin code/x'
0|ga|has no faults|repack BASE 'ln code/bin/TEVSession code/N; grep -A 1 TEVSession $list | sed s,bin/TEVSession,N, >>$list'
1|ga|which is not before it|repack BASE 'ln code/bin/TEVSession code/N'; mkdir x; tar -xf BASE -C x; tar -C x --transform 's,\$,x,RSh' -cf BASE aix_a
0|ga|has no faults|TAR_OPTIONS=--format=posix repack BASE 'mv code/bin/TEVSession code/é; sed -i s,bin/TEVSession,é, $list'
0|ga|with the rights of its owner|repack BASE 'chmod u+s code/*/*; sed -i s/^755/4755/ $list'
0|ga|a device or a pipe|repack BASE 'mkfifo code/pipe'
0|ga|x: is not in the table|touch x
1|ga|there is no directory solaris_a|mkdir aix_a; mv [!a]* aix_a; printf 'aix_a\\nsolaris_a\\n' >OSUNIX
1|ga|is for aix_a, not solaris_a|mkdir solaris_a; mv [!s]* solaris_a; echo solaris_a >OSUNIX
1|sp|is no number above 0|sed -i s/level=2/level=0/ TOC
1|sp|not above that of the line before|sed 's/SP2/SP3/;1q' TOC >>TOC
1|sp|there is no service pack before it|tac TOC >x; mv x TOC
1|sp|there is no code/bin/TEVPostBase_SP2|repack SP2 'rm code/bin/TEVPostBase_SP2'
1|sp|TEVPostBase_SP2: may not be run|repack SP2 'chmod 644 code/bin/TEVPostBase_SP2'
1|sp|could not be set aside|repack SP2 'touch "code/a b"'
1|sp|could not be taken back|repack SP2 'ln -s bin code/x'
1|sp|$pack.toc: is not what|repack SP2 'sed -i 2d $pack.toc'
TEXT
# kwbatch finds the same.
run 1 check "$work/bad" "$work/tree" --deep
expect_text "$pack.toc: is not what"
run 0 check "$media/ga" "$work/tree" --deep
expect_text 'ga has no faults'
