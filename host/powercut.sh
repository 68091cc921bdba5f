#!/bin/sh
# Power cuts on a real kernel and file system: sh host/powercut.sh [N]
#
# A throwaway virtual machine (host/vm.sh: qemu-system-x86_64 under its
# software emulator) boots Debian's kernel with an initramfs holding busybox,
# the tool, e2fsck and host/powercut/init.  The sandbox root (host/kit: the
# recording stand-ins, the driver configuration file, the database) lives,
# per POWERCUT_FS (a list; "ext4" by default, "ext4 ubifs" for both), on a
# raw ext4 disk (virtio-blk) mounted with noauto_da_alloc, or on UBIFS on a
# simulated NAND flash (sim/flash) whose contents are a file on the host.
# Each cycle the guest makes changes in a loop as the device's framework
# makes them, a row committed to the database on the same disk or flash and
# then the tool run for it (host/powercut/loop.sh, sim/framework.cpp), and
# the host kills qemu with SIGKILL at a random
# instant 6 to 30 s into the loop (POWERCUT_WINDOW=LO-HI changes it);
# whatever the guest had not written to its disk or flash is lost as at a
# power cut.  The next boot checks the file system and the driver file,
# which must equal one of the states an uninterrupted run of the loop passes
# through (recorded by a reference boot); then --check, --resync (which
# must succeed) and --check again, which must find the file in step: a cut
# between a row's commit and the tool's leaves it out of step.  The
# same cycles with the rig's own writer, which replaces the file by rename
# without syncing, must show damage: otherwise the rig proves nothing.  Both
# series run side by side, one machine each, one file system after the
# other.  Exit status 0 only when, on every file system, the tool's files
# are all whole and in step after --resync, and the unsynced writer's are
# not all whole.
#
# VM_ARCH=armhf: the same on an ARM machine (host/vm.sh) with the ARM build
# of the tool (host/arm.sh) and, for ext4, Debian's armhf e2fsck.
set -eu
N=${1:-20}
window=${POWERCUT_WINDOW:-6-30}
lo=${window%-*}
hi=${window#*-}
top=$(cd "$(dirname "$0")/.." && pwd)
pc=$top/host/powercut
fss=${POWERCUT_FS:-ext4}
. "$top/host/vm.sh"
for fs in $fss; do
    case $fs in ext4 | ubifs) ;; *) echo "POWERCUT_FS: ext4, ubifs or both, not $fs" >&2 && exit 2 ;; esac
done

"$top/host/deps.sh"
vm_install e2fsprogs gcc make libelf-dev mtd-utils

