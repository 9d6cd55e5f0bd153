# The toolkit of the windows, wxWidgets: the target ferrule_toolkit, when FERRULE_GUI says so. Everything but windows is built
# without it, and a dialog then says that there are none.
set(FERRULE_GUI AUTO CACHE STRING "Build the windows: ON, OFF, or AUTO (when wxWidgets 3.2 is found)")
set_property(CACHE FERRULE_GUI PROPERTY STRINGS AUTO ON OFF)

set(FERRULE_HAS_GUI OFF)
if(FERRULE_GUI STREQUAL "OFF")
  return()
endif()

if(WIN32)
  pkg_check_modules(WXWIDGETS IMPORTED_TARGET wxwidgets)
  set(libraries PkgConfig::WXWIDGETS)
else()
  find_package(wxWidgets 3.2 QUIET COMPONENTS core base)
  pkg_check_modules(GTK3 QUIET IMPORTED_TARGET gtk+-3.0) # for what screen readers and the keyboard want
  set(libraries PkgConfig::GTK3 ${wxWidgets_LIBRARIES})
endif()
if((WIN32 AND WXWIDGETS_FOUND) OR (wxWidgets_FOUND AND GTK3_FOUND))
  set(FERRULE_HAS_GUI ON)
elseif(FERRULE_GUI STREQUAL "AUTO")
  message(STATUS "Without windows: wxWidgets 3.2 (libwxgtk3.2-dev, libgtk-3-dev) is not there.")
else()
  message(FATAL_ERROR "FERRULE_GUI is ${FERRULE_GUI}, but wxWidgets 3.2 (libwxgtk3.2-dev, libgtk-3-dev) is not there.")
endif()

if(FERRULE_HAS_GUI)
  add_library(ferrule_toolkit INTERFACE)
  target_include_directories(ferrule_toolkit SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
  target_compile_definitions(ferrule_toolkit INTERFACE ${wxWidgets_DEFINITIONS})
  target_link_libraries(ferrule_toolkit INTERFACE ${libraries})
endif()
