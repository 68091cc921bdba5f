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

// RADIUS servers and the device's own address on a server's subnet.
inline constexpr char kOwnAddresses[] = "SELECT * FROM ipAddressTable where addressFamily=2";
inline constexpr char kRadiusServers[] = "SELECT * FROM radiusClient";
inline constexpr char kVapInterfaces[] =
    "SELECT interfaceName FROM dot11Interface where vapName != 'unused'";
inline constexpr char kRadiusServerKey[] = "RADIUS_Server";
inline constexpr char kRadiusPortKey[] = "RADIUS_Port";
inline constexpr char kRadiusSecretKey[] = "RADIUS_Key";
inline constexpr char kOwnAddressKey[] = "own_ip_addr";

inline constexpr LogMsg kRadiusDelete{kLogError, "radiusClientHandler", 969,
                                      "Invalid delete database operation.\n"};
// Refusals: the configuration file stays as it was.
inline constexpr LogMsg kRadiusLineEnd{kLogError, "radiusClientHandler", 1004,
                                       "Value of %s holds a line end: not written.\n"};

}  // namespace wlan::auth
