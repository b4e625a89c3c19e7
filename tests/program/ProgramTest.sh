#!/bin/sh
# Runs the built program from outside: ProgramTest.sh CASE DOCS PROGRAM...
#   CASE     one of the functions test_... below
#   DOCS     the folder of the documents that the program generates
#   PROGRAM  the program, with what runs it ahead of it where it is one of another system
# All files are named without a folder, in a fresh one, so that they mean the same on both systems.
set -u
case_name=$1
docs=$2
shift 2
prefix="$*"

. "$(dirname "$0")/Outside.sh"

# error_is LINE: the only line on standard error.
error_is() {
  [ "$(tr -d '\r' <stderr)" = "$1" ] || fail "expected the error line: $1"
}

# error_starts TEXT: the same for the beginning, where the rest is the system's wording.
error_starts() {
  [ "$(wc -l <stderr)" -eq 1 ] || fail "expected one error line"
  case "$(cat stderr)" in "$1"*) ;; *) fail "expected an error line that starts: $1" ;; esac
}

# prints LINES ARGUMENT...: status 0 and this output.
prints() {
  lines=$1
  shift
  run 0 "$@"
  output_is "$lines"
}

# file_is FILE FORMAT: the bytes are those that printf makes of FORMAT.
file_is() {
  [ -e "$1" ] || fail "$1 is missing"
  printf "$2" >expected
  cmp -s "$1" expected || {
    od -An -tx1 "$1" | sed 's/^/  have:/' >&2
    od -An -tx1 expected | sed 's/^/  want:/' >&2
    fail "$1 has other bytes"
  }
}

# sum_is FILE SUM: its SHA-256 sum.
sum_is() {
  [ "$(sha256sum <"$1")" = "$2  -" ] || fail "$1 has other bytes"
}

is_missing() {
  for file in "$@"; do
    [ ! -e "$file" ] || fail "$file should not be there"
  done
}

no_leftovers() {
  left=$(find . -name '.fxbox-*')
  [ -z "$left" ] || fail "left over: $left"
}

# wait_for COMMAND MESSAGE: until the command, a text, succeeds; with this message it never does.
wait_for() {
  tries=0
  until eval "$1"; do
    tries=$((tries + 1))
    [ $tries -lt 600 ] || fail "$2"
    sleep 0.05
  done
}

# ends_by SIGNAL STATUS: what runs as $program does, and takes it for no error.
ends_by() {
  kill -$1 $program
  wait $program
  status=$?
  [ $status = $2 ] || fail "status $status instead of $2"
  [ ! -s stderr ] || fail 'an interrupt is no error'
}

# Three by two pixels: black, white, red above green, blue, (100, 150, 200).
picture() {
  printf 'P6\n3 2\n255\n\000\000\000\377\377\377\377\000\000\000\377\000\000\000\377\144\226\310' >"$1"
}

# --- apply: bytes

# Two filters in the order of the text; blanks and line ends in a file; layout B; other markers.
test_chain_forms() {
  picture in.ppm
  run 0 apply -c 'ZNFilter.Invert.1(Inversity=100)ZNFilter.RGBColor.1(Red=010)' -o want.ppm in.ppm
  # 10 * 255 / 100 = 25 more red behind the negative
  file_is want.ppm 'P6\n3 2\n255\n\377\377\377\031\000\000\031\377\377\377\000\377\377\377\000\264\151\067'
  printf '\357\273\277 ZNFilter.Invert.1(Inversity=100)\r\n\n\tZNFilter.RGBColor.1( Red=010 ,\n Green=000)\n' >chain
  run 0 apply -f chain -o file.ppm in.ppm
  run 0 apply -c '(ZNFilter.Invert.1(Inversity=100) (ZNFilter.RGBColor.1(Red=010)' -o b.ppm in.ppm
  run 0 apply --open '<<' --close '>' -c 'ZNFilter.Invert.1<<Inversity=100> ZNFilter.RGBColor.1<<Red=10>' -o markers.ppm in.ppm
  run 0 apply --lenient -c 'ZNFilter.Invert.1(Inversity=100)ZNFilter.Nobody.1(X=1)ZNFilter.RGBColor.1(Red=010,No=1)' -o lenient.ppm in.ppm
  for form in file b markers lenient; do
    cmp -s want.ppm $form.ppm || fail "$form gives another picture"
  done
  run 0 apply -c '' -o same.ppm in.ppm
  cmp -s in.ppm same.ppm || fail 'an empty chain changes the picture'
}

# Alpha is 255 - mask. Half transparent keeps 127: mask 0 becomes 255 - 255 * 127 / 255 = 128, alpha 127.
test_alpha() {
  head='P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n'
  printf "$head"'\001\002\003\377\011\012\013\000' >in.pam
  run 0 apply -c 'ZNFilter.Transparency.1(Transparency=050)' -o out.pam in.pam
  file_is out.pam "$head"'\001\002\003\177\011\012\013\000'
  # Alpha that hides nothing is not written; what a filter hides is.
  printf "$head"'\001\002\003\377\011\012\013\377' >opaque.pam
  printf 'P6\n2 1\n255\n\001\002\003\011\012\013' >opaque.ppm
  run 0 apply -c '' -o alpha.png opaque.pam
  run 0 apply -c '' -o none.png opaque.ppm
  cmp -s alpha.png none.png || fail 'alpha that hides nothing is written'
  run 0 apply -c 'ZNFilter.Transparency.1(Transparency=050)' -o half.png opaque.ppm
  run 0 apply -c '' -o half.pam half.png
  file_is half.pam "$head"'\001\002\003\177\011\012\013\177'
}

