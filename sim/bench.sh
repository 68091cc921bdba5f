#!/bin/sh
# Benchmark on the simulated access point: a VAP start, a channel change and
# an ACL insert; then --check and --resync of a full configuration (4 VAPs on
# one radio, 64 ACL entries, 4 WDS peers, 2 RADIUS servers) whose file has
# one hand edit, and --resync once it is in step.  For each: wall time (median of RUNS, default 7), the
# instructions the tool itself executes (callgrind, the programs it starts
# not traced), its own CPU time (median) and peak RSS, and the processes it
# starts, by kind.  Then the stripped size of the tool.  It prints figures; it
# judges nothing.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD:-$top/build}
runs=${RUNS:-7}
cmake -S "$top" -B "$build" > /dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target wlanSyncTool wlanFramework wlanMeasure > /dev/null
for pkg in strace valgrind; do
    dpkg -s "$pkg" > /dev/null 2>&1 || DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$pkg"
done
R=$(mktemp -u /tmp/wlansync-bench-XXXXXX)
trap 'sh "$top/sim/ap" destroy "$R"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
sh "$top/sim/ap" create "$R" > /dev/null
db=$R/tmp/system.db
tool=$build/wlanSyncTool
ap() { sh "$top/sim/ap" exec "$R" "$@"; }

