# shellcheck shell=bash
# Shared by the scripts of this folder; sourced, never run.

project="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

say() { printf '==> %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# The folder for what is made once a machine and user: cross-built libraries and the Wine prefix.
cacheFolder() {
  local home="${HOME:-}"
  [ -n "$home" ] || home="$(getent passwd "$(id -u)" | cut -d: -f6)"
  echo "${XDG_CACHE_HOME:-$home/.cache}/fxbox4"
}

# makeOnce FOLDER COMMAND: runs COMMAND with a fresh sibling folder as its argument, with every
# other caller waiting, and gives that folder its final name only when COMMAND succeeded. So FOLDER
# is there complete or not at all. COMMAND must not depend on the name that the folder has meanwhile.
makeOnce() {
  local folder="$1" make="$2" part="$1.part"
  [ -d "$folder" ] && return
  mkdir -p "$(dirname "$folder")" || die "cannot write to $(dirname "$folder"); set XDG_CACHE_HOME to a folder that can be written"
  exec {lock}>"$folder.lock"
  flock "$lock"
  if [ ! -d "$folder" ]; then
    rm -rf "$part"
    mkdir "$part"
    "$make" "$part"
    mv "$part" "$folder"
  fi
  exec {lock}>&-
}
