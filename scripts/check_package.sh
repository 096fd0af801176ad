#!/bin/bash
# Checks a package that scripts/package.sh has built: what is in it, lintian, and the program as it
# runs from there. With --install it is installed into this system, run, removed and purged, and
# what stays behind is looked at; that wants root and a system on which Kelpin is not installed.
#
#   scripts/check_package.sh [--install] [PACKAGE]
set -euo pipefail
cd "$(dirname "$0")/.."

install=no
if [ "${1:-}" = --install ]; then
  install=yes
  shift
fi
package=$(readlink -f "${1:-$(ls -t build/kelpin_*.deb | head -n 1)}")
work=$(mktemp -d)
display=
clean() {
  [ -z "$display" ] || kill "$display" 2> /dev/null || true
  rm -rf "$work"
}
trap clean EXIT

fail() { echo "check_package: $*" >&2; exit 1; }
step() { echo "== $*"; }

step "what is in it"
dpkg-deb -x "$package" "$work/root"
for file in bin/kelpin bin/kelpin-softcard bin/kelpin-event share/applications/org.kelpin.Kelpin.desktop \
  share/metainfo/org.kelpin.Kelpin.metainfo.xml share/icons/hicolor/scalable/apps/org.kelpin.Kelpin.svg \
  share/icons/hicolor/48x48/apps/org.kelpin.Kelpin.png share/kelpin/help/Kelpin.htm \
  share/kelpin/help/Kelpin.de.htm share/kelpin/lang/de.txt share/kelpin/registry-default.reg \
  share/doc/kelpin/examples/registry-sample.reg share/doc/kelpin/copyright share/doc/kelpin/changelog.gz \
  share/man/man1/kelpin.1.gz share/man/man1/kelpin-softcard.1.gz share/man/man1/kelpin-event.1.gz; do
  [ -s "$work/root/usr/$file" ] || fail "/usr/$file is missing"
done
[ -z "$(find "$work/root" -mindepth 1 -maxdepth 1 ! -name usr)" ] || fail "it writes outside /usr"
if grep -rlqF -e "$PWD" -e "$work" "$work/root"; then fail "a path of this machine is in it"; fi
for page in "$work"/root/usr/share/man/man1/*.gz; do
  [ -z "$(zcat "$page" | LC_ALL=C groff -man -ww -z -Tutf8 2>&1)" ] || fail "$page: warnings"
done

if command -v lintian > /dev/null; then
  step "lintian"
  # Root is told that it should not be; everything else counts.
  lintian --allow-root --fail-on error,warning "$package" || fail "lintian has found something"
else
  echo "lintian is not installed: left out"
fi

# The program in $1, as a user without any files of his own: in English, in German, and its help.
try() {
  local bin=$1 home=$work/home
  rm -rf "$home"
  mkdir -p -m 700 "$home/run"
  local clean=(env -i "PATH=$PATH" "HOME=$home" "XDG_RUNTIME_DIR=$home/run")
  "${clean[@]}" "$bin/kelpin" --version | grep -qx "Kelpin [0-9.]*" || fail "--version"
  local list
  list=$("${clean[@]}" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen "$bin/kelpin" --demo --screenshot "$work/list.png" 2>&1)
  grep -q "^My No\." <<< "$list" && grep -q "^180 entries" <<< "$list" || fail "the list: $list"
  list=$("${clean[@]}" LC_ALL=de_DE.UTF-8 QT_QPA_PLATFORM=offscreen "$bin/kelpin" --demo --screenshot "$work/list.png" 2>&1)
  grep -q "^Eigene Nr\." <<< "$list" || fail "the list in German: $list"
  # The first start without options makes an empty card and contacts.
  "${clean[@]}" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen "$bin/kelpin" --screenshot "$work/list.png" > /dev/null 2>&1 \
    || fail "the first start"
  [ -s "$home/.local/share/kelpin/card.json" ] && [ -s "$home/.local/share/kelpin/contacts.db" ] || fail "no user data"
  try_help "$bin" "$home"
}

# F1 in the window; an opener of our own writes down what it is given.
try_help() {
  local bin=$1 home=$2
  if ! command -v Xvfb > /dev/null || ! command -v xdotool > /dev/null; then
    echo "Xvfb or xdotool is not installed: the help is left out"
    return
  fi
  mkdir -p "$work/opener"
  printf '#!/bin/sh\nprintf "%%s\\n" "$1" > "%s"\n' "$work/opened" > "$work/opener/xdg-open"
  chmod 755 "$work/opener/xdg-open"
  if [ -z "$display" ]; then
    Xvfb -displayfd 3 -screen 0 800x800x24 -nolisten tcp 3> "$work/display" 2> /dev/null &
    display=$!
    for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
  fi
  local screen
  screen=:$(cat "$work/display")
  local language page
  for language in C:Kelpin.htm de_DE:Kelpin.de.htm; do
    page=${language#*:}
    rm -f "$work/opened"
    env -i "PATH=$work/opener:$PATH" "HOME=$home" "XDG_RUNTIME_DIR=$home/run" "DISPLAY=$screen" \
      "LC_ALL=${language%:*}.UTF-8" "$bin/kelpin" --demo 2> /dev/null &
    local kelpin=$!
    for _ in $(seq 100); do
      [ -s "$work/opened" ] && break
      DISPLAY=$screen xdotool search --onlyvisible --name Kelpin windowfocus key F1 > /dev/null 2>&1 || true
      sleep 0.3
    done
    kill "$kelpin"
    wait "$kelpin" || true
    [ -s "$work/opened" ] || fail "the help was not opened"
    case $(cat "$work/opened") in
      file://*/usr/share/kelpin/help/"$page"#main-list) ;;
      *) fail "the help opened $(cat "$work/opened") instead of $page" ;;
    esac
  done
}

step "the program, where it was unpacked"
try "$work/root/usr/bin"

if [ "$install" = yes ]; then
  step "installed"
  if dpkg-query -W kelpin > /dev/null 2>&1; then fail "Kelpin is installed here already"; fi
  touch "$work/before"
  dpkg -i "$package" > /dev/null || fail "it cannot be installed; are the packages it wants there?"
  try /usr/bin
  dpkg -r kelpin > /dev/null
  dpkg -P kelpin > /dev/null 2>&1  # there is nothing left to purge
  for file in $(dpkg-deb -c "$package" | awk '{ print $6 }' | grep -v '/$'); do
    [ ! -e "${file#.}" ] || fail "${file#.} is still there"
  done
  left=$(find /usr /etc /var -path '*kelpin*' ! -path '/var/lib/dpkg/*' ! -path '/var/log/*' \
    -newer "$work/before" 2> /dev/null || true)
  [ -z "$left" ] || fail "left behind: $left"
  [ -s "$work/home/.local/share/kelpin/card.json" ] && [ -s "$work/home/.local/share/kelpin/contacts.db" ] \
    || fail "the user's data is gone"
fi
echo "$(basename "$package"): good"
