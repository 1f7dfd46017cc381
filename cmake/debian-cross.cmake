# Compiles for another of Debian's architectures, with Debian's cross compiler:
#   cmake --preset release --toolchain cmake/debian-cross.cmake \
#         -D TAV_TRIPLET=aarch64-linux-gnu -D CMAKE_SYSROOT=FOLDER
# The folder is a Debian system of that architecture with what scripts/install-deps installs.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAV_TRIPLET)
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR ${TAV_TRIPLET})
set(CMAKE_C_COMPILER ${TAV_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${TAV_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${TAV_TRIPLET})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(KIND LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${KIND} ONLY)
endforeach()
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${TAV_TRIPLET}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
