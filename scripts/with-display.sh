#!/bin/bash
# Runs a command with a display: the user's own, or a virtual one where there is none.
set -eu
if [ -n "${DISPLAY:-}" ]; then exec "$@"; fi
exec xvfb-run --auto-servernum --server-args='-screen 0 1280x1024x24' "$@"
