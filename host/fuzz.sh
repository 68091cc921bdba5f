#!/bin/sh
# Builds the libFuzzer targets with clang and runs each for FUZZ_SECONDS
# (default 20), starting from the regression inputs in fuzz/regressions.
# A crash fails the run and leaves its input in build-fuzz/fuzz/.  Nothing is
# left in /tmp.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/host/deps.sh"
for pkg in clang libclang-rt-14-dev; do
    dpkg -s "$pkg" >/dev/null 2>&1 || DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$pkg"
done
build=$top/build-fuzz
CXX=clang++ cmake -S "$top" -B "$build" -DWLANSYNC_FUZZ=ON -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)"
# The targets make their sandboxes below $tmp and remove them when they end;
# a crash skips that, so the folder goes after the runs whatever happened.
# In memory where there is one: every configuration-file edit syncs its file.
if [ -w /dev/shm ]; then
    tmp=$(mktemp -d /dev/shm/wlansync-fuzz-run.XXXXXX)
else
    tmp=$build/tmp
    mkdir -p "$tmp"
fi
trap 'rm -rf "$tmp"' EXIT
for target in cfgline args cfgfile; do
    corpus=$build/corpus/$target
    mkdir -p "$corpus"
    cp "$top"/fuzz/regressions/$target-* "$corpus"/ 2>/dev/null || true
    echo "== fuzz_$target for ${FUZZ_SECONDS:-20} s"
    (cd "$build/fuzz" && TMPDIR=$tmp ./fuzz_$target -max_total_time="${FUZZ_SECONDS:-20}" -print_final_stats=1 \
        "$corpus" 2>&1 | grep -E "^(stat::number_of_executed_units|==.*ERROR|SUMMARY)" || true)
    (cd "$build/fuzz" && ! ls crash-* leak-* timeout-* 2>/dev/null | grep -q .)
done
