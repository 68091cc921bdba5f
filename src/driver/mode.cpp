// Wireless mode: band, 802.11 generation, channel width and the side of the
// extension channel.
#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "driver/drvtext.h"

extern "C" const KeywordEntry dot11ModeTbl[] = {
    {"a only", 0x10000}, {"b only", 0x20000}, {"g only", 0x30000}, {"b and g", 0x34000},
    {"turbo A", 0x50000}, {"na", 0x60000},    {"ng", 0x70000},     {"na40-", 0x80000},
    {"na40+", 0x90000},  {"ng40-", 0xa0000},  {"ng40+", 0xb0000},  {nullptr, -1},
};

namespace {

constexpr int kTurboA = 0x50000;
constexpr int kNone = -1;

// What each mode sends and writes.  The "+" modes put the extension channel
// below (0), the "-" modes above (1).
struct ModeSetting {
    int code;
    int wirelessMode;
    const char* bwFormat;
    int bw;
    int extcha;  // kNone: no extension-channel step
};

constexpr ModeSetting kModeSettings[] = {
    {0x10000, 2, wlan::drv::kHtBw, 0, kNone},   {0x20000, 1, wlan::drv::kHtBw, 0, kNone},
    {0x30000, 4, wlan::drv::kHtBw, 0, kNone},   {0x34000, 0, wlan::drv::kHtBw, 0, kNone},
    {0x60000, 8, wlan::drv::kHtBwNa, 0, kNone}, {0x70000, 7, wlan::drv::kHtBw, 0, kNone},
    {0x80000, 8, wlan::drv::kHtBw, 1, 1},       {0x90000, 8, wlan::drv::kHtBw, 1, 0},
    {0xa0000, 7, wlan::drv::kHtBw, 1, 1},       {0xb0000, 7, wlan::drv::kHtBw, 1, 0},
};

}  // namespace

extern "C" int dot11ModeStrToVal(const char* keyword) {
    return wlan::keywordLookup(dot11ModeTbl, keyword);
}

extern "C" int dot11SetMode(const char* ifname, int mode) {
    if (!ifname) return -1;
    if (mode == kTurboA) return -1;  // a keyword with no settings
    for (const ModeSetting& s : kModeSettings) {
        if (s.code != mode) continue;
        // Each key is written to the file before the driver is told; only the
        // last command's result counts.
        update_cfg_file(ifname, "WirelessMode", s.wirelessMode, nullptr);
        int rc = wlan::drvSet(ifname, wlan::drv::kWirelessMode, s.wirelessMode);
        update_cfg_file(ifname, "HT_BW", s.bw, nullptr);
        rc = wlan::drvSet(ifname, s.bwFormat, s.bw);
        if (s.extcha != kNone) {
            update_cfg_file(ifname, "HT_EXTCHA", s.extcha, nullptr);
            rc = wlan::drvSet(ifname, wlan::drv::kHtExtcha, s.extcha);
        }
        return rc;
    }
    wlan::logMsg(wlan::drv::kInvalidMode, mode);
    return -1;
}
