// Radio and regulatory: channel, wireless mode and WDS of a radio, its
// 802.11n purity, the device's country, and the WDS peers.
#pragma once

#include <cstdint>
#include <string>

#include "platform/sql.h"

namespace wlan::radio {
inline constexpr int kCountryCount = 102;
}

extern "C" {

// dot11Radio.  Also called directly when a radio's first enabled VAP starts:
// OpType 23, rowId 0, the radio's row, nRows 1 and no prior row (the WDS
// switch then counts as unchanged).
int dot11RadioTblHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols,
                         int nRows, char** priorRow);

// Every WDS peer of radio n set (wdsEnabled non-zero) or cleared, with the
// link's cipher and key, on the radio's VAP interface ifname.
void dot11MgmtConfigWDS(const char* ifname, int n, int wdsEnabled);

// dot11Radio11n.  Also called directly like dot11RadioTblHandler.
int dot11Radio11nTblHandler(const char* dbFile, int opType, int64_t rowId, char** table,
                            int nCols, int nRows, char** priorRow);

// Pure 802.11n (WirelessMode 6) on ifname when the radio's row asks for it.
int dot11Radio11nApply(const char* dbFile, const char* ifname, int radioNo);

// dot11GlobalConfig: the country's regulatory regions and code.
int dot11GlobalConfigTblHandler(const char* dbFile, int opType, int64_t rowId, char** table,
                                int nCols, int nRows, char** priorRow);

// dot11WDSPeers: one peer added, removed or given a new key.
int dot11WDSPeersTblHandler(const char* dbFile, int opType, int64_t rowId, char** table,
                            int nCols, int nRows, char** priorRow);

// One country: its ISO 3166-1 number and alpha-2 code, and the driver's
// channel plans for the 5 GHz (A) and 2.4 GHz (G) bands.
struct CountryEntry {
    uint32_t isoNumber;
    char isoCode[4];
    const char* name;
    uint32_t supportA;
    uint32_t regionA;
    uint32_t supportG;
    uint32_t regionG;
};

// Read by libraries the tool loads: the layout and order are fixed.
extern const CountryEntry allCountry[wlan::radio::kCountryCount];

}  // extern "C"

namespace wlan::radio {

// The interface of radio n's first enabled VAP.  -1: the query failed or the
// row has no name; 0: no enabled VAP; 1: ifname points into rows.
int radioInterface(const char* dbFile, int n, Rows& rows, const char*& ifname);

// The WDS interface of a peer slot, "wds<slot - 1>", whatever the slot.
std::string wdsIfName(int slot);

}  // namespace wlan::radio