# What travels along names the size of the result.
test_sizes_in_data() {
  picture in.ppm
  run 0 apply -c '' -o plain.jpg in.ppm
  xmp='<x:xmpmeta xmlns:x="adobe:ns:meta/"><r tiff:ImageWidth="900" tiff:ImageLength="800"/></x:xmpmeta>'
  size=$((2 + 29 + ${#xmp}))
  {
    head -c 2 plain.jpg
    printf "\\377\\341\\$(printf %03o $((size / 256)))\\$(printf %03o $((size % 256)))"
    printf 'http://ns.adobe.com/xap/1.0/\000%s' "$xmp"
    tail -c +3 plain.jpg
  } >in.jpg
  run 0 apply -c '' --rect 0,0,2,1 -o out.jpg in.jpg
  grep -qaF 'tiff:ImageWidth="2" tiff:ImageLength="1"' out.jpg || fail 'another size in the XMP data'
}

test_bands_and_rectangle() {
  picture in.ppm
  # The lower left pixel is the green one; the corner counts from there, upwards.
  run 0 apply -c '' --rect 1,0,1,2 -o middle.ppm in.ppm
  file_is middle.ppm 'P6\n1 2\n255\n\377\377\377\000\000\377'
  prints 'cut.ppm  2x1' apply -c '' --rect=-5,1,7,9 -o cut.ppm in.ppm
  file_is cut.ppm 'P6\n2 1\n255\n\000\000\000\377\377\377'
  run 2 apply -c '' --rect 3,0,1,1 -o none.ppm in.ppm
  error_is 'fxbox: in.ppm: --rect lies outside the result, which is 3x2'
  is_missing none.ppm
  # A part is the same part of the whole result where filters have moved and scaled the picture.
  enlarge='ZNFilter.Scale100.1(HorizontalProz=900,VerticalProz=900)'
  crop='ZNFilter.Crop.1(LeftMargin=0.25,RightMargin=0.75,BottomMargin=0.3,FixRatioOn=0)'
  reduce='ZNFilter.Scale.1(MaximumHorizontalSize=9,MaximumVerticalSize=9)'
  sepia='ZNFilter.Sepia.1(Sepia=050)'
  run 0 apply -c "$enlarge" -o large.ppm in.ppm
  for chain in "$sepia$crop" "$enlarge$crop" "$crop$reduce$sepia" "$reduce$crop"; do
    run 0 apply -c "$chain" -o whole.ppm large.ppm
    run 0 apply -c '' --rect 1,2,3,2 -o want.ppm whole.ppm
    run 0 apply -c "$chain" --rect 1,2,3,2 --bands 1 -o part.ppm large.ppm
    cmp -s want.ppm part.ppm || fail "$chain gives another rectangle"
  done
}

test_fit_and_size() {
  # Four by two, the left half black, the right half white.
  printf 'P6\n4 2\n255\n\000\000\000\000\000\000\377\377\377\377\377\377\000\000\000\000\000\000\377\377\377\377\377\377' >in.ppm
  run 0 apply -c '' --fit 2 -o fit.ppm in.ppm
  file_is fit.ppm 'P6\n2 1\n255\n\000\000\000\377\377\377'
  run 0 apply -c '' --fit 100 --zoom 0.5 --target 800x400 -o large.ppm in.ppm
  cmp -s in.ppm large.ppm || fail 'a picture that fits is changed'
  # The target behind a border is that of the full picture: the box may be filled in a preview too.
  { printf 'P6\n1000 1000\n255\n'; head -c 3000000 /dev/zero; } >square.ppm
  frame='ZNFilter.Passpartout.1(Borderhori=100, Borderverti=100)ZNFilter.Scale.1(MaximumHorizontalSize=1200, MaximumVerticalSize=1200)'
  for fit in 1000 500; do
    run 0 apply -c "$frame" --fit $fit -o framed.ppm square.ppm
    [ "$(sed -n 2p framed.ppm)" = '1200 1200' ] || fail "another size behind a border with --fit $fit"
  done
  # Borders follow the zoom, a reduction the full size that is told.
  border='ZNFilter.Passpartout.1(Borderhori=10, Borderverti=20)'
  reduce='ZNFilter.Scale.1(MaximumHorizontalSize=300,MaximumVerticalSize=200,KeepProportions=2)'
  { printf 'P6\n100 100\n255\n'; head -c 30000 /dev/zero; } >square.ppm
  prints 6000x4000 size -c 'ZNFilter.Sepia.1(Sepia=050)' 6000x4000
  prints 67x54 size -c 'ZNFilter.Offset.1(OffsetX=5)ZNFilter.Rotate.1(Angle=7.5)' 60x40
  prints 110x120 size -c "$border" --zoom 0.5 100x100
  prints 90x60 size -c "$reduce" 90x60
  prints 300x200 size -c "$reduce" --target 900x600 90x60
  prints 'out.ppm  120x140' apply -c "$border" -o out.ppm square.ppm
  prints 'out.ppm  110x120' apply -c "$border" --zoom 0.5 -o out.ppm square.ppm
  prints 'out.ppm  60x70' apply -c "$border" --fit 50 -o out.ppm square.ppm
  prints 'out.ppm  70x90' apply -c "$border" --fit 50 --zoom 1 -o out.ppm square.ppm
  prints 'out.ppm  200x200' apply -c "$reduce" --target 900x900 -o out.ppm square.ppm
  run 2 size -c '' 6000
  error_is 'fxbox: SIZE: "6000" is no size such as 640x480'
}

# --- apply: files

test_several_inputs() {
  picture a.ppm
  picture b.JPG # a name that says another format than the bytes: the result follows the name
  picture c.xyz
  printf 'P6\n3 2\n255\n\000' >broken.ppm
  printf 'hello' >text.png
  run 1 apply -c '' -o out/deep a.ppm broken.ppm b.JPG missing.ppm text.png c.xyz
  printf '%s\n' 'out/deep/a.ppm  3x2' 'out/deep/b.JPG  3x2' 'out/deep/c.png  3x2' >expected
  sed 's|\\|/|g' stdout | cmp -s - expected || fail 'expected the three results'
  printf '%s\n' 'fxbox: broken.ppm: the file ends in the middle of the picture' \
    'fxbox: missing.ppm: the file cannot be opened: No such file or directory' \
    'fxbox: text.png: not a picture file of a known kind (JPEG, PNG, TIFF, BMP, PNM, PAM, WebP, JPEG XL, AVIF, HEIF, camera raw)' >expected
  cmp -s stderr expected || fail 'expected three errors'
  [ "$(ls out/deep | tr '\n' ' ')" = 'a.ppm b.JPG c.png ' ] || fail 'other files in the folder'
  [ "$(od -An -tx1 -N2 out/deep/b.JPG | tr -d ' ')" = ffd8 ] || fail 'b.JPG is no JPEG'
  cmp -s a.ppm out/deep/a.ppm || fail 'a.ppm was changed'
  no_leftovers
}

test_original_is_kept() {
  picture in.ppm
  picture other.ppm
  cp in.ppm before
  run 2 apply -c 'ZNFilter.Invert.1(Inversity=100)' -o . in.ppm other.ppm
  sed -i 's|\\|/|g' stderr
  error_is 'fxbox: ./in.ppm: the result of in.ppm would take the place of its input (--in-place does so)'
  cmp -s in.ppm before || fail 'the original was changed'
  run 0 apply -c 'ZNFilter.Invert.1(Inversity=100)' --in-place in.ppm other.ppm
  for name in in other; do
    file_is $name.ppm 'P6\n3 2\n255\n\377\377\377\000\000\000\000\377\377\377\000\377\377\377\000\233\151\067'
  done
  no_leftovers
}

# A batch that was broken off goes on where it ended.
test_skip_existing() {
  for name in a b c; do picture $name.ppm; done
  mkdir out
  echo finished >out/b.ppm
  run 0 apply -c '' --skip-existing -o out a.ppm b.ppm c.ppm
  tr '\\' / <stdout >names
  printf '%s\n' 'out/a.ppm  3x2' 'out/b.ppm  is there, skipped' 'out/c.ppm  3x2' >expected
  cmp -s names expected || fail 'expected three lines'
  [ "$(cat out/b.ppm)" = finished ] || fail 'a finished output was changed'
  run 0 apply -c '' --skip-existing --json-lines -o out a.ppm
  grep -q '"status":"skipped".*"sha256":"'"$(sha256sum <a.ppm | cut -d ' ' -f 1)" stdout || fail 'another report'
}

test_files_from() {
  mkdir in
  for name in a 'b c' d; do picture "in/$name.ppm"; done
  printf '%s\r\n' in/a.ppm '' 'in/b c.ppm' in/missing.ppm >list
  run 1 apply -c '' --files-from list -o out
  printf '%s\n' 'out/a.ppm  3x2' 'out/b c.ppm  3x2' >expected
  tr '\\' / <stdout | cmp -s - expected || fail 'expected two results'
  error_is 'fxbox: in/missing.ppm: the file cannot be opened: No such file or directory'
  # A list of one is a list: its result goes into a folder.
  printf 'in/d.ppm\0' >list
  run 0 apply -c '' --files-from list --null -o other
  cmp -s in/d.ppm other/d.ppm || fail 'the result is missing'
  # From standard input; what cannot be is refused by itself.
  printf '%s\n' in/a.ppm ./in/a.ppm - 'in/b c.ppm' >list
  $prefix apply -c '' --files-from - -j 1 -o third <list >stdout 2>stderr
  [ $? = 1 ] || fail 'expected the status 1'
  printf '%s\n' 'third/a.ppm  3x2' 'third/b c.ppm  3x2' >expected
  tr '\\' / <stdout | tr -d '\r' | cmp -s - expected || fail 'expected two results'
  grep -q 'would overwrite the result' stderr || fail 'the same picture twice'
  grep -q 'standard input cannot be the list and a picture' stderr || fail 'the picture from the list'
  # A list that cannot be planned is refused as a whole.
  printf '%s\n' in/a.ppm ./in/a.ppm >list
  run 2 apply -c '' --files-from list -o fourth
  is_missing fourth
  run 1 apply -c '' --files-from nolist -o fourth
  error_starts 'fxbox: nolist: the list cannot be opened: '
  run 2 apply -c '' --files-from list in/a.ppm
  error_is 'fxbox: give the inputs or --files-from, not both'
  run 2 apply -c ''
  error_is 'fxbox: the inputs are missing: name them, or give --files-from'
}

# Side by side or one after the other: the same files, told in the same order.
test_jobs() {
  mkdir in
  for name in 1 2 3 4 5 6 7 8 9; do picture in/$name.ppm; done
  printf broken >in/5.ppm
  chain='ZNFilter.AdoptColor.1(ColorRed=200,Intensity=80)'
  run 1 apply -j 1 -c "$chain" -o one in/*.ppm
  sed 's/one/out/' stdout >lines
  cp stderr errors
  for jobs in 2 5 100; do
    run 1 apply -j $jobs -c "$chain" -o out in/*.ppm
    cmp -s stdout lines || fail "$jobs side by side: other lines"
    cmp -s stderr errors || fail "$jobs side by side: other errors"
    diff -r one out >&2 || fail "$jobs side by side: other results"
    rm -r out
  done
}

# Rows that go through one by one give the same files as a picture that is pulled as a whole, which
# --bands does when a band holds all of it.
test_streams() {
  { printf 'P6\n211 307\n255\n'; head -c 194331 /dev/urandom; } >noise.ppm
  run 0 apply -c '' --quality 90 -o in.jpg noise.ppm
  for kind in png tif ppm bmp; do run 0 apply -c '' -o in.$kind noise.ppm; done
  run 0 apply -c 'ZNFilter.SoftFrame.1(FrameWidth=40)' -o masked.png noise.ppm
  sepia='ZNFilter.Sepia.1(Sepia=050)'
  crop='ZNFilter.Crop.1(LeftMargin=0.25,RightMargin=0.75,BottomMargin=0.3,FixRatioOn=0)'
  unsharp='ZNFilter.UnsharpMask.1(Percent=200,Radius=3.0,OnLuminanceOnly=0)'
  blur='ZNFilter.BlurGauss.1(Percent=100,Radius=9.0)'
  # All kinds of results by one chain, one kind by the others.
  every="$sepia$unsharp$crop"
  for chain in '' "$sepia" "$crop$sepia" "$every" "$blur$unsharp" \
    'ZNFilter.Transparency.1(Transparency=050)' 'ZNFilter.Shadow.1(ShadowDensity=60,Size=5)' \
    "${unsharp}ZNFilter.Sharpen.1(Sharpness=050)$sepia" 'ZNFilter.InvertMask.1()' \
    "${sepia}ZNFilter.Tonwert.1(AutoTone=1,AutoContrast=1)"; do
    kinds=pam
    [ "$chain" != "$every" ] || kinds='jpg png tif ppm pam'
    for input in in.jpg in.png in.tif in.ppm in.bmp masked.png; do
      for kind in $kinds; do
        run 0 apply -c "$chain" --bands 100000 -o whole.$kind $input
        run 0 apply -c "$chain" -o rows.$kind $input
        cmp -s whole.$kind rows.$kind || fail "$input to $kind by \"$chain\": other bytes"
      done
    done
    run 0 apply -c "$chain" --bands 100000 --rect 20,30,100,150 -o whole.png in.jpg
    run 0 apply -c "$chain" --rect 20,30,100,150 -o rows.png in.jpg
    cmp -s whole.png rows.png || fail "a part by \"$chain\": other bytes"
  done
  # Cut off in the middle.
  for kind in jpg png tif ppm; do
    head -c 30000 in.$kind >cut.$kind
    cp cut.$kind before
    run 1 apply -c "$sepia" --in-place cut.$kind
    error_starts "fxbox: cut.$kind: "
    cmp -s cut.$kind before || fail "the damaged cut.$kind was changed"
  done
  for threads in 1 2 7; do
    run 0 apply -c "$unsharp$sepia" --threads $threads -o threads-$threads.ppm in.png
    cmp -s threads-1.ppm threads-$threads.ppm || fail "other bytes with $threads threads"
  done
  no_leftovers
}

test_compressions() {
  { printf 'P6\n200 100\n255\n'; head -c 60000 /dev/zero; } >in.ppm
  before=$(wc -c <in.ppm)
  for kind in none packbits lzw deflate; do
    run 0 apply -c '' --compression $kind -o $kind.tif in.ppm
    size=$(wc -c <$kind.tif)
    [ $kind = none ] || [ $size -lt $before ] || fail "$kind compresses less than the one before"
    before=$size
  done
  run 0 apply -c '' -o default.tif in.ppm
  cmp -s default.tif none.tif || fail 'the default is another'
  run 0 apply -c '' --png-level 0 -o 0.png in.ppm
  run 0 apply -c '' --png-level 9 -o 9.png in.ppm
  [ "$(wc -c <0.png)" -gt 60000 ] && [ "$(wc -c <9.png)" -lt 1000 ] || fail 'the levels make no difference'
  run 2 apply -c '' --compression zip -o x.tif in.ppm
}

# Formats of modules; without them all others work, and the error says what is missing.
test_module_formats() {
  picture in.ppm
  case "$prefix" in
    *.exe) missing='Fxbox4-webp.dll: ' ;;
    *) missing='libfxbox4-webp.so.4 of the package libfxbox4-formats: ' ;;
  esac
  run 0 apply -c '' --quality 100 -o out.webp in.ppm
  run 0 apply -c '' -o back.ppm out.webp
  cmp -s in.ppm back.ppm || fail 'WebP changes the picture'
  FXBOX_MODULES=$PWD/nowhere
  export FXBOX_MODULES
  run 1 apply -c '' -o back2.ppm out.webp
  error_starts "fxbox: out.webp: WebP pictures need the module $missing"
  run 1 apply -c '' -o out2.webp in.ppm
  error_starts "fxbox: out2.webp: WebP pictures need the module $missing"
  is_missing out2.webp
  run 0 apply -c '' -o out.png in.ppm
}

# Of each format that is not written everywhere there is a sample, which gives the same bytes on
# every system.
test_samples() {
  samples=$(dirname "$0")/../imageio/data
  cp "$samples/sample.heic" "$samples/sample.dng" .
  run 0 apply -c '' -o heic.pam sample.heic
  sum_is heic.pam 0a1b220d98f129bae6b0a5fe3fc8dbd4e030c51e19f86f7543e433a5cec13ef1
  run 0 apply -c '' --quiet -o dng.pam sample.dng
  sum_is dng.pam 32e5d51003ceb7366a3e4882d36e1ab5ecba70c6706678a95e1573a56d6c1d76
  case "$prefix" in *.exe)
    run 1 apply -c '' -o out.heic heic.pam
    error_is 'fxbox: out.heic: HEIF pictures can be read here, but not written'
    is_missing out.heic
  esac
}

# Names come through a pipe that stays open: each is done at once. An interrupt ends the wait.
test_list_as_it_comes() {
  picture a.ppm
  picture b.ppm
  mkfifo names
  env --default-signal=INT $prefix apply -c '' --files-from - --json-lines -o out <names >stdout 2>stderr &
  program=$!
  exec 3>names
  for name in a b; do
    echo $name.ppm >&3
    wait_for "grep -q $name.ppm stdout" "$name.ppm is not done"
  done
  ends_by INT 130
  exec 3>&-
}

test_refused_outputs() {
  picture in.ppm
  mkdir other
  picture other/in.ppm
  run 2 apply -c '' -o out in.ppm other/in.ppm
  sed -i 's|\\|/|g' stderr
  error_is 'fxbox: other/in.ppm: would overwrite the result of in.ppm in out/in.ppm'
  is_missing out
  run 2 apply -c '' -o out.gif in.ppm
  error_starts 'fxbox: out.gif: the name says no kind of picture that can be written'
  picture file
  run 2 apply -c '' -o file in.ppm other/in.ppm
  error_is 'fxbox: file: is no folder, and there are several inputs'
  run 1 apply -c '' -o file/out.ppm in.ppm
  error_starts 'fxbox: file/out.ppm: '
  run 1 apply -c '' -o missing/out.ppm in.ppm
  error_starts 'fxbox: missing/out.ppm: '
  is_missing missing
  run 1 apply -c '' -o file/deep/ in.ppm
  error_starts 'fxbox: file/deep: the folder cannot be made: '
  no_leftovers
}

# The superuser may write anywhere, so that another user runs the program for him: one that may come
# into the folder and read the picture.
test_unwritable_folder() {
  picture in.ppm
  mkdir locked
  chmod a-w locked
  if [ "$(id -u)" = 0 ]; then
    chmod a+rx . locked
    prefix="setpriv --reuid=65534 --regid=65534 --clear-groups $prefix"
    $prefix --version >stdout 2>stderr || exit 77 # where that user may not run it at its place
  fi
  run 1 apply -c '' -o locked/out.ppm in.ppm
  error_starts 'fxbox: locked/out.ppm: '
  is_missing locked/out.ppm
  no_leftovers
}

# The disk that is always full.
test_full_disk() {
  [ -c /dev/full ] || exit 77
  picture in.ppm
  ln -s /dev/full out.ppm
  run 1 apply -c '' -o out.ppm in.ppm
  error_starts 'fxbox: out.ppm: '
}

# --- apply: standard input and output, pipes

test_standard_streams() {
  picture in.ppm
  run 0 apply -c 'ZNFilter.Invert.1(Inversity=100)' -o want.ppm in.ppm
  $prefix apply -c 'ZNFilter.Invert.1(Inversity=100)' - <in.ppm >out.ppm 2>stderr || fail 'no result'
  cmp -s want.ppm out.ppm || fail 'another picture by standard input and output'
  $prefix apply -c '' --fit 2 --format tif -o - in.ppm >out.tif 2>stderr || fail 'no result'
  run 0 apply -c '' -o out.pam out.tif
  printf 'ZNFilter.Invert.1(Inversity=100)' | $prefix apply -f - -o out.ppm in.ppm >stdout 2>stderr || fail 'no chain'
  cmp -s want.ppm out.ppm || fail 'another picture by a chain from standard input'
  [ ! -s stderr ] || fail 'something was said'
  cat in.ppm | $prefix apply -c '' --format png -o folder/ - >stdout 2>stderr || fail 'no result'
  [ -s folder/stdin.png ] || fail 'no picture in the folder'
  printf 'nothing' | $prefix apply -c '' - >stdout 2>stderr && fail 'no error'
  error_is 'fxbox: standard input: not a picture file of a known kind (JPEG, PNG, TIFF, BMP, PNM, PAM, WebP, JPEG XL, AVIF, HEIF, camera raw)'
  output_is ''
  refuse 'standard input cannot be the chain and a picture' apply -f - -o out.ppm -
  refuse 'standard output cannot be the report and a picture' apply -c '' --json -o - in.ppm
  refuse '--limit: "much" is no number of pixels such as 500M' apply -c '' --limit much -o out.ppm in.ppm
}

# A reader that leaves, and one that takes all; a picture that comes through a pipe.
test_pipes() {
  picture in.ppm
  mkfifo pipe.ppm source.ppm
  { printf 'P6\n1000 500\n255\n'; head -c 1500000 /dev/zero; } >large.ppm
  cat pipe.ppm >out.ppm &
  run 0 apply -c '' -o pipe.ppm large.ppm
  wait $!
  cmp -s large.ppm out.ppm || fail 'another picture through the pipe'
  cat large.ppm >source.ppm &
  prints 'small.ppm  10x5' apply -c '' --fit 10 -o small.ppm source.ppm
  { $prefix apply -c '' -o - large.ppm 2>stderr; echo $? >status; } | head -c 10 >out.ppm
  [ "$(cat status)" = 1 ] || fail "status $(cat status)"
  error_is 'fxbox: standard output: Broken pipe'
  $prefix filters >/dev/full 2>stderr && fail 'a full disk is no success'
  error_is 'fxbox: standard output: cannot be written'
  run 1 apply -c '' -o out.ppm /dev/zero
  error_is 'fxbox: /dev/zero: not a picture file of a known kind (JPEG, PNG, TIFF, BMP, PNM, PAM, WebP, JPEG XL, AVIF, HEIF, camera raw)'
}

# Causes in the system's words.
test_causes() {
  picture in.ppm
  mkdir folder.ppm
  run 1 apply -c '' -o out.ppm folder.ppm
  error_is 'fxbox: folder.ppm: it is a folder'
  run 2 text -f folder.ppm
  error_is 'fxbox: folder.ppm: it is a folder'
  { printf 'P6\n1000 500\n255\n'; head -c 1500000 /dev/zero; } >large.ppm
  (
    trap '' XFSZ
    ulimit -f 100
    run 1 apply -c '' -o out.ppm large.ppm
  ) || exit 1
  error_is 'fxbox: out.ppm: the file cannot be written: File too large'
  no_leftovers
  printf 'P6\n30000 20000\n255\n' >huge.ppm
  run 1 apply -c '' -o out.ppm huge.ppm
  error_is 'fxbox: huge.ppm: the picture of 30000x20000 is beyond the limit (--limit allows 500 million pixels; a larger number allows more)'
  run 1 apply -c '' --limit 5 -o out.ppm in.ppm
  error_starts 'fxbox: in.ppm: the picture of 3x2 is beyond the limit (--limit allows 5 pixels'
  run 0 apply -c '' --limit 6 -o out.ppm in.ppm
  chain='ZNFilter.Scale100.1(HorizontalProz=20000,VerticalProz=20000)ZNFilter.Scale.1()'
  run 1 apply -c "$chain" --limit 100k -o out.ppm in.ppm
  error_is 'fxbox: in.ppm: the picture behind ZNFilter.Scale100.1 of 600x400 is beyond the limit (--limit allows 100000 pixels; a larger number allows more)'
}

# --- wrong use

# refuse LINE ARGUMENT...: status 2, this line, and no output.
refuse() {
  line=$1
  shift
  run 2 "$@"
  error_is "fxbox: $line"
  output_is ''
}

test_wrong_chains() {
  picture in.ppm
  for command in text 'apply -o out.ppm in.ppm' 'size 4x4'; do
    refuse 'chain item 2 (ZNFilter.Sepia.1): unknown key "Sepai" at character 45, did you mean "Sepia"?' \
      $command -c 'ZNFilter.Sepia.1(Sepia=50) ZNFilter.Sepia.1(Sepai=10)'
  done
  printf 'ZNFilter.Sepia.1(Sepia=050)\nZNFilter.Invert.1(Inversity=much)\n' >chain
  refuse 'chain: chain item 2 (ZNFilter.Invert.1): "Inversity=much" at line 2, character 19 is not Key=whole number' \
    apply -f chain -o out.ppm in.ppm
  printf 'ZNFilter.Sepia.1(Sepia=050)\0' >chain
  refuse 'chain: this is no chain in UTF-8, it has zero bytes' apply -f chain -o out.ppm in.ppm
  is_missing out.ppm
  printf '\357\273\277// a remark\nZNFilter.Sepia.1(Sepia=050)' >chain
  run 0 text -f chain
}

test_wrong_use() {
  picture in.ppm
  refuse 'the chain is missing: give it with -c or -f' apply -o out.ppm in.ppm
  printf '' >chain
  refuse 'give the chain with -c or with -f, not both' apply -c '' -f chain -o out.ppm in.ppm
  refuse 'nowhere: the file cannot be opened: No such file or directory' apply -f nowhere -o out.ppm in.ppm
  refuse '--fit: "big" is no size such as 640x480' apply -c '' --fit big -o out.ppm in.ppm
  refuse '--rect: "1,2,3" is no rectangle such as 0,0,640,480' apply -c '' --rect 1,2,3 -o out.ppm in.ppm
  refuse 'unknown filter "Nobody"' describe Nobody
  refuse 'unknown command "aply", did you mean "apply"? (fxbox --help tells more)' aply -c ''
  for arguments in '' nonsense 'apply -c x'; do
    run 2 $arguments
    error_starts 'fxbox: '
  done
  for command in 'box list' 'box tree' 'box check' 'box info a' 'box add a' 'box get a b' 'box note a b' \
    'box rename a b' 'box copy a b' 'picture pack' 'picture pack a' 'picture unpack' 'picture unpack a' \
    dialog describe pages register share 'share a' size text-key 'config get'; do
    run 2 $command
    grep -q ' is required (' stderr || fail "$command says another error"
  done
  for arguments in '--bands 0' '--quality 0' '--quality 101' '--zoom 0' '--zoom 10001' '--png-level 10' \
    '--jobs 0' '--jobs 1025' '--threads 0'; do
    run 2 apply -c '' $arguments -o out.ppm in.ppm
    error_starts "fxbox: ${arguments% *}: Value ${arguments#* } not in range "
  done
  is_missing out.ppm
}

# --- the other commands

# The settings in one file, with what others wrote into it.
test_config() {
  printf '; mine\r\n[Other]\r\nk=1\r\n' >Sennet.ini
  run 0 config set --file Sennet.ini --inf ZN Locations Filter 'Größe 50'
  run 0 config set --file Sennet.ini --inf ZN Locations Log x
  file_is Sennet.ini '; mine\r\n[Other]\r\nk=1\r\n[ZN_#_Locations]\r\nFilter=Gr\366\337e 50\r\nLog=x\r\n'
  prints 'Größe 50' config get --file Sennet.ini --inf ZN Locations Filter
  run 0 config delete --file Sennet.ini --inf ZN Locations Log
  run 0 config list --file Sennet.ini
  output_is '[Other]
k=1
[ZN_#_Locations]
Filter=Größe 50'
  run 1 config get --file Sennet.ini Locations None
  error_is 'fxbox: Locations None: there is no such setting'
  refuse '--file: "plain" is not named .ini' config list --file plain
  refuse '--as: "a,b" is not COMPANY,PRODUCT,VERSION,ID' config list --as a,b
  run 1 config get Locations Filter
  grep -q '^fxbox: .*Tesmar.inf: it is missing or names no product ZNGallery: copy the sample' stderr ||
    fail 'the error does not say what to do'
  cp "$docs/../resources/settings/Tesmar.inf" . # the current folder serves as well
  run 0 config set --file ./Sennet.ini Locations Filter x
  run 0 config list
}

# The settings in the registry.
test_config_registry() {
  product='--as FxboxTest,Program,1,FT'
  run 1 config get $product IniFilePath
  error_is 'fxbox: IniFilePath: there is no such setting'
  run 0 config set $product IniFilePath "$PWD"
  run 0 config set $product --user User 0007
  run 0 config set $product --user Section Key value
  prints value config get $product --user Section Key
  run 0 config list $product
  grep -q '^IniFilePath=' stdout || fail 'the key is not listed'
  grep -q '^\[FT_#_User0007_#_Section\]$' stdout || fail 'the section is not listed'
  run 0 config delete $product IniFilePath
  run 0 config delete $product --user User
  run 1 config delete $product IniFilePath
}

# Every run leaves its lines in the log, and the log can be looked at while it grows.
test_log() {
  run 0 log --path
  grep -q '/fxbo([0-9-]*)\.log$' stdout || grep -q '\\fxbo([0-9-]*)\.log$' stdout || fail 'no path'
  run 0 --version
  grep -q '^fxbox [0-9]*\.[0-9]*\.[0-9]*$' stdout || fail 'no version'
  run 0 log -n 2
  [ "$(wc -l <stdout)" -eq 2 ] || fail 'not two lines'
  run 0 log -n 100  # others may write to the same log
  grep -qi 'Starting Program/DLL ".*fxbox' stdout || fail 'no start line'
  run 1 log --program nobody
  error_starts 'fxbox: nobody: it has no log in '
  # The log of another program, longer than what is read at once; its last line is not whole yet.
  case "$prefix" in *.exe) return ;; esac
  log=$(dirname "$($prefix log --path)")/abcd'(2999-01-01).log'
  seq -f 'line %g of another program' 500 >lines
  { sed 's/$/\r/' lines; printf 'half a li'; } >"$log"
  for count in 0 1 3 200 499 500 501 9999; do
    run 0 log --program abcd.exe -n $count
    tail -n $count lines | cmp -s - stdout || fail "other lines than the last $count"
  done
  run 0 log --program abcd.exe
  [ "$(wc -l <stdout)" -eq 20 ] || fail 'not twenty lines'
  run 2 log -n -1
}

# A log that is followed shows lines of others, and no error when it is interrupted.
test_log_follow() {
  env --default-signal=INT $prefix log -n 0 --follow >followed 2>stderr &
  program=$!
  wait_for "$prefix --version >version; grep -q 'terminated correctly' followed" 'new lines are not shown'
  ends_by INT 130
}

# What the program shows as an example does what it says when the system's shell reads it.
test_examples() {
  picture in.ppm
  run 0 apply -c '' -o photo.jpg in.ppm
  for filter in Sepia Scale GradCurves Text; do
    run 0 describe ZNFilter.$filter.1
    example=$(grep '^  fxbox apply' stdout)
    [ -n "$example" ] || fail "no example of $filter"
    case "$prefix" in
      *.exe)
        printf '@"Z:%s"%s\r\n' "$(echo "${prefix##* }" | tr / '\\')" "${example#  fxbox}" >example.bat
        ${prefix% *} cmd /c example.bat >stdout 2>stderr </dev/null
        ;;
      *)
        printf '%s%s\n' "$prefix" "${example#  fxbox}" >example.sh
        sh example.sh >stdout 2>stderr </dev/null
        ;;
    esac || fail "the example of $filter fails"
    [ -s out.png ] || fail "the example of $filter writes nothing"
    rm out.png
  done
}

# The system's shell leaves wildcards to the programs.
test_wildcards() {
  for name in in1 in2 in10 other; do picture $name.ppm; done
  mkdir in3.ppm
  run 0 apply -c '' -o results/ 'in?.ppm'
  [ "$(ls results)" = "$(printf 'in1.ppm\nin2.ppm')" ] || fail 'other files than those of the name'
  run 0 apply -c '' --format png -o all/ '*.ppm'
  [ "$(ls all | wc -l)" -eq 4 ] || fail 'not all files'
  run 1 apply -c '' -o none/ 'no*.ppm'
  grep -qF 'no*.ppm' stderr || fail 'the name that nothing has is not told'
}

test_filters() {
  run 0 filters
  [ "$(grep -c '^ZNFilter\.' stdout)" -eq 46 ] || fail 'not 46 filters'
  run 0 filters --json
  ! grep -q '%d' stdout || fail 'a default text that apply does not take'
  grep -q '"progId": "ZNFilter.Sepia.1"' stdout || fail 'no sepia filter'
  for preview in RGBColor:exact BlurGauss:scaled Tonwert:measured Sharpen:'100 %'; do
    run 0 describe ZNFilter.${preview%%:*}.1 --json
    grep -q "\"preview\": \"${preview#*:}\"" stdout || fail "another preview than $preview"
  done
  run 0 describe ZNFilter.Sepia.1 --json
  grep -q '"example": "ZNFilter.Sepia.1(Sepia=075)"' stdout || fail 'no example'
}

# What commands print, as listings.txt has it: a line "$ ARGUMENTS", and then all that comes.
test_listings() {
  sed -n 's/^\$ //p' "$docs/../tests/program/listings.txt" >commands
  while IFS= read -r command; do
    printf '$ %s\n' "$command"
    eval "$prefix $command" 2>&1 </dev/null || echo "status $?"
  done <commands >printed
  diff "$docs/../tests/program/listings.txt" printed >&2 || fail 'other listings'
}

test_any_text() {
  text=$(printf '50 %% (Gr\303\266\303\237e), a=b')
  coded='50%20%25%20%28Gr%C3%B6%C3%9Fe%29%2C%20a%3Db'
  run 0 text -c 'ZNFilter.Sepia.1(Sepia=050)ZNFilter.Text.1(Size=040)' --text "$text"
  grep -q "^ZNFilter.Sepia.1(Sepia=050)ZNFilter.Text.1(.*Size=040.*,Text=$coded)\$" stdout || fail 'another chain'
  # In the place of what is there; the second text goes to the next filter, past one with a picture.
  picture sign.ppm
  chain='ZNFilter.Text.1(Text=old,Size=040)ZNFilter.WaterSign.1(Picture=sign.ppm)ZNFilter.WaterSign.1()'
  run 0 text -c "$chain" --text one --text two
  [ "$(grep -o 'Text=[^,)]*' stdout | tr '\n' ' ')" = 'Text=one Text= Text=two ' ] || fail 'other places'
  run 2 text -c 'ZNFilter.Text.1()' --text one --text two
  error_is 'fxbox: no filter of the chain writes the text "two": ZNFilter.Text.1() at its end would'
  run 2 apply in.ppm
  run 2 drag --read --text one </dev/null
  run 0 text -c '(ZNFilter.Nobody.1() unchecked, (ZNFilter.Text.1()' --lenient --text one
  grep -q 'Text=one' stdout || fail 'no text without the check'
  prints "Text=$coded%0Ax" text-key "$text" x
  prints 'Font=DejaVu%20Serif' text-key --key Font 'DejaVu Serif'
  # A file after the text is a picture; without a chain the text alone is one.
  { printf 'P6\n200 200\n255\n'; head -c 120000 /dev/zero; } >in.ppm
  run 0 apply --quiet --text H -o without.ppm in.ppm
  run 0 apply --quiet -c 'ZNFilter.Text.1(Text=H)' -o with.ppm in.ppm
  cmp -s with.ppm without.ppm || fail 'another picture than that of the chain'
  ! cmp -s in.ppm with.ppm || fail 'nothing is written'
}

test_text() {
  prints 'ZNFilter.RGBColor.1(Red=005, Green=000, Blue=-007)ZNFilter.Sepia.1(Sepia=050)' text -c 'ZNFilter.RGBColor.1(Red=5, Blue=-7) ZNFilter.Sepia.1(Sepia=50)'
  twice='ZNFilter.Sepia.1(Sepia=010)ZNFilter.Zero.1(Generic Filter Parameter)ZNFilter.Sepia.1(Sepia=020)'
  prints "$twice" text -c "$twice"
  prints 60x40 size -c 'ZNFilter.Rotate.1(Angle=90)ZNFilter.Crop.1()ZNFilter.Rotate.1(Angle=-90)' 60x40
  run 0 text -c 'ZNFilter.RGBColor.1(Red=5, Blue=-7) ZNFilter.Sepia.1(Sepia=50)'
  chain=$(cat stdout)
  prints "$chain" text --active -c "$chain"
}

# preset FILE: a first version whose red curve takes all levels to 200.
preset() {
  printf 'Gradation, Version 1\n' >"$1"
  for ends in '  0,   0 255, 255' '  0, 200 255, 200' '  0,   0 255, 255' '  0,   0 255, 255'; do
    printf 'Anzahl=  2\nSelektierter=  1\n#  1 (x, y)=%s\n#  2 (x, y)=%s\n' \
      "$(echo "$ends" | cut -c1-8)" "$(echo "$ends" | cut -c10-)" >>"$1"
  done
}

# Not by `run`, which takes carriage returns away.
test_drag() {
  $prefix drag 'ZNFilter.Sepia.1(Sepia=050)' --second "$(printf 'Gr\303\274n\nund mehr')" >dragged || fail 'status'
  file_is dragged '##KVVeltrane_DND_FILTERCHAIN_IA##ZNFilter.Sepia.1(Sepia=050)&&Gr\374n\nund mehr\r\n##KVVeltrane_DND_FILTERCHAIN_IA_END##'
  { printf 'A mail.\r\n> '; cat dragged; printf '\r\nEnd\r\n'; } >mail
  prints "$(printf 'ZNFilter.Sepia.1(Sepia=050)\nGr\303\274n\nund mehr')" drag --read <mail
  $prefix drag 'ZNFilter.Offset.1(OffsetX=003,OffsetY=000)' >dragged || fail 'status'
  file_is dragged '##KVVeltrane_DND_FILTERCHAIN##ZNFilter.Offset.1(OffsetX=003,OffsetY=000)##KVVeltrane_DND_FILTERCHAIN_END##'
  prints 'ZNFilter.Offset.1(OffsetX=003,OffsetY=000)' drag --read <dragged
  printf 'nothing' | run 1 drag --read
  run 1 drag --read </dev/null
  error_is 'fxbox: standard input: there is no pair of markers in it'
  run 2 drag 'ZNFilter.Nothing.1(A=1)'
  run 2 drag --lenient 'A&&B(x)'
  error_is 'fxbox: a chain text that holds "&&" or a marker cannot be dragged'
  run 2 drag 'ZNFilter.Sepia.1(Sepia=050)' --second '##KVVeltrane_DND_FILTERCHAIN##'
  run 2 drag 'ZNFilter.Sepia.1(Sepia=050)' --read
  run 2 drag
}

test_curve() {
  picture in.ppm
  preset old.fp2
  run 0 apply -c 'ZNFilter.GradCurves.1( @old.fp2 )' -o out.ppm in.ppm
  file_is out.ppm 'P6\n3 2\n255\n\310\000\000\310\377\377\310\000\000\310\377\000\310\000\377\310\226\310'
  prints '' curve old.fp2 -o new.fp2
  run 0 curve new.fp2
  sed '$d' stdout >curves
  printf 'new.fp2: gradation, version 2, splines\n  luminance: (0, 0) (255, 255)\n  red: (0, 200) (255, 200)\n' >wanted
  printf '  green: (0, 0) (255, 255)\n  blue: (0, 0) (255, 255)\n' >>wanted
  cmp -s curves wanted || fail 'another description of new.fp2'
  run 0 apply -c "ZNFilter.GradCurves.1($(tail -n 1 stdout))" -o again.ppm in.ppm
  cmp -s out.ppm again.ppm || fail 'the text of the preset gives another picture'
  $prefix curve - -o - <old.fp2 >piped.fp2 || fail 'no preset through standard input and output'
  cmp -s piped.fp2 new.fp2 || fail 'another preset through standard input and output'
  printf 'nothing' >nothing
  run 1 curve - <nothing
  error_starts 'fxbox: standard input: no preset of the gradation filter: line 1'

  head -c 100 old.fp2 >cut.fp2
  run 1 curve cut.fp2 -o cut.fp2
  error_is 'fxbox: cut.fp2: no preset of the gradation filter: line 6: the file ends too early'
  run 2 apply -c 'ZNFilter.GradCurves.1(@cut.fp2)' -o none.ppm in.ppm
  error_is 'fxbox: cut.fp2: no preset of the gradation filter: line 6: the file ends too early'
  run 1 curve missing.fp2
  error_is 'fxbox: missing.fp2: the preset cannot be read'
  run 2 curve
  run 2 curve old.fp2 --list
  run 1 curve --list
  error_is 'fxbox: the settings name no folder of presets'
  is_missing none.ppm
}

test_register() {
  run 1 register missing.so
  error_is 'fxbox: missing.so: there is no such file'
  printf 'no module' >broken.so
  run 1 register broken.so
  error_starts 'fxbox: broken.so: '
  # The library itself is such a module. Its classes are not listed twice then.
  run 0 register "${FXBOX_LIBRARY:?}"
  registered=$(find config -name '.value' 2>/dev/null | wc -l)
  case "$prefix" in *.exe) registered=47 ;; esac # there the registry is none of files
  [ "$registered" -gt 46 ] || fail 'nothing is registered'
  run 0 filters
  [ "$(grep -c '^ZNFilter\.' stdout)" -eq 46 ] || fail 'not 46 filters'
  run 0 unregister "$FXBOX_LIBRARY"
  [ -z "$(grep -rl ZNFilter config 2>/dev/null)" ] || fail 'something stays registered'
  run 1 unregister missing.so
  error_is 'fxbox: missing.so: there is no such file, and none of its classes is registered'
}

# A module that was deleted before it was taken back.
test_unregister_gone() {
  cp "${FXBOX_LIBRARY:?}" copy.so
  run 0 register "$FXBOX_LIBRARY"
  sed -i "s|$(readlink -f "$FXBOX_LIBRARY")|$PWD/copy.so|" $(grep -rl "$(readlink -f "$FXBOX_LIBRARY")" config)
  rm copy.so
  run 0 unregister copy.so
  [ -z "$(grep -rl 'copy.so\|ZNFilter' config 2>/dev/null)" ] || fail 'something stays registered'
}

# Names beyond the code page go through unharmed.
test_file_names() {
  name='Gr\303\274n \316\261\316\262'
  name=$(printf "$name")
  picture "$name.ppm"
  prints "$name 2.ppm  3x2" apply -c '' -o "$name 2.ppm" "$name.ppm"
  cmp -s "$name.ppm" "$name 2.ppm" || fail 'the result is missing'
  run 1 apply -c '' -o x.ppm "$name.not"
  error_is "fxbox: $name.not: the file cannot be opened: No such file or directory"
}

# --- streams and shared pictures

test_picture_stream() {
  head='P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n'
  printf "$head"'\001\002\003\377\011\012\013\000' >in.pam
  run 0 picture pack in.pam -o out.stream --values 1,-2,3,4
  # 0, and 36 bytes with two bitmaps: 40 and a row of 8, 40 and a row of 4.
  head -c 10 out.stream >start
  file_is start '\000\000\000\000\200\000\000\000\170\234'
  prints 'back.pam  2x1  values 1,-2,3,4' picture unpack out.stream -o back.pam
  cmp -s in.pam back.pam || fail 'the stream does not keep the picture'
  picture in.ppm
  run 0 picture pack in.ppm -o plain.stream
  prints 'back.png  3x2  values 0,0,3,3' picture unpack plain.stream -o back.png
  run 0 apply -c '' -o back.ppm back.png
  cmp -s in.ppm back.ppm || fail 'the stream does not keep a picture without alpha'

  head -c 60 out.stream >cut
  echo before >kept.png
  for file in cut in.ppm; do
    run 1 picture unpack $file -o kept.png
    error_is "fxbox: $file: is no serialised picture, or is damaged"
  done
  [ "$(cat kept.png)" = before ] || fail 'a failure touches the output'
  run 1 picture unpack missing -o kept.png
  error_is 'fxbox: missing: the file cannot be opened'
  for values in '' 1,2,3 1,2,3,4,5 1,2,3,x 1,2,3,99999999999; do
    run 2 picture pack in.ppm -o no.stream --values "$values"
  done
  run 2 picture unpack out.stream -o out.txt
  is_missing no.stream out.txt
  no_leftovers
}

test_share() {
  picture in.ppm
  id=fxbox-test-$$
  env --default-signal=INT $prefix share in.ppm --id $id >shared 2>share-errors &
  program=$!
  wait_for '[ -s shared ]' 'nothing is shared'
  [ "$(cat shared)" = "shared:$id  3x2" ] || fail 'expected the name of what is shared'
  run 0 apply -c '' -o out.ppm "shared:$id"
  cmp -s in.ppm out.ppm || fail 'another picture came out'
  prints 'small.ppm  1x1' apply -c '' --fit 1 -o small.ppm "shared:$id"
  prints "$id-fxbox.png  3x2" apply -c '' "shared:$id"
  run 1 share in.ppm --id $id
  error_is "fxbox: shared:$id: somebody shares a picture under this id"
  run 2 apply -c '' --in-place "shared:$id"
  mv share-errors stderr
  ends_by INT 0
  run 1 apply -c '' -o gone.ppm "shared:$id"
  error_is "fxbox: shared:$id: nobody shares a picture under this id"
  run 2 apply -c '' -o gone.ppm shared:
  run 1 share missing.ppm --id $id
  is_missing gone.ppm
}

# A dialog begins with the text that is given and prints what it makes of it. Where no window manager
# runs, keys go to the window under the mouse.
test_dialog() {
  cat >hands <<'END'
    $* dialog 'ZNFilter.Sepia.1(Sepia=050)' >printed 2>/dev/null &
    xdotool mousemove --window "$(timeout 60 xdotool search --sync --onlyvisible --pid $!)" 60 60
    until [ -s printed ]; do xdotool key Right; sleep 0.2; done
    xdotool key Escape
    wait $!
END
  timeout 100 "$docs/../scripts/with-display.sh" sh hands $prefix || fail 'the dialog does not end well'
  [ "$(head -n 1 printed)" = Sepia=051 ] || fail "printed: $(cat printed)"
}

# Noise takes the longest to compress. The signal comes while the output is being written.
test_interrupt() {
  mkdir out
  { printf 'P6\n4000 4000\n255\n'; head -c 48000000 /dev/urandom; } >in.ppm
  cp in.ppm second.ppm
  for bar in ' [1-9][0-9] %:-o in.png in.ppm' ' 0 %  1/2:-j 2 --rect 0,0,9,9 -o bars/ in.ppm second.ppm'; do
    script -qec "stty cols 60; $prefix apply -c '' ${bar#*:}" bar </dev/null >terminal
    grep -q "${bar%%:*}" bar || fail "the bar on the terminal never shows ${bar%%:*}"
  done
  # A shell without job control starts its background programs with the signal ignored.
  for signal in INT TERM; do
    env --default-signal=INT $prefix apply -c 'ZNFilter.Sepia.1(Sepia=050)' -o out/out.png in.ppm >stdout 2>stderr &
    program=$!
    wait_for "find out -name '.fxbox-*' -size +1k | grep -q ." 'the program does not come to writing'
    ends_by $signal 130
    [ -z "$(ls -A out)" ] || fail "left over: $(ls -A out)"
  done
}

# The peak of a run on 24 megapixels, in KiB: 64 MiB for point filters and for a filter that looks a
# few rows around, and the picture (3 + 1 bytes a pixel) with 48 MiB where it is held once.
test_memory() {
  measure=${FXBOX_MEASURE:?}
  { printf 'P6\n6000 4000\n255\n'; head -c 72000000 /dev/zero; } >in.ppm
  points='ZNFilter.RGBColor.1(Red=010)ZNFilter.Sepia.1(Sepia=050)ZNFilter.Invert.1(Inversity=010)'
  for kind in jpg png tif; do run 0 apply --quiet -c '' -o in.$kind in.ppm; done
  peak_is() {
    peak=$($measure $prefix apply --quiet -c "$2" -o out.$3 in.$3) || fail "$3: no result"
    echo "in.$3 to out.$3 by $2: $peak KiB of at most $1"
    [ "$peak" -le $1 ] || fail "$3: $peak KiB are more than $1"
  }
  for kind in ppm jpg png tif; do peak_is 65536 "$points" $kind; done
  peak_is 65536 'ZNFilter.UnsharpMask.1(Percent=120,Radius=2.7)' jpg
  peak_is $((6000 * 4000 * 4 / 1024 + 48 * 1024)) "$points"'ZNFilter.Histo.1(Intensity=050)' jpg
}

test_documents() {
  for document in filters:--markdown glossary:--glossary; do
    run 0 filters ${document#*:}
    cmp -s stdout "$docs/${document%:*}.md" ||
      fail "docs/${document%:*}.md is out of date: run make docs"
  done
}

"test_$case_name"
