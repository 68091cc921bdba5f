// Statements, driver settings and records of the security handlers.
#pragma once

#include "platform/log.h"

namespace wlan::sec {

inline constexpr char kVapByName[] = "SELECT * from dot11VAP WHERE vapName='%q'";
inline constexpr char kIfByVap[] = "SELECT * from dot11Interface WHERE vapName='%q'";

// A profile's security.
inline constexpr char kProfileByName[] = "select * from dot11Profile where profileName=='%q'";
inline constexpr char kVapProfileBySsid[] =
    "select * from dot11VAP,dot11Profile where dot11Profile.ssid='%q' and "
    "dot11VAP.profileName = dot11Profile.profileName ";
inline constexpr char kVapsByProfile[] = "SELECT * from dot11VAP WHERE profileName='%q'";
inline constexpr char kAclByVap[] = "select * from dot11ACL where vapName=='%q'";
inline constexpr char kVapOnIf[] = "SELECT vapName from dot11Interface WHERE interfaceName='%q'";

// Driver settings (Key=Value) of a profile's security.
inline constexpr char kAuthMode[] = "AuthMode=%s";
inline constexpr char kEncrypType[] = "EncrypType=%s";
inline constexpr char kDefaultKeyId[] = "DefaultKeyID=%d";
inline constexpr char kKey1[] = "Key1=%s";
inline constexpr char kKey2[] = "Key2=%s";
inline constexpr char kKey3[] = "Key3=%s";
inline constexpr char kKey4[] = "Key4=%s";
inline constexpr char kWpaPsk[] = "WPAPSK=%s";
inline constexpr char kSsid[] = "SSID=%s";
inline constexpr char kRekeyMethod[] = "RekeyMethod=%s";
inline constexpr char kRekeyInterval[] = "RekeyInterval=%d";
inline constexpr char kPmkCachePeriod[] = "PMKCachePeriod=%d";
inline constexpr char kIeee8021x[] = "IEEE8021X=%d";
inline constexpr char kPreAuth[] = "PreAuth=%d";
inline constexpr char kNoForwarding[] = "NoForwarding=%d";
inline constexpr char kAccessPolicy[] = "AccessPolicy=%d";

// WPS.
inline constexpr char kWscConfMode[] = "WscConfMode=%d";
inline constexpr char kWscConfStatus[] = "WscConfStatus=%d";

inline constexpr LogMsg kAclDelFailed{kLogError, "dot11ACLTblHandler", 1176,
                                      "Failed to delete mac address.\n"};
inline constexpr LogMsg kWpsNoInterface{
    kLogError, "dot11WPSTblHandler", 3379,
    "No VAP table entry found corresponding to the VAP name : %s.\n"};

}  // namespace wlan::sec
