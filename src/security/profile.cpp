// dot11SecurityApply: a profile's security words become the driver's settings
// on one VAP interface when the VAP starts.
#include <climits>
#include <cstring>
#include <string>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "driver/drvtext.h"
#include "platform/sql.h"
#include "security/security.h"
#include "security/sectext.h"

namespace {

using wlan::Rows;
using wlan::sqlFormat;
namespace sec = wlan::sec;

constexpr int kWpaBits = 0x60;
constexpr int kWpa1 = 0x20;
constexpr int kWpa2 = 0x40;
constexpr int kAuthPsk = 0x2;
constexpr int kAuthRadius = 0x1;

// The value of column in the first row; null when there is no row.
const char* first(const Rows& rows, const char* column) {
    return rows.rows() > 0 ? rows.value(0, column) : nullptr;
}

// Applies settings to one interface and keeps the result the function will
// give.  Each setting is written to the configuration file before the driver
// is told, so the file holds it even when the command fails.
class Settings {
public:
    explicit Settings(const char* ifname) : ifname_(ifname) {}

    // False once the driver refused the setting.
    bool text(const char* key, const char* format, const char* value) {
        update_cfg_file(ifname_, key, -1, value);
        return ran(wlan::drvSet(ifname_, format, value));
    }
    bool number(const char* key, const char* format, int value) {
        // With its own text, a negative number is written as it stands.
        update_cfg_file(ifname_, key, value, std::to_string(value).c_str());
        return ran(wlan::drvSet(ifname_, format, value));
    }
    // A driver command that has no file key.
    bool command(const char* format, const char* value) {
        return ran(wlan::drvSet(ifname_, format, value));
    }

    // A needed value is missing: what was applied stays, the rest is skipped.
    bool missing() {
        result_ = commands_ > 0 ? 0 : -1;
        return false;
    }
    int result() const { return result_; }

private:
    bool ran(int status) {
        ++commands_;
        result_ = status;
        return status == 0;
    }

