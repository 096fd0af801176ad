#!/bin/sh
# Installs what building (and, with "test", testing) needs on Debian 12; does nothing when all of
# it is there.
set -eu

build="g++ cmake ninja-build ccache qt6-base-dev qt6-svg-dev libgl-dev nlohmann-json3-dev
  libsqlite3-dev libcli11-dev libspdlog-dev python3-minimal fonts-dejavu-core libgtest-dev
  libgmock-dev libbenchmark-dev xdg-utils pkg-config libpcsclite-dev libboost-dev"
headless="xvfb xauth"
test="clang clang-format-14 libclang-rt-14-dev llvm-14 libgtest-dev libgmock-dev libbenchmark-dev
  python3 dbus at-spi2-core python3-pyatspi python3-dbusmock fonts-droid-fallback pcscd
  vsmartcard-vpcd opensc pcsc-tools gammu libebook1.2-dev evolution-data-server desktop-file-utils
  appstream groff-base xdotool openbox x11-utils"

want="$build"
case "${1:-run}" in
  run) if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then want="$want $headless"; fi ;;
  package) want="$want dpkg-dev lintian groff-base xvfb xdotool" ;;
  test) want="$want $headless $test" ;;
  *) echo "usage: install-deps.sh [run|test|package]" >&2; exit 2 ;;
esac

missing=""
for package in $want; do
  status=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
  case "$status" in ii*) ;; *) missing="$missing $package" ;; esac
done
[ -n "$missing" ] || exit 0

echo "Installing:$missing"
if [ "$(id -u)" = 0 ]; then root=""; elif command -v sudo >/dev/null; then root="sudo"; else
  echo "Not root and no sudo. As root: apt-get install$missing" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
$root apt-get update -q
# shellcheck disable=SC2086
$root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing
