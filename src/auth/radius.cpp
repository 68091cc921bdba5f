// radiusClient: the daemon reads its RADIUS servers and its own address from
// the driver configuration file when it starts.
#include <cstring>
#include <string>
#include <vector>

#include "auth/auth.h"
#include "auth/authtext.h"
#include "cfgfile/cfgfile.h"
#include "main/dispatch.h"
#include "platform/platform.h"
#include "platform/sql.h"

namespace {

using wlan::Rows;
namespace auth = wlan::auth;

struct CfgLine {
    const char* key;
    std::string text;
};

// The driver keeps one server per VAP position; every VAP gets the same.
CfgLine perVap(const char* key, const char* value) {
    std::string text = std::string(key) + "=" + value;
    for (int vap = 1; vap < 4; ++vap) text += std::string(";") + value;
    return {key, text};
}

// The subnet is the own address's text up to and including its third '.';
// an address with fewer dots has none and matches no server.
bool onSubnetOf(const char* own, const char* server) {
    const char* end = own;
    for (int dots = 0; dots < 3; ++end) {
        if (*end == '\0') return false;
        if (*end == '.') ++dots;
    }
    return std::strncmp(own, server, static_cast<size_t>(end - own)) == 0;
}

// Each server's three lines in row order, preceded once by the first own
// address on a server's subnet; false when a row lacks a value.
bool radiusLines(const Rows& own, const Rows& servers, std::vector<CfgLine>& lines) {
    bool ownWritten = false;
    for (int r = 0; r < servers.rows(); ++r) {
        const char* server = servers.value(r, "authserver");
        if (!server) return false;
        for (int a = 0; a < own.rows(); ++a) {
            const char* address = own.value(a, "ipAddress");
            if (!address) return false;
            if (!ownWritten && onSubnetOf(address, server)) {
                std::string line = std::string(auth::kOwnAddressKey) + "=" + address;
                lines.push_back({auth::kOwnAddressKey, line});
                ownWritten = true;
            }
        }
        const char* port = servers.value(r, "authport");
        const char* secret = servers.value(r, "authsecret");
        if (!port || !secret) return false;
        lines.push_back(perVap(auth::kRadiusServerKey, server));
        lines.push_back(perVap(auth::kRadiusPortKey, port));
        lines.push_back(perVap(auth::kRadiusSecretKey, secret));
    }
    return true;
}

// Every line naming one of the keys dropped, the new lines appended last.
// Values go into the file as they stand: nothing interprets them.
bool writeRadiusLines(const std::vector<CfgLine>& lines) {
    for (const CfgLine& line : lines) {
        if (wlan::cfg::holdsLineEnd(line.text.c_str())) {
            wlan::logMsg(auth::kRadiusLineEnd, line.key);  // the key only: secrets stay out of logs
            return false;
        }
    }
    wlan::cfg::Lines texts;
    for (const CfgLine& line : lines) texts.push_back(line.text);
    // A file that cannot be read is logged where it is read.
    return wlan::cfg::replaceLines({auth::kRadiusServerKey, auth::kRadiusPortKey,
                                    auth::kRadiusSecretKey, auth::kOwnAddressKey},
                                   texts);
}

// The RADIUS lines rewritten from the tables; false when a query fails, a row
// lacks a value or a value cannot be written.
bool rewrite(const char* dbFile) {
    Rows own = Rows::query(nullptr, dbFile, auth::kOwnAddresses);
    if (own.failed()) return false;
    Rows servers = Rows::query(nullptr, dbFile, auth::kRadiusServers);
    if (servers.failed()) return false;
    std::vector<CfgLine> lines;
    return radiusLines(own, servers, lines) && writeRadiusLines(lines);
}

}  // namespace

extern "C" int radiusClientHandler(const char* dbFile, int opType, int64_t, char**, int, int,
                                   char**) {
    if (opType == OP_DELETE) {
        wlan::logMsg(auth::kRadiusDelete);
        return -1;
    }
    if (opType != OP_INSERT && opType != OP_UPDATE) return -1;

    const char* killall[] = {"killall", auth::kDaemonName, nullptr};
    adpCmdExec(killall);
    if (!rewrite(dbFile) || Rows::query(nullptr, dbFile, auth::kVapInterfaces).failed()) {
        // Never left stopped: the daemon starts on the file as the failure left it.
        auth::startDaemon();
        return -1;
    }
    eapDaemonRestart(dbFile);
    return 0;
}