    const char* ifname_;
    int commands_ = 0;
    int result_ = 0;
};

bool applyOpen(Settings& s) {
    return s.text("AuthMode", sec::kAuthMode, "OPEN") &&
           s.text("EncrypType", sec::kEncrypType, "NONE");
}

constexpr const char* kKeyFormats[] = {sec::kKey1, sec::kKey2, sec::kKey3, sec::kKey4};
constexpr const char* kKeyFileKeys[] = {"Key1Str", "Key2Str", "Key3Str", "Key4Str"};

bool applyWep(Settings& s, const Rows& profile) {
    if (!s.text("EncrypType", sec::kEncrypType, "WEP")) return false;
    const char* auth = first(profile, "wepAuth");
    if (!auth) return s.missing();
    if (std::strcmp(auth, "Shared") == 0 && !s.text("AuthMode", sec::kAuthMode, "SHARED"))
        return false;
    if (std::strcmp(auth, "Open") == 0 && !s.text("AuthMode", sec::kAuthMode, "OPEN"))
        return false;

    const char* index = first(profile, "defWepkeyIdx");
    if (!index) return s.missing();
    int k = wlan::dbNumber(index);
    // The driver counts keys from 1, the database from 0.
    if (!s.number("DefaultKeyID", sec::kDefaultKeyId, k == INT_MAX ? k : k + 1)) return false;
    const char* key = first(profile, ("wepkey" + std::to_string(k)).c_str());
    if (!key) return s.missing();
    if (k < 0 || k > 3) return true;  // the driver has four key slots
    return s.text(kKeyFileKeys[k], kKeyFormats[k], key);
}

const char* wpaAuthMode(int wpa, bool psk) {
    if (wpa == kWpa1) return psk ? "WPAPSK" : "WPA";
    if (wpa == kWpa2) return psk ? "WPA2PSK" : "WPA2";
    return psk ? "WPAPSKWPA2PSK" : "WPA1WPA2";
}

const char* encryption(uint32_t cipher) {
    switch (cipher) {
    case 2: return "TKIP";
    case 4: return "AES";
    case 6: return "TKIPAES";
    default: return nullptr;
    }
}

bool applyWpa(Settings& s, const Rows& profile, int wpa, const char* ssid) {
    const char* methods = first(profile, "authMethods");
    if (!methods) return s.missing();
    int auth = dot11AuthMethodStrToVal(methods);
    if (auth & kAuthPsk) {
        if (!s.text("AuthMode", sec::kAuthMode, wpaAuthMode(wpa, true)) ||
            !s.text("SSID", sec::kSsid, ssid))
            return false;
        const char* pass = first(profile, "pskPassAscii");
        if (!pass) return s.missing();
        if (!s.text("WPAPSK", sec::kWpaPsk, pass) ||
            !s.number("DefaultKeyID", sec::kDefaultKeyId, 2))
            return false;
    } else if ((auth & (kAuthPsk | kAuthRadius)) == kAuthRadius) {
        if (!s.text("AuthMode", sec::kAuthMode, wpaAuthMode(wpa, false))) return false;
    }

    const char* ciphers = first(profile, "pairwiseCiphers");
    if (!ciphers) return s.missing();
    const char* encrypType = encryption(dot11CipherStrToVal(ciphers) & 6);
    if (encrypType && !s.text("EncrypType", sec::kEncrypType, encrypType)) return false;
    const char* interval = first(profile, "groupKeyUpdateInterval");
    if (!interval) return s.missing();
    if (!s.text("RekeyMethod", sec::kRekeyMethod, "TIME") ||
        !s.number("RekeyInterval", sec::kRekeyInterval, wlan::dbNumber(interval)))
        return false;
    const char* lifetime = first(profile, "pmksaLifetime");
    if (!lifetime) return s.missing();
    return s.number("PMKCachePeriod", sec::kPmkCachePeriod, wlan::dbNumber(lifetime));
}

// The driver's AccessPolicy is the word's place here; any other word is 3.
constexpr const char* kPolicies[] = {"Open", "Allow", "Deny"};

int accessPolicy(const char* word) {
    int p = 0;
    for (const char* policy : kPolicies) {
        if (std::strcmp(policy, word) == 0) return p;
        ++p;
    }
    return p;
}

bool applyCommon(Settings& s, const Rows& profile, const Rows& join) {
    if (!s.number("IEEE8021X", sec::kIeee8021x, 0)) return false;
    const char* preAuth = first(profile, "preAuthStatus");
    if (!preAuth) return s.missing();
    if (!s.number("PreAuth", sec::kPreAuth, wlan::dbNumber(preAuth))) return false;
    const char* isolation = first(join, "apIsolation");
    if (!isolation) return s.missing();
    if (!s.number("NoForwarding", sec::kNoForwarding, wlan::dbNumber(isolation)))
        return false;
    const char* policy = first(join, "defACLPolicy");
    if (!policy) return s.missing();
    return s.number("AccessPolicy", sec::kAccessPolicy, accessPolicy(policy));
}

// Of the VAPs using the profile, the one that runs on ifname: its list is the
// one the interface enforces.  When none does, the first VAP's.
const char* aclVap(const char* dbFile, const Rows& vaps, const char* ifname, Rows& onIf) {
    if (vaps.rows() == 0) return nullptr;
    onIf = Rows::query(nullptr, dbFile, sqlFormat(sec::kVapOnIf, ifname).get());
    for (int i = 0; !onIf.failed() && i < onIf.rows(); ++i) {
        const char* running = onIf.value(i, "vapName");
        for (int r = 0; running && r < vaps.rows(); ++r) {
            const char* name = vaps.value(r, "vapName");
            if (name && std::strcmp(name, running) == 0) return name;
        }
    }
    return vaps.value(0, "vapName");
}

// Driver entries only: the file's lists are kept by the access-list handler.
bool loadAccessList(Settings& s, const char* dbFile, const char* profileName,
                    const char* ifname) {
    Rows vaps = Rows::query(nullptr, dbFile, sqlFormat(sec::kVapsByProfile, profileName).get());
    if (vaps.failed()) return true;
    Rows onIf;
    const char* vapName = aclVap(dbFile, vaps, ifname, onIf);
    if (!vapName) return true;
    Rows acl = Rows::query(nullptr, dbFile, sqlFormat(sec::kAclByVap, vapName).get());
    for (int r = 0; !acl.failed() && r < acl.rows(); ++r) {
        const char* mac = acl.value(r, "macAddress");
        if (!mac) break;
        if (!s.command(wlan::drv::kAclAddEntry, mac)) return false;
    }
    return true;
}

}  // namespace

extern "C" int dot11SecurityApply(const char* dbFile, const char* profileName, const char* ssid,
                                  const char* ifname) {
    if (!profileName || !ssid || !ifname) return -1;
    Rows join = Rows::query(nullptr, dbFile, sqlFormat(sec::kVapProfileBySsid, ssid).get());
    if (join.failed()) return -1;
    Rows profile = Rows::query(nullptr, dbFile, sqlFormat(sec::kProfileByName, profileName).get());
    if (profile.failed()) return -1;
    const char* security = first(profile, "security");
    if (!security) return -1;
    int wpa = dot11SecurityStrToVal(security) & kWpaBits;

    // Each step goes on only while its settings were accepted and its values
    // were there; the settings keep the result.
    Settings s(ifname);
    (void)((std::strcmp(security, "OPEN") != 0 || applyOpen(s)) &&
           (std::strcmp(security, "WEP") != 0 || applyWep(s, profile)) &&
           (wpa == 0 || applyWpa(s, profile, wpa, ssid)) && applyCommon(s, profile, join) &&
           loadAccessList(s, dbFile, profileName, ifname));
    return s.result();
}
