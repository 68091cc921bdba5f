// MulToUni: the device's one multicast-to-unicast switch, carried to the
// driver as IGMP snooping on every interface that carries a VAP.
#include <cstdlib>
#include <cstring>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "platform/sql.h"
#include "vap/vap.h"
#include "vap/vaptext.h"

using namespace wlan::vap;
using wlan::Rows;

extern "C" int dot11SetMulToUnivalue(const char* ifname, int value) {
    if (!ifname) return -1;
    update_cfg_file(ifname, "IgmpSnEnable", value, nullptr);
    int rc = wlan::drvSet(ifname, kIgmpSnEnable, value);
    if (rc != 0) wlan::logMsg(kIgmpFailed, ifname);
    return rc;
}

extern "C" int multicastEnableDisable(const char*, int, int64_t, char**, int, int, char**) {
    Rows switchRow = Rows::query(wlanDbHandle, nullptr, kMulToUni);
    if (switchRow.failed()) return -1;
    const char* enabled = switchRow.value(0, "Enabled");
    if (!enabled) return -1;
    int value = wlan::dbNumber(enabled);

    Rows interfaces = Rows::query(wlanDbHandle, nullptr, kAllInterfaces);
    if (interfaces.failed() || interfaces.rows() == 0) return -1;
    int result = -1;
    for (int r = 0; r < interfaces.rows(); ++r) {
        const char* vapName = interfaces.value(r, "vapName");
        if (!vapName) break;
        if (std::strcmp(vapName, "unused") == 0) {
            result = 0;
            continue;
        }
        const char* ifname = interfaces.value(r, "interfaceName");
        if (!ifname) break;
        int rc = dot11SetMulToUnivalue(ifname, value);
        if (rc != 0) {
            wlan::logMsg(kMulticastFailed, ifname);
            return rc;  // the interfaces after it are left alone
        }
        result = 0;
    }
    return result;
}
