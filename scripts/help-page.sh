#!/bin/sh
# Writes a manual page of what a program says in --help and --version: help-page.sh PROGRAM >PAGE
# The help begins with what the program does and its usage; each option has a line of its own.
set -eu
version="$("$1" --version)"
"$1" --help | awk -v name="$(basename "$1")" -v version="$version" '
  function plain(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    return text
  }
  NR == 1 {
    printf ".TH %s 1 \"\" \"%s\" \"User Commands\"\n", toupper(name), version
    sub(/[.]$/, "")
    printf ".SH NAME\n%s \\- %s\n", plain(name), plain($0)
  }
  /^Usage: / {
    printf ".SH SYNOPSIS\n\\fB%s\\fR", plain($2)
    for (i = 3; i <= NF; ++i) printf " %s", plain($i)
    print ""
  }
  /^Options:/ { print ".SH OPTIONS" }
  /^  -/ {
    match($0, /[^ ]  +/)
    names = substr($0, 3, RSTART - 2)
    print ".TP\n\\fB" plain(names) "\\fR\n" plain(substr($0, RSTART + RLENGTH))
  }
  END {
    print ".SH EXIT STATUS\n0: the window was closed. 1: no window could be opened. 2: wrong use."
    print ".SH SEE ALSO\n\\fBfxbox\\fR(1)"
    print ".SH AUTHOR\nThe Fxbox developers <fxbox@example.org>"
  }'
