source_package=sqlite3

build() {
    # One file is made of all sources first, by programs that run here.
    env -u CFLAGS -u CXXFLAGS -u CPPFLAGS -u LDFLAGS -u CXX -u AR -u RANLIB CC=gcc ./configure --disable-shared --disable-tcl \
        --disable-readline
    env -u CFLAGS -u CPPFLAGS -u LDFLAGS make sqlite3.c
    CPPFLAGS+=" -DSQLITE_ENABLE_FTS5 -DSQLITE_SECURE_DELETE -DSQLITE_THREADSAFE=1 -DSQLITE_OMIT_LOAD_EXTENSION"
    archive libsqlite3.a sqlite3.c
    headers sqlite3.h
    pkg_config_file sqlite3 -lsqlite3
    licence=LICENSE.md
}
