#!/bin/sh
# The tool against a driver in a kernel: sh host/driver.sh
#
# A throwaway virtual machine (host/vm.sh) loads the simulated RT2860 driver
# (sim/driver, built for the machine's kernel) and applies the day of
# changes of sim/changes.sh from the same start with each kind of sandbox
# root (host/driver/init): "standin", the recording stand-ins with
# WLANSYNC_DRIVER=utility; "utility", Debian's real iwpriv and busybox's
# ifconfig and killall in front of the driver, WLANSYNC_DRIVER=utility;
# "direct", the stand-ins again but the tool speaking to the driver itself;
# "fallback", as direct with vap1 a device whose driver offers no "set".
# The checks: the driver received the requests the stand-ins were given, as
# iwpriv sends them; its interfaces opened and stopped as the stand-ins'
# journal says; exit statuses and log records are the same; the MAC
# addresses stored are the driver's.  The direct path starts no driver
# utility or ifconfig and leaves the utility's records byte for byte; the
# fallback runs the programs for vap1 alone.  The same for a failing
# request, a failing open and a value longer than iwpriv sends.  The direct
# path stops the daemon itself (no killall), as busybox's killall does on
# the utility path, and one that ignores SIGTERM too.  A change's run lost
# and repaired by --resync restarts that VAP instance alone, the same on
# both paths.
# Ends with "driver checks: N passed, M failed"; status 0 only when M is 0.
#
# sh host/driver.sh bench: instead, both paths side by side in one machine
# (host/driver/bench.sh), a WPA2-PSK VAP start and the day of changes: wall
# time and the processes the tool started (with their own), medians of
# BENCH_VAP (5) and BENCH_DAY (3) runs of each.
#
# VM_ARCH=armhf: the same on an ARM machine (host/vm.sh), with the ARM build
# of the tool and its helpers (host/arm.sh), Debian's armhf iwpriv and the
# module built for the armmp kernel.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
mode=${1:-check}
. "$top/host/vm.sh"
"$top/host/deps.sh"
vm_install make gcc libelf-dev

work=$(mktemp -d /tmp/driver-XXXXXX)
vm_work=$work
cleanup() {
    [ -f "$work/driver.pid" ] && kill -KILL "$(cat "$work/driver.pid")" 2> /dev/null
    [ -z "${vm_pid:-}" ] || kill -TERM "$vm_pid" 2> /dev/null  # timeout passes it on to qemu
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

# Each case, one a line "NAME STEPS [PATTERN]", is run with each kind of
# sandbox root (host/driver/init) as KIND-NAME, and every kind's run is
# checked against the stand-ins' run of the same case.  In deaf-daemon the
# daemon ignores SIGTERM (host/driver/daemon).  In resync a change's run is
# lost and --resync repairs it (host/driver/steps.sh): the stand-ins'
# interfaces never open, so its runs are those that reach the driver,
# checked against each other and against what a repair must do.
kinds="standin utility direct fallback"
cases="day all
set-fails 1 vap1 set AuthMode=
up-fails 1 vap1 up
long-value 9
deaf-daemon 7
resync 10"
limit=300
if [ "$mode" = bench ]; then
    kinds="bench-vap bench-day" cases="" limit=900
fi

vm_build "$top/build" wlanSyncTool wlanFramework wlanMeasure
build=$vm_bin
vm_kernel headers || exit $?
rm -rf "$build/driver"
cp -r "$top/sim/driver" "$build/driver"
vm_make "$build/driver"
vm_debs "$work/wt" wireless-tools libiw30

ird=$work/initramfs
mkdir -p "$ird/bin" "$ird/sbin" "$ird/lib/$vm_multiarch"
vm_strip "$build/wlanSyncTool" "$ird/bin/wlanSyncTool"
vm_strip "$build/wlanFramework" "$ird/bin/wlanFramework"
vm_strip "$build/wlanMeasure" "$ird/bin/wlanMeasure"
cp "$work/wt/sbin/iwpriv" "$ird/sbin/"
cp "$work"/wt/lib/"$vm_multiarch"/libiw.so.* "$ird/lib/$vm_multiarch/"
vm_modules "$ird/lib/modules" disk $vm_blk_modules
vm_modules "$ird/lib/modules" plain dummy
cp "$build/driver/rt2860sim.ko" "$ird/lib/modules/"
# Each kind's sandbox root: the kit's, with the real programs in front of
# the driver where the kind has them; /ap/KIND.env sets the tool's
# WLANSYNC_DRIVER (driver) and names the interface whose driver offers no
# "set" (plain).
for kind in $kinds; do
    R=$ird/ap/$kind
    sh "$top/host/kit/sandbox.sh" "$R" "$top/sim/default.sql"
    case $kind in
    standin) echo "driver=utility plain=" ;;
    utility | bench-*)
        ln -sf /sbin/iwpriv "$R/mavo2.0/bin/iwpriv"
        cp "$top/sim/bin/rt2860apd" "$R/mavo2.0/bin/"
        [ "$kind" != utility ] || cp "$top/host/driver/daemon" "$R/mavo2.0/bin/rt2860apd"
        rm "$R/bin/ifconfig" "$R/bin/killall"
        echo "driver=utility plain="
        ;;
    direct)
        cp "$top/host/driver/daemon" "$R/mavo2.0/bin/rt2860apd"
        echo "driver= plain="
        ;;
    fallback) echo "driver= plain=vap1" ;;
    esac > "$ird/ap/$kind.env"
