# The throwaway virtual machine the rigs boot.  Sourced, with $top the
# checkout and vm_work a private folder (the caller's to remove):
#   vm_install [PKG...]     installs qemu, busybox and the packages named
#   vm_kernel [headers]     Debian's 6.1 kernel for the newest ABI number with
#                           both an image and headers; sets vm_abi and
#                           vm_cache (the kernel is vm_cache/vmlinux), with
#                           "headers" also vm_kbuild, to build modules against
#   vm_modules DEST NAME... copies the kernel's modules NAME.ko into DEST
#   vm_initramfs DIR OUT    adds busybox (bin/busybox) and the libraries of
#                           every program in DIR to DIR, packs it as OUT
#   vm_boot NAME LIMIT INITRD APPEND [QEMU-ARG...]
#                           boots in the background, killed after LIMIT s;
#                           console in vm_work/NAME.log, qemu's pid in
#                           vm_work/NAME.pid, the limit's holder in vm_pid
#   vm_said NAME PREFIX     the console's lines "PREFIX: ...", without it
#   vm_disk FILE            an empty disk for files back (the guest writes a
#                           tar archive onto it); vm_unpack FILE DIR reads it
# Kernels are kept in $top/build-vm (VM_CACHE changes it).  Modules load
# only inside the machine, never on the host.
vm_cache_top=${VM_CACHE:-$top/build-vm}

vm_install() {
    vm_need=""
    for vm_p in qemu-system-x86 busybox-static cpio xz-utils "$@"; do
        dpkg -s "$vm_p" > /dev/null 2>&1 || vm_need="$vm_need $vm_p"
    done
    [ -n "$vm_need" ] || return 0
    vm_sudo=""
    [ "$(id -u)" -eq 0 ] || vm_sudo=sudo
    $vm_sudo apt-get update || true
    DEBIAN_FRONTEND=noninteractive $vm_sudo apt-get install -y --no-install-recommends $vm_need
}

# The ABI numbers that have a package of a kind (image, headers).
vm_abis() {
    apt-cache search --names-only "^linux-$1-6\.1\.0-[0-9]+-amd64\$" |
        sed -n 's/^linux-[a-z]*-\(6\.1\.0-[0-9]*\)-amd64 .*/\1/p' | sort -u
}

