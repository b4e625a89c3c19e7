#!/bin/bash
# Builds the picture and text libraries for Windows, once, into the user's cache; --where tells the folder.
#
# They are Debian's own sources of libjpeg-turbo, libpng, libtiff, libwebp, LibRaw, libheif with
# libde265, Little CMS, FreeType, HarfBuzz and FriBidi, with Debian's patches, of the versions that are
# installed for this system, so that a file decodes, and a text is drawn, to the same bytes on both.
# zlib comes from its cross package. TIFF files compressed with LZMA, Zstandard, WebP, JBIG or LERC
# are the one difference: Debian has no cross packages of those libraries, so Windows reads none.
#
# Neither JPEG XL, which takes longer to build than all of these together, nor AVIF: the source of
# libavif is on no mirror. HEIF pictures are only read: the encoder is under the GPL.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

toolchain="$project/cmake/windows-toolchain.cmake"
crossRoot=/usr/x86_64-w64-mingw32

sourcePackages() {
  dpkg-query -W -f '${source:Package}=${source:Version}\n' libjpeg62-turbo-dev libpng-dev libtiff-dev \
    libwebp-dev libraw-dev libde265-dev libheif-dev liblcms2-dev libfreetype-dev libharfbuzz-dev \
    libfribidi-dev 2>/dev/null ||
    die "the native picture and text libraries are missing: run scripts/setup.sh windows"
}

crossPackages() {
  dpkg-query -W -f '${Package}=${Version}\n' libz-mingw-w64-dev g++-mingw-w64-x86-64-posix 2>/dev/null ||
    die "the cross compiler is missing: run scripts/setup.sh windows"
}

where() {
  local sources cross hash
  sources="$(sourcePackages)"
  cross="$(crossPackages)"
  hash="$(cat - "${BASH_SOURCE[0]}" <<<"$sources $cross" | sha256sum | cut -c1-16)"
  echo "$(cacheFolder)/windows-$hash"
}

