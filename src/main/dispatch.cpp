#include "main/dispatch.h"

#include <cctype>
#include <cstring>
#include <vector>

#include "cfgfile/cfgfile.h"
#include "platform/platform.h"
#include "platform/sql.h"

extern "C" {
sqlite3* wlanDbHandle = nullptr;
}

namespace {

// The changed row's statement names its table unquoted; a name that is not a
// plain SQL identifier names no table of ours and is not put into SQL.
bool plainIdentifier(const char* name) {
    if (!name || !(std::isalpha(static_cast<unsigned char>(*name)) || *name == '_'))
        return false;
    for (const char* p = name; *p; ++p)
        if (!(std::isalnum(static_cast<unsigned char>(*p)) || *p == '_')) return false;
    return true;
}

// Opens the process-wide connection; closes it (and the busy handler's
// record with it) when the dispatch ends.
class ProcessConnection {
public:
    explicit ProcessConnection(const char* dbFile) {
        // The database must exist: no empty file is created under a wrong name.
        if (int rc = sqlite3_open_v2(dbFile, &wlanDbHandle, SQLITE_OPEN_READWRITE, nullptr); rc != SQLITE_OK) {
            wlan::noteDatabase(dbFile, rc, sqlite3_errmsg(wlanDbHandle));
            sqlite3_close(wlanDbHandle);
            wlanDbHandle = nullptr;
            return;
        }
        std::strcpy(record_.name, "wlanSyncTool");
        sqlite3_busy_handler(wlanDbHandle, sqliteBusyHandler, &record_);
        wlan::shareConnection(wlanDbHandle, dbFile);  // one connection per invocation
    }
    ~ProcessConnection() {
        wlan::shareConnection(nullptr, nullptr);
        if (wlanDbHandle) sqlite3_close(wlanDbHandle);
        wlanDbHandle = nullptr;
    }
    bool open() const { return wlanDbHandle != nullptr; }

private:
    BusyHandlerRecord record_{{}, 100, 100};
};

}  // namespace

namespace wlan {

int dispatchTo(const TblHandlerEntry* table, const char* dbFile, int opType,
               const char* tblName, int rowId, char** priorRow, int priorCount) {
    if (!dbFile || !tblName) return -1;
    ProcessConnection connection(dbFile);
    if (!connection.open()) return -1;

    Rows changed;
    int nCols, nRows;
    if (opType == OP_DELETE) {
        nCols = priorCount / 2;
        nRows = 1;
    } else {
        if (!plainIdentifier(tblName)) return -1;
        changed = Rows::query(nullptr, dbFile,
                              sqlFormat("SELECT * from %s WHERE rowid=%d", tblName, rowId).get());
        if (changed.failed()) return -1;
        nCols = changed.cols();
        nRows = changed.rows();
        if (nCols == 0 || nRows == 0) return -1;
    }

    // Handlers read the prior row with the changed row's column count; a
    // shorter prior row from the command line is padded with null entries so
    // that nothing past the argument vector is read.
    std::vector<char*> padded;
    if (priorCount < 2 * nCols) {
        padded.assign(static_cast<size_t>(2 * nCols) + 1, nullptr);
        for (int i = 0; i < priorCount; ++i) padded[static_cast<size_t>(i)] = priorRow[i];
        priorRow = padded.data();
    }

    for (const TblHandlerEntry* row = table; row->tableName; ++row) {
        if (std::strcmp(row->tableName, tblName) != 0) continue;
        wlan::changeBegun();  // a database failure from now on leaves part of the change
        return row->handler(dbFile, opType, static_cast<int64_t>(rowId), changed.table(), nCols,
                            nRows, priorRow);
    }
    return -1;
}

}  // namespace wlan

extern "C" int tblHandlerDispatch(const char* dbFile, int opType, const char* tblName, int rowId,
                                  char** priorRow, int priorCount) {
    int result = wlan::dispatchTo(handlers, dbFile, opType, tblName, rowId, priorRow, priorCount);
    // The change's edits reach the file in one replacement, on every path
    // that returns a result; a change that could not be written fails.
    if (!wlan::cfg::commit() && result == 0) result = -1;
    return result;
}
