// Statements, driver settings, file keys and records of the radio handlers.
#pragma once

#include "platform/log.h"

namespace wlan::radio {

// The authenticator is restarted on the device's own database, whichever
// file the tool was given.
inline constexpr char kSystemDb[] = "/tmp/system.db";

// Statements.  The interface query's pattern is '%c%d%c' with '%', n, '%':
// any radioList holding the digits of n.
inline constexpr char kRadioIfQuery[] =
    "select dot11Interface.interfaceName from dot11Interface,dot11VAP where "
    "dot11VAP.vapEnabled=1 and dot11VAP.radioList LIKE '%c%d%c' and "
    "dot11VAP.vapName = dot11Interface.vapName ";
inline constexpr char kWdsPeersQuery[] = "select *, _ROWID_ from dot11WDSPeers where radioNo='%d'";
inline constexpr char kAp1ProfileQuery[] =
    "select * from dot11profile,dot11vap where dot11vap.vapname='ap1'";
inline constexpr char kRadioByNoQuoted[] = "SELECT * from dot11Radio WHERE radioNo='%d'";
inline constexpr char kRadio11nQuery[] = "SELECT * from dot11Radio11n WHERE radioNo=%d";
inline constexpr char kCountryIfQuery[] =
    "SELECT * from dot11Interface WHERE radioNo='%d' AND                         "
    "vapName!='unused'";
inline constexpr char kPeerRadioQuery[] = "SELECT * from dot11Radio where radioNo='%d'";

// The country is always programmed through radio 1.
inline constexpr int kCountryRadio = 1;

// Driver settings (Key=Value).
inline constexpr char kChannel[] = "Channel=%d";
inline constexpr char kAutoChannelSel[] = "AutoChannelSel=%d";
inline constexpr char kWirelessMode[] = "WirelessMode=%d";
inline constexpr char kCountryRegion[] = "CountryRegion=%d";
inline constexpr char kCountryRegionABand[] = "CountryRegionABand=%d";
inline constexpr char kCountryCode[] = "CountryCode=%s";

// Configuration-file keys.
inline constexpr char kAutoChannelKey[] = "AutoChannelSelect";
inline constexpr char kChannelKey[] = "Channel";
inline constexpr char kWdsEnableKey[] = "WdsEnable";
inline constexpr char kWdsEncrypKey[] = "WdsEncrypType";
inline constexpr char kWdsKeyKey[] = "WdsKey";
inline constexpr char kWirelessModeKey[] = "WirelessMode";
inline constexpr char kCountryRegionKey[] = "CountryRegion";

// The driver's 802.11n-only wireless mode; modes from 0x60000 on are 802.11n.
inline constexpr int kPureN = 6;
inline constexpr int kFirst11nMode = 0x60000;

// "WdsKey" is one line for the whole file; update_cfg_file only wants a VAP
// name to accept it.
inline constexpr char kWdsKeyIf[] = "vap0";

inline constexpr LogMsg kWdsAddFailed{kLogError, "dot11MgmtConfigWDS", 3756,
                                      "WDS add failed for Peer : %s.\n"};
inline constexpr LogMsg kWdsDelFailed{kLogError, "dot11MgmtConfigWDS", 3769,
                                      "WDS delete failed for Peer : %s.\n"};
inline constexpr LogMsg kPeerAddFailed{kLogError, "dot11WDSPeersTblHandler", 3904,
                                       "WDS add failed for peer : %s.\n"};
inline constexpr LogMsg kPeerDelFailed{kLogError, "dot11WDSPeersTblHandler", 3916,
                                       "WDS delete failed for peer : %s.\n"};
// Refusal: a country the table does not know changes nothing.
inline constexpr LogMsg kUnknownCountry{kLogError, "dot11GlobalConfigTblHandler", 3470,
                                        "Unknown country code : %d.\n"};

}  // namespace wlan::radio
