#!/bin/bash
# Installs the Debian packages in a clean system, builds consumers against them, purges them:
# debian.sh [PACKAGES-FOLDER]. Needs root. Part of `make soak`.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER # of this machine alone
packages="$(cd "${1:-$project/build/packages}" && pwd)"
[ "$(id -u)" = 0 ] || die "run as root: a system is unpacked and entered"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

say "Unpacking a clean system"
mmdebstrap --quiet --variant=minbase bookworm "$folder/root.tar"
mkdir "$folder/root"
tar -C "$folder/root" -xf "$folder/root.tar"
mkdir "$folder/root/packages"
cp "$packages"/*.deb "$folder/root/packages/"
cp -r "$project/tests/component/installed" "$folder/root/consumer"
cp "$project/README.md" "$project/tests/host/ReadmeProgram.cmake" "$folder/root/"
cp /etc/resolv.conf "$folder/root/etc/" 2>/dev/null || true
for file in /etc/apt/apt.conf.d/*proxy* /etc/apt/sources.list; do
  if [ -f "$file" ]; then cp "$file" "$folder/root${file}"; fi
done
cat >"$folder/root/inside.sh" <<'INSIDE'
set -eu
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 HOME=/root
apt-get -qq update
state() { find / -xdev \( -path /proc -o -path /tmp -o -path /var/cache -o -path /var/log -o -path /var/lib/apt -o -path /root \) -prune -o -print | sort; dpkg-query -W; }
apt-get -qq install -y --no-install-recommends g++ cmake make pkg-config >/dev/null
# What ours need comes first and stays: other packages leave things of their own behind.
needed="$(for package in /packages/*.deb; do dpkg-deb -f "$package" Depends; done | tr ',' '\n' |
  sed 's/[(|:].*//; s/ //g; /fxbox/d' | sort -u)"
apt-get -qq install -y --no-install-recommends $needed >/dev/null
state >/tmp/before
apt-get -qq install -y --no-install-recommends /packages/*.deb >/dev/null
echo "installed"
printf 'P6\n2 1\n255\n\372\240\050\050\132\310' >/tmp/in.ppm
fxbox apply --quiet -c 'ZNFilter.Sepia.1(Sepia=080)' -o /tmp/out.ppm /tmp/in.ppm
[ -s /tmp/out.ppm ]
for kind in webp jxl avif heic; do
  fxbox apply --quiet -c "" -o /tmp/out.$kind /tmp/in.ppm
done
python3 -c 'import fxbox, numpy; print(fxbox.render(numpy.zeros((2, 2, 3), numpy.uint8), "ZNFilter.Invert.1(Inversity=100)").tolist())'
for page in fxbox fxbox-apply fxbox-desk; do test -f /usr/share/man/man1/$page.1.gz; done
for file in fxbox4/schemas/apply-line-1.json applications/fxbox-desk.desktop mime/packages/fxbox.xml \
  metainfo/org.example.fxbox_desk.metainfo.xml icons/hicolor/scalable/apps/fxbox-desk.svg \
  zsh/vendor-completions/_fxbox fish/vendor_completions.d/fxbox.fish; do
  test -f /usr/share/$file
done
fxbox-desk --version
bash -c '. /usr/share/bash-completion/completions/fxbox && complete -p fxbox'
dpkg --verify $(dpkg-query -W -f '${Package}\n' '*fxbox*')
cmake -S /consumer -B /tmp/consumer >/dev/null
cmake --build /tmp/consumer >/dev/null
/tmp/consumer/host_fxbox4
/tmp/consumer/host_static
cmake -DREADME=/README.md -DOUT=/tmp/first.c -P /ReadmeProgram.cmake
cc /tmp/first.c $(pkg-config --cflags --libs fxbox4) -o /tmp/first
/tmp/first
echo "used"
apt-get -qq purge -y $(dpkg-query -W -f '${Package}\n' '*fxbox*') >/dev/null
state >/tmp/after
diff /tmp/before /tmp/after
echo "purged, everything as before"
INSIDE
unshare --mount --pid --fork --uts --ipc chroot "$folder/root" bash -c 'mount -t proc proc /proc; bash /inside.sh'
