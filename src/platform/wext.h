// Driver settings and interface flags made in-process, through the Linux
// wireless-extensions interface, instead of one driver-utility or ifconfig
// process each: a process start costs milliseconds on the access point's
// CPU, the request itself microseconds.
#pragma once

#include <cstdint>
#include <net/if.h>  // before linux/wireless.h, which then skips its copies

namespace wlan::wext {

// When argv is "<...>/iwpriv <if> set <Key=Value>" or "ifconfig <if>
// up|down" and the interface's driver offers a private "set", makes the
// request the program would make and gives in status the exit status the
// program would give (255, 1 on refusal).  False: the program must run
// (no such driver, another command, or WLANSYNC_DRIVER=utility).
bool run(const char* const argv[], int& status);

// The tool speaks to the driver itself: WLANSYNC_DRIVER=utility is not set
// and one of vap0-vap3 offers the driver's private "set".
bool direct();

// The driver's private "set" as its private-command list describes it.
struct PrivateSet {
    uint32_t ioctl;     // the request number sent
    uint16_t args;      // its set_args: type, fixed flag, size
    uint32_t subcmd;    // a sub-command's number, 0 for none
};

// struct iwreq as a CPU with Pointer-sized pointers lays it out.
template <class Pointer>
struct Request {
    char name[IFNAMSIZ];
    union {
        unsigned char inlined[IFNAMSIZ];
        uint32_t mode;
        struct {
            Pointer pointer;
            uint16_t length;
            uint16_t flags;
        } data;
    } u;
};

// Fills req as the driver utility does for "set arg": arg with its NUL,
// cut to the command's size, inline when a fixed size fits in the request,
// else in buffer (of at least the command's size, zeroed) at address.
// False when the utility refuses it unsent (a fixed size arg does not fill).
template <class Pointer>
bool buildSet(Request<Pointer>& req, const PrivateSet& set, const char* ifname, const char* arg,
              unsigned char* buffer, Pointer address);

}  // namespace wlan::wext
