// The driver's 802.1X authenticator daemon, its RADIUS servers and bridges.
#pragma once

#include <cstdint>

extern "C" {

// Stops the daemon, takes the wireless bridge ports down, rewrites the
// "EAPifname" line from the VLAN table, brings the ports up and starts the
// daemon.  0 on success, -1 on failure (the daemon started all the same).
int eapDaemonRestart(const char* dbFile);

// radiusClient: the RADIUS lines of the configuration file rewritten from
// the whole table, with the device's own address on the first server's
// subnet, then the daemon restarted.  Deletions are refused.
int radiusClientHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols,
                        int nRows, char** priorRow);

// VlanPortMgmt: a VAP interface that is a bridge port restarts the daemon,
// so that it listens on the current bridges.
int vlanPortMgmtTblHandler(const char* dbFile, int opType, int64_t rowId, char** table,
                           int nCols, int nRows, char** priorRow);

}  // extern "C"

namespace wlan::auth {

// Starts the daemon on the file holding every edit so far; its status.
int startDaemon();

}  // namespace wlan::auth
