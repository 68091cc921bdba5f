// Host test kit: a sandbox root with the driver configuration file, stand-in
// programs that record their calls, and a database with the full schema.
#pragma once

#include <string>
#include <vector>

namespace kit {

struct Run {
    int status;          // exit status as the shell sees it
    std::string output;  // standard output
};

class Sandbox {
public:
    // seedSql runs on the new database after the schema.
    explicit Sandbox(const std::string& seedSql = "");
    ~Sandbox();

    const std::string& root() const { return root_; }
    std::string db() const { return root_ + "/tmp/system.db"; }
    std::string cfgPath() const { return root_ + "/etc/Wireless/RT2860AP/RT2860AP.dat"; }
    std::string iwpriv() const { return root_ + "/mavo2.0/bin/iwpriv"; }

    // Runs the tool with its arguments after the program path; argv0 is the
    // path it is started under (the real binary runs whatever it says).
    Run tool(const std::vector<std::string>& args, const std::string& argv0 = WLANSYNC_TOOL) const;
    // Runs the tool as the framework does: db, opType, table, rowId, prior row.
    Run change(int opType, const std::string& table, long rowId,
               const std::vector<std::string>& prior = {}) const;

    // From now on the tool runs in a private network namespace holding tap
    // devices with these names and MAC addresses, so that it reads real ones.
    void interfaces(const std::vector<std::pair<std::string, std::string>>& taps);

    void sql(const std::string& statements) const;
    // The first value of the first row of a query ("" when there is none).
    std::string value(const std::string& query) const;
    // Stand-in calls whose "program args" text contains pattern fail with 7.
    void failOn(const std::string& pattern) const;

    // Stand-in calls so far, one per line, arguments joined by single blanks.
    std::vector<std::string> calls() const;
    std::string cfg() const;
    std::vector<std::string> cfgLines() const;
    // The last configuration-file line that begins with prefix ("" if none).
    std::string cfgLine(const std::string& prefix) const;
    void setCfg(const std::string& text) const;
    std::string log() const;

    // Points this process at the sandbox, for calls into the tool's code.
    void enter() const;

private:
    std::string root_;
    std::string tapScript_;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& text);

}  // namespace kit
