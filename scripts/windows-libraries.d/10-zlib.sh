source_package=zlib

build() {
    archive libz.a adler32.c compress.c crc32.c deflate.c gzclose.c gzlib.c gzread.c gzwrite.c infback.c inffast.c \
        inflate.c inftrees.c trees.c uncompr.c zutil.c
    headers zlib.h zconf.h
    pkg_config_file zlib -lz
}
