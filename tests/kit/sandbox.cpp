#include "sandbox.h"

#include "cfgfile/cfgfile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <spawn.h>
#include <sqlite3.h>
#include <sstream>
#include <sys/wait.h>

extern char** environ;

namespace kit {

std::string sqlText(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? "''" : std::string(1, c);
    return quoted + "'";
}

std::string accessPointSeed() {
    std::string dscp;
    for (int d = 0; d < 64; ++d) dscp += ", dscpCosMap" + std::to_string(d) + "='Default'";
    return "INSERT INTO dot11Card VALUES (1, 'rt2860');"
           "INSERT INTO dot11Radio VALUES (1, 'wlan0', 1, 0, 6, '2.4GHz', 'ng', 0, 0, 0, 0);"
           "INSERT INTO dot11Radio11n VALUES (1, '20', 0, 'long');"
           "INSERT INTO dot11Profile (profileName, ssid, broadcastSSID, security, authMethods, pskPassAscii,"
           " pairwiseCiphers, groupKeyUpdateInterval, pmksaLifetime, preAuthStatus) VALUES ('wpa', 'Office', 1,"
           " 'WPA2', 'PSK', 'pass phrase', 'CCMP', 3600, 60, 0), ('open', 'Guest', 0, 'OPEN', NULL, NULL, NULL,"
           " NULL, NULL, 0); UPDATE dot11Profile SET qosEnable=1, defaultCos='Video'" + dscp + " WHERE rowid=1;"
           "INSERT INTO dot11VAP VALUES ('ap1', 1, 'wpa', '1', 32, 100, 1, 2347, 2346, 'Short', 3, 0, 'Deny'),"
           " ('ap2', 1, 'open', '1', 16, 100, 1, 2347, 2346, 'Long', 1, 1, 'Open');"
           "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, ''),"
           " ('vap2', 'ap2', 1, ''), ('vap3', 'unused', 1, '');"
           "INSERT INTO dot11ACL VALUES ('ap1', '00:0C:43:00:00:A'); INSERT INTO MulToUni VALUES (1);"
           "INSERT INTO radiusClient VALUES ('10.0.0.5', '1812', 'secret');";
}

Sandbox::Sandbox(const std::string& seedSql) {
    char dir[] = "/tmp/wlansync-XXXXXX";
    root_ = mkdtemp(dir);
    if (std::system((std::string(WLANSYNC_HOSTKIT) + "/sandbox.sh " + root_).c_str()) != 0)
        ADD_FAILURE() << "sandbox.sh failed";
    sql(seedSql);
}

Sandbox::~Sandbox() { if (!getenv("KEEP_SANDBOX")) std::system(("rm -rf " + root_).c_str()); }

std::string Sandbox::sql(const std::string& statements) const {
    sqlite3* handle = nullptr;
    char* error = nullptr;
    std::string first;
    auto keepFirst = [](void* out, int, char** values, char**) {
        auto& first = *static_cast<std::string*>(out);
        if (first.empty() && values[0]) first = values[0];
        return 0;
    };
    sqlite3_open(db().c_str(), &handle);
    if (sqlite3_exec(handle, statements.c_str(), keepFirst, &first, &error) != SQLITE_OK)
        ADD_FAILURE() << "SQL failed: " << (error ? error : "?") << "\n" << statements;
    sqlite3_free(error);
    sqlite3_close(handle);
    return first;
}

void Sandbox::interfaces(const std::vector<std::pair<std::string, std::string>>& taps, bool up) {
    tapScript_.clear();
    for (const auto& [name, mac] : taps)
        tapScript_ += "ip tuntap add dev " + name + " mode tap && ip link set " + name + " address " + mac +
                      (up ? " up && " : " && ");
}

Sandbox::Started Sandbox::start(const Args& args, const Args& via, int errors, const std::string& argv0) const {
    std::vector<std::string> env = {"WLANSYNC_ROOT=" + root_, "PATH=" + root_ + "/bin:" + getenv("PATH")};
    for (char** e = environ; *e; ++e)
        if (std::strncmp(*e, "WLANSYNC_ROOT=", 14) != 0 && std::strncmp(*e, "PATH=", 5) != 0) env.push_back(*e);
    // The tool itself, or (cross builds) the emulator running it under argv0.
    std::vector<std::string> words;
    std::istringstream emulator(WLANSYNC_TOOL_EMULATOR);
    for (std::string word; std::getline(emulator, word, '|');)
        if (!word.empty()) words.push_back(word);
    std::string program = words.empty() ? std::string(WLANSYNC_TOOL) : words[0];
    if (words.empty()) words = {argv0};
    else words.insert(words.end(), {"-0", argv0, WLANSYNC_TOOL});
    words.insert(words.end(), args.begin(), args.end());
    if (!via.empty()) {
        words[0] = program;
        words.insert(words.begin(), via.begin(), via.end());
        program = via[0];
    }
    if (!tapScript_.empty()) {
        // unshare -n sh -c '<make taps>; exec "$@"' sh <program> <args>
        words[0] = program;
        words.insert(words.begin(), {"unshare", "-n", "sh", "-c", tapScript_ + "exec \"$@\"", "sh"});
        program = "unshare";
    }
    auto pointers = [](std::vector<std::string>& strings) {
        std::vector<char*> p;
        for (auto& s : strings) p.push_back(s.data());
        p.push_back(nullptr);
        return p;
    };
    std::vector<char*> envp = pointers(env), argv = pointers(words);
    Started run{-1, tmpfile(), tmpfile()};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(run.out), 1);
    posix_spawn_file_actions_adddup2(&actions, errors >= 0 ? errors : fileno(run.err), 2);
    if (posix_spawnp(&run.pid, program.c_str(), &actions, nullptr, argv.data(), envp.data()) != 0) run.pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return run;
}