work=$(mktemp -d /tmp/powercut-XXXXXX)
vm_work=$work
cleanup() {
    set +e
    for p in ${series_pids:-}; do kill -TERM "$p" 2> /dev/null; done
    wait 2> /dev/null
    for f in "$work"/*.pid; do
        [ -f "$f" ] && kill -KILL "$(cat "$f")" 2> /dev/null
    done
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

[ "$vm_arch" != amd64 ] || cmake -S "$top" -B "$top/build-powercut" -DBUILD_TESTING=OFF > /dev/null
vm_build "$top/build-powercut" wlanSyncTool wlanFramework
build=$vm_bin
vm_kernel headers || exit $?
echo "vm: Debian's kernel $vm_abi-$vm_flavour under $vm_qemu (TCG)"
# The flash device's module, built against the same kernel.
rm -rf "$build/flash"
cp -r "$top/sim/flash" "$build/flash"
vm_make "$build/flash"
# The initramfs: busybox, the tool and e2fsck with their libraries, the
# recording shim of the reference run, the modules for ext4 on virtio-blk
# and for UBIFS on the flash device (each list in the order the guest loads
# it), the loop and the init.
ird=$work/initramfs
mkdir -p "$ird/bin" "$ird/sbin" "$ird/lib"
vm_strip "$build/wlanSyncTool" "$ird/bin/wlanSyncTool"
vm_strip "$build/wlanFramework" "$ird/bin/wlanFramework"
if [ "$vm_arch" = amd64 ]; then
    cp /sbin/e2fsck "$ird/sbin/"
else
    # The machine's own e2fsck and its libraries, downloaded, not installed.
    vm_debs "$work/e2fs" e2fsprogs libext2fs2 libcom-err2 libblkid1 libuuid1
    cp "$work/e2fs/sbin/e2fsck" "$ird/sbin/"
    mkdir -p "$ird/lib/$vm_multiarch"
    cp -a "$work"/e2fs/lib/"$vm_multiarch"/*.so.* "$work"/e2fs/usr/lib/"$vm_multiarch"/*.so.* "$ird/lib/$vm_multiarch/" 2> /dev/null || true
fi
"${vm_cross}gcc" -O2 -shared -fPIC -o "$ird/lib/shim.so" "$pc/shim.c" -ldl
vm_modules "$ird/lib/modules" disk $vm_blk_modules
vm_modules "$ird/lib/modules" ext4 $vm_ext4_modules
vm_modules "$ird/lib/modules" flash $vm_flash_modules
vm_modules "$ird/lib/modules" ubifs $vm_ubifs_modules ubi ubifs
cp "$build/flash/flash.ko" "$ird/lib/modules/"
cp "$pc/init" "$pc/loop.sh" "$ird/"
chmod +x "$ird/init"
vm_initramfs "$ird" "$work/initramfs.cpio"

# The files: the sandbox root with its database, and the initial database
# and file that every run starts from.
disk=$work/disk
sh "$top/host/kit/sandbox.sh" "$disk/ap" "$top/sim/default.sql" "$pc/seed.sql"
cp "$disk/ap/tmp/system.db" "$disk/init.db"
cp "$disk/ap/etc/Wireless/RT2860AP/RT2860AP.dat" "$disk/init.dat"

# The flash: 2 KiB pages, 128 KiB erase blocks (LEBs of 124 KiB once UBI's
# two headers are off), 32 MiB: qemu's shared memory must be a power of two,
# and on a volume under 16 MiB UBIFS flushes so early that even the unsynced
# writer comes out whole.  The UBI volume grows to the whole device at the
# first attach.  Erased flash reads 0xff.
flash_bytes=$((32 * 1024 * 1024))
image() {
    if [ "$fs" = ubifs ]; then
        mkfs.ubifs -r "$disk" -m 2048 -e 126976 -c 300 -o "$work/ap.ubifs"
        printf '[ap]\nmode=ubi\nimage=%s\nvol_id=0\nvol_type=dynamic\nvol_name=ap\nvol_flags=autoresize\n' \
            "$work/ap.ubifs" > "$work/ubi.ini"
        ubinize -o "$work/ubi.img" -m 2048 -p 128KiB -s 2048 "$work/ubi.ini" > /dev/null
        { cat "$work/ubi.img" && head -c $((flash_bytes - $(wc -c < "$work/ubi.img"))) /dev/zero | tr '\0' '\377'; } > "$1"
        rm -f "$work/ap.ubifs" "$work/ubi.ini" "$work/ubi.img"
    else
        mke2fs -q -F -t ext4 -d "$disk" "$1" 64M > /dev/null
    fi
}

# boot NAME IMAGE MODE CHECK [LIMIT]: start a machine in the background.
# The flash is the image file itself, mapped shared: what the guest wrote is
# in the file when qemu is killed.  The limit leaves room for a boot and
# check that take a minute or more on overloaded cores (seen: 72 s).
boot() {
    set -- "$1" "$2" "${5:-$((hi + 300))}" "pc_fs=$fs pc_mode=$3 pc_check=$4 pc_span=$span pc_passes=${passes:-0}"
    if [ "$fs" = ubifs ]; then
        vm_boot "$1" "$3" "$work/initramfs.cpio" "$4" -device ivshmem-plain,memdev=flash \
            -object "memory-backend-file,id=flash,mem-path=$2,size=$flash_bytes,share=on"
    else
        vm_boot "$1" "$3" "$work/initramfs.cpio" "$4" "drive:$2,cache=unsafe"
    fi
    qemu=$vm_pid
}
# The guest's lines for the host.
said() { vm_said "$1" PC; }

# The reference on file system $fs: every state an uninterrupted run passes
# through.  The reference runs for twice the longest time to a cut, and the
# cycles run no more passes than it did, so that every state they can reach
# is on record whatever the loop does from pass to pass.
span=$((2 * hi + 10))
reference() {
    image "$wf/reference.img"
    passes=""
    boot "$fs-reference" "$wf/reference.img" reference 0 $((span + 240))
    { wait "$qemu" || true; } 2> /dev/null
    said "$fs-reference" | sed -n 's/^STATE //p' > "$wf/states.sha"
    said "$fs-reference" | sed -n 's/^END //p' > "$wf/ends.sha"
    passes=$(said "$fs-reference" | sed -n 's/^PASSES \([0-9]*\) .*/\1/p')
    if ! said "$fs-reference" | grep -qx 'REFERENCE DONE' || ! said "$fs-reference" | grep -q '^REPEATABLE '; then
        tr -d '\r' < "$work/$fs-reference.log" | grep -v 'STATE ' | tail -n 30
        echo "$fs: the reference run failed, or a second run of its first pass went another way" >&2
        exit 1
    fi
    echo "$fs: reference: $passes passes of the loop, $(said "$fs-reference" | sed -n 's/^PASSES [0-9]* in //p'), $(($(wc -l < "$wf/states.sha") - 1)) replacements of the driver file, $(wc -l < "$wf/ends.sha") states of the file at rest (the initial file, the file after an invocation)"
}

