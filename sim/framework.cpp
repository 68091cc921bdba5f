// wlanFramework: applies SQL to the configuration database and then runs
// wlanSyncTool once for each row it changed, as the device's framework does:
//   wlanSyncTool <db> <9|18|23> <table> <rowid> [names... values...]
// The prior row is the row before the change (for a deletion, the deleted
// row); an insertion has none.  SQL NULL is passed as an empty argument.
// With WLANSYNC_ROOT set, each run is reported: exit status, driver
// commands, configuration-file lines removed and added, and log records.
// With --drop N the N-th run (counted from 1) is not made, as when the power
// goes between the framework's commit and the tool's run.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <spawn.h>
#include <sqlite3.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace {

struct Change {
    int op;
    std::string table;
    sqlite3_int64 rowid;
    std::vector<std::string> before;  // empty for an insertion
};

std::vector<Change> changes;

void onPreUpdate(void*, sqlite3* db, int op, const char*, const char* table, sqlite3_int64 oldRowid,
                 sqlite3_int64 newRowid) {
    Change change{op, table, op == SQLITE_INSERT ? newRowid : op == SQLITE_UPDATE ? newRowid : oldRowid, {}};
    if (op != SQLITE_INSERT) {
        for (int i = 0; i < sqlite3_preupdate_count(db); ++i) {
            sqlite3_value* value = nullptr;
            sqlite3_preupdate_old(db, i, &value);
            const unsigned char* text = value ? sqlite3_value_text(value) : nullptr;
            change.before.push_back(text ? reinterpret_cast<const char*>(text) : "");
        }
    }
    changes.push_back(std::move(change));
}

std::vector<std::string> columnNames(sqlite3* db, const std::string& table) {
    std::vector<std::string> names;
    char* sql = sqlite3_mprintf("PRAGMA table_info(\"%w\")", table.c_str());
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql, -1, &statement, nullptr) == SQLITE_OK)
        while (sqlite3_step(statement) == SQLITE_ROW)
            names.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 1)));
    sqlite3_finalize(statement);
    sqlite3_free(sql);
    return names;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

// Lines of a not in b (as many times as they are missing).
std::vector<std::string> missing(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    std::map<std::string, int> count;
    for (const auto& line : b) ++count[line];
    std::vector<std::string> out;
    for (const auto& line : a)
        if (count[line]-- <= 0) out.push_back(line);
    return out;
}

int run(const std::vector<std::string>& words) {
    std::vector<char*> argv;
    for (const auto& w : words) argv.push_back(const_cast<char*>(w.c_str()));
    argv.push_back(nullptr);
    pid_t pid;
    if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return 127;
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

const char* opName(int op) {
    return op == SQLITE_DELETE ? "delete" : op == SQLITE_INSERT ? "insert" : "update";
}

}  // namespace

int main(int argc, char** argv) {
    const char* program = argv[0];
    long drop = 0;
    if (argc == 6 && std::strcmp(argv[1], "--drop") == 0) {
        drop = std::strtol(argv[2], nullptr, 10);
        argc -= 2;
        argv += 2;
    }
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s [--drop N] <tool> <database> <SQL>\n", program);
        return 2;
    }
    std::string tool = argv[1], dbFile = argv[2];
    long runs = 0;
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(dbFile.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "cannot open %s\n", dbFile.c_str());
        return 2;
    }
    sqlite3_busy_timeout(db, 10000);
    sqlite3_preupdate_hook(db, onPreUpdate, nullptr);

    const char* root = std::getenv("WLANSYNC_ROOT");
    std::string cfg = root ? std::string(root) + "/etc/Wireless/RT2860AP/RT2860AP.dat" : "";
    std::string calls = root ? std::string(root) + "/calls.log" : "";
    std::string log = root ? std::string(root) + "/var/log/wlanSyncTool.log" : "";
    int worst = 0;
    // One statement at a time, each committed before the tool runs for the
    // rows it changed.
    for (const char* sql = argv[3]; sql && *sql;) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &statement, &sql) != SQLITE_OK) {
            std::fprintf(stderr, "SQL error: %s\n", sqlite3_errmsg(db));
            sqlite3_close(db);
            return 2;
        }
        if (!statement) continue;  // blanks or a comment
        changes.clear();
        while (sqlite3_step(statement) == SQLITE_ROW) {
        }
        if (sqlite3_finalize(statement) != SQLITE_OK) {
            std::fprintf(stderr, "SQL error: %s\n", sqlite3_errmsg(db));
            sqlite3_close(db);
            return 2;
        }
        for (const Change& change : changes) {
            if (++runs == drop) {
                std::printf("-- %s %s rowid %lld: dropped\n", opName(change.op), change.table.c_str(),
                            static_cast<long long>(change.rowid));
                continue;
            }
            std::vector<std::string> words = {tool, dbFile, std::to_string(change.op), change.table,
                                              std::to_string(change.rowid)};
            if (!change.before.empty()) {
                std::vector<std::string> names = columnNames(db, change.table);
                words.insert(words.end(), names.begin(), names.end());
                words.insert(words.end(), change.before.begin(), change.before.end());
            }
            std::string cfgBefore = root ? slurp(cfg) : "";
            size_t callsBefore = root ? slurp(calls).size() : 0;
            size_t logBefore = root ? slurp(log).size() : 0;
            int status = run(words);
            if (status != 0) worst = status;
            std::fflush(stdout);
            std::printf("-- %s %s rowid %lld: exit status %d\n", opName(change.op),
                        change.table.c_str(), static_cast<long long>(change.rowid), status);
            if (!root) continue;
            for (const auto& line : lines(slurp(calls).substr(callsBefore))) {
                std::string shown = line;
                for (char& c : shown)
                    if (c == '\t') c = ' ';
                std::printf("   driver: %s\n", shown.c_str());
            }
            auto oldLines = lines(cfgBefore), newLines = lines(slurp(cfg));
            for (const auto& line : missing(oldLines, newLines)) std::printf("   file  - %s\n", line.c_str());
            for (const auto& line : missing(newLines, oldLines))
                std::printf("   file  + %s\n", line.empty() ? "(empty line)" : line.c_str());
            for (const auto& line : lines(slurp(log).substr(logBefore)))
                std::printf("   log:    %s\n", line.c_str());
            std::fflush(stdout);
        }
    }
    sqlite3_close(db);
    return worst;
}
