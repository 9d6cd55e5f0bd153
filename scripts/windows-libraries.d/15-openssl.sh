source_package=openssl

build() {
    # no-module puts the old ciphers (RC4) into the library instead of a DLL beside it. The library keeps its compiler flags as
    # a text, hence the short ones.
    env -u CXX -u CPPFLAGS -u CXXFLAGS -u LDFLAGS CFLAGS="$flags" CC=gcc-posix AR=gcc-ar-posix RANLIB=gcc-ranlib-posix \
        ./Configure mingw64 --cross-compile-prefix="$triplet-" \
        no-shared no-module no-engine no-autoload-config no-tests
    # Folders that only administrators write to, in case somebody asks for settings after all.
    local folder='C:/Program Files/Common Files/SSL'
    local options=(OPENSSLDIR="$folder" ENGINESDIR="$folder/engines" MODULESDIR="$folder/modules" -j "$jobs")
    make build_generated "${options[@]}"
    make libcrypto.a "${options[@]}"
    install -D -m 644 -t "$destination/lib" libcrypto.a
    install -D -m 644 -t "$destination/include/openssl" include/openssl/*.h
    pkg_config_file libcrypto "-lcrypto -lws2_32 -lgdi32 -lcrypt32"
    pkg_config_file openssl "" libcrypto   # the name that users of the whole ask for; nobody here needs its other half
}
