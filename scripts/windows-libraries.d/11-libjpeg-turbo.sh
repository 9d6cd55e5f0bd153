source_package=libjpeg-turbo

build() {
    cmake_configure -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DREQUIRE_SIMD=ON
    cmake --build build --parallel "$jobs"
    cmake --install build
}
