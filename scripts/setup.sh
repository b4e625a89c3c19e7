#!/bin/bash
# Installs what is missing: setup.sh [native|tests|soak|windows|tools|arm64|peers|all]...
#   native   compilers and libraries that build and test the project on this machine
#   tests    what only tests need: a second compiler with its fuzzer, the formatter, broken sample
#            pictures, other readers of compound files
#   soak     what only the long runs need
#   windows  cross compiler, Wine, the picture libraries for Windows and the Wine prefix
#   package  what builds and checks packages and installers
#   tools    formatter and checker of sources, renderer of icons, converter of pictures
#   arm64    cross compiler for 64-bit ARM
#   peers    the libraries that the filters are compared with
#   all      native, tests and windows (the default)
# Does nothing, and asks for no rights, where everything is there already.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

native=(g++ cmake ninja-build pkg-config googletest libgtest-dev libgmock-dev libbenchmark-dev
  libcli11-dev nlohmann-json3-dev zlib1g-dev libjpeg62-turbo-dev libpng-dev libtiff-dev liblcms2-dev
  libgsf-1-dev
  libfreetype-dev libharfbuzz-dev libfribidi-dev libfontconfig-dev fonts-dejavu-core libgtk-4-dev
  libwebp-dev libjxl-dev libavif-dev libheif-dev libraw-dev)
tests=(clang clang-format libclang-rt-14-dev gdk-pixbuf-tests libgsf-bin python3-olefile
  xvfb xauth xclip xdotool adwaita-icon-theme parallel
  dbus at-spi2-core gir1.2-atspi-2.0 python3-gi
  pybind11-dev python3-dev python3-numpy mypy python3-jsonschema
  zsh fish groff-base desktop-file-utils appstream shared-mime-info libglib2.0-bin)
soak=(python3-distributed)
# The picture and text libraries stand here too: their versions say which sources are built for
# Windows, so that a file decodes, and a text is drawn, to the same bytes on both systems.
windows=(g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libz-mingw-w64-dev
  cmake ninja-build googletest libcli11-dev nlohmann-json3-dev libjpeg62-turbo-dev libpng-dev libtiff-dev
  libwebp-dev libraw-dev libde265-dev libheif-dev
  liblcms2-dev libfreetype-dev libharfbuzz-dev libfribidi-dev fonts-dejavu-core
  clang dpkg-dev nasm wine wine64 fonts-wine fonts-liberation xvfb xauth xclip xdotool)
# What only packages need, beside all that builds.
package=(debhelper dh-python lintian nsis mingw-w64-tools libwine-dev llvm-14 clang-tools-14 lld-14 zip unzip mmdebstrap)
tools=(clang-format clang-tidy librsvg2-bin imagemagick)
arm64=(g++-aarch64-linux-gnu)
peers=(libopencv-core-dev libopencv-imgproc-dev libvips-dev)

isInstalled() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

asRoot() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

installMissing() {
  local missing=() package
  for package in $(printf '%s\n' "$@" | sort -u); do
    isInstalled "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
    die "run as root, or install sudo; these packages are missing: ${missing[*]}"
  fi
  say "Installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600)
  asRoot "${apt[@]}" update || say "Not all package lists could be fetched; going on with those at hand"
  asRoot "${apt[@]}" -o Dpkg::Use-Pty=0 install -y --no-install-recommends "${missing[@]}" >/dev/null ||
    die "the packages could not be installed: ${missing[*]}"
  for package in "${missing[@]}"; do
    isInstalled "$package" || die "the package $package is still missing"
  done
}

command -v apt-get >/dev/null || die "needs Debian 12: there is no apt-get here"
[ $# -gt 0 ] || set -- all
packages=()
for part in "$@"; do
  case "$part" in
    native) packages+=("${native[@]}") ;;
    tests) packages+=("${tests[@]}") ;;
    soak) packages+=("${soak[@]}") ;;
    windows) packages+=("${windows[@]}") ;;
    package) packages+=("${package[@]}") ;;
    tools) packages+=("${tools[@]}") ;;
    arm64) packages+=("${arm64[@]}") ;;
    peers) packages+=("${peers[@]}") ;;
    all) packages+=("${native[@]}" "${tests[@]}" "${windows[@]}") ;;
    *) die "unknown part: $part (native, tests, soak, windows, tools, arm64, peers or all)" ;;
  esac
done
installMissing "${packages[@]}"

case " $* " in
  *" windows "* | *" all "*)
    "$project/scripts/windows-libraries.sh"
    "$project/scripts/wine-prefix.sh"
    ;;
esac