# The programs the tool itself starts (its direct children), by kind.
count_processes() {
    ap strace -f -qq -e trace=execve,clone,clone3,vfork,fork -e signal=none -o "$R/trace" "$@" \
        > /dev/null 2>&1 || true
    awk '
        /execve\(/ {
            split($0, q, "\""); n = split(q[2], p, "/")
            if (!($1 in prog)) prog[$1] = p[n]
            if (tool == "") tool = $1
        }
        /(clone3?|vfork|fork)(\(| resumed)/ && $NF ~ /^[0-9]+$/ { parent[$NF] = $1 }
        END {
            for (pid in parent) {
                if (parent[pid] != tool || !(pid in prog)) continue
                kind = prog[pid]
                if (kind ~ /^(sh|bash|dash)$/) kind = "shell"
                else if (kind ~ /^(cat|grep|mv|echo)$/) kind = "cat/grep/mv"
                else if (kind == "iwpriv") kind = "driver utility"
                count[kind]++
            }
            out = ""
            for (k in count) out = out k " " count[k] ", "
            print (out == "" ? "none" : substr(out, 1, length(out) - 2))
        }' "$R/trace"
}

# The tool's own work on the driver file: replacements (renames onto it),
# syncs, and bytes written to it and its temporary file.
count_file_work() {
    ap strace -f -qq -y -e trace=write,rename,renameat,renameat2,fsync,fdatasync -e signal=none \
        -o "$R/trace" "$@" > /dev/null 2>&1 || true
    awk '
        /rename.*RT2860AP\.dat/ { renames++ }
        /f(data)?sync\(/ { syncs++ }
        /^[0-9]+ +write\([0-9]+<[^>]*[rR][tT]2860AP1?\.dat>/ { n = $NF; if (n > 0) bytes += n }
        END { printf "%d replacements, %d syncs, %d bytes written", renames, syncs, bytes }' "$R/trace"
}

# The instructions the tool executes, in millions; the programs it starts
# are not counted.
count_instructions() {
    ap valgrind --tool=callgrind --trace-children=no --callgrind-out-file=/dev/null "$@" 2>&1 |
        sed -n 's/.*Collected : *\([0-9]*\).*/\1/p' | awk '{ printf "%.2f", $1 / 1e6 }'
}

median() { printf '%s\n' $1 | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# measure NAME PREPARE ARGS: PREPARE runs before each run; ARGS, the tool's
# arguments, are expanded after it.
measure() {
    name=$1
    prepare=$2
    args=$3
    walls=""
    cpus=""
    rss=0
    i=0
    while [ "$i" -lt "$runs" ]; do
        i=$((i + 1))
        eval "$prepare"
        eval "set -- $args"
        set -- $(ap "$build/wlanMeasure" "$tool" "$@" | tail -n 1)
        walls="$walls $1"
        cpus="$cpus $2"
        [ "$3" -gt "$rss" ] && rss=$3
        [ "$4" -eq 0 ] || echo "  (run $i exited with status $4)"
    done
    eval "$prepare"
    eval "set -- $args"
    procs=$(count_processes "$tool" "$@")
    eval "$prepare"
    eval "set -- $args"
    instructions=$(count_instructions "$tool" "$@")
    eval "$prepare"
    eval "set -- $args"
    file=$(count_file_work "$tool" "$@")
    printf '%-15s wall %6s ms   instructions %6s M   tool CPU %6s ms   peak RSS %5s kB   started: %s   file: %s\n' \
        "$name" "$(median "$walls")" "$instructions" "$(median "$cpus")" "$rss" "$procs" "$file"
}

acl=0
next_acl() {
    acl=$((acl + 1))
    sqlite3 "$db" "INSERT INTO dot11ACL (rowid, vapName, macAddress)
                   VALUES ($acl, 'ap1', printf('02:00:00:00:%02X:%02X', $acl / 256, $acl % 256))"
}
channel=6
next_channel() {
    channel=$((channel == 6 ? 11 : 6))
    sqlite3 "$db" "UPDATE dot11Radio SET configuredChannel=$channel WHERE radioNo=1"
}
radio_prior="radioNo interfaceName cardNo rogueAPEnabled configuredChannel band opMode dothEnabled"
radio_prior="$radio_prior dothMaxPower dothMarkDfs wdsEnabled 1 wlan0 1 0 6 2.4GHz ng 0 0 0 0"

# A WPA2-PSK VAP start with a new pass phrase each time; then the same start
# again, which has nothing to write.
psk=0
next_psk() {
    psk=$((psk + 1))
    sqlite3 "$db" "UPDATE dot11VAP SET profileName='secure' WHERE vapName='ap1';
                   UPDATE dot11Profile SET pskPassAscii='pass phrase $psk' WHERE profileName='secure'"
}

echo "wlanSyncTool on the simulated access point ($runs runs each; wall and CPU are medians)"
measure "VAP start" "next_psk" '"$db" 23 dot11VAP 1 vapName vapEnabled ap1 1'
measure "same again" ":" '"$db" 23 dot11VAP 1 vapName vapEnabled ap1 1'
measure "channel change" "next_channel" '"$db" 23 dot11Radio 1 $radio_prior'
measure "ACL insert" "next_acl" '"$db" 18 dot11ACL $acl'

# The full configuration: every VAP started by the framework, the rest
# written straight into the database, then the file brought in step.
sh "$top/sim/ap" apply "$R" "UPDATE dot11VAP SET vapEnabled=1" > /dev/null
sqlite3 "$db" "DELETE FROM dot11ACL; UPDATE dot11Radio SET wdsEnabled=1;
    INSERT INTO radiusClient VALUES ('192.168.1.6', '1812', 'second-secret');
    WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 64)
      INSERT INTO dot11ACL SELECT 'ap' || (1 + i % 4), printf('02:00:00:01:00:%02X', i) FROM n;
    WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 4)
      INSERT INTO dot11WDSPeers SELECT 1, printf('02:00:00:02:00:%02X', i), i, 'CCMP', 'wds key' FROM n"
ap "$tool" --resync "$db" > /dev/null
cfg=$R/etc/Wireless/RT2860AP/RT2860AP.dat
drift() { sed -i "s/^SSID2=.*/SSID2=drift/" "$cfg"; }
measure "resync (full)" "drift" '--resync "$db"'
measure "check (full)" ":" '--check "$db"'
measure "resync in step" ":" '--resync "$db"'
stripped=$(mktemp)
trap 'rm -f "$stripped"; sh "$top/sim/ap" destroy "$R"' EXIT
strip -o "$stripped" "$tool"
echo "stripped binary: $(stat -c %s "$stripped") bytes ($(uname -m))"
if [ -x "$top/build-arm/wlanSyncTool" ] && command -v arm-linux-gnueabihf-strip > /dev/null; then
    arm-linux-gnueabihf-strip -o "$stripped" "$top/build-arm/wlanSyncTool"
    echo "stripped binary: $(stat -c %s "$stripped") bytes (arm-linux-gnueabihf)"
fi
rm -f "$stripped"
