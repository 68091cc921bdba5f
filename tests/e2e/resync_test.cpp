// Checking and repairing the driver file: --check reports the keys out of
// step with the database, --resync writes the replay's file once and
// restarts only what differs.
#include "sandbox.h"

namespace {

// The access point with vap0-vap2 up, the file brought in step once.
kit::Sandbox inStep() {
    kit::Sandbox box(kit::accessPointSeed());
    box.interfaces({{"vap0", "00:1a:2b:3c:4d:50"}, {"vap1", "00:1a:2b:3c:4d:51"}, {"vap2", "00:1a:2b:3c:4d:52"}}, true);
    EXPECT_EQ(box.tool({"--check", box.db()}).status, 1);  // a fresh sandbox is not in step
    EXPECT_EQ(box.tool({"--resync", box.db()}).status, 0);
    box.clearRecords();
    return box;
}

std::vector<std::string> sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    size_t at = text.find(from);
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(Resync, InStepWritesNothingStartsNothingLogsNothing) {
    kit::Sandbox boot(kit::accessPointSeed());  // at boot nothing runs: only the file is written
    EXPECT_EQ(boot.tool({"--resync", boot.db()}).status, 0);
    EXPECT_EQ(std::tuple(boot.calls().size(), boot.log()), std::tuple(0u, ""));
    EXPECT_EQ(boot.tool({"--check", boot.db()}).status, 0);

    kit::Sandbox box = inStep();
    struct stat before = kit::fileStat(box.cfgPath());
    for (const char* option : {"--check", "--resync"}) {
        kit::Run run = box.tool({option, box.db()});
        EXPECT_EQ(std::tuple(run.status, run.output, run.errors), std::tuple(0, "", "")) << option;
    }
    struct stat after = kit::fileStat(box.cfgPath());
    EXPECT_EQ(std::tuple(before.st_ino, before.st_mtime), std::tuple(after.st_ino, after.st_mtime));  // not replaced
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.log(), "");
}

// A hand edit: reported by --check (status 1, nothing else done), repaired by
// --resync, which touches only the interfaces that carry the key.
TEST(Resync, HandEditsAreReportedAndRepaired) {
    const std::string acl = "AccessControlList0=00:0C:43:00:00:A", psk = "WPAPSK1=pass phrase";
    const std::string radius = "RADIUS_Server=10.0.0.5;10.0.0.5;10.0.0.5;10.0.0.5";
    // {from, to, the line reported, the interfaces the repair touches, its first call}
    struct Edit { std::string from, to, reported; std::vector<std::string> touched; std::string first; };
    for (const Edit& e : std::vector<Edit>{
             {"SSID2=Guest", "SSID2=Cafe", "SSID2: file \"Cafe\", database \"Guest\"", {"vap1"}, "ifconfig vap1 down"},
             {"BeaconPeriod=100\n", "BeaconPeriod=50\n", "BeaconPeriod: file \"50\", database \"100\"", {"vap0"},
              "ifconfig vap0 down"},  // a single key: the instance whose start changed it last
             {"Channel=6\n", "", "Channel: in the database only", {"vap0"}, "WirelessMode=7"},  // the radio's
             {acl, acl + ";02:00:00:00:00:01", "AccessControlList0: file \"00:0C:43:00:00:A;02:00:00:00:00:01\", "
              "database \"00:0C:43:00:00:A\"", {"vap0"}, "ACLDelEntry=02:00:00:00:00:01"},
             {psk, "WPAPSK1=guessed", "WPAPSK1: file \"***\", database \"***\"", {"vap0"}, "ifconfig vap0 down"},
             {radius, radius + "\n" + radius, "RADIUS_Server: file \"" + radius.substr(14) + "\" \"" +
              radius.substr(14) + "\", database \"" + radius.substr(14) + "\"", {}, ""}}) {  // no daemon runs
        kit::Sandbox box = inStep();
        std::vector<std::string> good = sorted(box.cfgLines());
        std::string edited = replaced(box.cfg(), e.from, e.to);
        box.setCfg(edited);
        kit::Run check = box.tool({"--check", box.db()});
        EXPECT_EQ(std::tuple(check.status, check.output), std::tuple(1, e.reported + "\n")) << e.to;
        EXPECT_EQ(box.cfg(), edited);
        EXPECT_TRUE(box.calls().empty());

        kit::Run resync = box.tool({"--resync", box.db()});
        EXPECT_EQ(std::tuple(resync.status, resync.output), std::tuple(0, e.reported + "\n")) << e.to;
        EXPECT_EQ(sorted(box.cfgLines()), good) << e.to;
        std::vector<std::string> touched;
        for (const std::string& call : box.calls()) {
            std::string ifname = call.substr(call.find(' ') + 1, 4);
            if (std::find(touched.begin(), touched.end(), ifname) == touched.end()) touched.push_back(ifname);
        }
        EXPECT_EQ(touched, e.touched) << e.to;
        EXPECT_TRUE(e.first.empty() || box.calls().at(0).find(e.first) != std::string::npos) << e.to;
        EXPECT_EQ(box.tool({"--check", box.db()}).status, 0) << e.to;
        EXPECT_EQ(box.log().find("pass phrase"), std::string::npos);
    }
}

