# What only programs for Windows have: a manifest and a description of their version.

# ferrule_describe(<target> <description>): name, version and description as Windows shows them among a file's properties.
function(ferrule_describe target description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${target} TYPE)
  get_target_property(suffix ${target} SUFFIX)
  set(name ${target}${suffix})
  set(file_type VFT_DLL)
  if(type STREQUAL EXECUTABLE)
    set(name ${target}${CMAKE_EXECUTABLE_SUFFIX})
    set(file_type VFT_APP)
  endif()
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/windows/version.rc.in ${source} @ONLY)
  # A target of its own: the resource compiler understands none of a program's compiler options.
  add_library(${target}_version OBJECT ${source})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
endfunction()

# ferrule_controls_of_today(<target>): a library whose controls look as today whatever the host's own do. What it asks the system
# for is in a resource of its own, which the library names when it opens windows.
function(ferrule_controls_of_today target)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_controls.rc)
  file(CONFIGURE OUTPUT ${source} CONTENT "2 24 \"${CMAKE_CURRENT_FUNCTION_LIST_DIR}/windows/controls.manifest\"\n")
  set_source_files_properties(${source} PROPERTIES
    OBJECT_DEPENDS ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/windows/controls.manifest)
  add_library(${target}_controls OBJECT ${source})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_controls>)
endfunction()

if(NOT WIN32)
  return()
endif()

# Every program has the manifest, those of the tests too: it makes UTF-8 the code page of the process. A plug-in has none, it
# lives with the code page of its host.
set(manifest ${CMAKE_CURRENT_BINARY_DIR}/manifest.rc)
configure_file(${CMAKE_CURRENT_LIST_DIR}/windows/manifest.rc.in ${manifest} @ONLY)
set_source_files_properties(${manifest} PROPERTIES OBJECT_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/windows/program.manifest)
add_library(ferrule_manifest OBJECT ${manifest})
target_sources(ferrule_options INTERFACE
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:ferrule_manifest>>)
