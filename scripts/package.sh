#!/bin/bash
# Builds the Debian package: build/kelpin_VERSION_ARCHITECTURE.deb.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/package
stage=$PWD/$build/stage
version=$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)
architecture=$(dpkg --print-architecture)
export DEB_BUILD_OPTIONS=parallel=${JOBS:-$(nproc)}
# Debian's own flags: hardening, and no path of this machine in the programs.
export DEB_BUILD_MAINT_OPTIONS=hardening=+bindnow
flags=$(dpkg-buildflags --get CXXFLAGS)
preprocessor=$(dpkg-buildflags --get CPPFLAGS)
linker=$(dpkg-buildflags --get LDFLAGS)

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_INSTALL_PREFIX=/usr \
  -DCMAKE_INSTALL_DOCDIR=share/doc/kelpin \
  "-DCMAKE_CXX_FLAGS=$flags $preprocessor -ffile-prefix-map=$PWD=." \
  "-DCMAKE_EXE_LINKER_FLAGS=$linker -Wl,--as-needed -pie" -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
  -DCMAKE_SKIP_RPATH=ON -DKELPIN_BENCH=OFF
cmake --build "$build" --parallel "${JOBS:-$(nproc)}" --target kelpin kelpin-softcard kelpin-event icons
rm -rf "$stage"
DESTDIR=$stage cmake --install "$build" --strip > /dev/null
strip --remove-section=.comment --remove-section=.note "$stage"/usr/bin/*

find "$stage/usr/share/man" -name '*.1' -exec gzip -9n {} +
documents=$stage/usr/share/doc/kelpin
cp packaging/debian/copyright "$documents/"
gzip -9nc packaging/debian/changelog > "$documents/changelog.gz"
find "$stage" -type d -exec chmod 755 {} +
find "$stage" -type f ! -path '*/bin/*' -exec chmod 644 {} +

# dpkg-shlibdeps wants a source package's control file.
mkdir -p "$build/debian"
printf 'Source: kelpin\n\nPackage: kelpin\nArchitecture: any\n' > "$build/debian/control"
depends=$(cd "$build" && dpkg-shlibdeps -O stage/usr/bin/* 2> /dev/null | sed -n 's/^shlibs:Depends=//p')
mkdir -p "$stage/DEBIAN"
size=$(du -k -s --exclude=DEBIAN "$stage" | cut -f1)
sed -e "s/@VERSION@/$version/" -e "s/@ARCHITECTURE@/$architecture/" -e "s/@SIZE@/$size/" \
  -e "s/@DEPENDS@/$depends/" packaging/debian/control.in > "$stage/DEBIAN/control"
(cd "$stage" && find usr -type f -print0 | sort -z | xargs -0 md5sum > DEBIAN/md5sums)
chmod 644 "$stage/DEBIAN/control" "$stage/DEBIAN/md5sums"

package=build/kelpin_${version}_$architecture.deb
dpkg-deb --root-owner-group --build "$stage" "$package" > /dev/null
echo "$package"
