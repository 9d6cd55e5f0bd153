source_package=libidn
# Debian changes nothing in this source, so the tar file of its makers is enough. Not every mirror has the rest.
upstream_only=yes

build() {
    # The compiler's stdint.h serves; the public header would otherwise be made from a substitute.
    configure --disable-nls --disable-tld gl_cv_header_stdint_width=yes
    make -C gl -j "$jobs"
    make -C lib/gl -j "$jobs"
    make -C lib -j "$jobs"
    make -C lib install
    { cat COPYING; printf '\n\n'; cat COPYING.LESSERv3; printf '\n\n'; cat COPYINGv2; } > licence.txt
    licence=licence.txt
}
