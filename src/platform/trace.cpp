#include "platform/trace.h"

#include <cctype>
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
constexpr char kMask[] = "***";
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
constexpr std::string_view kWepKey = "Key", kWepKeyText = "Str";

size_t digitsEnd(std::string_view text, size_t at) {
    while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) ++at;
    return at;
}

bool secretKey(std::string_view key) {
    for (std::string_view name : kSecretKeys)
        if (key.substr(0, name.size()) == name && digitsEnd(key, name.size()) == key.size())
            return true;
    if (key.substr(0, kWepKey.size()) != kWepKey) return false;
    size_t at = digitsEnd(key, kWepKey.size());
    if (at == kWepKey.size()) return false;
    if (at == key.size()) return true;
    size_t text = at + kWepKeyText.size();
    return key.substr(at, kWepKeyText.size()) == kWepKeyText && text < key.size() &&
           digitsEnd(key, text) == key.size();
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
void appendWord(std::string& out, std::string_view word, bool quote = true) {
    bool plain = !word.empty();
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

// A setting or file line "Key=Value", the value masked when it is a secret.
void appendItem(std::string& out, std::string_view item) {
    size_t eq = item.find('=');
    if (eq != std::string_view::npos && secretKey(item.substr(0, eq)))
        appendWord(out, std::string(item.substr(0, eq + 1)) + kMask);
    else
        appendWord(out, item);
}

void emit(std::string line) {
    line.insert(0, kPrefix);
    line += '\n';
    // One write per line: lines of the programs the tool runs do not cut it.
    for (size_t done = 0; done < line.size();) {
        ssize_t n = write(2, line.data() + done, line.size() - done);
        if (n <= 0) return;
        done += static_cast<size_t>(n);
    }
}

std::string rowCount(int rows) {
    return std::to_string(rows) + (rows == 1 ? " row" : " rows");
}

std::vector<std::string> fileLines(const char* path) {
    std::vector<std::string> lines;
    FILE* file = std::fopen(path, "r");
    if (!file) return lines;
    char* buffer = nullptr;
    size_t size = 0;
    ssize_t n;
    while ((n = getline(&buffer, &size, file)) >= 0) {
        if (n > 0 && buffer[n - 1] == '\n') --n;
        lines.emplace_back(buffer, static_cast<size_t>(n));
    }
    std::free(buffer);
    std::fclose(file);
    return lines;
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

void replacement(const char* path, const char* next) {
    if (!on() || !path || !next) return;
    // The lines of the old file that the new one lacks (dropped), then those
    // of the new one that the old one lacked (added), each in file order;
    // a line present in both, in whatever place, counts once against one.
    std::vector<std::string> before = fileLines(path), after = fileLines(next);
    std::vector<bool> matched(after.size(), false);
    std::string dropped, added;
    for (const std::string& old : before) {
        size_t i = 0;
        while (i < after.size() && (matched[i] || after[i] != old)) ++i;
        if (i < after.size()) {
            matched[i] = true;
        } else {
            dropped += kDropped;
            appendItem(dropped, old);
        }
    }
    for (size_t i = 0; i < after.size(); ++i) {
        if (matched[i]) continue;
        added += kAdded;
        appendItem(added, after[i]);
    }
    std::string line = kFile;
    appendWord(line, path);
    emit(line + (dropped.empty() && added.empty() ? kUnchanged : dropped + added));
}

}  // namespace wlan::trace
