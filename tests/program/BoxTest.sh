#!/bin/sh
# Runs fxbox box from outside: BoxTest.sh CASE PROGRAM...
#   CASE     one of the functions test_... below
#   PROGRAM  the program, with what runs it ahead of it where it is one of another system
# FXBOX_SOAK: how many times a writing command is killed (default 20).
set -u
case_name=$1
shift
prefix="$*"

. "$(dirname "$0")/Outside.sh"

error_has() {
  [ "$(wc -l <stderr)" -eq 1 ] || fail "expected one error line"
  grep -qF "$1" stderr || fail "expected an error line with: $1"
}
same() {
  cmp -s "$1" "$2" || fail "$1 and $2 differ"
}

# Two opaque pixels, and two of which one is half transparent.
pictures() {
  printf 'P6\n2 1\n255\n\001\002\003\004\005\006' >opaque.ppm
  printf 'P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n\001\002\003\200\004\005\006\377' >alpha.pam
  run 0 apply --quiet -c 'ZNFilter.Invert.1(Inversity=000)' -o photo.jpg opaque.ppm
}

# What every kind of box does.
box_round_trip() {
  box=$1
  pictures
  run 0 box add "$box" opaque.ppm alpha.pam --at -93,-51
  run 0 box list "$box"
  grep -q "^alpha	new	1	2	1	" stdout || fail "alpha is not listed"
  grep -q "^opaque	new	2	2	1	" stdout || fail "opaque is not listed"
  run 0 box get "$box" opaque -o out.ppm
  same out.ppm opaque.ppm
  run 0 box get "$box" alpha -o out.pam
  same out.pam alpha.pam
  run 0 box info "$box" alpha --json
  for pair in '"x": -93' '"y": -51' '"headerSize": 10' '"bits": 24' '"kind": 1' '"text": null'; do
    grep -qF "$pair" stdout || fail "no $pair"
  done
  run 1 box add "$box" opaque.ppm
  error_has "there is such a picture already"
  run 0 box note "$box" opaque 'of the first one'
  run 0 box add "$box" alpha.pam --name opaque --replace
  run 0 box info "$box" opaque
  grep -q '^text	null$' stdout || fail "the note of the picture that went is left"
  run 0 box get "$box" opaque -o out2.pam
  same out2.pam alpha.pam
  run 0 box add "$box" photo.jpg --native
  run 0 box get "$box" photo -o out.jpg
  same out.jpg photo.jpg
  cp "$FXBOX_PHOTO" other.jpg
  run 0 box add "$box" other.jpg --native
  run 0 box get "$box" other -o out.png
  grep -qa iCCP out.png || fail "the colour profile is lost"
  run 0 box check "$box"
  output_is ""
  run 0 box note "$box" photo "$(printf 'gr\303\274n')"
  run 0 box rename "$box" photo picture
  run 0 box info "$box" picture --json
  grep -qF '"name": "picture.jpg"' stdout || fail "not renamed"
  [ "$(grep -c '"colours": 0,' stdout)" -eq 1 ] || fail "a photograph has no table of colours"
  grep -q '"text": "gr' stdout || fail "the note is gone"
  grep -q '"block": "56313030300000' stdout || fail "the block is wrong"
  run 1 box rename "$box" picture alpha
  error_has "there is such a picture already"
  run 0 box copy "$box" alpha other.box beta --native
  run 0 box get other.box beta -o out3.pam
  same out3.pam alpha.pam
  run 0 box copy "$box" opaque "$box" --native # in its own place
  run 0 box list "$box"
  grep -q '^opaque.png	native	' stdout || fail "not the plain file that it should be"
  run 0 box delete "$box" picture
  run 1 box get "$box" picture -o out5.jpg
  error_has "there is no such picture"
  [ ! -e out5.jpg ] || fail "an output without a picture"
  run 1 box delete "$box" PicMask
  run 0 apply --quiet -c 'ZNFilter.Invert.1(Inversity=000)' -o applied.pam "$box::alpha"
  same applied.pam alpha.pam
}

