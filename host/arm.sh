#!/bin/sh
# Builds wlanSyncTool for ARM (arm-linux-gnueabihf) and runs the test suite
# under qemu-arm, less the slow stages' labels (oracle, busy), which need
# the host's own build and time.  The target's SQLite and GoogleTest come from
# Debian's armhf packages, unpacked into build-arm/sysroot.
#   sh host/arm.sh TARGET...   builds only those targets, runs no test (the
#                              rigs' ARM machines take their programs so)
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/host/deps.sh"
need=""
for pkg in g++-arm-linux-gnueabihf qemu-user; do
    dpkg -s "$pkg" >/dev/null 2>&1 || need="$need $pkg"
done
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
if [ -n "$need" ]; then
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends $need
fi
build=$top/build-arm
sysroot=$build/sysroot
if [ ! -f "$sysroot/usr/include/sqlite3.h" ] || [ ! -d "$sysroot/usr/lib/arm-linux-gnueabihf/cmake/GTest" ]; then
    if ! dpkg --print-foreign-architectures | grep -qx armhf; then
        $SUDO dpkg --add-architecture armhf
        $SUDO apt-get update || true  # an out-of-step armhf index must not stop the download
    fi
    mkdir -p "$build/debs" "$sysroot"
    (cd "$build/debs" && apt-get download libsqlite3-dev:armhf libsqlite3-0:armhf \
        libgtest-dev:armhf libgmock-dev:armhf)
    for deb in "$build"/debs/*.deb; do dpkg -x "$deb" "$sysroot"; done
fi
cmake -S "$top" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$top/cmake/arm-linux-gnueabihf.cmake" \
    -DWLANSYNC_SYSROOT="$sysroot" -DBUILD_TESTING=ON >/dev/null
if [ "$#" -gt 0 ]; then
    cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target "$@"
    exit 0
fi
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)"
command -v file > /dev/null && file "$build/wlanSyncTool"
status=0
(cd "$build" && ctest --output-on-failure -LE 'oracle|busy' -j "$(nproc 2>/dev/null || echo 2)" > ctest.log 2>&1) || status=$?
cat "$build/ctest.log"
exit "$status"
