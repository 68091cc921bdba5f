#!/bin/sh
# The test command: sh host/test.sh [--list | STAGE...]
#
# Installs what is needed, then runs every stage, or only the stages named:
# the suite plainly, under AddressSanitizer + UndefinedBehaviorSanitizer and
# as an ARM build under qemu-arm; the slow CTest labels (oracle, busy); the
# fuzz targets for a bounded time; the simulated access point's scenario;
# power cuts and a driver in a kernel, in virtual machines; the docs check.
# --list names the stages with a typical time each.  Every stage runs
# whatever an earlier one gave, its output in build/stage-NAME.log; a stage
# line per stage, then always the summary line
#   summary: N passed, M failed, S skipped (K stages)
# and the status is non-zero when M is.  A stage that cannot run prints
# "skipped: <reason>" and exits 77: it counts as skipped, never passed.
#
# Each stage's command lines stand alone on their lines below, as typed from
# the top of the checkout: the docs check (host/docs-check.sh) takes an sh
# block of README.md or docs/ as run by a stage when its command line is a
# line of this file.
set -u
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top" || exit 1
jobs=$(nproc 2>/dev/null || echo 2)
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$jobs}"
export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$jobs}"

# Name | typical time (two idle cores, the packages there and the trees
# built) | how it counts | lines of its log shown when
# it passes | what it runs.  The order is the whole suite's.
table='docs|1 s|1|0|code blocks and figures of README.md and docs/ (host/docs-check.sh)
plain|1 min|ctest|0|the suite in build/, less the labels oracle and busy
oracle|15 s|label|0|the CTest tests labelled oracle, in build/
busy|10 s|label|0|the CTest tests labelled busy, in build/
asan|2 min|ctest|0|the suite under ASan + UBSan in build-asan/, less oracle and busy
arm|1 min|ctest|0|the suite built for ARM, run under qemu-arm (host/arm.sh)
fuzz|1 min|2|0|each fuzz target for 20 s from its regression inputs (host/fuzz.sh)
scenario|1 min|1|0|the day of changes on the simulated access point (sim/scenario.sh)
powercut|10 min|2|9|20 power cuts on ext4 and 20 on UBIFS in a virtual machine
powercut-arm|3.5 min|1|6|10 power cuts on UBIFS in an ARM virtual machine
driver|1 min|checks|0|the tool against the simulated driver in a kernel (host/driver.sh)
driver-arm|1 min|checks|0|the same in an ARM virtual machine'
field() { printf '%s\n' "$table" | awk -F '|' -v n="$1" -v i="$2" '$1 == n { print $i }'; }

# The stages.  Each runs in a subshell that stops at its first failing
# command; its output goes to its log.
stage_docs() (
    set -e
    sh host/docs-check.sh
)
stage_plain() (
    set -e
    cmake -S . -B build
    cmake --build build
    ctest --test-dir build --output-on-failure -LE 'oracle|busy'
)
stage_oracle() (
    set -e
    cmake -S . -B build
    cmake --build build
    ctest --test-dir build --output-on-failure -L oracle
)
stage_busy() (
    set -e
    cmake -S . -B build
    cmake --build build
    ctest --test-dir build --output-on-failure -L busy
)
stage_asan() (
    set -e
    cmake -S . -B build-asan -DWLANSYNC_SANITIZE=ON
    cmake --build build-asan
    ctest --test-dir build-asan --output-on-failure -LE 'oracle|busy'
)
stage_arm() (
    set -e
    sh host/arm.sh
)
stage_fuzz() (
    set -e
    sh host/fuzz.sh
)
# Smoke test: the README's main command, the whole scenario on a simulated
# access point, must end with every step's exit status 0.
stage_scenario() (
    set -e
    sh sim/scenario.sh
)
# After every cut the driver file must be one the tool wrote whole, and the
# rig's own unsynced writer must be caught.  Cuts early in their window.
stage_powercut() (
    set -e
    POWERCUT_FS="ext4 ubifs" POWERCUT_WINDOW=6-10 sh host/powercut.sh 20
)
stage_powercut_arm() (
    set -e
    VM_ARCH=armhf POWERCUT_FS=ubifs POWERCUT_WINDOW=6-10 sh host/powercut.sh 10
)
stage_driver() (
    set -e
    sh host/driver.sh
)
stage_driver_arm() (
    set -e
    VM_ARCH=armhf sh host/driver.sh
)

names=$(printf '%s\n' "$table" | cut -d '|' -f 1)
if [ "${1:-}" = --list ]; then
    printf '%s\n' "$table" | awk -F '|' '{ printf "%-13s %-7s %s\n", $1, $2, $5 }'
    exit 0
fi
for name in "$@"; do
    printf '%s\n' "$names" | grep -qx -- "$name" ||
        { echo "unknown stage: $name (sh host/test.sh --list names them)" >&2; exit 2; }
done
[ "$#" -gt 0 ] || set -- $names

passed=0 failed=0 skipped=0 stages=0
# Counted from a stage's log.  A suite: its ctest counts; no counts (it did
# not build) is one failure.  A label: the same, but no test with the label
# is a skip.  Checks: the rig's "driver checks: N passed, M failed" line; no
# line is one failure.  A number: worth that many tests when its status is
# 0, one failure otherwise.
count() { # HOW LOG STATUS: sets p f and, for a skip, why
    how=$1 log=$2 status=$3 p=0 f=0 why=""
    if [ "$status" -eq 77 ]; then
        why=$(sed -n 's/^skipped: //p' "$log" | head -n 1)
        [ -z "$why" ] || return 0
    fi
    case $how in
    ctest | label)
        if [ "$how" = label ] && grep -q 'No tests were found' "$log"; then why="no tests"; return 0; fi
        set -- $(sed -n 's/.* tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$log" | tail -n 1) 1 1
        f=$1 p=$(($2 - $1)) ;;
    checks)
        set -- $(sed -n 's/^driver checks: \([0-9]*\) passed, \([0-9]*\) failed$/\1 \2/p' "$log" | tail -n 1) 0 1
        p=$1 f=$2 ;;
    *) if [ "$status" -eq 0 ]; then p=$how; else f=1; fi ;;
    esac
    # Counts said, but the stage failed all the same (a later step): one more.
    [ "$status" -eq 0 ] || [ "$f" -gt 0 ] || f=1
}

mkdir -p build
for name in "$@"; do
    [ "$name" = docs ] && continue
    host/deps.sh || { echo "host/deps.sh FAILED"; failed=$((failed + 1)); }
    break
done
for name in "$@"; do
    log=build/stage-$name.log
    start=$(date +%s)
    "stage_$(echo "$name" | tr - _)" > "$log" 2>&1 < /dev/null
    status=$?
    secs=$(($(date +%s) - start))
    count "$(field "$name" 3)" "$log" "$status"
    stages=$((stages + 1))
    if [ -n "$why" ]; then
        skipped=$((skipped + 1))
        echo "stage $name: skipped: $why, $secs s"
        continue
    fi
    passed=$((passed + p)) failed=$((failed + f))
    if [ "$f" -gt 0 ]; then
        tail -n 40 "$log"
        echo "stage $name FAILED (full output: $log)"
    else
        shown=$(field "$name" 4)
        [ "$shown" -eq 0 ] || tail -n "$shown" "$log"
    fi
    echo "stage $name: $p passed, $f failed, $secs s"
done
echo "summary: $passed passed, $failed failed, $skipped skipped ($stages stages)"
[ "$failed" -eq 0 ]
