#!/bin/sh
# Installs what is needed, then runs every test: the suite plainly, under
# AddressSanitizer + UndefinedBehaviorSanitizer and as an ARM build under
# qemu-arm; the fuzz targets for a bounded time; the simulated access point's
# scenario; power cuts and a driver in a kernel, in virtual machines.  Every
# stage runs whatever an earlier one gave; ends with one summary line,
# non-zero when a test failed.
set -u
top=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
passed=0 failed=0
# A suite's counts from its ctest log; no counts (it did not build) is one failure.
suite() {
    counts=$(sed -n 's/.* tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$1" 2>/dev/null)
    set -- $counts 1 1
    failed=$((failed + $1)) passed=$((passed + $2 - $1))
}
# A stage worth $1 tests when its status $2 is 0, one failure otherwise.
stage() { if [ "$2" -eq 0 ]; then passed=$((passed + $1)); else failed=$((failed + 1)); fi; }

"$top/host/deps.sh" || failed=$((failed + 1))
for variant in build:OFF build-asan:ON; do
    dir=$top/${variant%%:*}
    rm -f "$dir/ctest.log"
    cmake -S "$top" -B "$dir" -DBUILD_TESTING=ON -DWLANSYNC_SANITIZE="${variant##*:}" >/dev/null &&
        cmake --build "$dir" -j "$jobs" &&
        (cd "$dir" && ctest --output-on-failure -j "$jobs" > ctest.log 2>&1; cat ctest.log)
    suite "$dir/ctest.log"
done
# The same suite for the access point's CPU: an ARM build run under qemu-arm.
rm -f "$top/build-arm/ctest.log"
sh "$top/host/arm.sh"
suite "$top/build-arm/ctest.log"
# The fuzz targets, each for a bounded time from its regression inputs.
sh "$top/host/fuzz.sh"
stage 2 $?
mkdir -p "$top/build"
# Smoke test: the README's main command, the whole scenario on a simulated
# access point, must end with every step's exit status 0.
if sh "$top/sim/scenario.sh" > "$top/build/scenario.log" 2>&1; then
    echo "scenario on the simulated access point: every step's exit status was 0"
    stage 1 0
else
    tail -n 40 "$top/build/scenario.log"
    echo "scenario on the simulated access point FAILED (full output: build/scenario.log)"
    stage 1 1
fi
# Power cuts on a real kernel, on ext4 and on UBIFS over simulated flash (a
# throwaway qemu machine): after every cut the driver file must be one the
# tool wrote whole, and the rig's own unsynced writer must be caught.  Cuts
# early in their window.  One test per file system.
if POWERCUT_FS="ext4 ubifs" POWERCUT_WINDOW=6-10 sh "$top/host/powercut.sh" 20 > "$top/build/powercut.log" 2>&1; then
    tail -n 5 "$top/build/powercut.log"
    stage 2 0
else
    tail -n 40 "$top/build/powercut.log"
    echo "power cuts FAILED (full output: build/powercut.log)"
    stage 1 1
fi
# The tool against the simulated driver in a kernel, behind the real iwpriv:
# each of its checks counts; a rig that ended without its line is one failure.
if ! sh "$top/host/driver.sh" > "$top/build/driver.log" 2>&1; then
    tail -n 40 "$top/build/driver.log"
    echo "driver checks FAILED (full output: build/driver.log)"
fi
tail -n 1 "$top/build/driver.log"
set -- $(sed -n 's/^driver checks: \([0-9]*\) passed, \([0-9]*\) failed$/\1 \2/p' "$top/build/driver.log") 0 1
passed=$((passed + $1)) failed=$((failed + $2))
echo "summary: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
