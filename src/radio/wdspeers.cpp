// dot11WDSPeers: one peer added, removed or given a new link key, on a radio
// whose WDS is on.
#include <string>

#include "auth/auth.h"
#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "platform/sandbox.h"
#include "radio/radio.h"
#include "radio/radiotext.h"
#include "security/security.h"

namespace {

using namespace wlan::radio;

// A link has a key only under TKIP or CCMP.
bool keyed(uint32_t cipher) { return cipher == 2 || cipher == 4; }

// The link's key: true with key set (null for none) when the row has what
// its cipher needs.
template <typename Lookup>
bool linkOf(Lookup column, uint32_t& cipher, const char*& key) {
    const char* word = column("pairwiseCipher");
    if (!word) return false;
    cipher = dot11CipherStrToVal(word);
    key = keyed(cipher) ? column("pskPassAscii") : nullptr;
    return !keyed(cipher) || key;
}

// Absent keys are equal to each other and differ from any present one.
bool sameKey(const char* a, const char* b) {
    return (!a && !b) || (a && b && std::string(a) == b);
}

}  // namespace

extern "C" int dot11WDSPeersTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                       int nCols, int, char** priorRow) {
    auto fromTable = [&](const char* name) { return queryResValueGet(table, nCols, 0, name); };
    auto fromPrior = [&](const char* name) { return queryResValueGet(priorRow, nCols, 0, name); };
    if (opType != OP_INSERT && opType != OP_DELETE && opType != OP_UPDATE) return -1;
    uint32_t oldCipher = 0;
    const char* oldKey = nullptr;
    if (opType == OP_UPDATE && !linkOf(fromPrior, oldCipher, oldKey)) return -1;
    // A deleted row is only on the command line.
    auto column = [&](const char* name) {
        return opType == OP_DELETE ? fromPrior(name) : fromTable(name);
    };

    const char* radioNo = column("radioNo");
    if (!radioNo) return -1;
    wlan::Rows radio = wlan::Rows::query(
        nullptr, dbFile, wlan::sqlFormat(kPeerRadioQuery, wlan::dbNumber(radioNo)).get());
    if (radio.failed()) return -1;
    const char* wdsEnabled = radio.value(0, "wdsEnabled");
    if (!wdsEnabled) return -1;
    if (wlan::dbNumber(wdsEnabled) == 0) return 0;  // WDS is off on that radio

    const char* mac = column("macAddress");
    const char* index = column("wdsIndexNo");
    if (!mac || !index) return -1;
    int slot = static_cast<int16_t>(wlan::dbNumber(index));  // the slot is a 16-bit number
    uint32_t cipher = 0;
    const char* key = nullptr;
    if (!linkOf(column, cipher, key)) return -1;

    if (opType == OP_INSERT) {
        if (dot11WdsAddMac(slot, mac) != 0) {
            wlan::logMsg(kPeerAddFailed, mac);
            return -1;
        }
        dot11IfUpDown(wdsIfName(slot).c_str(), 1);
    } else if (opType == OP_DELETE) {
        if (dot11WdsDelMac(slot) != 0) {
            wlan::logMsg(kPeerDelFailed, mac);
            return -1;
        }
        dot11IfUpDown(wdsIfName(slot).c_str(), 0);
    } else {
        if (cipher == oldCipher && sameKey(key, oldKey)) return -1;  // nothing to apply
        // A link that lost its key gets an empty one rather than a stale one.
        // A refused key is logged by the edit; the daemon is restarted all the same.
        update_cfg_file(kWdsKeyIf, kWdsKeyKey, -1, key ? key : "");
    }
    eapDaemonRestart(wlan::rootPath(kSystemDb).c_str());
    return 0;
}
