source_package=googletest

build() {
    cmake_configure
    cmake --build build --parallel "$jobs"
    cmake --install build
}
