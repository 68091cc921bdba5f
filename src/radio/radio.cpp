// dot11Radio: wireless mode and channel of a radio's first enabled VAP, and
// its WDS switch.
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "radio/radio.h"
#include "radio/radiotext.h"

namespace wlan::radio {

int radioInterface(const char* dbFile, int n, Rows& rows, const char*& ifname) {
    rows = Rows::query(nullptr, dbFile, sqlFormat(kRadioIfQuery, '%', n, '%').get());
    if (rows.failed()) return -1;
    if (rows.rows() == 0) return 0;
    if (rows.cols() == 0) return -1;
    ifname = rows.value(0, "interfaceName");
    return ifname ? 1 : -1;
}

std::string wdsIfName(int slot) {
    return "wds" + std::to_string(static_cast<long long>(slot) - 1);
}

}  // namespace wlan::radio

namespace {

using namespace wlan::radio;

// Required on an update, in the order they are read.
constexpr const char* kUpdateColumns[] = {"radioNo",     "configuredChannel", "band",
                                          "opMode",      "dothEnabled",       "dothMaxPower",
                                          "dothMarkDfs", "wdsEnabled"};

}  // namespace

extern "C" int dot11RadioTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                    int nCols, int, char** priorRow) {
    if (opType == OP_DELETE) return 0;
    auto column = [&](const char* name) { return queryResValueGet(table, nCols, 0, name); };
    if (!column("interfaceName") || !column("rogueAPEnabled")) return -1;
    if (opType == OP_INSERT) return 0;
    if (opType != OP_UPDATE) return -1;

    for (const char* name : kUpdateColumns)
        if (!column(name)) return -1;
    int n = wlan::dbNumber(column("radioNo"));
    int channel = wlan::dbNumber(column("configuredChannel"));
    int wds = wlan::dbNumber(column("wdsEnabled"));
    int oldWds = wds;  // no prior row: the switch did not move
    if (priorRow) {
        const char* prior = queryResValueGet(priorRow, nCols, 0, "wdsEnabled");
        if (!prior) return -1;
        oldWds = wlan::dbNumber(prior);
    }

    wlan::Rows ifRows;
    const char* ifname = nullptr;
    int found = radioInterface(dbFile, n, ifRows, ifname);
    if (found <= 0) return found;  // no enabled VAP: nothing to apply

    dot11SetMode(ifname, dot11ModeStrToVal(column("opMode")));

    // The file first, so that it holds the channel even if the driver refuses.
    int rc;
    if (channel != 0) {
        update_cfg_file(ifname, kAutoChannelKey, 0, nullptr);
        update_cfg_file(ifname, kChannelKey, channel, nullptr);
        rc = wlan::drvSet(ifname, kChannel, channel);
    } else {
        update_cfg_file(ifname, kAutoChannelKey, 1, nullptr);
        rc = wlan::drvSet(ifname, kAutoChannelSel, 1);
    }
    if (rc != 0) return rc;

    if (wds == oldWds) update_cfg_file(ifname, kWdsEnableKey, wds, nullptr);
    else dot11MgmtConfigWDS(ifname, n, wds);
    return 0;
}
