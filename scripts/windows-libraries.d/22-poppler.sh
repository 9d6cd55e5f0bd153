source_package=poppler
needs=(zlib libjpeg-turbo freetype)

# For text, through poppler-cpp. JPEG is there as in Debian's build, since text is also read behind images that stand between
# it; JPEG 2000, colour profiles and signatures are for looking at pages.
build() {
    # Debian has no iconv for Windows. The library asks it for one thing, UTF-8 to UTF-16 and back, which the system can do: a
    # header of ours stands in for it, and kernel32, which is linked anyway, for its library.
    local iconv=(-DICONV_INCLUDE_DIR="${recipe%.sh}" -DICONV_LIBRARIES=kernel32)
    # Data files are looked for beside the program, so no folder is built in.
    cmake_configure -DBUILD_SHARED_LIBS=OFF -DENABLE_RELOCATABLE=ON -DPOPPLER_DATADIR= -DFONT_CONFIGURATION=win32 \
        "${iconv[@]}" -DENABLE_CPP=ON -DENABLE_GLIB=OFF -DENABLE_QT5=OFF -DENABLE_QT6=OFF -DENABLE_UTILS=OFF \
        -DBUILD_CPP_TESTS=OFF -DBUILD_GTK_TESTS=OFF -DBUILD_QT5_TESTS=OFF -DBUILD_QT6_TESTS=OFF -DBUILD_MANUAL_TESTS=OFF \
        -DENABLE_BOOST=OFF -DENABLE_CMS=none -DENABLE_LIBOPENJPEG=none -DENABLE_LIBCURL=OFF -DRUN_GPERF_IF_PRESENT=OFF \
        -DWITH_Cairo=OFF -DWITH_NSS3=OFF -DWITH_PNG=OFF -DWITH_TIFF=OFF
    cmake --build build --parallel "$jobs" --target poppler poppler-cpp
    cmake --install build
    # What a static library needs besides itself, which poppler's own file leaves out.
    printf 'Requires.private: freetype2 libjpeg zlib\nLibs.private: -lgdi32 -ladvapi32 -lshell32\n' \
        >> "$destination/lib/pkgconfig/poppler.pc"
}
