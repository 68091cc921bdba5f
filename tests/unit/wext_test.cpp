// The driver setting as the driver utility lays it out, for 32-bit (the
// access point) and 64-bit CPUs: each request's 32 bytes are built here
// from the offsets alone and compared whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/wext.h"

using wlan::wext::PrivateSet;
using wlan::wext::Request;

static_assert(sizeof(Request<uint32_t>) == 32 && sizeof(Request<uint64_t>) == 32);

namespace {

constexpr uint16_t kChar = 0x2000, kFixed = 0x0800;  // IW_PRIV_TYPE_CHAR, IW_PRIV_SIZE_FIXED

// bytes: what the driver gets, inline or in the buffer.
struct Case { uint16_t args; uint32_t subcmd; const char *ifname, *arg; bool sent, inlined; std::string bytes; };

const Case kCases[] = {
    {kChar | 1024, 0, "vap0", "Channel=6", true, false, std::string("Channel=6", 10)},  // RT2860's set
    {kChar | 1024, 0, "vap1", "", true, false, std::string(1, '\0')},
    {kChar | 8, 0, "vap0", "SSID=abcdefgh", true, false, "SSID=abc"},  // cut, no NUL
    {kChar | 1024, 0, "0123456789abcdefXY", "A=1", true, false, std::string("A=1", 4)},
    {kChar | kFixed | 6, 0, "vap0", "abcde", true, true, std::string("abcde", 6)},
    {kChar | kFixed | 12, 5, "vap0", "abcdefghijk", true, true, std::string("abcdefghijk", 12)},
    {kChar | kFixed | 16, 0, "vap0", "abcdefghijklmnopq", true, true, "abcdefghijklmnop"},
    {kChar | kFixed | 16, 5, "vap0", "abcdefghijklmnop", true, false, "abcdefghijklmnop"},
    {kChar | kFixed | 6, 0, "vap0", "ab", false, false, ""},  // too short: refused unsent
};

template <class Pointer>
void check(const Case& c) {
    SCOPED_TRACE(std::string(c.arg) + " on " + c.ifname + ", pointer bytes " + std::to_string(sizeof(Pointer)));
    Request<Pointer> req;
    std::memset(&req, 0xA5, sizeof req);
    unsigned char buffer[2048] = {};
    const Pointer address = 0x12345678;
    ASSERT_EQ(buildSet(req, PrivateSet{0x8BE2, c.args, c.subcmd}, c.ifname, c.arg, buffer, address), c.sent);
    if (!c.sent) return;
    unsigned char want[32] = {};
    std::memcpy(want, c.ifname, std::min<size_t>(std::strlen(c.ifname), 16));
    unsigned char* u = want + 16;
    if (c.inlined) {
        std::memcpy(u, &c.subcmd, 4);
        std::memcpy(u + (c.subcmd ? 4 : 0), c.bytes.data(), c.bytes.size());
    } else {
        uint16_t length = static_cast<uint16_t>(c.bytes.size()), flags = static_cast<uint16_t>(c.subcmd);
        std::memcpy(u, &address, sizeof address);
        std::memcpy(u + sizeof(Pointer), &length, 2);
        std::memcpy(u + sizeof(Pointer) + 2, &flags, 2);
    }
    EXPECT_EQ(std::string(reinterpret_cast<char*>(&req), 32), std::string(reinterpret_cast<char*>(want), 32));
    std::string sent(reinterpret_cast<char*>(buffer), sizeof buffer);
    EXPECT_EQ(sent, (c.inlined ? "" : c.bytes) + std::string(sizeof buffer - (c.inlined ? 0 : c.bytes.size()), '\0'));
}

TEST(DriverRequest, LaidOutAsTheUtilityFor32And64BitCpus) {
    for (const Case& c : kCases) check<uint32_t>(c), check<uint64_t>(c);
}

}  // namespace
