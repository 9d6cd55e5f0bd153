# What is installed where, and the Debian packages that CPack makes of it: "ferrule", and "ferrule-gui" with the windows and the
# libraries that these need, which a server can do without. scripts/package calls it. Windows has scripts/package-msi.
if(WIN32)
  return()
endif()

# scripts/package builds what is installed, and not the tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(FERRULE_MAINTAINER "Ferrule maintainers <maintainers@ferrule.example>" CACHE STRING "Who answers for the packages")
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME ferrule)
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(as_data PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# The programs find each other and the plug-in beside themselves, so they stay together; the names in bin are links.
set(programs lib/ferrule)
set(documents share/doc/ferrule)
install(TARGETS ferrule ferrule-host RUNTIME DESTINATION ${programs})
install(TARGETS Ferrule LIBRARY DESTINATION ${programs}/plug_ins ${as_data})
install(DIRECTORY help DESTINATION ${programs}/plug_ins/Ferrule)
foreach(program ferrule ferrule-host)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/links)
  file(CREATE_LINK ../lib/ferrule/${program} ${PROJECT_BINARY_DIR}/links/${program} SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/links/${program} DESTINATION bin)
endforeach()

set(share ${PROJECT_BINARY_DIR}/share)
install(DIRECTORY ${share}/bash-completion ${share}/zsh ${share}/fish DESTINATION share)
install(FILES README.md DESTINATION ${documents})
install(FILES docs/runs.md docs/several-machines.md docs/watch.md docs/javascript.md DESTINATION ${documents}/docs) # what README.md refers to
install(DIRECTORY samples/documents samples/sequences samples/systemd DESTINATION ${documents}/examples)
install(FILES samples/passwords.txt DESTINATION ${documents}/examples)
configure_file(${CMAKE_CURRENT_LIST_DIR}/package/copyright.in ${share}/copyright @ONLY)
install(FILES ${share}/copyright DESTINATION ${documents})

# ferrule_install_compressed(<component> <file> <target>): as Debian wants manual pages and changelogs, the same bytes every time.
function(ferrule_install_compressed component file target)
  get_filename_component(folder ${target} DIRECTORY)
  install(CODE "
    set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
    file(MAKE_DIRECTORY \"\${folder}\")
    execute_process(COMMAND gzip -9nc \"${file}\" OUTPUT_FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${target}\"
                    COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
endfunction()

# The changelog of the packages names their version and when they were made: SOURCE_DATE_EPOCH, when it is set.
set(FERRULE_PACKAGE_RELEASE 1)
install(CODE "
  string(TIMESTAMP made \"%a, %d %b %Y %H:%M:%S +0000\" UTC)
  set(text \"ferrule (${PROJECT_VERSION}-${FERRULE_PACKAGE_RELEASE}) unstable; urgency=medium\")
  string(APPEND text \"\\n\\n  * Packages of version ${PROJECT_VERSION}; changelog.gz tells what is new.\")
  string(APPEND text \"\\n\\n -- ${FERRULE_MAINTAINER}  \${made}\\n\")
  file(WRITE \"${share}/changelog.Debian\" \"\${text}\")" COMPONENT ferrule)
ferrule_install_compressed(ferrule ${share}/changelog.Debian ${documents}/changelog.Debian.gz)
ferrule_install_compressed(ferrule ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog.gz)
foreach(page ferrule ferrule-host)
  ferrule_install_compressed(ferrule ${share}/man/man1/${page}.1 share/man/man1/${page}.1.gz)
endforeach()

if(FERRULE_HAS_GUI)
  install(TARGETS FerruleHostWindow LIBRARY DESTINATION ${programs} COMPONENT gui ${as_data})
  install(TARGETS FerruleWindows LIBRARY DESTINATION ${programs}/plug_ins/Ferrule COMPONENT gui ${as_data})
  file(CREATE_LINK ferrule ${PROJECT_BINARY_DIR}/links/ferrule-gui SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/links/ferrule-gui DESTINATION share/doc COMPONENT gui)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ferrule)
set(CPACK_PACKAGE_CONTACT "${FERRULE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${FERRULE_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FERRULE_PACKAGE_NAME ferrule)
set(CPACK_DEBIAN_FERRULE_PACKAGE_RECOMMENDS poppler-data)
set(CPACK_DEBIAN_FERRULE_PACKAGE_SUGGESTS ferrule-gui)
set(CPACK_COMPONENT_FERRULE_DESCRIPTION "batch sequences over folders of PDF documents
Runs sequences of steps over many PDF documents, unattended and on all
processors: protection by passwords, metadata, names, search, full-text
indexes. A run can be interrupted, gone on with and taken back.")
set(CPACK_DEBIAN_GUI_PACKAGE_NAME ferrule-gui)
set(CPACK_DEBIAN_GUI_PACKAGE_SUGGESTS "")
set(CPACK_COMPONENT_GUI_DESCRIPTION "windows of ferrule-host and its plug-in
What \"ferrule-host --window\" needs: the menus of plug-ins, a list of the
open documents, and dialogs for work on many documents.")
set(CPACK_COMPONENTS_ALL ferrule)
if(FERRULE_HAS_GUI)
  list(APPEND CPACK_COMPONENTS_ALL gui)
endif()
set(CPACK_COMPONENT_GUI_DEPENDS ferrule)
include(CPack)
