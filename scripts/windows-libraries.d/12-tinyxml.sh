source_package=tinyxml

build() {
    CXXFLAGS+=" -DTIXML_USE_STL"
    archive libtinyxml.a tinyxml.cpp tinyxmlparser.cpp tinyxmlerror.cpp
    headers tinyxml.h
    pkg_config_file tinyxml -ltinyxml
}
