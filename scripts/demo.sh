#!/bin/bash
# Applies a chain of filters to a photograph, in full size and as a small preview, into demo-out/.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

cd "$project"
fxbox=build/linux/program/fxbox
photo=resources/demo/rocket.jpg
[ -x "$fxbox" ] || die "$fxbox is missing: run make demo"

# A warm old print: a little more red and less blue, half of the colour, half of the sepia tone.
chain='ZNFilter.RGBColor.1(Red=010, Green=000, Blue=-10)
ZNFilter.BlackWhiteness.1(BlackWhiteNess=050)
ZNFilter.Sepia.1(Sepia=050)'
# The photograph's light as a print of two inks, dark blue and cream.
duo='ZNFilter.DuoColor.1(Intensity=080, ColorRed=020, ColorGreen=030, ColorBlue=090, Red2=255, Green2=240, Blue2=200)'
# A cream mat with round corners, lit at its edges, and its shadow on white paper.
framed='ZNFilter.Passpartout.1(Borderhori=024, Borderverti=024, Radius=030, Blue=225, Green=238, Red=244)
ZNFilter.Shadow.1(LightDirection=1350, LightIntensity=025, ShadowDensity=070, ShadowBlur=060, ShadowDistance=012)
ZNFilter.ImgBg.1(Blue=255, Green=255, Red=255)'
# A black mat of equal width on all sides, the picture's title on its lower edge, and a name across the
# picture, hardly seen.
titled="ZNFilter.WaterSign.1(Tile=1, Size=045, Angle=300, Opacity=018, Spacing=120, $("$fxbox" text-key "demo print"))
ZNFilter.Passpartout.1(Borderhori=060, Borderverti=060, Blue=018, Green=014, Red=012)
ZNFilter.Text.1(Size=042, PosX=500, PosY=052, Italic=1, Red=235, Green=225, Blue=200, $("$fxbox" text-key "Night launch · Größe XXL"))"

mkdir -p demo-out
printf '%s\n' "$chain" >demo-out/old-print.chain

say "A chain of three filters on $photo, full size as JPEG, then a preview of at most 240 pixels as PNG"
cat demo-out/old-print.chain
"$fxbox" apply --quiet -f demo-out/old-print.chain -o demo-out/old-print.jpg "$photo"
"$fxbox" apply --quiet -f demo-out/old-print.chain --fit 240 -o demo-out/old-print-preview.png "$photo"
say "Another chain, given on the command line"
echo "$duo"
"$fxbox" apply --quiet -c "$duo" -o demo-out/two-inks.png "$photo"
say "A frame with its shadow"
echo "$framed"
"$fxbox" apply --quiet -c "$framed" -o demo-out/framed.png "$photo"
say "A border with a title, and a watermark"
echo "$titled"
"$fxbox" apply --quiet -c "$titled" -o demo-out/titled.jpg "$photo"

say "Written:"
stat --format '      %n (%s bytes)' demo-out/*
