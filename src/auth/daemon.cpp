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

// Between the daemon's stop and its start: ports down, "EAPifname" rewritten,
// ports up.  False at the first failure.  A file that cannot be read is
// logged where it is read; the daemon then starts on the file as it is.
bool reconfigure(const char* dbFile, const Rows& ports) {
    if (!walkPorts(ports, false)) return false;
    Rows vlans = Rows::query(nullptr, dbFile, wlan::auth::kVlans);
    std::string line;
    if (vlans.failed() || !eapLine(vlans, line)) return false;
    wlan::cfg::replaceLines({wlan::auth::kEapKey}, {line});
    return walkPorts(ports, true);
}

}  // namespace

namespace wlan::auth {

int startDaemon() {
    // It reads the file when it starts: every edit so far goes to it first.
    wlan::cfg::commit();
    std::string daemon = wlan::rootPath(kDaemon);
    const char* start[] = {daemon.c_str(), nullptr};
    return adpCmdExec(start);
}

}  // namespace wlan::auth

extern "C" int eapDaemonRestart(const char* dbFile) {
    Rows ports = Rows::query(nullptr, dbFile, wlan::auth::kBridgePorts);
    if (ports.failed()) return -1;

    const char* killall[] = {"killall", wlan::auth::kDaemonName, nullptr};
    adpCmdExec(killall);
    bool ok = reconfigure(dbFile, ports);
    // Started again even after a failure: 802.1X is never left down until
    // the next change.
    wlan::auth::startDaemon();
    return ok ? 0 : -1;
}
