source_package=duktape

build() {
    "${recipe%.sh}/prepare" . prepared
    mv prepared/duktape.cpp prepared/duktape.h prepared/duk_config.h .
    archive libduktape.a duktape.cpp
    headers duktape.h duk_config.h
    pkg_config_file duktape -lduktape
    licence=LICENSE.txt
}
