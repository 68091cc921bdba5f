// eapDaemonRestart: the daemon reads "EAPifname" (the bridges it listens on)
// from the driver configuration file when it starts.
#include <cstring>
#include <string>

#include "auth/auth.h"
#include "auth/authtext.h"
#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "platform/platform.h"
#include "platform/sandbox.h"
#include "platform/sql.h"

namespace {

using wlan::Rows;

// ifconfig up/down for every wireless (vap/wds) bridge port; false when a
// row has no name.
bool walkPorts(const Rows& ports, bool up) {
    for (int r = 0; r < ports.rows(); ++r) {
        const char* name = ports.value(r, "PhyInterfaceName");
        if (!name) return false;
        if (std::strncmp(name, "vap", 3) == 0 || std::strncmp(name, "wds", 3) == 0)
            dot11IfUpDown(name, up);
    }
    return true;
}

// "EAPifname=bdg<id>;bdg<id>..." over every VLAN row; false when a row has
// no id.  The list is never cut, however long.
bool eapLine(const Rows& vlans, std::string& line) {
    line = std::string(wlan::auth::kEapKey) + "=";
    for (int r = 0; r < vlans.rows(); ++r) {
        const char* id = vlans.value(r, "vlanId");
        if (!id) return false;
        if (r > 0) line += ';';
        line += "bdg" + std::to_string(wlan::dbNumber(id));
    }
    return true;
}

// Every line naming EAPifname dropped, the new one appended last.
void writeEapLine(const std::string& line) {
    if (!wlan::cfg::replaceLines({wlan::auth::kEapKey}, {line}))
        wlan::logMsg(wlan::auth::kEapCfgUnreadable, wlan::cfg::cfgPath().c_str());
}

}  // namespace

extern "C" int eapDaemonRestart(const char* dbFile) {
    Rows ports = Rows::query(nullptr, dbFile, wlan::auth::kBridgePorts);
    if (ports.failed()) return -1;

    const char* killall[] = {"killall", wlan::auth::kDaemonName, nullptr};
    adpCmdExec(killall);
    if (!walkPorts(ports, false)) return -1;

    Rows vlans = Rows::query(nullptr, dbFile, wlan::auth::kVlans);
    std::string line;
    if (vlans.failed() || !eapLine(vlans, line)) return -1;
    writeEapLine(line);

    if (!walkPorts(ports, true)) return -1;
    std::string daemon = wlan::rootPath(wlan::auth::kDaemon);
    const char* start[] = {daemon.c_str(), nullptr};
    adpCmdExec(start);
    return 0;
}
