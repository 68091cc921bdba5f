# The throwaway virtual machine the rigs boot.  Sourced, with $top the
# checkout and vm_work a private folder (the caller's to remove).  VM_ARCH
# chooses the machine: amd64 (the default: a PC) or armhf (qemu's ARM virt
# board, as the access point's CPU).
#   vm_install [PKG...]     installs qemu, busybox and the packages named
#   vm_build DIR TARGET...  builds the project's TARGETs for the machine's
#                           CPU: in DIR on amd64, in build-arm (host/arm.sh)
#                           on armhf; sets vm_bin, the folder they are in
#   vm_kernel [headers]     Debian's 6.1 kernel for the newest ABI number
#                           with an image and headers (and with "headers",
#                           the kernel's build files of the same version) in
#                           the machine's own package index; sets vm_abi,
#                           vm_cache and vm_image, with "headers" vm_kbuild.
#                           On armhf, when the archive has no such set, says
#                           "skipped: <reason>" and returns 77
#   vm_make DIR             builds the module source in DIR for that kernel
#   vm_modules DEST LIST NAME...
#                           copies the kernel's modules NAME.ko into DEST,
#                           their names in order into DEST/LIST: the guest
#                           loads them so (the packages have no modules.dep)
#   vm_debs DEST PKG...     Debian's packages for the machine's CPU, unpacked
#                           into DEST (cached, never installed)
#   vm_strip FILE OUT       the program without its symbols
#   vm_initramfs DIR OUT    adds busybox (bin/busybox) and the libraries of
#                           every program in DIR to DIR, packs it as OUT
#   vm_boot NAME LIMIT INITRD APPEND [QEMU-ARG...]
#                           boots in the background, killed after LIMIT s;
#                           console in vm_work/NAME.log, qemu's pid in
#                           vm_work/NAME.pid, the limit's holder in vm_pid.
#                           An argument drive:FILE[,OPTION...] is a raw
#                           virtio disk, as the board attaches one
#   vm_said NAME PREFIX     the console's lines "PREFIX: ...", without it
#   vm_disk FILE            an empty disk for files back (the guest writes a
#                           tar archive onto it); vm_unpack FILE DIR reads it
# The kit's module lists, each in the order the guest loads them (what the
# kernel builds in is left out; armmp builds as modules what amd64 builds in):
#   vm_blk_modules          a virtio disk (/dev/vda)
#   vm_flash_modules        what a flash device's module needs (MTD)
#   vm_ubifs_modules        what UBI and UBIFS need, loaded before them
#   vm_ext4_modules         ext4
# Kernels are kept in $top/build-vm (VM_CACHE changes it).  Modules load
# only inside the machine, never on the host.
vm_cache_top=${VM_CACHE:-$top/build-vm}
vm_arch=${VM_ARCH:-amd64}
vm_ext4_modules="crc16 mbcache jbd2 crc32c_generic ext4"
case $vm_arch in
amd64)
    vm_flavour=amd64 vm_qemu=qemu-system-x86_64 vm_qemu_package=qemu-system-x86
    vm_machine=pc vm_console=ttyS0 vm_cross="" vm_multiarch=x86_64-linux-gnu
    vm_blk_modules="virtio_ring virtio virtio_pci_legacy_dev virtio_pci_modern_dev virtio_pci virtio_blk"
    vm_flash_modules=mtd
    vm_ubifs_modules="crc16 zstd_compress zstd"
    ;;
armhf)
    # highmem=off: the armmp kernel has no LPAE and cannot reach the board's
    # high PCIe window, where the flash device's memory would be.
    vm_flavour=armmp vm_qemu=qemu-system-arm vm_qemu_package=qemu-system-arm
    vm_machine=virt,highmem=off vm_console=ttyAMA0 vm_cross=arm-linux-gnueabihf-
    vm_multiarch=arm-linux-gnueabihf
    vm_blk_modules="virtio_mmio virtio_blk"
    vm_flash_modules=""
    # UBIFS sets up every compressor it has at load: zlib's is a module here.
    vm_ubifs_modules="crc16 zstd_compress zstd deflate"
    ;;