test_compound() {
  box_round_trip shots.box
  run 0 box tree shots.box
  grep -q '^Pictures	storage	0$' stdout || fail "no Pictures in the tree"
  grep -q '^Pictures/alpha	stream	' stdout || fail "no picture in the tree"
  ls -A | grep -q '^\.fxbox' && fail "a hidden file is left"
  return 0
}

test_folder() {
  box_round_trip shots/
  [ -f shots_kv/Pictures/alpha ] || fail "no file for alpha"
  run 0 box list shots_kv/
  find . -name '.fxbox*' | grep -q . && fail "a hidden file is left"
  for box in other/ other.box; do
    run 0 box add $box opaque.ppm --name 'a b'
    run 0 box tree $box
    grep -q '^Pictures/a b	stream	' stdout || fail "the tree of $box lacks the picture"
  done
}

# Every way to keep a picture and to copy it: what is told of it, its note, and the same pixels.
test_ways() {
  pictures
  head -c 36 /dev/urandom >block
  # told FIELDS BOX NAME: generation, kind, tag, head and position, and the note, in one line.
  told() {
    fields=$1
    shift
    run 0 box info "$@"
    [ "$(sed -n '2,7p' stdout | cut -f 2 | tr '\n' ' ')" = "$fields " ] || fail "expected $fields: $*"
    grep -q "^block	5631303030$(od -An -v -tx1 -j5 block | tr -d ' \n')\$" stdout || fail "another block: $*"
    grep -q '^text	a note$' stdout || fail "another note: $*"
  }
  for pair in shots.box:other/ shots/:other.box; do
    box=${pair%:*}
    other=${pair#*:}
    while IFS='|' read -r file way kept old plain; do
      name="$file ${way%% *}"
      run 0 box add "$box" $file $way --name "$name"
      run 0 box note "$box" "$name" first --block block
      run 0 box note "$box" "$name" 'a note' # which keeps the block
      told "$kept" "$box" "$name"
      run 0 box get "$box" "$name" -o want.pam
      from=$box
      for form in "native|$plain" "new|$kept" "old|$old"; do
        run 0 box copy "$from" "$name" $other "$name" --${form%%|*}
        told "${form#*|}" $other "$name"
        run 0 box get $other "$name" -o got.pam
        same got.pam want.pam
        [ "$form" != "new|$kept" ] || from=$other # the last one takes its own place
      done
    done <<END
alpha.pam|--dib --at 5,-6|new 1 JPG 10 5 -6|old 1 null 5 5 -6|native 2 PNG 0 null null
alpha.pam|--encoded --at 5,-6|new 1 JPG 14 5 -6|old 1 null 9 5 -6|native 2 PNG 0 null null
alpha.pam|--native|native 2 null 0 null null|old 2 null 9 null null|native 2 null 0 null null
photo.jpg|--at 5,-6|new 2 JPG 10 5 -6|old 2 null 5 5 -6|native 2 PNG 0 null null
photo.jpg|--encoded|native 2 JPG 0 null null|old 2 null 9 null null|native 2 JPG 0 null null
photo.jpg|--native|native 2 JPG 0 null null|old 2 null 9 null null|native 2 JPG 0 null null
END
    run 0 box check "$box"
    run 0 box check $other
    run 0 box list $other
    [ "$(wc -l <stdout)" -eq 6 ] || fail "another picture is left"
  done
  run 1 box add shots.box photo.jpg --name placed --encoded --at 5,-6
  grep -q "no position" stderr || fail "the lost position is not told"
  printf short >block
  run 1 box note shots.box 'alpha.pam --native' x --block block
  error_has "a block has 36 bytes"
  for form in '--new --old' '--old --native'; do run 2 box copy shots.box a shots.box b $form; done
}

test_foreign_files() {
  pictures
  : >empty.box
  printf 'this is no box' >text.box
  for file in empty.box text.box opaque.ppm; do
    cp $file before
    for command in "list $file" "check $file" "tree $file" "info $file a" "delete $file a" \
      "add $file alpha.pam" "note $file a b"; do
      run 1 box $command
      [ "$(wc -l <stderr)" -eq 1 ] || fail "not one line: $command"
      same $file before
    done
  done
  run 1 box list absent.box
  [ ! -e absent.box ] || fail "a box was made by looking"
  run 1 box list absent/
  run 2 box get shots.box
  run 2 box add shots.box opaque.ppm --native --dib
  run 2 box add shots.box opaque.ppm --at 1
}

test_names() {
  pictures
  run 0 box add shots.box opaque.ppm --name 'a/b:c'
  run 0 box get shots.box 'a/b:c' -o out.ppm
  run 0 box get shots.box 'A_B_C' -o out.ppm
  for name in . .. PicMask x.inf; do
    run 1 box add shots.box opaque.ppm --name "$name"
    error_has "no picture can have this name"
  done
  name=abcdefghijklmnopqrstuvwxyzabcde
  run 0 box add shots.box opaque.ppm --name $name
  for command in "add shots.box opaque.ppm --name ${name}f" "note shots.box $name text"; do
    run 1 box $command
    error_has "longer than 31 letters"
  done
  run 0 box list shots.box
  [ "$(wc -l <stdout)" -eq 2 ] || fail "another picture is there"
}

test_damage() {
  pictures
  run 0 box add shots/ opaque.ppm alpha.pam
  picture=shots_kv/Pictures/alpha
  size=$(wc -c <$picture)
  head -c $((size - 4)) $picture >cut && cp cut $picture
  : >shots_kv/Pictures/empty # which any file may be
  run 1 box check shots/
  output_is "alpha: the end marker is missing or wrong"
  head -c 20 $picture >cut && cp cut $picture
  run 1 box check shots/
  run 1 box get shots/ alpha -o out.png
  error_has "the picture is damaged"
  [ ! -e out.png ] || fail "half a picture was written"
  printf 'KVQX\377\377\377\377' >shots_kv/Pictures/opaque.inf
  run 1 box check shots/
  grep -q '^opaque.inf: the note is broken$' stdout || fail "the note is not told"
  run 0 box note shots/ opaque better
  run 0 box info shots/ opaque
  grep -q '^text	better$' stdout || fail "the note was not written anew"
}

# A photograph goes from each system's program to the other's and comes back byte for byte.
# FXBOX_LINUX_PROGRAM is the other program, FXBOX_PHOTO the photograph.
test_exchange() {
  here=$prefix
  there=$FXBOX_LINUX_PROGRAM
  [ -x "$there" ] || fail "$there is missing: scripts/build.sh linux fxbox"
  pictures
  cp "$FXBOX_PHOTO" photo.jpg
  for box in shots.box shots/; do
    for way in there:here here:there; do
      name=${way%:*}
      eval "prefix=\$$name"
      run 0 box add "$box" photo.jpg --native --name "$name-native"
      run 0 box add "$box" photo.jpg --name "$name-pixels"
      run 0 box add "$box" photo.jpg --encoded --name "$name-encoded"
      run 0 box add "$box" alpha.pam --at -93,-51 --name "$name-alpha"
      run 0 box note "$box" "$name-alpha" "$(printf 'gr\303\274n')"
      run 0 box get "$box" "$name-pixels" -o written.ppm
      run 0 box get "$box" "$name-alpha" -o written.raw
      run 0 box info "$box" "$name-alpha"
      cp stdout written.info
      eval "prefix=\$${way#*:}"
      run 0 box check "$box"
      output_is ""
      for kind in native encoded; do
        run 0 box get "$box" "$name-$kind" -o read.jpg
        same read.jpg photo.jpg
      done
      run 0 box get "$box" "$name-pixels" -o read.ppm
      same read.ppm written.ppm
      run 0 box get "$box" "$name-alpha" -o read.raw
      same read.raw written.raw
      run 0 box get "$box" "$name-alpha" -o read.pam
      same read.pam alpha.pam
      run 0 box info "$box" "$name-alpha"
      same stdout written.info
      run 0 box list "$box"
      rm -f read.* written.*
    done
    [ "$(wc -l <stdout)" -eq 8 ] || fail "not all pictures are there"
  done
}

# A note without a picture, which another program has left, is nobody's.
test_left_note() {
  pictures
  run 0 box add left/ opaque.ppm --name one
  run 0 box note left/ one old
  cp left_kv/Pictures/one.inf left_kv/Pictures/two.inf
  run 0 box note left/ one new
  (cd left_kv && gsf createole ../left.box Pictures 2>/dev/null)
  run 0 box rename left.box one two
  run 0 box info left.box two
  grep -q '^text	new$' stdout || fail "the note of another picture"
}

# Two pictures that have the same sectors read well and are told all the same; the box is left alone.
test_shared_sectors() {
  printf 'P6\n60 40\n255\n' >other.ppm
  head -c 7200 /dev/urandom >>other.ppm
  run 0 box add shots.box other.ppm --name one_of_two
  run 0 box add shots.box other.ppm --name two_of_two
  entries() {
    LC_ALL=C grep -abo "$(printf "$1" | sed 's/./&./g')" shots.box | cut -d: -f1
  }
  from=$(entries one_of_two | tail -n 1)
  for to in $(entries two_of_two); do
    dd if=shots.box of=shots.box bs=1 skip=$((from + 116)) seek=$((to + 116)) count=4 conv=notrunc 2>/dev/null
  done
  run 0 box get shots.box two_of_two -o out.ppm
  same out.ppm other.ppm
  run 1 box check shots.box
  output_is "Pictures/two_of_two: the stream has the same sectors as Pictures/one_of_two"
}

# What a kill leaves: one and the copies as they were or as they should be, two untouched.
state() {
  for name in one two new copied; do
    rm -f now.ppm
    $prefix box get "$1" $name -o now.ppm 2>stderr || [ $name = new ] || [ $name = copied ] || fail "$name is gone"
    [ ! -e now.ppm ] || cmp -s now.ppm opaque.ppm || { cmp -s now.ppm other.ppm && [ $name != two ]; } ||
      fail "$name is neither old nor new"
  done
  run 0 box info "$1" one
  grep -qE '^text	(first|second)$' stdout || grep -q '^text	null$' stdout || fail "the note is neither old nor new"
  run 0 box check "$1"
}

milliseconds() {
  echo $(($(date +%s%N) / 1000000))
}

# kill_in_time SHARE ARGUMENT...: after so many hundredths of the time that a command takes.
kill_in_time() {
  pause=$(printf %04d $((duration * $1 / 100)))
  shift
  $prefix "$@" >/dev/null 2>&1 &
  writer=$!
  sleep "${pause%???}.${pause#?}"
  kill -9 $writer 2>/dev/null
  wait $writer 2>/dev/null
  [ $? -eq 0 ] || kills=$((kills + 1))
}

# kill_in_writing SHARE ARGUMENT...: when it has written so many hundredths of the large picture to a
# file, or behind the end of the box.
kill_in_writing() {
  size=$(($(wc -c <other.ppm) * $1 / 100))
  [ ! -f "$box" ] || size=$((size + $(wc -c <"$box")))
  shift
  (
    ulimit -c 0
    ulimit -f $((size / 512 + 1))
    $prefix "$@" >/dev/null 2>&1
  ) 2>/dev/null
  [ $? -eq 0 ] || kills=$((kills + 1))
}

# FXBOX_SOAK kills for each kind of box.
test_kills() {
  pictures
  # Large enough for the kill to come in the middle.
  printf 'P6\n600 400\n255\n' >other.ppm
  head -c 720000 /dev/urandom >>other.ppm
  count=${FXBOX_SOAK:-20}
  for box in shots.box shots/; do
    run 0 box add "$box" opaque.ppm --name one
    run 0 box add "$box" opaque.ppm --name two
    run 0 box add "$box" other.ppm --name copy
    start=$(milliseconds)
    run 0 box note "$box" one first
    duration=$(($(milliseconds) - start))
    kills=0
    i=0
    while [ $i -lt "$count" ]; do
      share=$((i * 37 % 100 + 10))
      way=kill_in_time
      [ $((i / 5 % 2)) -eq 0 ] || way=kill_in_writing
      run 0 box add "$box" opaque.ppm --name one --replace
      run 0 box note "$box" one first
      case $((i % 5)) in
        0) $way $share box add "$box" other.ppm --name new ;;
        1) $way $share box add "$box" other.ppm --name one --replace ;;
        2) $way $share box note "$box" one second ;;
        3) $way $share box copy "$box" copy "$box" copied ;;
        4) $way $share box delete "$box" new ;;
      esac
      state "$box"
      i=$((i + 1))
    done
    echo "$kills of $count commands on $box were killed"
    [ $kills -gt 0 ] || fail "no kill came in time"
    run 0 box list "$box"
    grep -q fxbox stdout && fail "a staged picture is listed"
  done
  return 0
}

