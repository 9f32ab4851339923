#!/usr/bin/env bash
# Builds the libraries that Tovira links, static and for the oldest macOS that it runs on, into build/thu-vien-tinh. Homebrew's own
# are made for the macOS of this machine: enough to run here, not for a package. Then:
#   PKG_CONFIG_LIBDIR=$PWD/build/thu-vien-tinh/lib/pkgconfig cmake --fresh --preset macos
set -euo pipefail
cd "$(dirname "$0")/.."

[ "$(uname -s)" = Darwin ] || { echo "Only macOS packages need them." >&2; exit 1; }
noi() { printf '• %s\n' "$*"; }

dich=$PWD/build/thu-vien-tinh
cu=$(sed -n 's/^set(CMAKE_OSX_DEPLOYMENT_TARGET \([0-9.]*\).*/\1/p' CMakeLists.txt)
nguon=$(mktemp -d)
trap 'rm -rf "$nguon"' EXIT
nhatKy=$nguon/nhat-ky
rm -rf "$dich"
mkdir -p "$dich/include" "$dich/lib/pkgconfig"

# $1 the library, $2 the name that pkg-config knows it by, $3 what it needs itself, $4 its source, $5 its header
dungMotTep() {
    noi "$1"
    cc -O2 -fPIC -arch arm64 "-mmacosx-version-min=$cu" -c "$4" -o "$nguon/$1.o"
    ar rcs "$dich/lib/lib$1.a" "$nguon/$1.o"
    cp "$5" "$dich/include/"
    printf '%s\n' "Name: $2" "Description: $1, static" "Version: 0" "Cflags: -I$dich/include" "Libs: -L$dich/lib -l$1 $3" \
        >"$dich/lib/pkgconfig/$2.pc"
}

noi "Fetching the sources through Homebrew, for macOS $cu"
brew unpack --quiet --destdir "$nguon" utf8proc uriparser libspng >/dev/null
dungMotTep utf8proc libutf8proc "" "$nguon"/utf8proc-*/utf8proc.c "$nguon"/utf8proc-*/utf8proc.h
dungMotTep spng spng -lz "$nguon"/libspng-*/spng/spng.c "$nguon"/libspng-*/spng/spng.h
noi uriparser
cmake -S "$nguon"/uriparser-* -B "$nguon/uriparser" -DCMAKE_BUILD_TYPE=Release -DCMAKE_OSX_ARCHITECTURES=arm64 \
    "-DCMAKE_OSX_DEPLOYMENT_TARGET=$cu" "-DCMAKE_INSTALL_PREFIX=$dich" -DCMAKE_INSTALL_LIBDIR=lib -DBUILD_SHARED_LIBS=OFF \
    -DURIPARSER_BUILD_DOCS=OFF -DURIPARSER_BUILD_TESTS=OFF -DURIPARSER_BUILD_TOOLS=OFF >"$nhatKy" || { cat "$nhatKy"; exit 1; }
cmake --build "$nguon/uriparser" --target install >"$nhatKy" || { cat "$nhatKy"; exit 1; }
noi "Done: $dich"
