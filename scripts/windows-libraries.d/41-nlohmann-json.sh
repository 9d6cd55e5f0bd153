installed_package=nlohmann-json3-dev

build() {
    installed_headers nlohmann-json3-dev
}
