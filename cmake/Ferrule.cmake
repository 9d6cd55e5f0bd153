# What every target of the project shares.

# What depends on the system stands in files whose names end so.
set(FERRULE_SYSTEM posix)
if(WIN32)
  set(FERRULE_SYSTEM win)
endif()

add_library(ferrule_options INTERFACE)
target_compile_features(ferrule_options INTERFACE cxx_std_20)
target_include_directories(ferrule_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(ferrule_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror
  -Wconversion -Wsign-conversion $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
if(FERRULE_SANITIZE)
  # The compiler's guesses about uninitialised values are wrong for instrumented code of the standard library; the
  # release build keeps them.
  target_compile_options(ferrule_options INTERFACE -Wno-maybe-uninitialized)
  target_compile_options(ferrule_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                                   -fno-omit-frame-pointer)
  target_link_options(ferrule_options INTERFACE -fsanitize=address,undefined)
endif()

# Lines and functions are what a crash report or a profile needs; debug information of every type would double the time of
# compiling. The debug preset has all of it.
string(REPLACE " -g " " -g1 " CMAKE_CXX_FLAGS_RELWITHDEBINFO "${CMAKE_CXX_FLAGS_RELWITHDEBINFO}")

include(${CMAKE_CURRENT_LIST_DIR}/Windows.cmake)

# Files of a folder are compiled a dozen at a time: most of the time of compiling one is its headers. -DFERRULE_JOIN=OFF
# compiles each by itself, which shows what a file forgot to include.
option(FERRULE_JOIN "Compile several files of a folder at once" ON)
function(ferrule_join_sources target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${FERRULE_JOIN} UNITY_BUILD_BATCH_SIZE 12)
endfunction()

# ferrule_library(<folder> SOURCES ... [DEPENDS ...]): the static library ferrule_<folder> from one folder under src/.
function(ferrule_library folder)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(ferrule_${folder} STATIC ${arg_SOURCES})
  set_target_properties(ferrule_${folder} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                                     C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  ferrule_join_sources(ferrule_${folder})
  target_link_libraries(ferrule_${folder} PUBLIC ferrule_options ${arg_DEPENDS})
endfunction()

# ferrule_test(<name> SOURCES ... [DEPENDS ...]): one test program. Each of its cases is a test of its own, except on Windows:
# there the whole program is one, since starting a program through an emulator takes longer than most cases.
function(ferrule_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  ferrule_join_sources(${name})
  # Tests are compiled more often than run. Fixtures of an anonymous namespace are in no header, wherever they are joined.
  target_compile_options(${name} PRIVATE -O1 -Wno-subobject-linkage)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ferrule_options ${arg_DEPENDS} GTest::gtest GTest::gmock GTest::gtest_main)
  if(WIN32)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 900)
    return()
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
