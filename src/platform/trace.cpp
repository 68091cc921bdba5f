#include "platform/trace.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace wlan::trace {

namespace {

// The trace's words, all in one place.
constexpr char kVariable[] = "WLANSYNC_TRACE";
constexpr char kPrefix[] = "trace: ";
constexpr const char* kMask = kMasked;
constexpr char kSql[] = "sql ";
constexpr char kRun[] = "run";
constexpr char kFile[] = "file ";
constexpr char kSet[] = "set ";
constexpr char kFlags[] = "flags ";
constexpr char kResult[] = " -> ";
constexpr char kFailed[] = "failed: ";
constexpr char kChanged[] = " changed";
constexpr char kUnchanged[] = " unchanged";
constexpr char kDropped[] = " -";
constexpr char kAdded[] = " +";

// Keys whose values are secrets: pass phrases (WPAPSK, WPAPSK1..4), RADIUS
// secrets (RADIUS_Key) and WDS keys (WdsKey), each with or without a
// number; WEP keys are Key<n> and Key<n>Str<m>.
constexpr const char* kSecretKeys[] = {"WPAPSK", "RADIUS_Key", "WdsKey"};
constexpr std::string_view kWepKey = "Key";

// A key part (through the first '=', or a whole line without one) that
// holds a secret key's name anywhere - "#WPAPSK1=", "WPAPSK1 =",
// "RADIUS_Key_old=" - is a secret's: over-masking costs nothing, a missed
// pass phrase in a field log does.
bool secretKey(std::string_view key) {
    for (std::string_view name : kSecretKeys)
        if (key.find(name) != std::string_view::npos) return true;
    for (size_t at = key.find(kWepKey); at != std::string_view::npos; at = key.find(kWepKey, at + 1)) {
        size_t digit = at + kWepKey.size();
        if (digit < key.size() && std::isdigit(static_cast<unsigned char>(key[digit]))) return true;
    }
    return false;
}

// A control character as an escape, so that each trace line stays one line.
void appendChar(std::string& out, char c) {
    if (c == '\n') {
        out += "\\n";
    } else if (c == '\r') {
        out += "\\r";
    } else if (std::iscntrl(static_cast<unsigned char>(c))) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(c));
        out += escaped;
    } else {
        out += c;
    }
}

// A word of a trace line, in quotes when it is empty or holds a blank, a
// quote, a backslash or a control character, so that one can tell where
// each word ends.
void appendWord(std::string& out, std::string_view word, bool quote = true, bool always = false) {
    bool plain = !always && !word.empty();
    for (char c : word)
        if (c == ' ' || c == '"' || c == '\\' || std::iscntrl(static_cast<unsigned char>(c)))
            plain = false;
    if (plain || !quote) {
        for (char c : word) appendChar(out, c);
        return;
    }
    out += '"';
    for (char c : word) {
        if (c == '"' || c == '\\') out += '\\';
        appendChar(out, c);
    }
    out += '"';
}

// A setting or file line "Key=Value", the value masked when it is a
// secret's; a file line without '=' is all key, and all masked then.
void appendItem(std::string& out, std::string_view item, bool fileLine = false) {
    size_t eq = item.find('=');
    if (eq == std::string_view::npos) {
        appendWord(out, fileLine && secretKey(item) ? kMask : item);
    } else if (secretKey(item.substr(0, eq + 1))) {
        appendWord(out, std::string(item.substr(0, eq + 1)) + kMask);
    } else {
        appendWord(out, item);
    }
}

// Set once standard error fails (its reader has gone: the tool ignores
// SIGPIPE): the change goes on untraced.
bool gone = false;

void emit(std::string line) {
    if (gone) return;
    line.insert(0, kPrefix);
    line += '\n';
    // One write per line: lines of the programs the tool runs do not cut it.
    for (size_t done = 0; done < line.size();) {
        ssize_t n = write(2, line.data() + done, line.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            gone = true;
            return;
        }
        done += static_cast<size_t>(n);
    }
}

std::string rowCount(int rows) {
    return std::to_string(rows) + (rows == 1 ? " row" : " rows");
}

std::vector<std::string_view> lines(const std::string& bytes) {
    std::vector<std::string_view> out;
    for (size_t at = 0; at < bytes.size();) {
        size_t end = bytes.find('\n', at);
        if (end == std::string::npos) end = bytes.size();
        out.push_back(std::string_view(bytes).substr(at, end - at));
        at = end + 1;
    }
    return out;
}

int traceWrite(unsigned type, void*, void* stmt, void*) {
    auto* statement = static_cast<sqlite3_stmt*>(stmt);
    if (type != SQLITE_TRACE_PROFILE || sqlite3_stmt_readonly(statement)) return 0;
    std::string line = kSql;
    appendWord(line, sqlite3_sql(statement), false);
    emit(line + kResult + rowCount(sqlite3_changes(sqlite3_db_handle(statement))) + kChanged);
    return 0;
}

}  // namespace

bool secret(std::string_view key) { return secretKey(key); }

std::string quoted(std::string_view word) {
    std::string out;
    appendWord(out, word, true, true);
    return out;
}

bool on() {
    static const bool enabled = [] {
        const char* value = std::getenv(kVariable);
        return value && std::strcmp(value, "1") == 0;
    }();
    return enabled;
}

void statement(const char* text, int rows, const char* error) {
    if (!on()) return;
    std::string line = kSql;
    appendWord(line, text ? text : "", false);
    line += kResult;
    if (error || rows < 0) {
        line += kFailed;
        appendWord(line, error ? error : "", false);
    } else {
        line += rowCount(rows);
    }
    emit(line);
}

void writesOn(sqlite3* db) {
    if (on() && db) sqlite3_trace_v2(db, SQLITE_TRACE_PROFILE, traceWrite, nullptr);
}

void run(const char* const argv[], int status) {
    if (!on() || !argv) return;
    std::string line = kRun;
    for (const char* const* arg = argv; *arg; ++arg) {
        line += ' ';
        appendItem(line, *arg);
    }
    emit(line + kResult + std::to_string(status));
}

void request(const char* ifname, const char* arg, bool flags, int status) {
    if (!on()) return;
    std::string line = flags ? kFlags : kSet;
    appendWord(line, ifname);
    line += ' ';
    appendItem(line, arg);
    emit(line + kResult + std::to_string(status));
}

void commit(const char* path, const std::string& beforeBytes, const std::string& afterBytes, bool ok) {
    if (!on() || !path) return;
    // The lines of the old file that the new one lacks (dropped), then those
    // of the new one that the old one lacked (added), each in file order;
    // a line present in both, in whatever place, counts once against one.
    std::vector<std::string_view> before = lines(beforeBytes), after = lines(afterBytes);
    std::vector<bool> matched(after.size(), false);
    std::string dropped, added;
    for (std::string_view old : before) {
        size_t i = 0;
        while (i < after.size() && (matched[i] || after[i] != old)) ++i;
        if (i < after.size()) {
            matched[i] = true;
        } else {
            dropped += kDropped;
            appendItem(dropped, old, true);
        }
    }
    for (size_t i = 0; i < after.size(); ++i) {
        if (matched[i]) continue;
        added += kAdded;
        appendItem(added, after[i], true);
    }
    std::string line = kFile;
    appendWord(line, path);
    line += dropped.empty() && added.empty() ? kUnchanged : dropped + added;
    emit(ok ? line : line + kResult + kFailed + "left unchanged");
}

}  // namespace wlan::trace
