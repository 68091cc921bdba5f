#include <cstdio>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <time.h>

#include "platform/platform.h"
#include "platform/platformtext.h"
#include "platform/replay.h"
#include "platform/trace.h"

namespace {

// The dispatcher's connection and the file it is open on: queries that name
// that file run on it, so that an invocation opens the database and parses
// its schema once.
struct Shared {
    sqlite3* db = nullptr;
    std::string file;
    struct stat id {};
} shared;

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Named as the dispatcher named it, or by another path to the same file
// (the handlers that restart the daemon name the fixed path).
bool isSharedFile(const char* dbFile) {
    if (!shared.db) return false;
    if (shared.file == dbFile) return true;
    struct stat id;
    return stat(dbFile, &id) == 0 && sameFile(id, shared.id);
}

// Queries that name another database file (or run while the dispatcher has
// no connection open) share one connection of their own for the life of the
// process: a VAP start runs a dozen of them and a slow CPU would otherwise
// parse the schema a dozen times.
class FileConnection {
public:
    ~FileConnection() { close(); }

    sqlite3* get(const char* dbFile) {
        if (db_ && file_ == dbFile) return db_;
        close();
        if (int rc = sqlite3_open_v2(dbFile, &db_, SQLITE_OPEN_READWRITE, nullptr); rc != SQLITE_OK) {
            wlan::noteDatabase(dbFile, rc, sqlite3_errmsg(db_));
            close();
            return nullptr;
        }
        file_ = dbFile;
        sqlite3_busy_handler(db_, sqliteBusyHandler, &record_);
        return db_;
    }

private:
    void close() {
        if (db_) sqlite3_close(db_);
        db_ = nullptr;
        file_.clear();
    }

    sqlite3* db_ = nullptr;
    std::string file_;
    BusyHandlerRecord record_{"wlanSyncTool", 100, 100};
};

FileConnection fileConnection;

bool begun = false;  // the handler has started: a failure now leaves part of the change
char fault[200];     // SQLite's message for the first database failure

}  // namespace

extern "C" {

int sqliteBusyHandler(void* context, int count) {
    const BusyHandlerRecord* record = static_cast<const BusyHandlerRecord*>(context);
    if (!record) return 0;
    if (record->retries > 0 && count >= record->retries) return 0;
    if (record->sleepMs > 0) {
        timespec pause{record->sleepMs / 1000, (record->sleepMs % 1000) * 1000000L};
        while (nanosleep(&pause, &pause) != 0) {
        }
    }
    return 1;
}

char** sqlite3QueryResGet(sqlite3* handle, const char* dbFile, const char* statement,
                          int* nCols, int* nRows) {
    if (!statement || !nCols || !nRows) return nullptr;
    sqlite3* db = handle;
    if (!db) {
        if (!dbFile) return nullptr;
        // A replay reads the database it was given, whatever file a handler names.
        bool shareIt = isSharedFile(dbFile) || (shared.db && wlan::replay::holding());
        db = shareIt ? shared.db : fileConnection.get(dbFile);
        if (!db) return nullptr;
    }
    char** table = nullptr;
    char* error = nullptr;
    int rows = 0, cols = 0;
    int rc = sqlite3_get_table(db, statement, &table, &rows, &cols, &error);
    wlan::trace::statement(statement, rows, rc == SQLITE_OK ? nullptr : error ? error : "");
    if (rc != SQLITE_OK) {
        wlan::noteDatabase(dbFile ? dbFile : sqlite3_db_filename(db, "main"), rc, error);
        wlan::replay::queryFailed(sqlite3_extended_errcode(db), error);
        sqlite3_free(error);
        sqlite3_free_table(table);
        return nullptr;
    }
    *nCols = cols;
    *nRows = rows;
    return table;
}

}  // extern "C"

namespace wlan {

bool databaseFailed(int rc) {
    switch (rc & 0xff) {
    case SQLITE_BUSY: case SQLITE_LOCKED: case SQLITE_IOERR: case SQLITE_CORRUPT:
    case SQLITE_CANTOPEN: case SQLITE_NOTADB: case SQLITE_PERM:
        return true;
    }
    return false;
}

bool noteDatabase(const char* dbFile, int rc, const char* message) {
    if (!databaseFailed(rc)) return false;
    if (!*fault) {
        std::snprintf(fault, sizeof fault, "%s", message && *message ? message : "no message");
        logMsg(kDatabaseFailed, dbFile ? dbFile : "", fault, begun ? kInPart : kNotApplied);
    }
    return true;
}

void changeBegun() { begun = true; }

const char* databaseFault() { return fault; }

void shareConnection(sqlite3* db, const char* dbFile) {
    shared.db = nullptr;
    shared.file.clear();
    if (!db || !dbFile || stat(dbFile, &shared.id) != 0) return;
    shared.db = db;
    shared.file = dbFile;
    trace::writesOn(db);  // the one write, the MAC address store, runs on it
}

}  // namespace wlan
