// Statements and records of the security handlers.
#pragma once

#include "platform/log.h"

namespace wlan::sec {

inline constexpr char kVapByName[] = "SELECT * from dot11VAP WHERE vapName='%q'";
inline constexpr char kIfByVap[] = "SELECT * from dot11Interface WHERE vapName='%q'";

inline constexpr LogMsg kAclDelFailed{kLogError, "dot11ACLTblHandler", 1176,
                                      "Failed to delete mac address.\n"};

}  // namespace wlan::sec