done
sqlite3 "$ird/ap/${kinds##* }/tmp/system.db" "SELECT rowid FROM dot11VAP WHERE vapEnabled=1" > "$ird/ap/boot"
if [ "$mode" = bench ]; then
    sqlite3 "$ird/ap/bench-vap/tmp/system.db" "UPDATE dot11VAP SET profileName='secure', vapEnabled=1 WHERE vapName='ap2'"
    cp "$top/host/driver/bench.sh" "$ird/"
    echo "rounds_vap=${BENCH_VAP:-5} rounds_day=${BENCH_DAY:-3}" > "$ird/bench.rounds"
fi
cp "$top/host/driver/init" "$top/host/driver/steps.sh" "$top/sim/changes.sh" "$ird/"
chmod +x "$ird/init"
echo "$cases" | while read -r name steps pattern; do
    for kind in $kinds; do
        # The fallback's point is made by the day; its faults are direct's.
        [ "$kind" != fallback ] || [ "$name" = day ] || continue
        [ "$name" != resync ] || [ "$kind" = utility ] || [ "$kind" = direct ] || continue
        echo "$kind-$name $kind $steps $pattern"
    done
done > "$ird/runs"
vm_initramfs "$ird" "$work/initramfs.cpio"

vm_disk "$work/out.img"
start=$(date +%s)
vm_boot driver "$limit" "$work/initramfs.cpio" "" "drive:$work/out.img"
{ wait "$vm_pid" || true; } 2> /dev/null
vm_pid=""
rm -f "$work/driver.pid"
vm_said driver DRV
echo "vm: Debian's kernel $vm_abi-$vm_flavour under $vm_qemu, $(($(date +%s) - start)) s in all"
if ! vm_said driver DRV | grep -q '^DONE'; then
    tr -d '\r' < "$work/driver.log" | tail -n 30
    echo "driver checks: 0 passed, 1 failed (the machine did not finish)"
    exit 1
fi
vm_unpack "$work/out.img" "$work/out"
out=$work/out
if [ "$mode" = bench ]; then
    # Medians per measure and path; processes: those the tool's runs
    # started (its programs and theirs), the framework's and the tool's own
    # runs not counted.
    awk '
        function median(list,   n, v, i, j, t) {
            n = split(list, v, " ")
            for (i = 2; i <= n; i++) for (j = i; j > 1 && v[j - 1] + 0 > v[j] + 0; j--) { t = v[j]; v[j] = v[j - 1]; v[j - 1] = t }
            return v[int((n + 1) / 2)]
        }
        {
            k = $1 " " $2
            wall[k] = wall[k] " " $3
            prog[k] = prog[k] " " ($4 - $5 - $6)
            runs[k] = $5
            rounds[k]++
            if ($7 != 0) bad[k]++
        }
        END {
            name["vap"] = "WPA2-PSK VAP start"
            name["day"] = "day of changes"
            for (w = 1; w <= 2; w++) {
                what = w == 1 ? "vap" : "day"
                u = median(wall[what " utility"])
                d = median(wall[what " direct"])
                printf "%-18s utility path: wall %8.1f ms, processes %3d   direct path: wall %8.1f ms, processes %3d   direct/utility %.2f%s%s\n",
                    name[what], u, median(prog[what " utility"]), d, median(prog[what " direct"]), d / u,
                    what == "day" ? sprintf(" (%d tool runs)", runs[what " direct"]) : "",
                    bad[what " utility"] + bad[what " direct"] ? "  NOT ALL EXIT STATUSES 0" : ""
            }
            printf "(medians of %d and %d runs each, taking turns)\n", rounds["vap direct"], rounds["day direct"]
        }' "$out/bench"
    exit 0
