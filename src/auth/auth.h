// The driver's 802.1X authenticator daemon, its RADIUS servers and bridges.
#pragma once

#include <cstdint>

extern "C" {

// Stops the daemon, takes the wireless bridge ports down, rewrites the
// "EAPifname" line from the VLAN table, brings the ports up and starts the
// daemon.  0 on success, -1 on failure.
int eapDaemonRestart(const char* dbFile);

}  // extern "C"
