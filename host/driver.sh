#!/bin/sh
# The tool against a driver in a kernel: sh host/driver.sh
#
# A throwaway virtual machine (host/vm.sh) loads the simulated RT2860 driver
# (sim/driver, built for the machine's kernel) and applies the day of
# changes of sim/changes.sh twice, from the same start: once with the
# recording stand-ins, once with Debian's real iwpriv and busybox's ifconfig
# and killall in front of the driver (host/driver/init).  The checks: the
# driver received the requests the stand-ins were given, as iwpriv sends
# them; its interfaces opened and stopped as the stand-ins' journal says;
# exit statuses and log records are the same; the MAC addresses stored are
# the driver's.  The same for a failing request and a failing open.
# Ends with "driver checks: N passed, M failed"; status 0 only when M is 0.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
build=$top/build
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
# checked against the stand-ins' run of the same case.
kinds="standin real"
cases="day all
set-fails 1 vap1 set AuthMode=
up-fails 1 vap1 up
long-value 9"

cmake -S "$top" -B "$build" > /dev/null
cmake --build "$build" -j "$(nproc 2> /dev/null || echo 2)" --target wlanSyncTool wlanFramework > /dev/null
vm_kernel headers
rm -rf "$build/driver"
cp -r "$top/sim/driver" "$build/driver"
make -C "$vm_kbuild" M="$build/driver" modules > "$work/make.log" 2>&1 || { cat "$work/make.log"; exit 1; }
(cd "$work" && apt-get download wireless-tools libiw30 > /dev/null 2>&1) || { echo "cannot download wireless-tools" >&2; exit 1; }
for deb in "$work"/*.deb; do dpkg -x "$deb" "$work/wt"; done

ird=$work/initramfs
mkdir -p "$ird/bin" "$ird/sbin" "$ird/lib/x86_64-linux-gnu"
strip -o "$ird/bin/wlanSyncTool" "$build/wlanSyncTool"
strip -o "$ird/bin/wlanFramework" "$build/wlanFramework"
cp "$work/wt/sbin/iwpriv" "$ird/sbin/"
cp "$work"/wt/lib/x86_64-linux-gnu/libiw.so.* "$ird/lib/x86_64-linux-gnu/"
vm_modules "$ird/lib/modules" virtio_ring virtio virtio_pci_legacy_dev virtio_pci_modern_dev virtio_pci virtio_blk
cp "$build/driver/rt2860sim.ko" "$ird/lib/modules/"
# Each kind's sandbox root: the kit's, with the real programs in front of
# the driver where the kind has them.
for kind in $kinds; do
    R=$ird/ap/$kind
    sh "$top/host/kit/sandbox.sh" "$R" "$top/sim/default.sql"
    case $kind in
    real)
        ln -sf /sbin/iwpriv "$R/mavo2.0/bin/iwpriv"
        cp "$top/sim/bin/rt2860apd" "$R/mavo2.0/bin/"
        rm "$R/bin/ifconfig" "$R/bin/killall"
        ;;
    esac
done
sqlite3 "$ird/ap/standin/tmp/system.db" "SELECT rowid FROM dot11VAP WHERE vapEnabled=1" > "$ird/ap/boot"
cp "$top/host/driver/init" "$top/host/driver/steps.sh" "$top/sim/changes.sh" "$ird/"
chmod +x "$ird/init"
echo "$cases" | while read -r name steps pattern; do
    for kind in $kinds; do echo "$kind-$name $kind $steps $pattern"; done
done > "$ird/runs"
vm_initramfs "$ird" "$work/initramfs.cpio"

vm_disk "$work/out.img"
start=$(date +%s)
vm_boot driver 300 "$work/initramfs.cpio" "" -drive "file=$work/out.img,format=raw,if=virtio"
{ wait "$vm_pid" || true; } 2> /dev/null
vm_pid=""
rm -f "$work/driver.pid"
vm_said driver DRV
echo "machine: Debian's kernel $vm_abi-amd64, $(($(date +%s) - start)) s in all"
if ! vm_said driver DRV | grep -q '^DONE'; then
    tr -d '\r' < "$work/driver.log" | tail -n 30
    echo "driver checks: 0 passed, 1 failed (the machine did not finish)"
    exit 1
fi
vm_unpack "$work/out.img" "$work/out"
out=$work/out

# The records the driver should hold after a stand-in run: every driver
# utility call as iwpriv sends it (the value and its NUL, cut at 1024 bytes
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
                print "set", $2, n, r, text
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
same "stand-ins: the driver received nothing" "$work/empty" "$out/standin-day/driver"
while read -r name steps pattern; do
    for kind in $kinds; do
        [ "$kind" = standin ] || compare "standin-$name" "$kind-$name" "$pattern"
    done
done << EOF
$cases
EOF
echo "driver checks: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
