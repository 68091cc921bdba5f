// The authenticator's fixed names, statements and records.
#pragma once

#include "platform/log.h"

namespace wlan::auth {

inline constexpr char kDaemon[] = "/mavo2.0/bin/rt2860apd";
inline constexpr char kDaemonName[] = "rt2860apd";

inline constexpr char kBridgePorts[] =
    "SELECT PhyInterfaceName from vlanPortMgmt where PortType = 'BRIDGE'";
inline constexpr char kVlans[] = "SELECT vlanId FROM vlan where portName == 'dummy'";

inline constexpr char kEapKey[] = "EAPifname";

inline constexpr LogMsg kEapCfgUnreadable{kLogError, "eapDaemonRestart", 3140,
                                          "Cannot rewrite %s: left unchanged.\n"};

}  // namespace wlan::auth
