// startStopVAP: a VAP by name on every interface of dot11Interface that
// carries it; after a start the interface's counters are reset and its MAC
// address is stored back.
#include <cstdlib>
#include <cstring>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "driver/driver.h"
#include "main/dispatch.h"
#include "platform/platform.h"
#include "platform/sql.h"
#include "vap/vap.h"
#include "vap/vaptext.h"

using namespace wlan::vap;
using wlan::Rows;
using wlan::sqlFormat;

extern "C" int dot11MacAddrGet(const char* ifname, char* out) {
    if (!ifname || !out) return -1;
    int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (sock == -1) return -1;
    ifreq request{};
    std::strncpy(request.ifr_name, ifname, IFNAMSIZ - 1);  // the kernel takes 15 characters
    request.ifr_hwaddr.sa_family = AF_INET;
    if (adpIoctl(sock, SIOCGIFHWADDR, &request) == -1) {
        adpClose(sock);
        return -1;
    }
    adpClose(sock);
    const unsigned char* mac = reinterpret_cast<const unsigned char*>(request.ifr_hwaddr.sa_data);
    std::snprintf(out, 18, "%.2X:%.2X:%.2X:%.2X:%.2X:%.2X", mac[0], mac[1], mac[2], mac[3],
                  mac[4], mac[5]);
    return 0;
}

extern "C" int dot11MacAddrUpdate(sqlite3* db, const char* table, const char* ifname) {
    if (!db || !table || !ifname) return -1;
    char mac[20] = {};
    if (dot11MacAddrGet(ifname, mac) != 0) return -1;
    wlan::SqlText statement = sqlFormat(kStoreMac, table, mac, ifname);
    char* error = nullptr;
    int rc = sqlite3_exec(db, statement.get(), nullptr, nullptr, &error);
    wlan::noteDatabase(sqlite3_db_filename(db, "main"), rc, error);
    sqlite3_free(error);
    return rc == SQLITE_OK ? 0 : -1;
}

extern "C" int startStopVAP(const char* dbFile, const char* vapName, int start) {
    if (!vapName) return -1;
    wlan::logMsg(kVapNotice, start ? "Start" : "Stop", vapName);
    Rows interfaces = Rows::query(nullptr, dbFile, sqlFormat(kVapInterfaces, vapName).get());
    if (interfaces.failed()) return -1;
    if (interfaces.empty()) return 0;

    int result = 0;
    const char* ifname = nullptr;
    for (int r = 0; r < interfaces.rows(); ++r) {
        ifname = interfaces.value(r, "interfaceName");
        const char* radioNo = interfaces.value(r, "radioNo");
        if (!ifname || !radioNo) return -1;
        int radio = wlan::dbNumber(radioNo);
        if (startStopVAPInstance(dbFile, vapName, ifname, radio, start) != 0) {
            result = -1;
            break;  // the remaining interfaces are not touched
        }
    }
    if (start == 1) {
        // The last interface handled: the failed one when the walk stopped early.
        int rc = wlan::drvSet(ifname, kResetCounter, 0);
        if (result == 0) result = rc;
        if (dot11MacAddrUpdate(wlanDbHandle, "dot11Interface", ifname) != 0) {
            wlan::logMsg(kMacStoreFailed, ifname);
            result = -1;
        }
    }
    return result;
}
