installed_package=libcli11-dev

build() {
    installed_headers libcli11-dev
}
