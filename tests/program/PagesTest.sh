#!/bin/bash
# Manual pages, completions, and what the desktop knows: PagesTest.sh CASE SOURCES FXBOX FXBOX-DESK
#   CASE     one of the functions test_... below
#   SOURCES  the folder of the project
set -u
case_name=$1
sources=$2
fxbox=$3
desk=$4

. "$(dirname "$0")/Outside.sh"
export LC_ALL=C.UTF-8

"$fxbox" pages pages || fail "no pages"

# --- manual pages

# rendered PAGE: as a reader sees it, in one line.
rendered() {
  groff -k -man -Tutf8 -P-c -rLL=300n "$1" | sed 's/.\x08//g' | tr -s ' \n' ' '
}

# page_tells PAGE COMMAND...: the page has every option of the command's --help, and renders clean.
page_tells() {
  local page=$1 option warnings text
  shift
  [ -s "$page" ] || fail "$page is missing"
  warnings=$(groff -k -man -Tutf8 -ww -z "$page" 2>&1)
  [ -z "$warnings" ] || fail "$page: $warnings"
  text=$(rendered "$page")
  for option in $("$@" --help | sed -n 's/^ *\(-[-a-zA-Z,]*\).*/\1/p' | tr , '\n' | sort -u); do
    [[ $text == *"$option"* ]] || fail "$page does not tell of $option"
  done
  [[ $text == *'The Fxbox developers'* ]] || fail "$page has no author"
}

# commands_of COMMAND...: the names of its subcommands.
commands_of() {
  "$@" --help | sed -n '/^Subcommands:/,/^$/ s/^  \([a-z-]\+\) .*/\1/p'
}

test_pages() {
  local pages=1 command sub
  page_tells pages/man/fxbox.1 "$fxbox"
  for command in $(commands_of "$fxbox"); do
    page_tells "pages/man/fxbox-$command.1" "$fxbox" "$command"
    pages=$((pages + 1))
    for sub in $(commands_of "$fxbox" "$command"); do
      page_tells "pages/man/fxbox-$command-$sub.1" "$fxbox" "$command" "$sub"
      pages=$((pages + 1))
    done
  done
  [ $pages -gt 25 ] || fail "only $pages commands"
  [ "$(grep -l '^Examples\?:' pages/man/* | wc -l)" -ge 31 ] || fail "examples are missing"
  [ "$(ls pages/man | wc -l)" -eq $pages ] || fail "pages without a command"
  "$sources/scripts/help-page.sh" "$desk" >desk.1 || fail "no page of fxbox-desk"
  page_tells desk.1 "$desk"
  [[ $(rendered desk.1) == *'fxbox-desk - Shows'* ]] || fail "no name"
  [[ $(rendered desk.1) == *'--export FILE Where'* ]] || fail "no value"
  # A page lacks what it is not told.
  sed -i 's/export/ex/g' desk.1
  (page_tells desk.1 "$desk") 2>/dev/null && fail "a missing option is not found"
  return 0
}

# --- completions

# offers LINE WORD...: exactly these words behind the line.
offers() {
  local line=$1
  shift
  read -ra COMP_WORDS <<<"$line"
  [ "${line% }" = "$line" ] || COMP_WORDS+=('')
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  _fxbox
  [ "${COMPREPLY[*]}" = "$*" ] || fail "\"$line\" is completed by: ${COMPREPLY[*]}"
}

test_bash() {
  bash -n pages/completion/bash/fxbox || fail "no script for bash"
  source pages/completion/bash/fxbox
  complete -p fxbox | grep -q -- '-F _fxbox' || fail "bash does not know of it"
  touch photo.jpg picture.ppm
  offers 'fxbox desc' describe
  offers 'fxbox apply --json' --json --json-lines
  offers 'fxbox box li' list
  offers 'fxbox box info a.box name --j' --json
  offers 'fxbox apply -f chain ph' photo.jpg
  offers 'fxbox describe --json-l'
}

test_other_shells() {
  zsh -n pages/completion/zsh/_fxbox || fail "no script for zsh"
  export HOME="$folder" XDG_DATA_HOME="$folder/data"
  fish --no-config --no-execute pages/completion/fish/fxbox.fish || fail "no script for fish"
  fish --no-config -c 'source pages/completion/fish/fxbox.fish; complete -C "fxbox desc"; complete -C "fxbox apply --json"; complete -C "fxbox box li"' |
    cut -f1 | tr '\n' ' ' >offered
  [ "$(cat offered)" = 'describe --json --json-lines list ' ] || fail "fish offers: $(cat offered)"
}

# --- the desktop

test_desktop() {
  local of="$sources/resources/desktop" type
  desktop-file-validate "$of/fxbox-desk.desktop" >said 2>&1 || fail "$(cat said)"
  [ ! -s said ] || fail "$(cat said)"
  appstreamcli validate --no-net "$of/org.example.fxbox_desk.metainfo.xml" >said 2>&1 ||
    fail "$(cat said)"
  grep -q '<launchable type="desktop-id">fxbox-desk.desktop<' "$of"/*.metainfo.xml || fail "another file"
  # Of each type the program opens files, a picture and a chain together as well.
  grep -qx 'Exec=fxbox-desk %F' "$of/fxbox-desk.desktop" || fail "it takes one file"
  grep -q '^MimeType=.*;text/x-fxbox-chain;' "$of/fxbox-desk.desktop" || fail "it opens no chains"
  for type in $(sed -n 's/^MimeType=//p' "$of/fxbox-desk.desktop" | tr ';' ' '); do
    [ -f "/usr/share/mime/${type}.xml" ] || grep -q "type=\"$type\"" "$of/fxbox.xml" ||
      fail "nobody knows the type $type"
  done
  # Both fail where there is something to tell.
  sed 's/^Type=.*/Type=Nothing/' "$of/fxbox-desk.desktop" >wrong.desktop
  ! desktop-file-validate wrong.desktop >/dev/null 2>&1 || fail "a wrong file passes"
}

# type_is TYPE FILE
type_is() {
  local found
  found=$(gio info -a standard::content-type "$2" | sed -n 's/^ *standard::content-type: //p')
  [ "$found" = "$1" ] || fail "$2 is of the type $found"
}

test_mime_types() {
  mkdir -p data/mime/packages
  cp "$sources/resources/desktop/fxbox.xml" data/mime/packages/
  update-mime-database -V data/mime >said 2>&1 || fail "$(cat said)"
  ! grep -qi 'unknown\|warning\|error' said || fail "$(cat said)"
  grep -q ':text/x-fxbox-chain:\*\.chain' data/mime/globs2 || fail "no names of chains"
  grep -q ':application/x-fxbox-box:\*\.box' data/mime/globs2 || fail "no names of boxes"
  grep -aq 'text/x-fxbox-chain' data/mime/magic || fail "no first letters of chains"
  export XDG_DATA_DIRS="$folder/data:/usr/share" XDG_DATA_HOME="$folder/home"
  echo 'ZNFilter.Sepia.1(Sepia=050)' | tee warm.chain warm >/dev/null
  echo 'a text' >plain.txt
  printf 'P6\n1 1\n255\nabc' >in.ppm
  "$fxbox" box add shots.box in.ppm || fail "no box"
  type_is text/x-fxbox-chain warm.chain
  type_is text/x-fxbox-chain warm
  type_is application/x-fxbox-box shots.box
  type_is text/plain plain.txt
}

"test_$case_name"
