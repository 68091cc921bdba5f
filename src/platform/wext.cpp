#include "platform/wext.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <linux/wireless.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "platform/trace.h"

namespace wlan::wext {

namespace {

using Native = Request<uintptr_t>;
static_assert(sizeof(Native) == sizeof(iwreq) && alignof(Native) == alignof(iwreq));
static_assert(offsetof(Native, u) == offsetof(iwreq, u));
static_assert(offsetof(Native, u.data.length) == offsetof(iwreq, u.data.length));
static_assert(offsetof(Native, u.data.flags) == offsetof(iwreq, u.data.flags));
static_assert(sizeof(iw_priv_args) == 24);

// The utility's exit statuses for a refused request: iwpriv's -1, ifconfig's 1.
constexpr int kSetRefused = 255;
constexpr int kFlagsRefused = 1;
constexpr int kMaxTable = 1000;  // the utility asks for no more commands

// Interfaces asked once per invocation; a full cache only means asking again.
struct Known {
    char name[IFNAMSIZ + 1];
    bool offered;
    PrivateSet set;
};
Known known[16];
int knownCount;
int sock = -2;  // -2: not opened yet, -1: cannot be

int socketFd() {
    if (sock == -2) sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    return sock;
}

// As the utility's strncpy: cut at 16 bytes, unterminated then, zero-padded.
void setName(char* to, const char* ifname) {
    size_t n = strnlen(ifname, IFNAMSIZ);
    std::memcpy(to, ifname, n);
    std::memset(to + n, 0, IFNAMSIZ - n);
}

// The private commands' list, asked as the utility asks: 16 entries, then
// the count the driver says it needs, or twice as many.
bool findSet(int fd, const char* ifname, PrivateSet& set) {
    static iw_priv_args table[kMaxTable];
    Native req{};
    int size = 16;
    for (;;) {
        setName(req.name, ifname);
        req.u.data.pointer = reinterpret_cast<uintptr_t>(table);
        req.u.data.length = static_cast<uint16_t>(size);
        req.u.data.flags = 0;
        if (ioctl(fd, SIOCGIWPRIV, &req) >= 0) break;
        if (errno != E2BIG) return false;
        size = req.u.data.length > size ? req.u.data.length : size * 2;
        if (size >= kMaxTable) return false;
    }
    int count = req.u.data.length < kMaxTable ? req.u.data.length : kMaxTable;
    int k = 0;
    while (k < count && std::strncmp(table[k].name, "set", IFNAMSIZ) != 0) ++k;
    if (k == count) return false;
    set = {table[k].cmd, table[k].set_args, 0};
    // A sub-command travels through the unnamed command of the same shape.
    if (table[k].cmd < SIOCDEVPRIVATE) {
        int j = 0;
        while (j < count && (table[j].name[0] != '\0' || table[j].set_args != table[k].set_args ||
                             table[j].get_args != table[k].get_args))
            ++j;
        if (j == count) return false;
        set = {table[j].cmd, table[j].set_args, table[k].cmd};
    }
    // Only text the utility would pass as it stands.
    return (set.args & IW_PRIV_TYPE_MASK) == IW_PRIV_TYPE_CHAR && (set.args & IW_PRIV_SIZE_MASK) != 0;
}

const PrivateSet* offered(int fd, const char* ifname) {
    static Known spare;  // past a full cache: asked each time
    Known* k = known;
    while (k < known + knownCount && std::strncmp(k->name, ifname, IFNAMSIZ) != 0) ++k;
    if (k == known + knownCount) {
        if (knownCount < static_cast<int>(sizeof known / sizeof known[0]))
            ++knownCount;
        else
            k = &spare;
        *k = {};
        setName(k->name, ifname);
        k->offered = findSet(fd, ifname, k->set);
    }
    return k->offered ? &k->set : nullptr;
}

int sendSet(int fd, const PrivateSet& set, const char* ifname, const char* arg) {
    unsigned char buffer[IW_PRIV_SIZE_MASK + 1] = {};  // the kernel reads the command's whole size
    Native req;
    if (!buildSet(req, set, ifname, arg, buffer, reinterpret_cast<uintptr_t>(buffer)))
        return kSetRefused;
    return ioctl(fd, set.ioctl, &req) < 0 ? kSetRefused : 0;
}

// As ifconfig: up sets IFF_UP and IFF_RUNNING, down clears IFF_UP.
int sendFlags(int fd, const char* ifname, bool up) {
    ifreq req{};
    setName(req.ifr_name, ifname);
    if (ioctl(fd, SIOCGIFFLAGS, &req) < 0) return kFlagsRefused;
    if (up)
        req.ifr_flags = static_cast<short>(req.ifr_flags | IFF_UP | IFF_RUNNING);
    else
        req.ifr_flags = static_cast<short>(req.ifr_flags & ~IFF_UP);
    return ioctl(fd, SIOCSIFFLAGS, &req) < 0 ? kFlagsRefused : 0;
}

bool utilityForced() {
    static const bool forced = [] {
        const char* value = std::getenv("WLANSYNC_DRIVER");
        return value && std::strcmp(value, "utility") == 0;
    }();
    return forced;
}

const char* baseName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

}  // namespace

template <class Pointer>
bool buildSet(Request<Pointer>& req, const PrivateSet& set, const char* ifname, const char* arg,
              unsigned char* buffer, Pointer address) {
    size_t size = set.args & IW_PRIV_SIZE_MASK;
    size_t length = std::strlen(arg) + 1;
    if (length > size) length = size;
    bool fixed = set.args & IW_PRIV_SIZE_FIXED;
    if (fixed && length != size) return false;
    req = {};
    setName(req.name, ifname);
    size_t offset = set.subcmd ? sizeof(uint32_t) : 0;
    if (fixed && size + offset <= IFNAMSIZ) {
        req.u.mode = set.subcmd;
        std::memcpy(req.u.inlined + offset, arg, length);
    } else {
        std::memcpy(buffer, arg, length);
        req.u.data.pointer = address;
        req.u.data.length = static_cast<uint16_t>(length);
        req.u.data.flags = static_cast<uint16_t>(set.subcmd);
    }
    return true;
}

template bool buildSet(Request<uint32_t>&, const PrivateSet&, const char*, const char*, unsigned char*, uint32_t);
template bool buildSet(Request<uint64_t>&, const PrivateSet&, const char*, const char*, unsigned char*, uint64_t);

bool direct() {
    int fd = utilityForced() ? -1 : socketFd();
    for (const char* vap : {"vap0", "vap1", "vap2", "vap3"})
        if (fd >= 0 && offered(fd, vap)) return true;
    return false;
}

bool run(const char* const argv[], int& status) {
    int argc = 0;
    while (argc < 5 && argv[argc]) ++argc;
    if (argc < 3 || utilityForced()) return false;
    const char* program = baseName(argv[0]);
    const char* ifname = argv[1];
    bool set = argc == 4 && std::strcmp(program, "iwpriv") == 0 && std::strcmp(argv[2], "set") == 0;
    bool up = std::strcmp(argv[2], "up") == 0;
    bool flags = argc == 3 && std::strcmp(program, "ifconfig") == 0 && (up || std::strcmp(argv[2], "down") == 0);
    if (!set && !flags) return false;
    int fd = socketFd();
    const PrivateSet* priv = fd >= 0 ? offered(fd, ifname) : nullptr;
    if (!priv) return false;
    status = set ? sendSet(fd, *priv, ifname, argv[3]) : sendFlags(fd, ifname, up);
    trace::request(ifname, argv[set ? 3 : 2], !set, status);
    return true;
}

}  // namespace wlan::wext
