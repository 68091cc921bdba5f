// VlanPortMgmt: the daemon takes the wireless bridge ports down and up and
// listens on the bridges, so a VAP's bridge port change restarts it.
#include <cstring>

#include "auth/auth.h"
#include "main/dispatch.h"

extern "C" int vlanPortMgmtTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                      int nCols, int, char** priorRow) {
    // A deleted port is judged by the values it had: a VAP leaving a bridge
    // changes the daemon's ports as much as one joining it.
    char** row = opType == OP_DELETE ? priorRow : table;
    if (!row) return -1;
    const char* port = queryResValueGet(row, nCols, 0, "PhyInterfaceName");
    const char* type = queryResValueGet(row, nCols, 0, "PortType");
    if (!port || !type) return -1;
    if (std::strcmp(type, "BRIDGE") != 0 || std::strncmp(port, "vap", 3) != 0) return 0;
    return eapDaemonRestart(dbFile) == 0 ? 0 : -1;
}
