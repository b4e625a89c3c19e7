#!/bin/bash
# Writes the documents that the program makes from its class table, and for every filter a sample
# picture: the demo's photograph under the example of its entry.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

cd "$project"
fxbox=build/linux/program/fxbox
photo=resources/demo/rocket.jpg
[ -x "$fxbox" ] || die "$fxbox is missing: run make docs"

mkdir -p docs/samples
say "Writing docs/filters.md and docs/glossary.md"
"$fxbox" filters --markdown >docs/filters.md
"$fxbox" filters --glossary >docs/glossary.md
say "Drawing the samples"
# Small first, so that strengths which are meant in pixels show.
"$fxbox" apply --quiet -c 'ZNFilter.Scale.1(MaximumHorizontalSize=240, MaximumVerticalSize=240)' \
  -o docs/samples/photo.png "$photo"
"$fxbox" filters --examples | while read -r name chain; do
  "$fxbox" apply --quiet --quality 80 -c "$chain" -o "docs/samples/$name.jpg" docs/samples/photo.png
done
rm docs/samples/photo.png
