// The WDS switch of a radio flipped: every peer of the radio is set or
// cleared, its interface brought up or down, and the link's cipher and key
// rewritten.
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

// The driver's WDS encryption word of a cipher code; both ciphers at once
// have none.
const char* wdsEncrypType(uint32_t cipher) {
    switch (cipher) {
    case 1: return "WEP";
    case 2: return "TKIP";
    case 4: return "AES";
    default: return "NONE";
    }
}

}  // namespace

// Stops quietly at the first missing value; what was done stays done.
extern "C" void dot11MgmtConfigWDS(const char* ifname, int n, int wdsEnabled) {
    using wlan::Rows;
    Rows peers = Rows::query(wlanDbHandle, nullptr, wlan::sqlFormat(kWdsPeersQuery, n).get());
    if (peers.failed()) return;
    Rows profile = Rows::query(wlanDbHandle, nullptr, kAp1ProfileQuery);
    if (profile.failed()) return;

    update_cfg_file(ifname, kWdsEnableKey, wdsEnabled, nullptr);

    // A link without a cipher word of its own takes ap1's security word.
    const char* word = peers.value(0, "pairwiseCipher");
    if (!word) return;
    uint32_t cipher = dot11CipherStrToVal(word);
    if (cipher == 0) {
        if (!(word = profile.value(0, "security"))) return;
        cipher = dot11CipherStrToVal(word);
    }
    update_cfg_file(ifname, kWdsEncrypKey, -1, wdsEncrypType(cipher));

    for (int r = 0; r < peers.rows(); ++r) {
        const char* mac = peers.value(r, "macAddress");
        const char* index = peers.value(r, "wdsIndexNo");
        if (!mac || !index) return;
        int slot = wlan::dbNumber(index);
        // A slot the list cannot hold is reported; its interface is still switched.
        if (wdsEnabled != 0) {
            if (dot11WdsAddMac(slot, mac) != 0) wlan::logMsg(kWdsAddFailed, mac);
        } else if (dot11WdsDelMac(slot) != 0) {
            wlan::logMsg(kWdsDelFailed, mac);
        }
        dot11IfUpDown(wdsIfName(slot).c_str(), wdsEnabled != 0);
    }

    const char* key = peers.value(0, "pskPassAscii");
    if (!key) return;
    update_cfg_file(ifname, kWdsKeyKey, -1, key);
    if (wdsEnabled != 0) eapDaemonRestart(wlan::rootPath(kSystemDb).c_str());
}