// The file is written all the same; each step that fails is one record.
TEST(Resync, AFailedDriverStepIsLoggedAndGivesOne) {
    kit::Sandbox box = inStep();
    box.setCfg(replaced(box.cfg(), "SSID2=Guest", "SSID2=Cafe"));
    box.failOn("vap1 set SSID=Guest");
    kit::Run run = box.tool({"--resync", box.db()});
    EXPECT_EQ(std::tuple(run.status, run.output), std::tuple(1, "SSID2: file \"Cafe\", database \"Guest\"\n"));
    EXPECT_TRUE(box.cfgHas("SSID2=Guest"));
    EXPECT_NE(box.log().find("[8] startStopVAPInstance:862: VAP(vap1) set ssid failed.\n"
                             "[8] resync:105: Cannot bring VAP instance vap1 in step: status 7.\n"), std::string::npos)
        << box.log();
}

TEST(Resync, CannotTellSaysWhyAndWritesNothing) {
    // {what breaks, the reason given}
    for (const auto& [breakIt, why] : std::vector<std::pair<std::function<void(kit::Sandbox&)>, std::string>>{
             {[](kit::Sandbox& b) { std::remove(b.db().c_str()); }, "Cannot read database "},
             {[](kit::Sandbox& b) { b.sql("DROP TABLE dot11WPS;"); }, ": no such table: dot11WPS: nothing written"},
             {[](kit::Sandbox& b) { std::remove(b.cfgPath().c_str()); mkdir(b.cfgPath().c_str(), 0755); },
              "Cannot read /tmp/"}}) {
        kit::Sandbox box(kit::accessPointSeed());
        breakIt(box);
        kit::Run check = box.tool({"--check", box.db()});
        EXPECT_EQ(std::tuple(check.status, check.output), std::tuple(2, "")) << why;
        EXPECT_EQ(check.errors.rfind("wlanSyncTool: Cannot read ", 0), 0u) << check.errors;
        EXPECT_NE(check.errors.find(why), std::string::npos) << check.errors;
        EXPECT_EQ(box.log(), "");
        kit::Run resync = box.tool({"--resync", box.db()});
        EXPECT_EQ(std::tuple(resync.status, resync.output), std::tuple(2, "")) << why;
        EXPECT_EQ(kit::count(box.log(), "\n"), 1u) << box.log();
        EXPECT_NE(box.log().find("resync:10"), std::string::npos) << box.log();
        EXPECT_TRUE(box.calls().empty());
    }
}

// One line: the tool, its version and its build (refused invocations: Invocation's table).
TEST(Resync, VersionIsOneLine) {
    kit::Run version = kit::Sandbox().tool({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("wlanSyncTool ") && version.output.find(" (") < version.output.find('\n') &&
                kit::count(version.output, "\n") == 1) << version.output;
}

}  // namespace