# The machine's own package lists name no sources and stay untouched: a private set of lists is
# made from the same mirrors.
prepareSourceLists() {
  local release site component signedBy option
  local codename
  codename="$(. /etc/os-release && echo "$VERSION_CODENAME")"
  mkdir -p "$work/apt/lists/partial" "$work/apt/cache/archives/partial"
  apt-get indextargets --format '$(RELEASE) $(SITE) $(COMPONENT) $(SIGNED_BY)' 'Created-By: Packages' |
    while read -r release site component signedBy; do
      case "$release" in "$codename" | "$codename-updates" | "$codename-security") ;; *) continue ;; esac
      option=
      [[ "$signedBy" == /* ]] && option="[signed-by=$signedBy] "
      echo "deb-src $option$site $release $component"
    done | sort -u >"$work/apt/sources.list"
  [ -s "$work/apt/sources.list" ] || die "apt names no mirror of $codename"
  sourceApt=(-qq -o Dir::Etc::SourceList="$work/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State::Lists="$work/apt/lists" -o Dir::Cache="$work/apt/cache"
    -o APT::Sandbox::User="$(id -un)" -o Acquire::Retries=3)
  apt-get "${sourceApt[@]}" update || die "the lists of source packages could not be fetched"
}

# fetchSource PACKAGE=VERSION: unpacks it, patched, into $work/PACKAGE. A mirror drops a version as
# soon as a newer one is there; then another Debian revision of the same upstream version serves.
fetchSource() {
  local package="${1%%=*}" wanted="${1#*=}" version candidates
  candidates="$(apt-cache "${sourceApt[@]}" showsrc "$package" | sed -n 's/^Version: //p' | sort -Vur |
    grep -F -e "${wanted%-*}-" || true)"
  for version in $(grep -F -x -e "$wanted" <<<"$candidates" || true) $candidates; do
    if (cd "$work" && apt-get "${sourceApt[@]}" source --download-only "$package=$version") >"$work/$package.log" 2>&1; then
      [ "$version" = "$wanted" ] || say "  $package $wanted is on no mirror: taking $version"
      rm -rf "${work:?}/$package"
      dpkg-source --no-check -x "$work/${package}_${version#*:}.dsc" "$work/$package" >"$work/$package.log" 2>&1 && return
    fi
  done
  cat "$work/$package.log" >&2
  die "no source package of $package ${wanted%-*} could be fetched"
}

# build PACKAGE OPTION...: configures, builds and installs into $prefix.
build() {
  local package="$1"
  shift
  say "  building $package"
  {
    cmake -S "$work/$package" -B "$work/$package-build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DFXBOX_WINDOWS_LIBRARIES="$prefix" \
      -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR="$prefix/lib" -DBUILD_SHARED_LIBS=OFF "$@" &&
      cmake --build "$work/$package-build" &&
      cmake --install "$work/$package-build"
  } >"$work/$package.log" 2>&1 || {
    tail -40 "$work/$package.log" >&2
    die "$package could not be built"
  }
}

# compile PACKAGE COMPILER OPTION... FILE...: builds a package without its own build system, from
# its sources, as many at once as there are processors, and adds the objects to $prefix/lib/libPACKAGE.a.
compile() {
  local package="$1" option options=() sources=() objects="$work/$1-objects"
  shift
  for option in "$@"; do
    if [ -f "$option" ]; then sources+=("$option"); else options+=("$option"); fi
  done
  mkdir -p "$objects"
  printf '%s\0' "${sources[@]}" |
    xargs -0 -P "$(nproc)" -I{} bash -c '"$@" -o "$0/$(basename "${!#}").o"' "$objects" \
      "${options[@]}" -O2 -DNDEBUG -ffp-contract=off -w -c {} >"$work/$package.log" 2>&1 || {
    tail -40 "$work/$package.log" >&2
    die "$package could not be built"
  }
  x86_64-w64-mingw32-ar rcs "$prefix/lib/lib$package.a" "$objects"/*.o
}
cc=x86_64-w64-mingw32-gcc-posix
cxx=x86_64-w64-mingw32-g++-posix

buildLcms() {
  say "  building lcms2"
  compile lcms2 "$cc" "-I$work/lcms2/include" "$work"/lcms2/src/cms*.c
  cp "$work"/lcms2/include/lcms2*.h "$prefix/include/"
}

# It gets neither GLib nor ICU: its own Unicode tables serve.
buildHarfbuzz() {
  say "  building harfbuzz"
  compile harfbuzz "$cxx" -std=c++11 -fno-exceptions -fno-rtti -DHAVE_FREETYPE=1 \
    "-I$work/harfbuzz/src" "-I$prefix/include/freetype2" "$work/harfbuzz/src/harfbuzz.cc"
  mkdir -p "$prefix/include/harfbuzz"
  cp "$work"/harfbuzz/src/hb*.h "$prefix/include/harfbuzz/"
}

# FriBidi's archive holds the tables that its own build would generate.
buildFribidi() {
  say "  building fribidi"
  local lib="$work/fribidi/lib"
  sed -e 's/@PACKAGE@/fribidi/; s/@PACKAGE_NAME@/GNU FriBidi/; s/@FRIBIDI_VERSION@/0/; s/@PACKAGE_BUGREPORT@//' \
    -e 's/@FRIBIDI_[A-Z]*_VERSION@/0/; s/@SIZEOF_INT@/4/; s/@FRIBIDI_MSVC_BUILD_PLACEHOLDER@//' \
    "$lib/fribidi-config.h.in" >"$lib/fribidi-config.h"
  compile fribidi "$cc" -DSTDC_HEADERS=1 -DHAVE_STRINGIZE=1 -DHAVE_STRING_H=1 -DHAVE_STDLIB_H=1 "-I$lib" \
    "$lib"/fribidi{,-arabic,-bidi,-bidi-types,-brackets,-joining,-joining-types,-mirroring,-run,-shape,-deprecated}.c
  mkdir -p "$prefix/include/fribidi"
  cp "$lib"/fribidi*.h "$prefix/include/fribidi/"
}

# As Debian builds the kind for threads, with JPEG, for which it has lossy DNG files, and without
# profiles, for which nobody asks.
buildLibraw() {
  say "  building libraw"
  local sources
  mapfile -t sources < <(sed -n '/^lib_libraw_a_SOURCES/,/^$/p' "$work/libraw/Makefile.am" |
    grep -o 'src/[^ \\]*\.cpp' | sed "s,^,$work/libraw/,")
  compile raw "$cxx" -DLIBRAW_NODLL -DUSE_JPEG -DUSE_JPEG8 "-I$work/libraw" "-I$prefix/include" \
    "${sources[@]}"
  mkdir -p "$prefix/include/libraw"
  cp "$work"/libraw/libraw/*.h "$prefix/include/libraw/"
}

# The decoder of what most HEIF files hold, without its encoder.
buildLibde265() {
  say "  building libde265"
  local lib="$work/libde265/libde265" version
  version="$(sed -n 's/.*NUMERIC_VERSION \(0x[0-9a-f]*\).*/\1/p' "$work/libde265/CMakeLists.txt")"
  sed "s/@NUMERIC_VERSION@/$version/; s/@PACKAGE_VERSION@/${version#0x}/" "$lib/de265-version.h.in" \
    >"$lib/de265-version.h"
  rm "$lib/en265.cc"
  local compiler=("$cxx" -std=c++11 -DLIBDE265_STATIC_BUILD -DHAVE_MALLOC_H -DHAVE_SSE4_1
    "-I$work/libde265" "-I$lib")
  compile de265 "${compiler[@]}" "$lib"/*.cc "$lib/x86/sse.cc" "$work/libde265/extra/win32cond.c"
  compile de265 "${compiler[@]}" -msse4.1 "$lib"/x86/sse-{dct,motion}.cc
  mkdir -p "$prefix/include/libde265"
  cp "$lib"/de265{,-version}.h "$prefix/include/libde265/"
}

buildLibheif() {
  say "  building libheif"
  local lib="$work/libheif/libheif"
  rm "$lib"/*_fuzzer.cc "$lib"/plugins_*.cc "$lib/exif.cc"
  compile heif "$cxx" -std=c++11 -DHAVE_LIBDE265=1 -DLIBDE265_STATIC_BUILD \
    -DENABLE_MULTITHREADING_SUPPORT=1 -DENABLE_PARALLEL_TILE_DECODING=1 -DWITH_DEFLATE_HEADER_COMPRESSION=1 \
    "-I$work/libheif" "-I$lib" "-I$prefix/include" "$lib"/*.cc "$lib/plugins/heif_decoder_libde265.cc"
  mkdir -p "$prefix/include/libheif"
  cp "$lib"/heif{,_version,_plugin}.h "$prefix/include/libheif/"
}

buildAll() {
  prefix="$1"
  work="$(mktemp -d)"
  trap 'rm -rf "$work"' EXIT
  say "Building the picture and text libraries for Windows, once (about five minutes)"
  prepareSourceLists
  local package
  for package in $(sourcePackages); do
    fetchSource "$package"
  done

  # Only the static archive: beside an import library the linker's search would prefer that one.
  mkdir -p "$prefix/include" "$prefix/lib"
  cp "$crossRoot"/include/{zlib,zconf}.h "$prefix/include/"
  cp "$crossRoot/lib/libz.a" "$prefix/lib/"

  # As Debian configures it: version 6.2 of the interface, vector code, the default transforms.
  build libjpeg-turbo -DENABLE_SHARED=OFF -DENABLE_STATIC=ON -DWITH_TURBOJPEG=OFF -DWITH_JPEG7=OFF \
    -DWITH_JPEG8=OFF -DWITH_SIMD=ON -DREQUIRE_SIMD=ON
  build libpng1.6 -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF
  build tiff -Dzlib=ON -Djpeg=ON -Dlzma=OFF -Dzstd=OFF -Dwebp=OFF -Djbig=OFF -Dlerc=OFF \
    -Dlibdeflate=OFF -Dcxx=OFF -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF
  build libwebp -DWEBP_BUILD_{ANIM_UTILS,CWEBP,DWEBP,GIF2WEBP,IMG2WEBP,VWEBP,WEBPINFO,WEBPMUX,EXTRAS}=OFF

  # Without the libraries that only serve compressed font files and bitmaps in fonts.
  # Its own copy of zlib would meet the real one in one program.
  build freetype -DFT_REQUIRE_ZLIB=ON -DFT_DISABLE_{BZIP2,PNG,HARFBUZZ,BROTLI}=ON
  buildHarfbuzz & # one file, beside which others can be compiled
  local harfbuzz=$!
  buildFribidi
  buildLcms
  buildLibraw
  buildLibde265
  buildLibheif
  wait "$harfbuzz" || exit 1

  # Package files written by the builds name the folder's passing name; CMake's own modules serve.
  rm -rf "${prefix:?}"/lib/{pkgconfig,cmake,libpng} "${prefix:?}"/{bin,share,man}
  local library
  for library in libz libjpeg libpng libtiff libwebp libwebpmux libwebpdemux libraw \
    libde265 libheif liblcms2 libfreetype libharfbuzz libfribidi; do
    [ -f "$prefix/lib/$library.a" ] || die "the build left no $library.a"
  done
  local codec
  for codec in JPEG ZIP LZW PACKBITS CCITT; do
    grep -q "define ${codec}_SUPPORT 1" "$prefix/include/tiffconf.h" || die "libtiff was built without $codec"
  done
}

case "${1:-}" in
  --where) where ;;
  '') makeOnce "$(where)" buildAll ;;
  *) die "unknown argument: $1" ;;
esac
