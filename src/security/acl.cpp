// dot11ACL: one MAC address of a VAP's access list inserted or deleted.
#include "driver/driver.h"
#include "main/dispatch.h"
#include "platform/sql.h"
#include "security/security.h"
#include "security/sectext.h"

namespace {

using wlan::Rows;
using wlan::sqlFormat;

// The interface of the VAP, or null; rows keeps the value alive.
const char* vapInterface(const char* dbFile, const char* vapName, Rows& rows) {
    rows = Rows::query(nullptr, dbFile, sqlFormat(wlan::sec::kIfByVap, vapName).get());
    if (rows.failed() || rows.empty()) return nullptr;
    return rows.value(0, "interfaceName");
}

}  // namespace

extern "C" int dot11ACLTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                  int nCols, int, char** priorRow) {
    if (opType == OP_DELETE) {
        // The row is gone: its values come from the command line.
        const char* vapName = queryResValueGet(priorRow, nCols, 0, "vapName");
        const char* mac = queryResValueGet(priorRow, nCols, 0, "macAddress");
        if (!vapName || !mac) return -1;
        Rows vap = Rows::query(nullptr, dbFile, sqlFormat(wlan::sec::kVapByName, vapName).get());
        if (vap.failed() || vap.empty()) return -1;
        const char* name = vap.value(0, "vapName");
        if (!name) return -1;
        Rows ifRows;
        const char* ifname = vapInterface(dbFile, name, ifRows);
        if (!ifname) return -1;
        int rc = dot11AclDelMac(ifname, mac);
        if (rc != 0) wlan::logMsg(wlan::sec::kAclDelFailed);
        return rc;
    }
    if (opType == OP_INSERT) {
        const char* vapName = queryResValueGet(table, nCols, 0, "vapName");
        const char* mac = queryResValueGet(table, nCols, 0, "macAddress");
        if (!vapName || !mac) return -1;
        Rows ifRows;
        const char* ifname = vapInterface(dbFile, vapName, ifRows);
        if (!ifname) return -1;
        return dot11AclAddMac(ifname, mac);
    }
    return -1;  // an updated row changes nothing
}
