#!/bin/bash
# Builds the Debian packages into build/packages/: package-debian.sh
# They are built in build/debian, which stays for the next time.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

cd "$project"
out=build/packages
mkdir -p "$out"
rm -f "$out"/*.deb "$out"/*.buildinfo "$out"/*.changes
say "Building the Debian packages ($out)"
# No clean first: what is compiled already is not compiled again.
dpkg-buildpackage --build=binary --no-check-builddeps --no-sign --no-pre-clean >build/debian.log 2>&1 || {
  tail -40 build/debian.log >&2
  die "the Debian packages could not be built (build/debian.log)"
}
# They are put beside the tree.
version="$(dpkg-parsechangelog -S Version)"
for package in $(dh_listpackages); do
  file="../${package}_${version}_$(dpkg --print-architecture).deb"
  if [ -f "$file" ]; then mv "$file" "$out/"; fi
done
rm -f ../fxbox4_"$version"_*.{buildinfo,changes} ../*-dbgsym_"$version"_*.deb
say "Checking them with lintian"
lintian --fail-on error --allow-root "$out"/*.deb
ls "$out"/*.deb