vm_kernel() {
    vm_abi=$( (vm_abis image && vm_abis headers) | sort -V | uniq -d | tail -n 1)
    # No package lists: the newest kernel kept.
    [ -n "$vm_abi" ] || vm_abi=$(printf '%s\n' "$vm_cache_top"/6.1.0-*/vmlinux |
        sed -n 's|.*/\(6\.1\.0-[0-9]*\)/vmlinux$|\1|p' | sort -V | tail -n 1)
    [ -n "$vm_abi" ] || { echo "vm: no Debian 6.1 kernel with headers found" >&2; return 1; }
    vm_cache=$vm_cache_top/$vm_abi
    mkdir -p "$vm_cache"
    if [ ! -f "$vm_cache/vmlinux" ]; then
        rm -f "$vm_cache"/*.deb
        (cd "$vm_cache" && apt-get download "linux-image-$vm_abi-amd64" > /dev/null 2>&1 &&
            mv linux-image-*.deb image.deb) || { echo "vm: cannot download linux-image-$vm_abi-amd64" >&2; return 1; }
        # Unpacked once (an xz stream inside the bzImage) so that qemu starts
        # the kernel at its PVH entry: the emulated processor then does not
        # decompress it at every boot, which halves a boot's time.
        dpkg-deb --fsys-tarfile "$vm_cache/image.deb" | tar -x -O --wildcards './boot/vmlinuz-*' > "$vm_cache/vmlinuz"
        vm_at=$(LC_ALL=C grep -abo "$(printf '\3757zXZ')" "$vm_cache/vmlinuz" | head -n 1 | cut -d : -f 1)
        tail -c +$((vm_at + 1)) "$vm_cache/vmlinuz" | xz -dc > "$vm_cache/vmlinux.part" 2> /dev/null || true
        rm -f "$vm_cache/vmlinuz"
        mv "$vm_cache/vmlinux.part" "$vm_cache/vmlinux"
    fi
    [ "${1:-}" = headers ] || return 0
    vm_kbuild=$vm_cache/headers/usr/src/linux-headers-$vm_abi-amd64
    [ -f "$vm_kbuild/Module.symvers" ] && return 0
    rm -rf "$vm_cache/headers"
    mkdir -p "$vm_cache/headers"
    (cd "$vm_cache/headers" && apt-get download "linux-headers-$vm_abi-amd64" "linux-headers-$vm_abi-common" \
        "linux-kbuild-${vm_abi%.*-*}" > /dev/null 2>&1) || { echo "vm: cannot download the headers for $vm_abi" >&2; return 1; }
    for vm_deb in "$vm_cache"/headers/*.deb; do dpkg -x "$vm_deb" "$vm_cache/headers" && rm "$vm_deb"; done
    # Its Makefile names the common part by its installed path.
    sed -i "s|^include /usr/src/|include $vm_cache/headers/usr/src/|" "$vm_kbuild/Makefile"
}

vm_modules() {
    vm_dest=$1
    shift
    vm_names="$*"
    mkdir -p "$vm_dest" "$vm_cache/modules"
    set --
    for vm_m in $vm_names; do [ -f "$vm_cache/modules/$vm_m.ko" ] || set -- "$@" "*/$vm_m.ko"; done
    if [ "$#" -gt 0 ]; then
        dpkg-deb --fsys-tarfile "$vm_cache/image.deb" | tar -x -C "$vm_cache/modules" --wildcards "$@" || return 1
        find "$vm_cache/modules/lib" -name '*.ko' -exec mv -t "$vm_cache/modules" {} +
        rm -rf "$vm_cache/modules/lib"
    fi
    for vm_m in $vm_names; do cp "$vm_cache/modules/$vm_m.ko" "$vm_dest/" || return 1; done
}

vm_initramfs() {
    vm_dir=$(mkdir -p "$1/bin" && cd "$1" && pwd)
    cp /bin/busybox "$vm_dir/bin/busybox"
    # Libraries already in DIR are found there, and theirs are added too.
    vm_path=$vm_dir/lib/x86_64-linux-gnu:$vm_dir/usr/lib/x86_64-linux-gnu
    find "$vm_dir" -type f -perm -u+x | while read -r vm_bin; do
        for vm_lib in $(LD_LIBRARY_PATH=$vm_path ldd "$vm_bin" 2> /dev/null | grep -o '/[^ ]*'); do
            case $vm_lib in "$vm_dir"/*) ;; *) cp -L --parents "$vm_lib" "$vm_dir" ;; esac
        done
    done
    # Not compressed: the kernel unpacks it faster than it inflates it.
    (cd "$vm_dir" && find . | cpio -o -H newc --quiet) > "$2"
}

vm_boot() {
    vm_name=$1 vm_limit=$2 vm_initrd=$3 vm_append=$4
    shift 4
    rm -f "$vm_work/$vm_name.pid"
    : > "$vm_work/$vm_name.log"
    timeout -s KILL "$vm_limit" qemu-system-x86_64 -machine pc -accel tcg -m 256 -smp 1 \
        -nodefaults -no-user-config -display none -monitor none -no-reboot \
        -serial "file:$vm_work/$vm_name.log" -pidfile "$vm_work/$vm_name.pid" \
        -kernel "$vm_cache/vmlinux" -initrd "$vm_initrd" \
        -append "console=ttyS0 quiet loglevel=3 panic=-1 mitigations=off $vm_append" "$@" > /dev/null 2>&1 &
    vm_pid=$!
}

vm_said() { tr -d '\r' < "$vm_work/$1.log" | sed -n "s/^$2: //p"; }

vm_disk() { rm -f "$1" && truncate -s 16M "$1"; }
vm_unpack() { mkdir -p "$2" && tar -xf "$1" -C "$2"; }
