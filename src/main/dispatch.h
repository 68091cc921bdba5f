// Invocation and dispatch: one changed row of one table reaches the handler
// registered for that table.
#pragma once

#include <cstdint>
#include <sqlite3.h>

extern "C" {

// Operation codes, as SQLite's update hook names them.
enum OpType { OP_DELETE = 9, OP_INSERT = 18, OP_UPDATE = 23 };

// dbFile, opType, rowId, the changed row (null for a deletion), its column
// and row counts, and the prior row (names then values) from the command line.
typedef int (*TableHandler)(const char* dbFile, int opType, int64_t rowId, char** table,
                            int nCols, int nRows, char** priorRow);

struct TblHandlerEntry {
    const char* tableName;
    TableHandler handler;
};

// The tables the tool handles, closed by a row whose name is null.
extern const TblHandlerEntry handlers[];

// The process-wide connection: open while a handler runs, null otherwise.
extern sqlite3* wlanDbHandle;

// The value of column name in data row row (from 0) of a ResultTable or
// PriorRow; the first column of that name wins.  Null when the column is
// missing or its value is SQL NULL.
char* queryResValueGet(char** table, int nCols, int row, const char* name);

int tblHandlerDispatch(const char* dbFile, int opType, const char* tblName, int rowId,
                       char** priorRow, int priorCount);

}  // extern "C"

namespace wlan {

// tblHandlerDispatch over a given table of handlers.
int dispatchTo(const TblHandlerEntry* table, const char* dbFile, int opType,
               const char* tblName, int rowId, char** priorRow, int priorCount);

}  // namespace wlan
