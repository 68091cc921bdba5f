#!/bin/sh
# Installs what is needed, then builds and runs every test twice: a plain
# build, and one under AddressSanitizer + UndefinedBehaviorSanitizer.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/host/deps.sh"
jobs=$(nproc 2>/dev/null || echo 2)
for variant in build:OFF build-asan:ON; do
    dir=$top/${variant%%:*}
    cmake -S "$top" -B "$dir" -DWLANSYNC_SANITIZE="${variant##*:}" >/dev/null
    cmake --build "$dir" -j "$jobs"
    (cd "$dir" && ctest --output-on-failure -j "$jobs")
done
# The same suite for the access point's CPU: an ARM build run under qemu-arm.
sh "$top/host/arm.sh"
# The fuzz targets, each for a bounded time from its regression inputs.
sh "$top/host/fuzz.sh"
