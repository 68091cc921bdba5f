#!/bin/sh
# Installs what is needed, then runs every test: the suite plainly, under
# AddressSanitizer + UndefinedBehaviorSanitizer and as an ARM build under
# qemu-arm; the fuzz targets for a bounded time; the simulated access point's
# scenario; power cuts in a virtual machine.  Ends with one summary line.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/host/deps.sh"
jobs=$(nproc 2>/dev/null || echo 2)
for variant in build:OFF build-asan:ON; do
    dir=$top/${variant%%:*}
    cmake -S "$top" -B "$dir" -DBUILD_TESTING=ON -DWLANSYNC_SANITIZE="${variant##*:}" >/dev/null
    cmake --build "$dir" -j "$jobs"
    status=0
    (cd "$dir" && ctest --output-on-failure -j "$jobs" > ctest.log 2>&1) || status=$?
    cat "$dir/ctest.log"
    [ "$status" -eq 0 ]
done
# The same suite for the access point's CPU: an ARM build run under qemu-arm.
sh "$top/host/arm.sh"
# The fuzz targets, each for a bounded time from its regression inputs.
sh "$top/host/fuzz.sh"
# Smoke test: the README's main command, the whole scenario on a simulated
# access point, must end with every step's exit status 0.
if sh "$top/sim/scenario.sh" > "$top/build/scenario.log" 2>&1; then
    echo "scenario on the simulated access point: every step's exit status was 0"
else
    tail -n 40 "$top/build/scenario.log"
    echo "scenario on the simulated access point FAILED (full output: build/scenario.log)"
    exit 1
fi
# Power cuts on a real kernel, on ext4 and on UBIFS over simulated flash (a
# throwaway qemu machine): after every cut the driver file must be one the
# tool wrote whole, and the rig's own unsynced writer must be caught.  Cuts
# early in their window.
if POWERCUT_FS="ext4 ubifs" POWERCUT_WINDOW=6-10 sh "$top/host/powercut.sh" 20 > "$top/build/powercut.log" 2>&1; then
    tail -n 5 "$top/build/powercut.log"
else
    tail -n 40 "$top/build/powercut.log"
    echo "power cuts FAILED (full output: build/powercut.log)"
    exit 1
fi
# The tool against the simulated driver in a kernel, behind the real iwpriv.
if sh "$top/host/driver.sh" > "$top/build/driver.log" 2>&1; then
    tail -n 1 "$top/build/driver.log"
else
    tail -n 40 "$top/build/driver.log"
    echo "driver checks FAILED (full output: build/driver.log)"
    exit 1
fi
# Every test that ran: the three suites, the fuzz targets, the scenario, the
# power cuts on each file system and the driver checks.
suites=$(cat "$top/build/ctest.log" "$top/build-asan/ctest.log" "$top/build-arm/ctest.log" |
    sed -n 's/.* tests passed, 0 tests failed out of \([0-9]*\)$/\1/p' | awk '{ n += $1 } END { print n }')
driver=$(sed -n 's/^driver checks: \([0-9]*\) passed.*/\1/p' "$top/build/driver.log")
echo "summary: $((suites + 2 + 1 + 2 + driver)) passed, 0 failed"
