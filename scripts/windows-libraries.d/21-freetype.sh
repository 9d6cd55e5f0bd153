source_package=freetype
needs=(zlib)

build() {
    # Fonts inside documents need none of the others: they are for compressed web fonts, coloured bitmaps and hinting.
    cmake_configure -DBUILD_SHARED_LIBS=OFF -DFT_REQUIRE_ZLIB=ON -DFT_DISABLE_PNG=ON -DFT_DISABLE_BZIP2=ON \
        -DFT_DISABLE_BROTLI=ON -DFT_DISABLE_HARFBUZZ=ON
    cmake --build build --parallel "$jobs"
    cmake --install build
    rm -r "$destination/lib/cmake"   # names its folder; nobody asks for it
}
