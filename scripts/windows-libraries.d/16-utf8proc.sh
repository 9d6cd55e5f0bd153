source_package=utf8proc

build() {
    CPPFLAGS+=" -DUTF8PROC_STATIC"
    archive libutf8proc.a utf8proc.c
    headers utf8proc.h
    pkg_config_file libutf8proc -lutf8proc
    sed -i 's/^Cflags:.*/& -DUTF8PROC_STATIC/' "$destination/lib/pkgconfig/libutf8proc.pc"
    licence=LICENSE.md
}
