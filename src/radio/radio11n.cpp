// dot11Radio11n: pure 802.11n puts the radio's interface into the driver's
// 802.11n-only mode.  The channel width travels with the wireless mode.
#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "radio/radio.h"
#include "radio/radiotext.h"

using namespace wlan::radio;
using wlan::Rows;

extern "C" int dot11Radio11nTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                       int nCols, int, char**) {
    if (opType == OP_DELETE || opType == OP_INSERT) return 0;
    if (opType != OP_UPDATE) return -1;
    const char* radioNo = queryResValueGet(table, nCols, 0, "radioNo");
    if (!radioNo) return -1;
    int n = wlan::dbNumber(radioNo);

    Rows radio = Rows::query(nullptr, dbFile, wlan::sqlFormat(kRadioByNoQuoted, n).get());
    if (radio.failed()) return -1;
    const char* opMode = radio.value(0, "opMode");
    if (!opMode) return -1;
    if (dot11ModeStrToVal(opMode) < kFirst11nMode) return 0;  // unknown words give -1: not 11n

    Rows ifRows;
    const char* ifname = nullptr;
    int found = radioInterface(dbFile, n, ifRows, ifname);
    if (found <= 0) return found;
    return dot11Radio11nApply(dbFile, ifname, n) == 0 ? 0 : -1;
}

extern "C" int dot11Radio11nApply(const char* dbFile, const char* ifname, int radioNo) {
    Rows row = Rows::query(nullptr, dbFile, wlan::sqlFormat(kRadio11nQuery, radioNo).get());
    if (row.failed()) return -1;
    const char* puren = row.value(0, "puren");
    if (!row.value(0, "chanWidth") || !puren) return -1;
    int rc = -1;
    if (wlan::dbNumber(puren) == 1) {
        update_cfg_file(ifname, kWirelessModeKey, kPureN, nullptr);
        rc = wlan::drvSet(ifname, kWirelessMode, kPureN);
    }
    // As on the device, a row with a preamble setting counts as applied.
    if (row.value(0, "mimoPreamble")) rc = 0;
    return rc;
}
