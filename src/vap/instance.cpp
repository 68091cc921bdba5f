// startStopVAPInstance: one VAP on one interface.  Starting applies, in this
// order: interface up, the radio-wide settings when this is the radio's first
// enabled VAP, the per-VAP parameters, security, hidden SSID, QoS mapping,
// SSID and multicast to unicast.  What was applied before a failure stays.
#include <cstdlib>
#include <cstring>
#include <string>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "platform/sql.h"
#include "radio/radio.h"
#include "security/security.h"
#include "vap/vap.h"
#include "vap/vaptext.h"

using namespace wlan::vap;
using wlan::Rows;
using wlan::sqlFormat;

namespace {

// One per-VAP parameter: file key written, then the driver told.
struct Parameter {
    const char* column;
    const char* fileKey;
    const char* format;
    const wlan::LogMsg* failed;
};

constexpr Parameter kParameters[] = {
    {"maxClients", "MaxStaNum", kMaxStaNum, &kMaxClientsFailed},
    {"beaconInterval", "BeaconPeriod", kBeaconPeriod, &kBeaconFailed},
    {"dtimInterval", "DtimPeriod", kDtimPeriod, &kDtimFailed},
    {"rtsThreshold", "RTSThreshold", kRtsThreshold, &kRtsFailed},
    {"fragThreshold", "FragThershold", kFragThreshold, &kFragFailed},  // the driver's spelling
};

int apply(const char* ifname, const char* fileKey, const char* format, int value,
          const wlan::LogMsg& failed) {
    update_cfg_file(ifname, fileKey, value, nullptr);
    int rc = wlan::drvSet(ifname, format, value);
    if (rc != 0) wlan::logMsg(failed, ifname);
    return rc;
}

constexpr const char* kTrafficClasses[] = {"Best Effort", "Background", "Video", "Voice"};

int trafficClass(const char* name) {
    for (int i = 0; i < 4; ++i)
        if (std::strcmp(name, kTrafficClasses[i]) == 0) return i;
    return -1;
}

// The WMM mapping: one class digit per DSCP value; sent only when every
// dscpCosMap column is there.
void applyQos(const Rows& join, const char* ifname) {
    const char* defaultCos = join.value(0, "defaultCos");
    const char* qosText = join.value(0, "qosEnable");
    if (!defaultCos || !qosText) return;
    int qos = wlan::dbNumber(qosText);
    int defaultClass = trafficClass(defaultCos);
    if (defaultClass < 0) defaultClass = 0;
    std::string mapping;
    for (int dscp = 0; dscp < 64; ++dscp) {
        if (qos == 0) {
            mapping += '0';
            continue;
        }
        const char* cos = join.value(0, ("dscpCosMap" + std::to_string(dscp)).c_str());
        if (!cos) return;
        int cls = std::strcmp(cos, "Default") == 0 ? defaultClass : trafficClass(cos);
        if (cls >= 0) mapping += static_cast<char>('0' + cls);  // unknown names add nothing
    }
    update_cfg_file(ifname, "WmmCapable", qos, nullptr);
    wlan::drvSet(ifname, kWmmCapable, qos);
    wlan::drvSet(ifname, kWmmMapping, mapping.c_str());
}

// The radio and 802.11n handlers, as if their rows had been updated.
int applyRadioWide(const char* dbFile, const Rows& radio, int radioNo) {
    dot11RadioTblHandler(dbFile, OP_UPDATE, 0, radio.table(), radio.cols(), 1, nullptr);
    Rows ht = Rows::query(nullptr, dbFile, sqlFormat(kRadio11nRow, radioNo).get());
    if (ht.failed()) return -1;
    dot11Radio11nTblHandler(dbFile, OP_UPDATE, 0, ht.table(), ht.cols(), 1, nullptr);
    return 0;
}

int start(const char* dbFile, const char* vapName, const char* ifname, int radioNo) {
    wlan::logMsg(kInstanceNotice, "Start", ifname);
    Rows join = Rows::query(nullptr, dbFile, sqlFormat(kProfileJoin, vapName).get());
    if (join.failed()) return -1;
    Rows vap = Rows::query(nullptr, dbFile, sqlFormat(kVapRow, vapName).get());
    if (vap.failed() || vap.cols() == 0 || vap.rows() != 1) return -1;

    Rows radio = Rows::query(nullptr, dbFile, sqlFormat(kRadioRow, radioNo).get());
    if (radio.failed()) return -1;
    if (radio.rows() != 1) {
        wlan::logMsg(kRadioRowFailed);
        return -1;
    }
    const char* ssid = join.value(0, "ssid");
    const char* profileName = vap.value(0, "profileName");
    if (!ssid || !profileName || !radio.value(0, "interfaceName")) return -1;

    dot11IfUpDown(ifname, 1);  // stays up whatever happens below

    const char* cardNo = radio.value(0, "cardNo");
    if (!cardNo) return -1;
    Rows card = Rows::query(nullptr, dbFile, sqlFormat(kCardRow, wlan::dbNumber(cardNo)).get());
    if (card.failed()) return -1;
    if (card.cols() == 0 || card.rows() != 1) {
        wlan::logMsg(kCardRowFailed);
        return -1;
    }

    // The radio's first enabled VAP (in the database's own order) carries
    // the radio-wide settings.
    Rows enabled = Rows::query(nullptr, dbFile, sqlFormat(kEnabledVaps, '%', radioNo, '%').get());
    const char* first = enabled.value(0, "vapName");
    if (!first) return -1;
    if (std::strcmp(first, vapName) == 0 && applyRadioWide(dbFile, radio, radioNo) != 0) return -1;

    int status = 0;
    for (const Parameter& p : kParameters) {
        const char* text = vap.value(0, p.column);
        if (!text) return &p == kParameters ? -1 : status;  // maxClients is required
        status = apply(ifname, p.fileKey, p.format, wlan::dbNumber(text), *p.failed);
        if (status != 0) return status;
    }
    const char* preamble = vap.value(0, "preambleMode");
    if (!preamble) return status;
    status = apply(ifname, "TxPreamble", kTxPreamble, std::strcmp(preamble, "Short") == 0 ? 1 : 0,
                   kPreambleFailed);  // a failure here does not end the start

    const char* protect = vap.value(0, "rtsCtsProtect");
    if (!protect) return status;
    switch (wlan::dbNumber(protect)) {
    case 0:
        status = apply(ifname, "BGProtection", kBgProtection, 2, kProtection2Failed);
        if (status != 0) return status;
        break;
    case 1:
        status = apply(ifname, "BGProtection", kBgProtection, 0, kProtection0Failed);
        if (status != 0) return status;
        status = apply(ifname, "DisableOLBC", kDisableOlbc, 0, kOlbcFailed);
        if (status != 0) return status;
        break;
    case 2:
        return status;
    default:
        break;
    }

    status = dot11SecurityApply(dbFile, profileName, ssid, ifname);
    if (status != 0) return status;

    const char* broadcast = join.value(0, "broadcastSSID");
    if (!broadcast) return status;
    status = apply(ifname, "HideSSID", kHideSsid, wlan::dbNumber(broadcast) == 0 ? 1 : 0, kHideSsidFailed);
    if (status != 0) return status;

    applyQos(join, ifname);

    update_cfg_file(ifname, "SSID", -1, ssid);
    status = wlan::drvSet(ifname, kSsid, ssid);
    if (status != 0) {
        wlan::logMsg(kSsidFailed, ifname);
        return status;
    }

    Rows mulToUni = Rows::query(wlanDbHandle, nullptr, sqlFormat(kMulToUniRow, 1).get());
    const char* on = mulToUni.value(0, "Enabled");
    if (!on || wlan::dbNumber(on) != 1) return status;
    int rc = dot11SetMulToUnivalue(ifname, 1);
    if (rc != 0) wlan::logMsg(kMulToUniFailed, ifname);
    return rc;
}

}  // namespace

extern "C" int startStopVAPInstance(const char* dbFile, const char* vapName, const char* ifname,
                                    int radioNo, int startFlag) {
    if (!ifname) return -1;
    if (!startFlag) {
        wlan::logMsg(kInstanceNotice, "Stop", ifname);  // "Stoping", as the device spells it
        dot11IfUpDown(ifname, 0);
        return 0;
    }
    return start(dbFile, vapName, ifname, radioNo);
}
