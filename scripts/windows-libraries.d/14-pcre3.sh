source_package=pcre3

build() {
    # The switches of Debian's own package, so that expressions mean the same on both systems.
    configure --disable-cpp --enable-utf --enable-unicode-properties --enable-jit
    make -j "$jobs" libpcre.la libpcre.pc
    make install-libLTLIBRARIES lib_LTLIBRARIES=libpcre.la
    headers pcre.h
    install -D -m 644 -t "$destination/lib/pkgconfig" libpcre.pc
}
