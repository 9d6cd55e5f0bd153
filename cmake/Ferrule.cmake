# What every target of the project shares.

# What depends on the system stands in files whose names end so.
set(FERRULE_SYSTEM posix)
if(WIN32)
  set(FERRULE_SYSTEM win)
endif()

add_library(ferrule_options INTERFACE)
target_compile_features(ferrule_options INTERFACE cxx_std_20)
target_include_directories(ferrule_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(ferrule_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror)
if(FERRULE_SANITIZE)
  # The compiler's guesses about uninitialised values are wrong for instrumented code of the standard library; the
  # release build keeps them.
  target_compile_options(ferrule_options INTERFACE -Wno-maybe-uninitialized)
  target_compile_options(ferrule_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                                   -fno-omit-frame-pointer)
  target_link_options(ferrule_options INTERFACE -fsanitize=address,undefined)
endif()

include(${CMAKE_CURRENT_LIST_DIR}/Windows.cmake)

# ferrule_library(<folder> SOURCES ... [DEPENDS ...]): the static library ferrule_<folder> from one folder under src/.
function(ferrule_library folder)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(ferrule_${folder} STATIC ${arg_SOURCES})
  set_target_properties(ferrule_${folder} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                                     C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(ferrule_${folder} PUBLIC ferrule_options ${arg_DEPENDS})
endfunction()

# ferrule_test(<name> SOURCES ... [DEPENDS ...]): one test program. Each of its cases is a test of its own, except on Windows:
# there the whole program is one, since starting a program through an emulator takes longer than most cases.
function(ferrule_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ferrule_options ${arg_DEPENDS} GTest::gtest GTest::gmock GTest::gtest_main)
  if(WIN32)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 900)
    return()
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
