#include "sandbox.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace kit {

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

Sandbox::Sandbox(const std::string& seedSql) {
    char dir[] = "/tmp/wlansync-XXXXXX";
    root_ = mkdtemp(dir);
    std::string command = std::string(WLANSYNC_HOSTKIT) + "/sandbox.sh " + root_;
    if (std::system(command.c_str()) != 0) ADD_FAILURE() << "sandbox.sh failed";
    if (!seedSql.empty()) sql(seedSql);
}

Sandbox::~Sandbox() {
    if (!getenv("KEEP_SANDBOX")) std::system(("rm -rf " + root_).c_str());
}

void Sandbox::sql(const std::string& statements) const {
    sqlite3* handle = nullptr;
    char* error = nullptr;
    sqlite3_open(db().c_str(), &handle);
    if (sqlite3_exec(handle, statements.c_str(), nullptr, nullptr, &error) != SQLITE_OK)
        ADD_FAILURE() << "SQL failed: " << (error ? error : "?") << "\n" << statements;
    sqlite3_free(error);
    sqlite3_close(handle);
}

std::string Sandbox::value(const std::string& query) const {
    sqlite3* handle = nullptr;
    sqlite3_stmt* statement = nullptr;
    std::string result;
    sqlite3_open(db().c_str(), &handle);
    if (sqlite3_prepare_v2(handle, query.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0))
        result = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    sqlite3_close(handle);
    return result;
}

void Sandbox::interfaces(const std::vector<std::pair<std::string, std::string>>& taps) {
    tapScript_.clear();
    for (const auto& [name, mac] : taps)
        tapScript_ += "ip tuntap add dev " + name + " mode tap && ip link set " + name +
                      " address " + mac + " && ";
}

void Sandbox::failOn(const std::string& pattern) const {
    std::ofstream(root_ + "/standin.fail", std::ios::app) << pattern << "\n";
}

Run Sandbox::tool(const std::vector<std::string>& args, const std::string& argv0) const {
    std::vector<std::string> env = {"WLANSYNC_ROOT=" + root_,
                                    "PATH=" + root_ + "/bin:" + getenv("PATH")};
    for (char** e = environ; *e; ++e) {
        std::string var = *e;
        if (var.rfind("WLANSYNC_ROOT=", 0) != 0 && var.rfind("PATH=", 0) != 0) env.push_back(var);
    }
    // The tool itself, or (cross builds) the emulator running it under argv0.
    std::vector<std::string> words;
    std::string program = WLANSYNC_TOOL;
    std::istringstream emulator(WLANSYNC_TOOL_EMULATOR);
    for (std::string word; std::getline(emulator, word, '|');)
        if (!word.empty()) words.push_back(word);
    if (words.empty()) {
        words = {argv0};
    } else {
        program = words[0];
        words.insert(words.end(), {"-0", argv0, WLANSYNC_TOOL});
    }
    words.insert(words.end(), args.begin(), args.end());
    if (!tapScript_.empty()) {
        // unshare -n sh -c '<make taps>; exec "$@"' sh <program> <args>
        words[0] = program;
        words.insert(words.begin(), {"unshare", "-n", "sh", "-c", tapScript_ + "exec \"$@\"", "sh"});
        program = "unshare";
    }
    std::vector<char*> envp, argv;
    for (auto& v : env) envp.push_back(v.data());
    envp.push_back(nullptr);
    for (auto& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);

    int out[2];
    if (pipe(out) != 0) return {-1, ""};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    pid_t pid;
    int err = posix_spawnp(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    std::string output;
    char buffer[4096];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;) output.append(buffer, n);
    close(out[0]);
    if (err != 0) return {-1, output};
    int status = 0;
    waitpid(pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output};
}

Run Sandbox::change(int opType, const std::string& table, long rowId,
                    const std::vector<std::string>& prior) const {
    std::vector<std::string> args = {db(), std::to_string(opType), table, std::to_string(rowId)};
    args.insert(args.end(), prior.begin(), prior.end());
    return tool(args);
}

std::vector<std::string> Sandbox::calls() const {
    std::vector<std::string> lines;
    std::istringstream in(readFile(root_ + "/calls.log"));
    for (std::string line; std::getline(in, line);) {
        for (char& c : line)
            if (c == '\t') c = ' ';
        lines.push_back(line);
    }
    return lines;
}

std::string Sandbox::cfg() const { return readFile(cfgPath()); }

std::vector<std::string> Sandbox::cfgLines() const {
    std::vector<std::string> lines;
    std::istringstream in(cfg());
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::string Sandbox::cfgLine(const std::string& prefix) const {
    std::string found;
    for (const auto& line : cfgLines())
        if (line.rfind(prefix, 0) == 0) found = line;
    return found;
}

void Sandbox::setCfg(const std::string& text) const { writeFile(cfgPath(), text); }

std::string Sandbox::log() const { return readFile(root_ + "/var/log/wlanSyncTool.log"); }

void Sandbox::enter() const {
    setenv("WLANSYNC_ROOT", root_.c_str(), 1);
    static const std::string hostPath = getenv("PATH");
    setenv("PATH", (root_ + "/bin:" + hostPath).c_str(), 1);
}

}  // namespace kit
