// SQLite's memory.  The system SQLite is built without its lookaside
// allocator, so each of the thousands of small objects a VAP start's
// statements parse into was a trip through the C library's malloc and free:
// a quarter of the tool's instructions.  One invocation is short, so SQLite
// gets size classes over blocks that are never given back: an allocation is
// a pop or a bump, a free a push.  Large ones still go to malloc.
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sqlite3.h>

#include "platform/platform.h"

namespace {

constexpr int kClasses = 13;                     // 16 bytes .. 64 KiB
constexpr size_t kHeader = 8;                    // keeps SQLite's 8-byte alignment
constexpr size_t kBlock = 256 * 1024;            // taken from malloc at a time
constexpr uint64_t kLarge = uint64_t{1} << 63;   // header of a malloc'd one: size | kLarge

size_t classSize(int c) { return size_t{16} << c; }

// The smallest class that holds need bytes; kClasses when none does.
int classOf(size_t need) {
    int c = static_cast<int>(std::bit_width(need - 1)) - 4;
    return c < 0 ? 0 : c > kClasses ? kClasses : c;
}

void* freeList[kClasses];
char* bump = nullptr;
size_t bumpLeft = 0;

uint64_t& header(void* p) { return *reinterpret_cast<uint64_t*>(static_cast<char*>(p) - kHeader); }

void* allocate(int n) {
    if (n <= 0) return nullptr;
    size_t need = static_cast<size_t>(n) + kHeader;
    int c = classOf(need);
    char* chunk;
    if (c == kClasses) {
        chunk = static_cast<char*>(std::malloc(need));
        if (!chunk) return nullptr;
        *reinterpret_cast<uint64_t*>(chunk) = need | kLarge;
    } else if (freeList[c]) {
        chunk = static_cast<char*>(freeList[c]);
        freeList[c] = *reinterpret_cast<void**>(chunk + kHeader);
    } else {
        if (bumpLeft < classSize(c)) {
            bump = static_cast<char*>(std::malloc(kBlock));  // the old block's tail is left
            if (!bump) return bumpLeft = 0, nullptr;
            bumpLeft = kBlock;
        }
        chunk = bump;
        bump += classSize(c);
        bumpLeft -= classSize(c);
        *reinterpret_cast<uint64_t*>(chunk) = static_cast<uint64_t>(c);
    }
    return chunk + kHeader;
}

void release(void* p) {
    if (!p) return;
    uint64_t h = header(p);
    if (h & kLarge) {
        std::free(static_cast<char*>(p) - kHeader);
        return;
    }
    *static_cast<void**>(p) = freeList[h];
    freeList[h] = static_cast<char*>(p) - kHeader;
}

int usable(void* p) {
    if (!p) return 0;
    uint64_t h = header(p);
    return static_cast<int>(((h & kLarge) ? (h & ~kLarge) : classSize(static_cast<int>(h))) - kHeader);
}

void* reallocate(void* p, int n) {
    if (n <= usable(p)) return p;
    void* grown = allocate(n);
    if (grown && p) std::memcpy(grown, p, static_cast<size_t>(usable(p)));
    if (grown) release(p);
    return grown;
}

int roundUp(int n) {
    int c = classOf(static_cast<size_t>(n) + kHeader);
    return c < kClasses ? static_cast<int>(classSize(c) - kHeader) : (n + 7) & ~7;
}

int init(void*) { return SQLITE_OK; }
void shutdown(void*) {}

constexpr sqlite3_mem_methods kMethods = {allocate, release, reallocate, usable, roundUp,
                                          init,     shutdown, nullptr};

}  // namespace

namespace wlan {

void useShortLivedMemory() {
    // Under AddressSanitizer SQLite keeps malloc: the sanitizer sees its
    // memory only there.
#if defined(__SANITIZE_ADDRESS__)
    return;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    return;
#endif
#endif
    sqlite3_config(SQLITE_CONFIG_MALLOC, &kMethods);
}

}  // namespace wlan