*)
    echo "VM_ARCH: amd64 or armhf, not $vm_arch" >&2
    exit 2
    ;;
esac

vm_install() {
    vm_need=""
    vm_tools=""
    [ "$vm_arch" = amd64 ] || vm_tools="g++-arm-linux-gnueabihf binutils-arm-linux-gnueabihf"
    for vm_p in "$vm_qemu_package" busybox-static cpio xz-utils $vm_tools "$@"; do
        dpkg -s "$vm_p" > /dev/null 2>&1 || vm_need="$vm_need $vm_p"
    done
    [ -n "$vm_need" ] || return 0
    vm_sudo=""
    [ "$(id -u)" -eq 0 ] || vm_sudo=sudo
    $vm_sudo apt-get update || true
    DEBIAN_FRONTEND=noninteractive $vm_sudo apt-get install -y --no-install-recommends $vm_need
}

vm_build() {
    vm_dir=$1
    shift
    if [ "$vm_arch" = armhf ]; then
        # Also adds Debian's armhf architecture, which vm_kernel needs.
        vm_bin=$top/build-arm
        sh "$top/host/arm.sh" "$@" > "$vm_work/build.log" 2>&1 || { cat "$vm_work/build.log"; return 1; }
    else
        vm_bin=$vm_dir
        cmake -S "$top" -B "$vm_dir" > /dev/null
        cmake --build "$vm_dir" -j "$(nproc 2> /dev/null || echo 2)" --target "$@" > /dev/null
    fi
}

# The ABI numbers that have a package of a kind (image, headers).
vm_abis() {
    apt-cache search --names-only "^linux-$1-6\.1\.0-[0-9]+-$vm_flavour\$" |
        sed -n "s/^linux-[a-z]*-\(6\.1\.0-[0-9]*\)-$vm_flavour .*/\1/p" | sort -u
}
# The version of the package in the index, if any.
vm_version() { apt-cache show --no-all-versions "$1" 2> /dev/null | sed -n 's/^Version: //p' | head -n 1; }

# vm_skip REASON: no kernel for the ARM machine is no fault of the project's.
vm_skip() {
    if [ "$vm_arch" = amd64 ]; then
        echo "vm: $1" >&2
        return 1
    fi
    echo "skipped: $1"
    return 77
}

