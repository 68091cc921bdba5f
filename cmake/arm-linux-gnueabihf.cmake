# Cross build for 32-bit ARM Linux (hard float), as on the access point.
#   cmake -S . -B build-arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake \
#         -DWLANSYNC_SYSROOT=/path/to/target/libraries
# WLANSYNC_SYSROOT holds the target's SQLite (and GoogleTest, for the tests)
# as unpacked from armhf packages; host/arm.sh makes one.  Tests run under
# qemu-arm.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(WLANSYNC_SYSROOT "" CACHE PATH "Target libraries unpacked below this folder")
set(CMAKE_FIND_ROOT_PATH ${WLANSYNC_SYSROOT} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf)
