#include "platform/replay.h"

#include <cstdio>
#include <cstring>
#include <sqlite3.h>

namespace wlan::replay {

namespace {

// A power cut left the database a journal to roll back, which a read-only
// connection cannot do; the framework's next change or --resync does.
constexpr char kRecoverFirst[] =
    "a journal left by a power cut must be rolled back first (--resync does it)";

Mode current = Mode::Off;
std::vector<std::string> recorded, muted;
char failed[160];  // SQLite's message, cut

std::string joined(const char* const argv[]) {
    std::string text = argv[0];
    for (const char* const* arg = argv + 1; *arg; ++arg) (text += '\t') += *arg;
    return text;
}

}  // namespace

void set(Mode mode) { current = mode; }
bool recording() { return current == Mode::Record; }
bool holding() { return current != Mode::Off; }

bool skip(const char* const argv[]) {
    if (current == Mode::Off) return false;
    std::string command = joined(argv);
    if (current == Mode::Record) {
        recorded.push_back(std::move(command));
        return true;
    }
    for (const std::string& m : muted)
        if (m == command) return true;
    return false;
}

std::vector<std::string> take() {
    std::vector<std::string> out;
    out.swap(recorded);
    return out;
}
void mute(std::vector<std::string> commands) { muted = std::move(commands); }

void queryFailed(int rc, const char* message) {
    bool noTable = message && std::strncmp(message, "no such table", 13) == 0;
    // Anything but a plain SQL error (a missing column) leaves the replay
    // unknown: a database that cannot be read, one that a read-only
    // connection cannot recover after a power cut (a hot journal), a
    // missing table.
    if (current != Mode::Record || *failed || ((rc & 0xff) == SQLITE_ERROR && !noTable)) return;
    // The one failure a reader can mend: say how.
    if (rc == SQLITE_READONLY_ROLLBACK) message = kRecoverFirst;
    std::snprintf(failed, sizeof failed, "%s", message && *message ? message : sqlite3_errstr(rc));
}
const char* unreadable() { return *failed ? failed : nullptr; }

}  // namespace wlan::replay