vm_kernel() {
    vm_kbuild_version=""
    [ "$vm_arch" = amd64 ] || dpkg --print-foreign-architectures | grep -qx "$vm_arch" ||
        { vm_skip "Debian's $vm_arch architecture is not added (host/arm.sh adds it)"; return; }
    # The newest number with an image and headers whose build files (a
    # package of the host's own architecture) exist in the same version:
    # the armhf index can lag the host's by several numbers.
    for vm_abi in $( (vm_abis image && vm_abis headers) | sort -V | uniq -d | sort -rV); do
        vm_kbuild_version=$(vm_version "linux-headers-$vm_abi-$vm_flavour:$vm_arch")
        apt-cache madison linux-kbuild-6.1 | tr -d ' ' | grep -q "|$vm_kbuild_version|" && break
        vm_kbuild_version=""
    done
    [ -n "$vm_kbuild_version" ] || vm_abi=""
    # No package lists: the newest kernel kept.
    [ -n "$vm_abi" ] || vm_abi=$(printf '%s\n' "$vm_cache_top"/6.1.0-*-"$vm_flavour"/image |
        sed -n "s|.*/\(6\.1\.0-[0-9]*\)-$vm_flavour/image\$|\1|p" | sort -V | tail -n 1)
    [ -n "$vm_abi" ] || { vm_skip "no Debian 6.1 $vm_flavour kernel with headers and kbuild of the same version in the $vm_arch index"; return; }
    vm_cache=$vm_cache_top/$vm_abi-$vm_flavour
    vm_image=$vm_cache/image
    mkdir -p "$vm_cache"
    if [ ! -f "$vm_image" ]; then
        rm -f "$vm_cache"/*.deb
        (cd "$vm_cache" && apt-get download "linux-image-$vm_abi-$vm_flavour:$vm_arch" > /dev/null 2>&1 &&
            mv linux-image-*.deb image.deb) || { vm_skip "cannot download linux-image-$vm_abi-$vm_flavour:$vm_arch"; return; }
        dpkg-deb --fsys-tarfile "$vm_cache/image.deb" | tar -x -O --wildcards './boot/vmlinuz-*' > "$vm_cache/vmlinuz"
        if [ "$vm_arch" = amd64 ]; then
            # Unpacked once (an xz stream inside the bzImage) so that qemu
            # starts the kernel at its PVH entry: the emulated processor then
            # does not decompress it at every boot, which halves a boot's time.
            vm_at=$(LC_ALL=C grep -abo "$(printf '\3757zXZ')" "$vm_cache/vmlinuz" | head -n 1 | cut -d : -f 1)
            tail -c +$((vm_at + 1)) "$vm_cache/vmlinuz" | xz -dc > "$vm_cache/image.part" 2> /dev/null || true
            rm -f "$vm_cache/vmlinuz"
        else
            # A zImage, booted as it is: qemu's ARM loader has no entry that
            # skips its decompressor.
            mv "$vm_cache/vmlinuz" "$vm_cache/image.part"
        fi
        mv "$vm_cache/image.part" "$vm_image"
    fi
    [ "${1:-}" = headers ] || return 0
    vm_kbuild=$vm_cache/headers/usr/src/linux-headers-$vm_abi-$vm_flavour
    [ -f "$vm_kbuild/Module.symvers" ] && return 0
    [ -n "$vm_kbuild_version" ] || { vm_skip "no package lists for the headers of $vm_abi-$vm_flavour"; return; }
    rm -rf "$vm_cache/headers"
    mkdir -p "$vm_cache/headers"
    (cd "$vm_cache/headers" && apt-get download "linux-headers-$vm_abi-$vm_flavour:$vm_arch" "linux-headers-$vm_abi-common" \
        "linux-kbuild-6.1=$vm_kbuild_version" > /dev/null 2>&1) || { vm_skip "cannot download the headers for $vm_abi-$vm_flavour"; return; }
    for vm_deb in "$vm_cache"/headers/*.deb; do dpkg -x "$vm_deb" "$vm_cache/headers" && rm "$vm_deb"; done
    # Its Makefile names the common part by its installed path.
    sed -i "s|^include /usr/src/|include $vm_cache/headers/usr/src/|" "$vm_kbuild/Makefile"
}

vm_make() {
    set -- -C "$vm_kbuild" M="$1" modules
    [ "$vm_arch" = amd64 ] || set -- ARCH=arm CROSS_COMPILE="$vm_cross" "$@"
    make "$@" > "$vm_work/make.log" 2>&1 || { cat "$vm_work/make.log"; return 1; }
    # A warning is a fault here as in the tool.
    ! grep ': warning: ' "$vm_work/make.log" || return 1
}

vm_modules() {
    vm_dest=$1 vm_list=$2
    shift 2
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
    echo "$vm_names" > "$vm_dest/$vm_list"
}

vm_debs() {
    vm_dest=$1
    shift
    vm_debs=$vm_cache_top/debs-$vm_arch
    mkdir -p "$vm_debs" "$vm_dest"
    for vm_p; do
        set -- "$vm_debs/$vm_p"_*.deb
        [ -f "$1" ] || (cd "$vm_debs" && apt-get download "$vm_p:$vm_arch" > /dev/null 2>&1) ||
            { echo "vm: cannot download $vm_p:$vm_arch" >&2; return 1; }
        dpkg -x "$vm_debs/$vm_p"_*.deb "$vm_dest"
    done
}

vm_strip() { "${vm_cross}strip" -o "$2" "$1"; }

# The names of the libraries a program needs.
vm_needed() {
    if [ "$vm_arch" = amd64 ]; then
        LD_LIBRARY_PATH=$vm_path ldd "$1" 2> /dev/null | grep -o '/[^ ]*'
    else
        "${vm_cross}readelf" -d "$1" 2> /dev/null | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p'
    fi
}

vm_initramfs() {
    vm_dir=$(mkdir -p "$1/bin" && cd "$1" && pwd)
    if [ "$vm_arch" = amd64 ]; then
        cp /bin/busybox "$vm_dir/bin/busybox"
        # Libraries already in DIR are found there, and theirs are added too.
        vm_path=$vm_dir/lib/x86_64-linux-gnu:$vm_dir/usr/lib/x86_64-linux-gnu
        find "$vm_dir" -type f -perm -u+x | while read -r vm_bin; do
            for vm_lib in $(vm_needed "$vm_bin"); do
                case $vm_lib in "$vm_dir"/*) ;; *) cp -L --parents "$vm_lib" "$vm_dir" ;; esac
            done
        done
    else
        vm_debs "$vm_work/busybox-$vm_arch" busybox-static || return 1
        cp "$vm_work/busybox-$vm_arch/bin/busybox" "$vm_dir/bin/busybox"
        # The libraries, by name, from DIR, the cross compiler's C library and
        # the ARM build's own (build-arm/sysroot), into the folder the guest's
        # loader searches; the libraries' own too, until none is missing.
        vm_lib=$vm_dir/lib/$vm_multiarch
        mkdir -p "$vm_lib"
        cp -L "/usr/$vm_multiarch/lib/ld-linux-armhf.so.3" "$vm_dir/lib/"
        vm_more=1
        while [ -n "$vm_more" ]; do
            vm_more=""
            for vm_name in $(find "$vm_dir" -type f | while read -r vm_f; do vm_needed "$vm_f"; done | sort -u); do
                [ -z "$(find "$vm_dir" -name "$vm_name" | head -n 1)" ] || continue
                for vm_from in "/usr/$vm_multiarch/lib" "$top/build-arm/sysroot/usr/lib/$vm_multiarch" \
                    "$top/build-arm/sysroot/lib/$vm_multiarch"; do
                    [ -e "$vm_from/$vm_name" ] || continue
                    cp -L "$vm_from/$vm_name" "$vm_lib/"
                    vm_more=1
                    break
                done
                [ -e "$vm_lib/$vm_name" ] || { echo "vm: no $vm_arch $vm_name for the initramfs" >&2; return 1; }
            done
        done
    fi
    # Not compressed: the kernel unpacks it faster than it inflates it.
    (cd "$vm_dir" && find . | cpio -o -H newc --quiet) > "$2"
}

vm_boot() {
    vm_name=$1 vm_limit=$2 vm_initrd=$3 vm_append=$4
    shift 4
    vm_n=0
    for vm_a; do
        shift
        case $vm_a in
        drive:*)
            vm_n=$((vm_n + 1))
            if [ "$vm_arch" = amd64 ]; then
                set -- "$@" -drive "file=${vm_a#drive:},format=raw,if=virtio"
            else
                # The virt board's virtio devices sit on its MMIO bus.
                set -- "$@" -drive "file=${vm_a#drive:},format=raw,if=none,id=disk$vm_n" -device "virtio-blk-device,drive=disk$vm_n"
            fi
            ;;
        *) set -- "$@" "$vm_a" ;;
        esac
    done
    rm -f "$vm_work/$vm_name.pid"
    : > "$vm_work/$vm_name.log"
    timeout -s KILL "$vm_limit" "$vm_qemu" -machine "$vm_machine" -accel tcg -m 256 -smp 1 \
        -nodefaults -no-user-config -display none -monitor none -no-reboot \
        -serial "file:$vm_work/$vm_name.log" -pidfile "$vm_work/$vm_name.pid" \
        -kernel "$vm_image" -initrd "$vm_initrd" \
        -append "console=$vm_console quiet loglevel=3 panic=-1 mitigations=off $vm_append" "$@" > /dev/null 2>&1 &
    vm_pid=$!
}

vm_said() { tr -d '\r' < "$vm_work/$1.log" | sed -n "s/^$2: //p"; }

vm_disk() { rm -f "$1" && truncate -s 16M "$1"; }
vm_unpack() { mkdir -p "$2" && tar -xf "$1" -C "$2"; }
