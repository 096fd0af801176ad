#!/bin/sh
# Opens the built program on the sample card. With no display: under Xvfb, until the list is
# there; a picture is saved, the list printed.
set -eu
cd "$(dirname "$0")/.."
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec build/kelpin --demo
fi
echo "No display: starting under Xvfb."
exec xvfb-run -a -s "-screen 0 1024x768x24" \
  build/kelpin --demo --screenshot build/kelpin.png
