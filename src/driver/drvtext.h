// Driver commands: "<iwpriv> <interface> set <Key=Value>", one key each.
#pragma once

#include "platform/log.h"

namespace wlan::drv {

inline constexpr char kIwpriv[] = "/mavo2.0/bin/iwpriv";

// Key=Value formats of this subsystem.
inline constexpr char kAclAddEntry[] = "ACLAddEntry=%s";
inline constexpr char kAclDelEntry[] = "ACLDelEntry=%s";
inline constexpr char kWirelessMode[] = "WirelessMode=%d";
inline constexpr char kHtBw[] = "HtBw=%d";
inline constexpr char kHtBwNa[] = "Ht_Bw=%d";  // so spelt by the driver for mode "na"
inline constexpr char kHtExtcha[] = "HtExtcha=%d";

inline constexpr LogMsg kInvalidMode{kLogError, "dot11SetMode", 2838, "Invalid mode value : %d.\n"};
inline constexpr LogMsg kEmptyMacAdd{kLogError, "dot11AclAddMac", 2760,
                                     "Empty MAC address for %s: not applied.\n"};
inline constexpr LogMsg kEmptyMacDel{kLogError, "dot11AclDelMac", 2785,
                                     "Empty MAC address for %s: not applied.\n"};

}  // namespace wlan::drv
