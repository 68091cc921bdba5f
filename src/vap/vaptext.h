// VAP lifecycle: statements, driver settings and records.
#pragma once

#include "platform/log.h"

namespace wlan::vap {

// Statements.
inline constexpr char kVapRow[] = "SELECT * from dot11VAP WHERE vapName='%q'";
inline constexpr char kProfileJoin[] =
    "select * from dot11Profile,dot11VAP where dot11VAP.vapName='%q' and "
    "dot11VAP.profileName = dot11Profile.profileName ";
inline constexpr char kRadioRow[] = "SELECT * FROM dot11Radio WHERE radioNo=%d";
inline constexpr char kCardRow[] = "SELECT * FROM dot11Card WHERE cardNo=%d";
inline constexpr char kEnabledVaps[] =
    "SELECT * FROM dot11VAP WHERE vapEnabled=1 AND radioList LIKE '%c%d%c'";
inline constexpr char kRadio11nRow[] = "SELECT * FROM dot11Radio11n WHERE radioNo=%d";
inline constexpr char kMulToUniRow[] = "SELECT * from MulToUni WHERE _ROWID_=%d";
inline constexpr char kVapInterfaces[] = "SELECT * from dot11Interface WHERE vapName='%q'";
inline constexpr char kStoreMac[] = "update %s set macAddress=\"%w\" where interfaceName==\"%w\"";
inline constexpr char kVapsOfProfile[] = "SELECT * from dot11VAP WHERE profileName='%q'";
inline constexpr char kMulToUni[] = "select * from MulToUni";
inline constexpr char kFirstInterface[] =
    "select dot11Interface.interfaceName from dot11Interface,dot11VAP where "
    "dot11VAP.vapEnabled=1 and dot11VAP.vapName = dot11Interface.vapName  and "
    "dot11VAP.rowid=%d";
inline constexpr char kAllInterfaces[] = "SELECT * from dot11Interface";

// Driver settings (Key=Value).
inline constexpr char kMaxStaNum[] = "MaxStaNum=%d";
inline constexpr char kBeaconPeriod[] = "BeaconPeriod=%d";
inline constexpr char kDtimPeriod[] = "DtimPeriod=%d";
inline constexpr char kRtsThreshold[] = "RTSThreshold=%d";
inline constexpr char kFragThreshold[] = "FragThreshold=%d";
inline constexpr char kTxPreamble[] = "TxPreamble=%d";
inline constexpr char kBgProtection[] = "BGProtection=%d";
inline constexpr char kDisableOlbc[] = "DisableOLBC=%d";
inline constexpr char kHideSsid[] = "HideSSID=%d";
inline constexpr char kWmmCapable[] = "WmmCapable=%d";
inline constexpr char kWmmMapping[] = "WmmMapping=%s";
inline constexpr char kSsid[] = "SSID=%s";
inline constexpr char kResetCounter[] = "ResetCounter=%d";
inline constexpr char kIgmpSnEnable[] = "IgmpSnEnable=%d";

// Records.
inline constexpr LogMsg kInstanceNotice{kLogNotice, "startStopVAPInstance", 546,
                                        "%sing VAP instance : %s.\n"};
inline constexpr LogMsg kRadioRowFailed{kLogError, "startStopVAPInstance", 611,
                                        "Failed to perform database operation into table.\n"};
inline constexpr LogMsg kCardRowFailed{kLogError, "startStopVAPInstance", 644,
                                       "Failed to perform database operation into table.\n"};
inline constexpr LogMsg kMaxClientsFailed{kLogError, "startStopVAPInstance", 702,
                                          "VAP (%s) set maximum clients failed.\n"};
inline constexpr LogMsg kBeaconFailed{kLogError, "startStopVAPInstance", 718,
                                      "VAP (%s) set beacon interval failed.\n"};
inline constexpr LogMsg kDtimFailed{kLogError, "startStopVAPInstance", 732,
                                    "VAP (%s) set DTIM interval failed.\n"};
inline constexpr LogMsg kRtsFailed{kLogError, "startStopVAPInstance", 745,
                                   "VAP (%s) set RTS threshold failed.\n"};
inline constexpr LogMsg kFragFailed{kLogError, "startStopVAPInstance", 758,
                                    "VAP (%s) set fragmentation threshold failed.\n"};
inline constexpr LogMsg kPreambleFailed{kLogError, "startStopVAPInstance", 777,
                                        "VAP (%s) set short preamble failed.\n"};
inline constexpr LogMsg kProtection2Failed{kLogError, "startStopVAPInstance", 792,
                                           "VAP (%s) set protection mode failed.\n"};
inline constexpr LogMsg kProtection0Failed{kLogError, "startStopVAPInstance", 805,
                                           "VAP (%s) set protection mode failed.\n"};
inline constexpr LogMsg kOlbcFailed{kLogError, "startStopVAPInstance", 815,
                                    "VAP(%s) set protection mode failed.\n"};
inline constexpr LogMsg kHideSsidFailed{kLogError, "startStopVAPInstance", 847,
                                        "VAP (%s) set hide ssid failed.\n"};
inline constexpr LogMsg kSsidFailed{kLogError, "startStopVAPInstance", 862,
                                    "VAP(%s) set ssid failed.\n"};
inline constexpr LogMsg kMulToUniFailed{kLogError, "startStopVAPInstance", 891,
                                        "VAP (%s) set multicast to unicast failed.\n"};
inline constexpr LogMsg kVapNotice{kLogNotice, "startStopVAP", 2994, "%sing VAP %s.\n"};
inline constexpr LogMsg kMacStoreFailed{kLogNotice, "startStopVAP", 3041,
                                        "Failed to update MAC address of : %s.\n"};
inline constexpr LogMsg kProfileNotice{kLogNotice, "startStopVAPUsingProfile", 1477,
                                       "%sing VAPs using profile : %s.\n"};
inline constexpr LogMsg kIgmpFailed{kLogError, "dot11SetMulToUnivalue", 3300,
                                    "VAP (%s) set IGMP snoop failed.\n"};
inline constexpr LogMsg kMulticastFailed{kLogError, "multicastEnableDisable", 3252,
                                         "Failed to enable multicast to unicast for : %s.\n"};

}  // namespace wlan::vap
