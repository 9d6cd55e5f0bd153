# Toolchain: 64-bit Windows programs from Linux, with mingw-w64 (posix threads) and static libraries.
#
# FERRULE_WINDOWS_PREFIX is the folder that scripts/windows-libraries prints:
#   cmake -S . -B build/windows --toolchain cmake/mingw-w64.cmake -DFERRULE_WINDOWS_PREFIX="$(scripts/windows-libraries)"
# Libraries, headers and packages are looked for there and among those of mingw-w64, and nowhere else.

if(NOT FERRULE_WINDOWS_PREFIX)
  message(FATAL_ERROR "FERRULE_WINDOWS_PREFIX is not set; scripts/windows-libraries builds and prints the folder.")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FERRULE_WINDOWS_PREFIX)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ferrule_triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ferrule_triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ferrule_triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${ferrule_triplet}-windres)
set(CMAKE_AR ${ferrule_triplet}-gcc-ar-posix)
set(CMAKE_RANLIB ${ferrule_triplet}-gcc-ranlib-posix)

# Windows 10 is the oldest system; the headers then declare what it has.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")

# The compiler's own run-time libraries too: what is built asks for nothing but DLLs of the system.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

set(CMAKE_FIND_ROOT_PATH "${FERRULE_WINDOWS_PREFIX}" /usr/${ferrule_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(OPENSSL_USE_STATIC_LIBS ON)

# pkg-config sees the prefix only, and names what static libraries need as well.
set(ENV{PKG_CONFIG_LIBDIR} "${FERRULE_WINDOWS_PREFIX}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
set(PKG_CONFIG_ARGN --static CACHE STRING "Arguments to supply to pkg-config")
