// The dot11Profile, dot11VAP and dot11Interface handlers: a changed row
// becomes VAP starts and stops.
#include <cstdlib>
#include <cstring>

#include "main/dispatch.h"
#include "platform/sql.h"
#include "vap/vap.h"
#include "vap/vaptext.h"

using namespace wlan::vap;
using wlan::Rows;
using wlan::sqlFormat;

// A changed profile restarts every enabled VAP that uses it; none is stopped.
extern "C" int startStopVAPUsingProfile(const char* dbFile, int opType, int64_t, char** table,
                                        int nCols, int, char** priorRow) {
    if (opType == OP_DELETE) return queryResValueGet(priorRow, nCols, 0, "profileName") ? 0 : -1;
    const char* profile = queryResValueGet(table, nCols, 0, "profileName");
    if (!profile || (opType != OP_INSERT && opType != OP_UPDATE)) return -1;
    if (opType == OP_INSERT) return 0;

    wlan::logMsg(kProfileNotice, "Start", profile);
    Rows vaps = Rows::query(nullptr, dbFile, sqlFormat(kVapsOfProfile, profile).get());
    for (int r = 0; !vaps.failed() && r < vaps.rows(); ++r) {
        const char* vapName = vaps.value(r, "vapName");
        const char* enabled = vaps.value(r, "vapEnabled");
        if (!vapName || !enabled) break;
        if (wlan::dbNumber(enabled) != 0) startStopVAP(dbFile, vapName, 1);
    }
    return 0;
}

extern "C" int dot11VAPTblHandler(const char* dbFile, int opType, int64_t rowId, char** table,
                                  int nCols, int, char**) {
    if (opType == OP_DELETE) return 0;  // a deleted VAP is left running
    const char* vapName = queryResValueGet(table, nCols, 0, "vapName");
    const char* enabled = queryResValueGet(table, nCols, 0, "vapEnabled");
    if (!vapName || !enabled) return -1;
    if (wlan::dbNumber(enabled) == 0) return startStopVAP(dbFile, vapName, 0);
    int rc = startStopVAP(dbFile, vapName, 1);
    if (rc != 0 || (opType != OP_INSERT && opType != OP_UPDATE)) return rc;

    // Multicast to unicast once more on the VAP's first interface.
    Rows switchRow = Rows::query(wlanDbHandle, nullptr, kMulToUni);
    if (switchRow.failed()) return -1;
    const char* on = switchRow.value(0, "Enabled");
    if (!on) return -1;
    Rows interfaces = Rows::query(wlanDbHandle, nullptr,
                                  sqlFormat(kFirstInterface, static_cast<int32_t>(rowId)).get());
    if (interfaces.failed()) return -1;
    if (wlan::dbNumber(on) != 1) return 0;
    const char* ifname = interfaces.value(0, "interfaceName");
    return ifname ? dot11SetMulToUnivalue(ifname, 1) : -1;
}

// Only an interface given the VAP name "unused" is acted on: it is stopped.
extern "C" int dot11InterfaceTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                        int nCols, int, char** priorRow) {
    if (opType == OP_DELETE || opType == OP_INSERT) return 0;
    const char* oldMac = queryResValueGet(priorRow, nCols, 0, "macAddress");
    const char* newMac = queryResValueGet(table, nCols, 0, "macAddress");
    if (!oldMac || !newMac) return -1;
    if (std::strcmp(oldMac, newMac) != 0) return 0;  // the tool's own MAC store
    const char* ifname = queryResValueGet(table, nCols, 0, "interfaceName");
    const char* vapName = queryResValueGet(table, nCols, 0, "vapName");
    const char* radioNo = queryResValueGet(table, nCols, 0, "radioNo");
    if (!ifname || !vapName || !radioNo) return -1;
    if (std::strcmp(vapName, "unused") != 0) return 0;
    return startStopVAPInstance(dbFile, vapName, ifname, wlan::dbNumber(radioNo), 0);
}