# series LABEL MODE: N power cuts, each checked at the next boot.
series() {
    name=$fs-$2
    img=$wf/$2.img
    trap 'kill -KILL "$(cat "$work/$name.pid" 2> /dev/null)" 2> /dev/null; exit 1' TERM
    cp --sparse=always "$wf/reference.img" "$img"
    damaged=0
    partway=0
    outofstep=0
    untold=0
    instep=0
    start=$(date +%s)
    i=0
    checked=""
    while [ "$i" -le "$N" ]; do
        check=1
        [ "$i" -gt 0 ] && [ -z "$checked" ] || check=0
        checked=""
        mode=$2
        [ "$i" -lt "$N" ] || mode=check
        boot "$name" "$img" "$mode" "$check"
        if [ "$mode" = check ]; then
            { wait "$qemu" || true; } 2> /dev/null
        else
            t=0
            while ! said "$name" | grep -q '^LOOP START' && kill -0 "$qemu" 2> /dev/null; do
                sleep 0.1
            done
            # A random instant in the window, to the millisecond.
            r=$(od -An -N4 -tu4 /dev/urandom | tr -d ' ')
            ms=$((lo * 1000 + r % ((hi - lo) * 1000 + 1)))
            t=$(printf '%d.%03d' $((ms / 1000)) $((ms % 1000)))
            sleep "$t" &
            wait $!
            if [ -f "$work/$name.pid" ]; then kill -KILL "$(cat "$work/$name.pid")" 2> /dev/null || true; fi
            { wait "$qemu" || true; } 2> /dev/null
            rm -f "$work/$name.pid"
            ended=""
            ! said "$name" | grep -qx 'LOOP ENDED' || ended=", after the loop had ended"
        fi
        if [ "$check" = 1 ]; then
            line=$(said "$name" | sed -n 's/^CHECK //p' | head -n 1)
            # A machine that ended before its check said anything (3 of 400
            # boots on two overloaded cores, when the limit was 130 s; the
            # next boot found the file whole) is shown, and the check is done
            # again by a machine that only checks.  What the first one may
            # have done to the file is the tool's own durable work, so damage
            # still shows.
            if [ -z "$line" ]; then
                echo "$fs: $1: boot $i ended with no check line; its console's last lines:"
                tr -d '\r' < "$work/$name.log" | tail -n 15 | sed "s/^/$fs: $1:   /"
                boot "$name" "$img" check 1
                { wait "$qemu" || true; } 2> /dev/null
                line=$(said "$name" | sed -n 's/^CHECK //p' | head -n 1)
                checked=1
            fi
            verdict=whole
            case " $line " in *" fsck=0 "*) ;; *) verdict=damaged ;; esac
            case " $line " in *" exists=1 "*) ;; *) verdict=damaged ;; esac
            case " $line " in *" size=0 "*) verdict=damaged ;; esac
            case " $line " in *" eol=1 "*) ;; *) verdict=damaged ;; esac
            case " $line " in *" invoke=0 "*) ;; *) verdict=damaged ;; esac
            sha=$(printf '%s\n' "$line" | sed -n 's/.* sha=\([^ ]*\).*/\1/p')
            state=$(grep -nx "${sha:-none}" "$wf/states.sha" | head -n 1 | cut -d : -f 1)
            [ -n "$state" ] || verdict=damaged
            [ "$verdict" = whole ] || damaged=$((damaged + 1))
            # The database's view: out of step before the repair (or not
            # to be told, 2), in step after it.
            case " $line " in *" before=0 "*) ;; *) outofstep=$((outofstep + 1)) ;; esac
            case " $line " in *" before=2 "*) untold=$((untold + 1)) ;; esac
            case " $line " in *" invoke=0 "*" after=0 "*) instep=$((instep + 1)) ;; esac
            # A whole file that no invocation ended with: cut partway
            # through a change.
            rest=""
            if [ -n "$state" ]; then
                rest=", at rest"
                grep -qx "$sha" "$wf/ends.sha" || { rest=", partway" && partway=$((partway + 1)); }
            fi
            echo "$fs: $1: cut $i at ${last:-?} s$lastended: $verdict${state:+, state $state of $(wc -l < "$wf/states.sha")}$rest (${line:-no check line})"
            [ "$verdict" = whole ] || said "$name" | grep '^fsck: ' | sed "s/^/$fs: $1: /" || true
            said "$name" | grep '^check: ' | sed "s/^/$fs: $1: /" || true
            # Checked again: this cut is made anew, its boot not checking.
            [ -z "$checked" ] || continue
        fi
        last=${t:-}
        lastended=${ended:-}
        i=$((i + 1))
    done
    secs=$(($(date +%s) - start))
    echo "$fs: $1: $N cuts in $secs s, $(awk "BEGIN { printf \"%.1f\", $secs / $N }") s per cut (boot, loop and check)"
    echo "$damaged $partway $outofstep $instep $untold" > "$wf/$2.counts"
}

