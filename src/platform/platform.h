// Platform layer: the few services of the device's management (umi) and
// adaptation (adp) libraries that the tool calls, written for Linux.  On a
// development host the same calls run inside a sandbox root (WLANSYNC_ROOT).
#pragma once

#include <cstdint>
#include <cstdio>
#include <sqlite3.h>

extern "C" {

// Management library.
int umiInit(void);

// Context record of sqliteBusyHandler, exchanged with the device's libraries
// and so fixed to this layout: the program name, then how many times a locked
// database is retried (0: forever), then the sleep between tries.
struct BusyHandlerRecord {
    char name[32];
    int32_t retries;
    int32_t sleepMs;
};
static_assert(sizeof(BusyHandlerRecord) == 40, "BusyHandlerRecord is 40 bytes");

int sqliteBusyHandler(void* record, int count);

// Runs statement on handle, or when handle is null on the database file
// dbFile, and returns its sqlite3_get_table result (null when it cannot be
// run).  The caller releases the result with sqlite3_free_table.
char** sqlite3QueryResGet(sqlite3* handle, const char* dbFile, const char* statement,
                          int* nCols, int* nRows);

// Adaptation library.

// Runs argv[0] (searched on PATH when it holds no '/') with argv[1..] as its
// arguments, each passed byte for byte: no shell ever sees them.  Waits for
// it and returns 0 on success, its exit code, 128 + signal when a signal
// ended it, or 127 when it could not be started.  A program still running
// at its deadline (30 s, or WLANSYNC_CMD_TIMEOUT seconds) is killed with its
// process group, logged, and gives 128 + SIGKILL; so does every later call
// of that program in the same invocation, without starting it.
int adpCmdExec(const char* const argv[]);

FILE* adpFileOpen(const char* path, const char* mode);
// fgets: at most size - 1 characters, the line end kept; null at the end.
char* adpFileGets(char* buffer, int size, FILE* file);
int adpFileClose(FILE* file);

int adpIoctl(int fd, unsigned long request, void* arg);
int adpClose(int fd);

// The system's one logging call: category 8 is a failure, 128 a notice.
// Returns 0.
int adpModuleDebugSyslogProto(int module, int category, const char* function, int line,
                              int, int, const char* format, ...)
    __attribute__((format(printf, 7, 8)));

}  // extern "C"

namespace wlan {

// Lends db, open on dbFile, to sqlite3QueryResGet for the queries that name
// that file; a null db ends the loan (before db is closed).
void shareConnection(sqlite3* db, const char* dbFile);

// SQLite's result code rc says that the database itself cannot be opened or
// read (missing, not a database, corrupt, an I/O error, busy past the busy
// handler's limit), not that a statement failed (a missing table, a row
// gone), which is normal when a row is deleted before the tool runs.
bool databaseFailed(int rc);

// Notes a failed open or statement on dbFile with SQLite's message; the
// first database failure of the process is logged once, as a change not
// applied or, after changeBegun(), applied only in part.  Returns
// databaseFailed(rc).
bool noteDatabase(const char* dbFile, int rc, const char* message);
void changeBegun();

// SQLite's message for the first database failure; empty when none.
const char* databaseFault();

// "killall <name>" where the tool speaks to the driver directly: the
// processes killall would match get SIGTERM, then after 2 s SIGKILL, and
// status killall's status.  False: the program must run.
bool stopByName(const char* const argv[], int& status);

// The running processes killall would match by name (the kernel keeps 15
// characters of it; zombies have stopped): at most max of them into pids,
// returns how many.
int processesNamed(const char* name, int* pids, int max);

// Gives SQLite an allocator for a short process (src/platform/sqlmem.cpp);
// before SQLite is first used.
void useShortLivedMemory();

}  // namespace wlan
