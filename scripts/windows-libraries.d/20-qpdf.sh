source_package=qpdf
needs=(zlib libjpeg-turbo openssl)

build() {
    # With the capital, no trial program of its configuration links here, and all its questions would be answered "no".
    sed -i 's/Advapi32/advapi32/' CMakeLists.txt
    cmake_configure -DBUILD_SHARED_LIBS=OFF -DUSE_IMPLICIT_CRYPTO=OFF -DREQUIRE_CRYPTO_OPENSSL=ON \
        -DREQUIRE_CRYPTO_NATIVE=ON -DDEFAULT_CRYPTO=openssl -DINSTALL_CMAKE_PACKAGE=OFF
    cmake --build build --parallel "$jobs" --target libqpdf
    cmake --install build --component dev
}
