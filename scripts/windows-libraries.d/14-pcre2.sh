source_package=pcre2

build() {
    # The switches of Debian's own package, so that expressions mean the same on both systems; only the width that we use.
    configure --disable-pcre2-8 --enable-pcre2-16 --enable-unicode --enable-jit
    make -j "$jobs" libpcre2-16.la libpcre2-16.pc
    make install-libLTLIBRARIES lib_LTLIBRARIES=libpcre2-16.la
    headers src/pcre2.h
    install -D -m 644 -t "$destination/lib/pkgconfig" libpcre2-16.pc
}
