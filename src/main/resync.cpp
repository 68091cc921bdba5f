// wlanSyncTool --version | --check <DBFile> | --resync <DBFile>
//
// --check says which keys of the driver file are out of step with the
// database and changes nothing; --resync writes the replay's file once and
// brings what is running in step.  Statuses: 0 in step (done), 1 out of
// step (a driver step failed), 2 cannot tell (nothing written).
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "main/dispatch.h"
#include "main/resync.h"
#include "main/resynctext.h"
#include "platform/platform.h"
#include "platform/replay.h"
#include "platform/sandbox.h"
#include "platform/sql.h"
#include "platform/trace.h"

#ifndef WLANSYNC_VERSION
#define WLANSYNC_VERSION "unknown"
#endif
#ifndef WLANSYNC_TARGET
#define WLANSYNC_TARGET "unknown"
#endif

namespace wlan::resync {

namespace {

constexpr int kCannotTell = 2;

// The database, open for the whole invocation as the dispatcher opens it;
// read-only for --check, which writes nothing.
class Connection {
public:
    Connection(const char* dbFile, bool readOnly) {
        int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
        if (int rc = sqlite3_open_v2(dbFile, &wlanDbHandle, flags, nullptr)) {
            error_ = sqlite3_errstr(rc);
            sqlite3_close(wlanDbHandle);
            wlanDbHandle = nullptr;
            return;
        }
        std::strcpy(record_.name, "wlanSyncTool");
        sqlite3_busy_handler(wlanDbHandle, sqliteBusyHandler, &record_);
        shareConnection(wlanDbHandle, dbFile);
    }
    ~Connection() {
        shareConnection(nullptr, nullptr);
        if (wlanDbHandle) sqlite3_close(wlanDbHandle);
        wlanDbHandle = nullptr;
    }
    // SQLite's message when it could not be opened, else null.
    const char* error() const { return wlanDbHandle ? nullptr : error_; }

private:
    BusyHandlerRecord record_{{}, 100, 100};
    const char* error_ = nullptr;
};

// Why nothing could be told: on standard error for --check, one record for
// --resync.
int cannotTell(bool check, LogMsg msg, ...) {
    va_list args;
    va_start(args, msg);
    if (check) {
        std::fputs(kErrorPrefix, stderr);
        std::vfprintf(stderr, msg.format, args);
    } else {
        char text[512];
        std::vsnprintf(text, sizeof text, msg.format, args);
        LogMsg whole{msg.category, msg.function, msg.line, "%s"};
        logMsg(whole, text);
    }
    va_end(args);
    return kCannotTell;
}

// Each line's value in quotes, a secret's as ***.
std::string values(const cfg::Lines& lines) {
    std::string out;
    for (const std::string& line : lines) {
        size_t eq = line.find('=');
        std::string_view value = eq == std::string::npos ? line : std::string_view(line).substr(eq + 1);
        if (!out.empty()) out += ' ';
        out += trace::quoted(trace::secret(cfg::keyPart(line)) ? trace::kMasked : value);
    }
    return out;
}

void print(const KeyLines& d) {
    if (d.before.empty()) std::printf(kDatabaseOnly, d.key.c_str());
    else if (d.after.empty()) std::printf(kFileOnly, d.key.c_str());
    else std::printf(kBoth, d.key.c_str(), values(d.before).c_str(), values(d.after).c_str());
}

int run(const char* dbFile, bool check) {
    // The same lock as a change: the file and its temporary name are ours.
    if (!check && !holdProcessLock())
        return cannotTell(check, kNoLock, rootPath(kLockFile).c_str());
    Connection connection(dbFile, check);
    if (connection.error()) return cannotTell(check, kNoDatabase, dbFile, connection.error());
    sqlite3_exec(wlanDbHandle, kBegin, nullptr, nullptr, nullptr);
    replay::set(replay::Mode::Record);
    Replay r;
    bool readable = replay(dbFile, r);
    replay::set(replay::Mode::Off);
    sqlite3_exec(wlanDbHandle, kEnd, nullptr, nullptr, nullptr);
    if (const char* why = replay::unreadable()) return cannotTell(check, kNoDatabase, dbFile, why);
    const cfg::Lines* lines = readable ? cfg::held() : nullptr;
    if (!lines) return cannotTell(check, kNoFile, cfg::cfgPath().c_str());

    std::vector<KeyLines> changed = differences(r.file, *lines);
    if (check || changed.empty()) {
        for (const KeyLines& d : changed) print(d);
        return changed.empty() ? 0 : 1;
    }
    if (!cfg::commit()) return kCannotTell;  // the commit logged why
    for (const KeyLines& d : changed) print(d);
    std::fflush(stdout);
    replay::set(replay::Mode::Apply);
    int status = bringInStep(dbFile, r, changed);
    replay::set(replay::Mode::Off);
    cfg::discard();  // its edits are the file's already
    return status;
}

}  // namespace

bool invoked(int argc, char** argv, int& status) {
    if (argc == 2 && std::strcmp(argv[1], kVersionOption) == 0) {
#ifdef __clang__
        const char* compiler = "clang";
#else
        const char* compiler = "g++";
#endif
        std::printf(kVersionLine, WLANSYNC_VERSION, compiler, __VERSION__, WLANSYNC_TARGET);
        status = 0;
        return true;
    }
    if (argc != 3) return false;
    bool check = std::strcmp(argv[1], kCheckOption) == 0;
    if (!check && std::strcmp(argv[1], kResyncOption) != 0) return false;
    status = run(argv[2], check);
    return true;
}

}  // namespace wlan::resync
