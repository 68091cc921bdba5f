// wlanSyncTool <DBFile> <opType> <tblName> <rowId> [PriorRow]
//
// Run by the configuration framework once for each changed row of a wireless
// table.  Prints nothing on success; the exit status is the handler's result.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "main/dispatch.h"
#include "main/resync.h"
#include "platform/log.h"
#include "platform/platform.h"
#include "platform/sandbox.h"
#include "platform/signals.h"
#include "platform/sql.h"

namespace {
constexpr wlan::LogMsg kNoLock{wlan::kLogError, "main", 48,
                               "Cannot lock %s: running without serialisation.\n"};
}

extern "C" int main(int argc, char** argv) {
    const char* path = argc > 0 && argv[0] ? argv[0] : "";
    const char* slash = std::strrchr(path, '/');
    const char* base = slash ? slash + 1 : path;

    wlan::signals::install();
    umiInit();
    if (std::strcmp(base, "wlanSyncTool") != 0) {
        std::printf("Illegal invocation of wlanSyncTool (%s)", base);
        return -1;
    }
    if (int status; wlan::resync::invoked(argc, argv, status)) return status;
    if (argc < 5) {
        std::printf("Usage:%s <DBFile> <opType> <tblName> <rowId>\n", path);
        return -1;
    }
    // As a 32-bit strtol reads them on the device, on every host: row id
    // 4294967297 must not act on row 1.
    int opType = wlan::dbNumber(argv[2]);
    int rowId = wlan::dbNumber(argv[4]);

    // The driver configuration file and its temporary files have fixed names:
    // one tool process at a time edits them.
    if (!wlan::holdProcessLock()) wlan::logMsg(kNoLock, wlan::rootPath(wlan::kLockFile).c_str());
    return tblHandlerDispatch(argv[1], opType, argv[3], rowId, argv + 5, argc - 5);
}
