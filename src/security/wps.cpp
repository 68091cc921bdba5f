// dot11WPS: a VAP's Wi-Fi Protected Setup switch reaches the driver.
#include <string>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "platform/sql.h"
#include "security/security.h"
#include "security/sectext.h"

namespace {

// The driver's WPS mode for "on" enables every method it has.
constexpr int kWpsOn = 1;
constexpr int kWpsAllMethods = 7;
constexpr int kConfigured = 2;

// File first, then the driver; neither outcome is looked at.
void setWps(const char* ifname, const char* key, const char* format, int value) {
    update_cfg_file(ifname, key, value, std::to_string(value).c_str());
    wlan::drvSet(ifname, format, value);
}

}  // namespace

extern "C" int dot11WPSTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                  int nCols, int, char**) {
    if (!dbFile || opType == OP_DELETE || !table) return -1;
    const char* vapName = queryResValueGet(table, nCols, 0, "vapName");
    const char* enabled = queryResValueGet(table, nCols, 0, "wpsEnabled");
    if (!vapName || !enabled) return -1;
    int n = wlan::dbNumber(enabled);

    wlan::Rows ifRows =
        wlan::Rows::query(nullptr, dbFile, wlan::sqlFormat(wlan::sec::kIfByVap, vapName).get());
    if (ifRows.failed()) return -1;
    if (ifRows.empty()) {
        wlan::logMsg(wlan::sec::kWpsNoInterface, vapName);
        return -1;
    }
    const char* ifname = ifRows.value(0, "interfaceName");
    if (!ifname) return -1;

    setWps(ifname, "WscConfMode", wlan::sec::kWscConfMode, n == kWpsOn ? kWpsAllMethods : n);
    setWps(ifname, "WscConfStatus", wlan::sec::kWscConfStatus, kConfigured);
    return 0;
}