fi

# The records the driver should hold after a stand-in run: every driver
# utility call as iwpriv sends it (the driver's first private command,
# SIOCIWFIRSTPRIV, flags 0, the value and its NUL, cut at 1024 bytes
# without it; a call with more than one value never matches), and an open or
# stop for every ifconfig that changes the interface's state; those holding
# PATTERN fail with EIO (-5).
expected() {
    LC_ALL=C awk -F '\t' -v pat="$2" '
        BEGIN { for (i = 1; i < 256; i++) ord[sprintf("%c", i)] = i }
        function esc(s,   out, i, c) {
            for (i = 1; i <= length(s); i++) {
                c = substr(s, i, 1)
                out = out (ord[c] < 32 || ord[c] > 126 || c == "\\" ? sprintf("\\%03o", ord[c]) : c)
            }
            return out
        }
        {
            prog = $1; sub(/.*\//, "", prog)
            joined = $0; gsub(/\t/, " ", joined)
            r = pat != "" && index(joined, pat) ? -5 : 0
            if (prog == "iwpriv") {
                v = $4
                for (i = 5; i <= NF; i++) v = v "\t" $i
                text = esc(v) "\\000"
                n = length(v) + 1
                if (n > 1024) { n = 1024; text = esc(substr(v, 1, 1024)) }
                print "set", $2, "0x8be0", n, "0x0000", r, text
            } else if (prog == "ifconfig" && $3 == "up" && !up[$2]) {
                print "open", $2, r
                up[$2] = !r
            } else if (prog == "ifconfig" && $3 == "down" && up[$2]) {
                print "stop", $2, 0
                up[$2] = 0
            }
        }' "$1"
}
macs() {
    sqlite3 -separator ' ' "$1/system.db" "SELECT interfaceName, lower(macAddress) FROM dot11Interface
                            WHERE macAddress != '' ORDER BY interfaceName"
}

passed=0 failed=0
# same LABEL EXPECTED ACTUAL: the two files must be equal.
same() {
    if cmp -s "$2" "$3"; then
        passed=$((passed + 1))
        echo "ok   $1"
    else
        failed=$((failed + 1))
        echo "FAIL $1"
        diff "$2" "$3" | sed 's/^/     /' | head -n 20
    fi
}
# compare STANDIN MODULE PATTERN: a module run against its stand-in run.
compare() {
    a=$out/$1 b=$out/$2 e=$work/$2
    expected "$a/calls.log" "$3" > "$e.all"
    grep '^set ' "$e.all" > "$e.sets" || true
    grep -v '^set ' "$e.all" > "$e.updown" || true
    grep '^set ' "$b/driver" > "$e.gotsets" || true
    grep -v '^set ' "$b/driver" > "$e.gotupdown" || true
    same "$2: the driver received the requests the stand-ins were given" "$e.sets" "$e.gotsets"
    same "$2: interfaces opened and stopped as the stand-ins' journal says" "$e.updown" "$e.gotupdown"
    same "$2: requests, opens and stops in the journal's order" "$e.all" "$b/driver"
    same "$2: every invocation's exit status as with the stand-ins" "$a/report" "$b/report"
    same "$2: the tool's log records as with the stand-ins" "$a/tool.log" "$b/tool.log"
    macs "$b" > "$e.macs"
    join "$e.macs" "$out/macs" | awk '{ print $1, $3 }' > "$e.drivermacs"
    [ -s "$e.macs" ] || echo "(none stored)" > "$e.macs"
    same "$2: the MAC addresses stored are the driver's" "$e.drivermacs" "$e.macs"
}
: > "$work/empty"
# programs CALLS [IF [keep]]: the driver utility's, ifconfig's and
# killall's calls in a journal (those on IF alone when given), with keep
# its other lines too.
programs() {
    awk -F '\t' -v only="${2:-}" -v keep="${3:-}" '
        { p = $1; sub(/.*\//, "", p) }
        p != "iwpriv" && p != "ifconfig" && p != "killall" { if (keep != "") print; next }
        only == "" || $2 == only' "$1"
}
# fallback STANDIN RUN: vap1, whose driver offers no "set", gets the
# programs the stand-ins got; every other interface the driver's requests.
fallback() {
    a=$out/$1 b=$out/$2 e=$work/$2
    programs "$a/calls.log" vap1 keep > "$e.calls"
    same "$2: vap1's driver utility and ifconfig calls as with the stand-ins, no other's" "$e.calls" "$b/calls.log"
    expected "$a/calls.log" "" | grep -v '^[a-z]* vap1 ' > "$e.all"
    same "$2: the driver received every other interface's requests, opens and stops" "$e.all" "$b/driver"
    same "$2: every invocation's exit status as with the stand-ins" "$a/report" "$b/report"
    same "$2: the tool's log records as with the stand-ins" "$a/tool.log" "$b/tool.log"
}
# repaired RUN: the driver's records of the repair (after the lost change
# of ap1's SSID, on vap0) are one stop and one open of vap0, then that
# instance's requests, its new SSID among them, and nothing for any other
# interface; the repair and the run before it succeed.
repaired() {
    b=$out/$1 e=$work/$1
    awk '
        $2 != "vap0" { other++; next }
        $1 == "stop" { stops++; if (opens || sets) order = "out of order" }
        $1 == "open" { opens++; if (!stops || sets) order = "out of order" }
        $1 == "set" { sets++; if (index($0, "SSID=Found again")) ssid++ }
        END {
            printf "vap0: %d stop, %d open, %s, %d with the new SSID; other interfaces: %d records\n",
                stops, opens, sets ? "then its requests" : "no request", ssid, other + 0
            if (order != "") print order
        }' "$b/driver" > "$e.repair"
    echo "vap0: 1 stop, 1 open, then its requests, 1 with the new SSID; other interfaces: 0 records" > "$e.want"
    same "$1: the repair stopped and started vap0 alone, with its requests" "$e.want" "$e.repair"
    cmp -s "$e.want" "$e.repair" || sed 's/^/     driver: /' "$b/driver"
    tail -n 2 "$b/report" > "$e.report"
    printf '%s\n' "-- update dot11Profile rowid 1: dropped" "-- resync: exit status 0" > "$e.wantreport"
    same "$1: the change's run lost, the repair's exit status 0" "$e.wantreport" "$e.report"
    grep -q '^SSID1: file ".*", database "Found again"$' "$b/resync" && echo SSID1 > "$e.named" || : > "$e.named"
    echo SSID1 > "$e.wantnamed"
    same "$1: --resync named the key it repaired" "$e.wantnamed" "$e.named"
}
same "stand-ins under WLANSYNC_DRIVER=utility: the driver received nothing" "$work/empty" "$out/standin-day/driver"
while read -r name steps pattern; do
    for kind in $kinds; do
        case $kind-$name in
        standin-*) ;;
        fallback-*) [ "$name" != day ] || fallback "standin-$name" "fallback-$name" ;;
        *-resync) repaired "$kind-$name" ;;
        *) compare "standin-$name" "$kind-$name" "$pattern" ;;
        esac
    done
    same "direct-$name: the driver's records are the utility path's, byte for byte" \
        "$out/utility-$name/driver" "$out/direct-$name/driver"
    programs "$out/direct-$name/calls.log" > "$work/direct-$name.programs"
    same "direct-$name: no driver utility, ifconfig or killall started" "$work/empty" "$work/direct-$name.programs"
    same "direct-$name: the daemon started and stopped as on the utility path" \
        "$out/utility-$name/daemon.log" "$out/direct-$name/daemon.log"
    echo 1 > "$work/one"
    same "direct-$name: one daemon left running" "$work/one" "$out/direct-$name/daemons"
done << EOF
$cases
EOF
echo "driver checks: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