test_two_writers() {
  pictures
  for i in 1 2 3 4 5 6; do
    $prefix box add shots.box opaque.ppm --name a$i 2>err.a$i &
    first=$!
    $prefix box add shots.box opaque.ppm --name b$i 2>err.b$i &
    second=$!
    wait $first || grep -q 'in use' err.a$i || fail "a$i"
    wait $second || grep -q 'in use' err.b$i || fail "b$i"
  done
  run 0 box check shots.box
  run 0 box list shots.box
  [ "$(wc -l <stdout)" -ge 6 ] || fail "pictures are lost"
}

# Needs a small file system of its own; without the right to mount one, the limit of file sizes.
test_full_disk() {
  pictures
  printf 'P6\n600 400\n255\n' >other.ppm
  head -c 720000 /dev/urandom >>other.ppm
  for box in shots.box shots/; do
    run 0 box add "$box" opaque.ppm --name one
    (
      trap '' XFSZ
      ulimit -f 200
      $prefix box add "$box" other.ppm --name one --replace >/dev/null 2>stderr
    ) && fail "a full disk went unnoticed"
    [ "$(wc -l <stderr)" -eq 1 ] || fail "expected one error line"
    run 0 box get "$box" one -o out.ppm
    same out.ppm opaque.ppm
    run 0 box check "$box"
  done
}

