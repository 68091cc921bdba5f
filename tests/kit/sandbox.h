// Host test kit: a sandbox root with the driver configuration file, stand-in
// programs that record their calls, and a database with the full schema.
#pragma once

#include <gtest/gtest.h>
#include "text.h"
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace kit {

std::string sqlText(const std::string& text);  // text as an SQL string literal
struct stat fileStat(const std::string& path);  // identity and mode: a rename gives a new inode
// An environment variable set for the scope, for the tool's runs.
struct Env {
    std::string name;
    Env(const std::string& n, const std::string& value) : name(n) { setenv(n.c_str(), value.c_str(), 1); }
    ~Env() { unsetenv(name.c_str()); }
};
using Args = std::vector<std::string>;
// The prior row of a deleted dot11ACL row, as the framework passes it.
inline Args aclRow(const std::string& vap, const std::string& mac) { return {"vapName", "macAddress", vap, mac}; }
// Radio 1 and card 1; ap1 (WPA2-PSK "pass phrase", QoS on with every DSCP value in
// the default class, ACL policy Deny) on vap0; ap2 (open, no broadcast) on vap1 and
// vap2; vap3 unused; both VAPs enabled; one ACL row for ap1; MulToUni on; a RADIUS server.
std::string accessPointSeed();

struct Run { int status; std::string output, errors; };  // exit status as the shell sees it; standard output, standard error

class Sandbox {
public:
    explicit Sandbox(const std::string& seedSql = "");  // seedSql runs after the schema
    ~Sandbox();

    const std::string& root() const { return root_; }
    std::string db() const { return root_ + "/tmp/system.db"; }
    std::string cfgPath() const { return root_ + "/etc/Wireless/RT2860AP/RT2860AP.dat"; }
    std::string iwpriv() const { return root_ + "/mavo2.0/bin/iwpriv"; }
    std::string daemon() const { return root_ + "/mavo2.0/bin/rt2860apd"; }

    // Runs the tool with its arguments after the program path; argv0 is the
    // path it is started under (the real binary runs whatever it says).
    Run tool(const Args& args, const std::string& argv0 = WLANSYNC_TOOL) const { return finish(start(args, {}, -1, argv0)); }
    // Runs the tool as the framework does: db, opType, table, rowId, prior row.
    Run change(int opType, const std::string& table, long rowId, const Args& prior = {}) const {
        return tool(changeArgs(opType, table, rowId, prior));
    }
    Run traced(int opType, const std::string& table, long rowId, const Args& prior = {}) const {
        Env trace("WLANSYNC_TRACE", "1");  // the trace on standard error
        return change(opType, table, rowId, prior);
    }
    Args changeArgs(int opType, const std::string& table, long rowId, const Args& prior = {}) const;

    // A tool run under way: its process (the emulator's, in cross builds) and output files.
    struct Started { pid_t pid; FILE *out, *err; };
    // Starts the tool as tool() does, without waiting; through the command via
    // (env --ignore-signal=CHLD) when given, standard error to errors when >= 0.
    Started start(const Args& args, const Args& via = {}, int errors = -1,
                  const std::string& argv0 = WLANSYNC_TOOL) const;
    static Run finish(Started run);  // waits for it

    // From now on the tool runs in a private network namespace holding tap
    // devices with these names and MAC addresses, so that it reads real ones
    // (brought up when up: the driver running on them).
    void interfaces(const std::vector<std::pair<std::string, std::string>>& taps, bool up = false);

    // Runs SQL statements; returns the first value of the first row they give ("" if none).
    std::string sql(const std::string& statements) const;
    // Stand-in calls whose "program args" text contains pattern fail with 7.
    void failOn(const std::string& pattern) const { std::ofstream(root_ + "/standin.fail", std::ios::app) << pattern << "\n"; }

    // Stand-in calls so far, one per line, arguments joined by single blanks.
    std::vector<std::string> calls() const;
    // The driver utility's calls "<iwpriv> ifname set <setting>", one per setting.
    std::string set(const std::string& ifname) const { return iwpriv() + " " + ifname + " set "; }
    std::vector<std::string> sets(const std::string& ifname, std::vector<std::string> settings) const {
        for (auto& setting : settings) setting = set(ifname) + setting;
        return settings;
    }
    // The file as a reader sees it: the edits this process made so far are
    // committed first, as before a program that reads it.
    std::string cfg() const;
    std::vector<std::string> cfgLines() const;
    bool cfgHas(const std::string& line) const { return ("\n" + cfg()).find("\n" + line + "\n") != std::string::npos; }
    // The last configuration-file line that begins with prefix ("" if none).
    std::string cfgLine(const std::string& prefix) const;
    void setCfg(const std::string& text) const;  // edits not yet committed are forgotten
    std::string log() const { return readFile(root_ + "/var/log/wlanSyncTool.log"); }
    void clearRecords() const;  // the stand-ins' calls and the log start empty again

    // Points this process at the sandbox, for calls into the tool's code
    // (which then starts with no edits pending).
    void enter() const;

    // text with each "PWNED" replaced by a path that only "touch PWNED" run
    // by a shell would create; pwned() tells whether it exists.
    std::string armed(std::string text) const;
    bool pwned() const { return access((root_ + "/pwned").c_str(), F_OK) == 0; }

private:
    std::string root_;
    std::string tapScript_;
};

// A sandbox this process is pointed at from the start, for calls into the tool's code.
struct Entered : Sandbox { explicit Entered(const std::string& seedSql = "") : Sandbox(seedSql) { enter(); } };

}  // namespace kit