# One file system after the other, its two series side by side.
for fs in $fss; do
    wf=$work/$fs
    mkdir -p "$wf"
    reference
    # Which machine the figures come from, as it says itself.
    [ -n "${machine:-}" ] || { machine=$(said "$fs-reference" | grep '^machine: ') && echo "$machine"; }
    series "unsynced writer" writer &
    series_pids=$!
    series tool tool &
    series_pids="$series_pids $!"
    for p in $series_pids; do wait "$p"; done
    series_pids=""
    rm -f "$wf"/*.img
done
# Per file system, then all together: the last line as the rig always ended.
# The tool's files must be whole and, after --resync, in step with the
# database every time; the unsynced writer's must not all be whole.
ok=1 cuts=0 damaged=0 partway=0 outofstep=0 instep=0
for fs in $fss; do
    read -r wd _ < "$work/$fs/writer.counts"
    read -r td tp tk ti tu < "$work/$fs/tool.counts"
    echo "unsynced writer ($fs): power cuts: $N, damaged files: $wd"
    echo "power cuts ($fs): $N, damaged files: $td, partway through a change: $tp"
    echo "out of step before resync ($fs): $tk of $N ($tu of them not to be told by a read-only --check: a database journal to recover); in step after resync: $ti of $N"
    [ "$td" -eq 0 ] && [ "$wd" -gt 0 ] && [ "$ti" -eq "$N" ] || ok=0
    cuts=$((cuts + N)) damaged=$((damaged + td)) partway=$((partway + tp))
    outofstep=$((outofstep + tk)) instep=$((instep + ti))
done
echo "out of step before resync: $outofstep of $cuts"
echo "in step after resync: $instep of $cuts"
echo "power cuts: $cuts, damaged files: $damaged, partway through a change: $partway"
[ "$ok" = 1 ]