# Any file at all: an exit status and a line, within 2 s of the processor and 256 MB beside the program
# itself; it is as it was before. FXBOX_HOSTILE makes the files.
test_hostile() {
  pictures
  printf 'P6\n60 40\n255\n' >other.ppm
  head -c 7200 /dev/urandom >>other.ppm
  run 0 box add whole.box other.ppm --name a
  python3 "$FXBOX_HOSTILE" whole.box || fail "the files cannot be made"
  mkdir -p shots_kv/Pictures
  mv bomb huge endless encoded note.inf shots_kv/Pictures
  for file in *.box shots/; do
    [ $file != whole.box ] || continue
    sum=
    [ ! -f $file ] || sum=$(stat -c "%s %y" $file)
    for command in "list $file" "tree $file" "check $file" "info $file a" "get $file a -o out.png" \
      "copy $file a target.box" "note $file a text" "add $file opaque.ppm --name b" "rename $file a c" \
      "delete $file a" "info $file s1" "get $file bomb -o out.png" "info $file bomb"; do
      (
        ulimit -v 360000
        ulimit -t 2
        exec timeout 60 $prefix box $command >stdout 2>stderr
      )
      status=$?
      [ $status -le 1 ] || fail "status $status: $command"
      [ $status -eq 0 ] || [ "$(wc -l <stderr)" -eq 1 ] || [ "${command%% *}" = check ] || fail "not one line: $command"
      # What can be written to is as it should be.
      [ $status -eq 0 ] || [ ! -f $file ] || [ "$(stat -c "%s %y" $file)" = "$sum" ] || fail "changed: $command"
      [ $status -ne 0 ] || [ ! -f $file ] || sum=$(stat -c "%s %y" $file)
    done
    rm -f $file
  done
  return 0
}

"test_$case_name"
