#include <cstdarg>
#include <cstring>
#include <string>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "driver/drvtext.h"
#include "platform/platform.h"
#include "platform/sandbox.h"

namespace wlan {

int drvSet(const char* ifname, const char* format, ...) {
    va_list args, copy;
    va_start(args, format);
    va_copy(copy, args);
    int n = vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string setting(n > 0 ? static_cast<size_t>(n) : 0, '\0');
    if (n > 0) vsnprintf(setting.data(), setting.size() + 1, format, args);
    va_end(args);
    std::string iwpriv = rootPath(drv::kIwpriv);
    const char* argv[] = {iwpriv.c_str(), ifname ? ifname : "", "set", setting.c_str(), nullptr};
    return adpCmdExec(argv);
}

}  // namespace wlan

namespace {

// The file edit toggles the address; it runs only when the list does not yet
// say what the driver is told, so that file and driver stay in step.  Names
// that are no VAP's still reach the edit, which refuses them.
int aclApply(const char* ifname, const char* mac, bool add, const wlan::LogMsg& empty,
             const char* format) {
    if (!ifname || !mac) return -1;
    if (*mac == '\0') {
        wlan::logMsg(empty, ifname);
        return -1;
    }
    bool vap = std::strncmp(ifname, "vap", 3) == 0 && ifname[3] >= '0' && ifname[3] <= '3';
    std::string list = std::string("AccessControlList") + (vap ? ifname[3] : '0');
    if (!vap || wlan::cfg::listWithEntry(list.c_str(), mac) != add)
        update_cfg_file(ifname, "AccessControlList", -1, mac);
    return wlan::drvSet(ifname, format, mac);
}

}  // namespace

extern "C" {

int dot11IfUpDown(const char* ifname, int up) {
    if (!ifname) return -1;
    // The driver reads the file when an interface opens: every edit so far
    // goes to it first.
    if (up) wlan::cfg::commit();
    const char* argv[] = {"ifconfig", ifname, up ? "up" : "down", nullptr};
    return adpCmdExec(argv);
}

int dot11AclAddMac(const char* ifname, const char* mac) {
    return aclApply(ifname, mac, true, wlan::drv::kEmptyMacAdd, wlan::drv::kAclAddEntry);
}

int dot11AclDelMac(const char* ifname, const char* mac) {
    return aclApply(ifname, mac, false, wlan::drv::kEmptyMacDel, wlan::drv::kAclDelEntry);
}

}  // extern "C"