Run Sandbox::finish(Started run) {
    int status = 0;
    while (run.pid > 0 && waitpid(run.pid, &status, 0) < 0 && errno == EINTR) {
    }
    auto text = [](FILE* file) {  // what the tool wrote there, from the start
        std::string all;
        rewind(file);
        for (int c; (c = fgetc(file)) != EOF;) all += static_cast<char>(c);
        return fclose(file), all;
    };
    return {run.pid < 0 ? -1 : WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), text(run.out),
            text(run.err)};
}

Args Sandbox::changeArgs(int opType, const std::string& table, long rowId, const Args& prior) const {
    Args args = {db(), std::to_string(opType), table, std::to_string(rowId)};
    args.insert(args.end(), prior.begin(), prior.end());
    return args;
}

struct stat fileStat(const std::string& path) {
    struct stat st {};
    stat(path.c_str(), &st);
    return st;
}

void Sandbox::clearRecords() const {
    writeFile(root_ + "/calls.log", "");
    writeFile(root_ + "/var/log/wlanSyncTool.log", "");
}

std::vector<std::string> Sandbox::calls() const {
    auto calls = lines(readFile(root_ + "/calls.log"));
    for (auto& call : calls) std::replace(call.begin(), call.end(), '\t', ' ');
    return calls;
}

std::string Sandbox::cfg() const {
    wlan::cfg::commit();
    return readFile(cfgPath());
}

void Sandbox::setCfg(const std::string& text) const {
    wlan::cfg::discard();
    writeFile(cfgPath(), text);
}

std::vector<std::string> Sandbox::cfgLines() const { return lines(cfg()); }

std::string Sandbox::cfgLine(const std::string& prefix) const {
    std::string found;
    for (const auto& line : cfgLines())
        if (line.rfind(prefix, 0) == 0) found = line;
    return found;
}

void Sandbox::enter() const {
    wlan::cfg::discard();
    setenv("WLANSYNC_ROOT", root_.c_str(), 1);
    static const std::string hostPath = getenv("PATH");
    setenv("PATH", (root_ + "/bin:" + hostPath).c_str(), 1);
}

std::string Sandbox::armed(std::string text) const {
    for (size_t at; (at = text.find("PWNED")) != std::string::npos;) text.replace(at, 5, root_ + "/pwned");
    return text;
}

}  // namespace kit
