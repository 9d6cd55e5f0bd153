#!/usr/bin/env bash
# Builds one library for 64-bit Windows in the current folder, which holds its source; run by windows-libraries.
# usage: build.sh RECIPE     with name, version, destination, dependencies, toolchain and jobs in the environment
set -euo pipefail

recipe=$1
: "${name:?}" "${version:?}" "${destination:?}" "${dependencies:?}" "${toolchain:?}" "${jobs:?}"
triplet=x86_64-w64-mingw32
export CC=$triplet-gcc-posix CXX=$triplet-g++-posix AR=$triplet-gcc-ar-posix RANLIB=$triplet-gcc-ranlib-posix
flags="-O2 -DNDEBUG -D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00"
export CFLAGS="$flags -ffile-prefix-map=$PWD=." CXXFLAGS="$flags -ffile-prefix-map=$PWD=."
export CPPFLAGS="-I$dependencies/include" LDFLAGS="-static -L$dependencies/lib"
export PKG_CONFIG="pkg-config --static" PKG_CONFIG_LIBDIR="$dependencies/lib/pkgconfig" PKG_CONFIG_PATH=
# The date of the package stands for the time of day in what is built.
if [ -f debian/changelog ]; then
    SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -S Timestamp)
    export SOURCE_DATE_EPOCH
fi

# --- what recipes use -------------------------------------------------------------------------------------------------

# cmake_configure OPTION...: prepares build/ with this project's toolchain.
cmake_configure() {
    cmake -S . -B build -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DFERRULE_WINDOWS_PREFIX="$dependencies" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$destination" -DCMAKE_INSTALL_LIBDIR:STRING=lib "$@"
}

# configure OPTION...: runs the source's configure script for a static library. Scripts that Debian's changes made older than
# what they are made from are good enough: no autotools are needed.
configure() {
    ./configure --host="$triplet" --prefix="$destination" --disable-shared --enable-static \
        --disable-dependency-tracking ACLOCAL=: AUTOCONF=: AUTOHEADER=: AUTOMAKE=: MAKEINFO=: "$@"
}

# archive LIBRARY SOURCE...: compiles the sources, all of one language, and packs them into lib/LIBRARY.
archive() {
    local library=$1 compile
    shift
    case "$1" in
        *.c) compile="$CC $CFLAGS $CPPFLAGS -c" ;;
        *) compile="$CXX $CXXFLAGS $CPPFLAGS -c" ;;
    esac
    # shellcheck disable=SC2086
    printf '%s\0' "$@" | xargs -0 -n 1 -P "$jobs" $compile
    mkdir -p "$destination/lib"
    set -- "${@%.*}"
    "$AR" rcs "$destination/lib/$library" "${@/%/.o}"
}

# headers FILE...: installs headers.
headers() {
    install -D -m 644 -t "$destination/include" "$@"
}

# pkg_config_file NAME LIBS [REQUIRES]: writes NAME.pc.
pkg_config_file() {
    mkdir -p "$destination/lib/pkgconfig"
    cat > "$destination/lib/pkgconfig/$1.pc" <<END
prefix=$destination
Name: $1
Description: $1, built for Windows
Version: ${version%-*}
Requires: ${3:-}
Libs: -L\${prefix}/lib $2
Cflags: -I\${prefix}/include
END
}

# installed_headers PACKAGE: takes headers and CMake files from an installed Debian package.
installed_headers() {
    local file
    dpkg -L "$1" | grep -E '^/usr/(include|share/cmake)/' | while read -r file; do
        [ -d "$file" ] || install -D -m 644 "$file" "$destination/${file#/usr/}"
    done
    licence=/usr/share/doc/$1/copyright
}

# --- after the recipe -------------------------------------------------------------------------------------------------

# Leaves what a build against the library needs and makes it independent of where it lies.
tidy() {
    local file
    rm -rf "${destination:?}"/{bin,share/doc,share/man,share/info,share/locale} "$destination"/lib/*.la
    for file in "$destination"/lib/pkgconfig/*.pc; do
        [ -f "$file" ] || continue
        sed -i "s|$destination|\${pcfiledir}/../..|g" "$file"
    done
    if grep -rl -F -e "$destination" -e "$dependencies" -e "$PWD" "$destination"; then
        echo "These files name folders that exist during the build only." >&2
        return 1
    fi
}

licence=debian/copyright   # a recipe names another file where the source has none
# shellcheck source=/dev/null
. "$recipe"
build
install -D -m 644 "$licence" "$destination/share/licences/$name.txt"
[ -n "${installed_package:-}" ] || ls -l "$destination"/lib/*.a   # fails when there is none
tidy
