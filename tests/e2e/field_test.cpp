// Where the tool goes beyond the device in the field: values never select
// lines, a change is one commit of the file, a linked file is followed, a
// line's end is not part of its value, a program that never returns is
// stopped at its deadline, a stop signal ends tool and program with no half
// change, and a trace on standard error tells what an invocation did.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mount.h>

#include "cfgfile/cfgfile.h"
#include "sandbox.h"

namespace {

// The file with each key's line given its value, or added when the file has none.
std::string withLines(std::string cfg, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        std::string key = "\n" + line.substr(0, line.find('=') + 1);
        size_t at = cfg.find(key);
        if (at == std::string::npos) cfg += line + "\n";
        else cfg.replace(at + 1, cfg.find('\n', at + 1) - at, line + "\n");
    }
    return cfg;
}

TEST(FieldRules, ValuesHoldingKeyNamesNeverSelectLines) {
    // lines: put in the file first; each must survive byte for byte.
    struct Case { std::vector<std::string> lines; int opType; const char* table; long rowId; } cases[] = {
        {{"WPAPSK1=my SSID1 pass"}, 23, "dot11VAP", 2},       // SSID2 and WPAPSK2 rewritten
        {{"SSID2=Cafe SSID1 free"}, 23, "dot11VAP", 1},       // SSID1 rewritten
        {{"WPAPSK1=AuthMode is WPA2"}, 23, "dot11VAP", 2},    // AuthMode list spliced
        {{"SSID2=my EAPifname", "SSID3=RADIUS_Key=x;y"}, 18, "radiusClient", 1},
        {{"SSID2=AccessControlList0 WdsList"}, 18, "dot11ACL", 1},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kit::accessPointSeed());
        box.setCfg(withLines(box.cfg(), c.lines));
        box.change(c.opType, c.table, c.rowId);
        for (const std::string& line : c.lines) EXPECT_TRUE(box.cfgHas(line)) << line;
    }

    // On a list holding a longer address: a part of an entry is not "already there",
    // a present address is not added twice, and removing an absent one (a part of
    // the key, too) keeps the list, though the driver is still told.
    kit::Sandbox box(kit::accessPointSeed());
    box.setCfg(withLines(box.cfg(), {"AccessControlList0=00:0C:43:00:00:AB"}));
    const std::string both = "00:0C:43:00:00:AB;00:0C:43:00:00:A";
    for (auto [op, mac, list] : {std::tuple{18, "00:0C:43:00:00:A", both}, {18, "00:0C:43:00:00:A", both},
                                 {9, "00:0C:43:00:00:A", both.substr(0, 18)}, {9, "List0", both.substr(0, 18)}}) {
        EXPECT_EQ(box.change(op, "dot11ACL", 1, op == 9 ? kit::aclRow("ap1", mac) : kit::Args{}).status, 0);
        EXPECT_TRUE(box.cfgHas("AccessControlList0=" + list)) << op << mac;
        EXPECT_EQ(box.calls().back(), box.set("vap0") + (op == 9 ? "ACLDelEntry=" : "ACLAddEntry=") + mac);
    }
}

TEST(FieldRules, OneChangeIsOneCommitBeforeEachReaderAndNothingGrows) {
    kit::Sandbox box(kit::accessPointSeed());
    chmod(box.cfgPath().c_str(), 0600);  // it holds pass phrases
    kit::Run start = box.traced(23, "dot11VAP", 1);  // a WPA2-PSK VAP start, the radio's first
    EXPECT_EQ(kit::count(start.errors, "trace: file "), 1u) << start.errors;
    // The same change again writes nothing.
    struct stat before = kit::fileStat(box.cfgPath());
    start = box.traced(23, "dot11VAP", 1);
    EXPECT_NE(start.errors.find("RT2860AP.dat unchanged\n"), std::string::npos) << start.errors;
    EXPECT_EQ(kit::fileStat(box.cfgPath()).st_ino, before.st_ino);
    EXPECT_EQ(before.st_mode & 07777, 0600u);

    // Rounds of the same changes leave the same bytes: no empty line added.
    std::string round;
    for (int i = 0; i < 5; ++i) {
        box.sql("INSERT INTO dot11ACL VALUES ('ap1', '02:00:00:00:00:01')");
        box.change(18, "dot11ACL", 2);
        box.sql("DELETE FROM dot11ACL WHERE rowid=2");
        box.change(9, "dot11ACL", 2, kit::aclRow("ap1", "02:00:00:00:00:01"));
        box.change(23, "dot11VAP", 1);
        if (i == 0) round = box.cfg();
        EXPECT_EQ(box.cfg(), round) << i;
    }

    // Readers see every edit made before them: vap2 opens with vap1's SSID
    // written, the daemon starts with its RADIUS lines.
    kit::writeFile(box.root() + "/bin/ifconfig", "#!/bin/sh\n[ \"$2\" = up ] && cp \"$WLANSYNC_ROOT" +
                   std::string("/etc/Wireless/RT2860AP/RT2860AP.dat\" \"$WLANSYNC_ROOT/at-$1\"\nexit 0\n"));
    kit::writeFile(box.daemon(), "#!/bin/sh\ncp \"$WLANSYNC_ROOT/etc/Wireless/RT2860AP/RT2860AP.dat\" "
                                 "\"$WLANSYNC_ROOT/at-daemon\"\n");
    box.sql("UPDATE dot11Profile SET ssid='Lobby' WHERE profileName='open'");
    EXPECT_EQ(box.change(23, "dot11Profile", 2).status, 0);
    EXPECT_NE(kit::readFile(box.root() + "/at-vap2").find("\nSSID2=Lobby\n"), std::string::npos);
    EXPECT_EQ(box.change(18, "radiusClient", 1).status, 0);
    std::string daemonSaw = kit::readFile(box.root() + "/at-daemon");
    EXPECT_TRUE(daemonSaw.ends_with("RADIUS_Key=secret;secret;secret;secret\nEAPifname=\n")) << daemonSaw;
}

// Firmware with /etc in RAM links the driver file to a partition that
// survives a reboot: the link stays, its final target takes the change.
TEST(FieldRules, LinkedDriverFileIsFollowed) {
    // {links from the driver file on (each to the next), status, the record's link target}
    struct Case { std::vector<std::string> links; bool tmpfs, readOnly; int status; std::string record; } cases[] = {
        {{"../../../var/cfg/RT2860AP.dat"}, false, false, 0, ""},
        {{"ROOT/etc/hop.dat", "../var/cfg/RT2860AP.dat"}, false, false, 0, ""},  // a chain
        {{"../../../var/cfg/none.dat"}, false, false, 255, "/etc/Wireless/RT2860AP/../../../var/cfg/none.dat"},
        {{"RT2860AP.dat"}, false, false, 255, "/etc/Wireless/RT2860AP/RT2860AP.dat"},  // a loop
        {{"../../../var/cfg/RT2860AP.dat"}, true, false, 0, ""},  // another file system
        {{"../../../var/cfg/RT2860AP.dat"}, true, true, 255, "/etc/Wireless/RT2860AP/../../../var/cfg/RT2860AP.dat"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kit::accessPointSeed());
        std::string cfg = kit::readFile(box.cfgPath()), folder = box.root() + "/var/cfg", target = folder + "/RT2860AP.dat";
        mkdir(folder.c_str(), 0755);
        if (c.tmpfs && (geteuid() != 0 || mount("wlansync", folder.c_str(), "tmpfs", 0, nullptr) != 0))
            GTEST_SKIP() << "cannot mount a tmpfs (not root)";
        kit::writeFile(target, cfg);
        chmod(target.c_str(), 0600);
        if (c.readOnly) mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
        std::string from = box.cfgPath(), first;
        for (std::string link : c.links) {
            if (link.starts_with("ROOT")) link.replace(0, 4, box.root());
            std::remove(from.c_str());
            symlink(link.c_str(), from.c_str());
            if (first.empty()) first = link;
            from = link[0] == '/' ? link : from.substr(0, from.rfind('/') + 1) + link;
        }
        kit::Run run = box.change(18, "dot11ACL", 1);
        std::string after = kit::readFile(target);
        EXPECT_EQ(run.status, c.status) << first;
        char link[256] = {};
        EXPECT_EQ(readlink(box.cfgPath().c_str(), link, sizeof link - 1), ssize_t(first.size())) << first;
        if (c.status == 0) {
            EXPECT_TRUE(after.ends_with("\nAccessControlList0=00:0C:43:00:00:A\n")) << c.links[0];
            EXPECT_EQ(kit::fileStat(target).st_mode & 07777, 0600u);
            EXPECT_EQ(box.log(), "");
        } else {
            EXPECT_EQ(after, cfg);
            EXPECT_EQ(box.log(), "[8] update_cfg_file:453: Cannot rewrite " + box.cfgPath() + " (a link to " +
                                     box.root() + c.record + "): left unchanged.\n");
        }
        for (std::string left : {folder, box.root() + "/etc/Wireless/RT2860AP"})  // no temporary file left
            EXPECT_NE(access((left + "/rt2860AP1.dat").c_str(), F_OK), 0) << left;
        if (c.tmpfs) umount2(folder.c_str(), MNT_DETACH);
    }
}

// In a CRLF file the CR belongs to the line end: the same changes give the
// LF file's result with every line end CR LF, and no CR inside a value.
TEST(FieldRules, LineEndIsNotPartOfTheValue) {
    auto crlf = [](std::string text) {
        for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, "\r");
        return text;
    };
    std::string files[2];
    for (int cr : {0, 1}) {
        kit::Sandbox box(kit::accessPointSeed() + "UPDATE dot11Radio SET wdsEnabled=1;"
                         "INSERT INTO dot11WDSPeers VALUES (1, '00:1A:2B:3C:99:01', 2, 'CCMP', 'k');");
        if (cr) box.setCfg(crlf(box.cfg()));
        box.change(23, "dot11VAP", 2);  // a VAP start (failing at its MAC address): lists spliced, lines rewritten
        EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);  // a line added
        EXPECT_EQ(box.change(18, "dot11WDSPeers", 1).status, 0);  // WdsList's slot 2
        files[cr] = box.cfg();
    }
    EXPECT_NE(files[0].find("\nWdsList=00:00:00:00:00:00;00:1A:2B:3C:99:01;"), std::string::npos) << files[0];
    EXPECT_EQ(files[1], crlf(files[0]));

    // A mixed file: a rewritten line keeps its own end, a new one takes the first line's.
    kit::Entered box;
    box.setCfg("Default\nSSID2=a\r\nAuthMode=OPEN\r\n");
    EXPECT_EQ(update_cfg_file("vap1", "SSID", -1, "b") | update_cfg_file("vap1", "AuthMode", -1, "WPA2") |
              update_cfg_file("vap1", "Channel", 6, nullptr), 0);
    EXPECT_EQ(box.cfg(), "Default\nSSID2=b\r\nAuthMode=OPEN;WPA2\r\nChannel=6\n");
}

// The driver utility from now on appends its pid (its group's) to R/hung and
// never returns; gives the stand-in it replaced.
std::string hangDriverUtility(const kit::Sandbox& box) {
    std::string standin = kit::readFile(box.iwpriv());
    kit::writeFile(box.iwpriv(), "#!/bin/sh\necho $$ >> \"$WLANSYNC_ROOT/hung\"\nsleep 600\n");
    return standin;
}

TEST(FieldRules, ProgramPastItsDeadlineIsKilledAndLaterOnesRunNormally) {
    kit::Sandbox box(kit::accessPointSeed());
    std::string standin = hangDriverUtility(box);
    EXPECT_EQ((kit::Env("WLANSYNC_CMD_TIMEOUT", "1"), box.change(23, "dot11VAP", 1)).status, 255);
    // One record, without the value; the failing step logs its own (no tap devices: no MAC address).
    EXPECT_EQ(box.log(), "[128] startStopVAP:2994: Starting VAP ap1.\n"
                         "[128] startStopVAPInstance:546: Starting VAP instance : vap0.\n"
                         "[8] adpCmdExec:61: " + box.iwpriv() + " vap0 timed out after 1 s\n"
                         "[8] startStopVAPInstance:702: VAP (vap0) set maximum clients failed.\n"
                         "[128] startStopVAP:3041: Failed to update MAC address of : vap0.\n");
    std::string pid = kit::readFile(box.root() + "/hung");
    EXPECT_NE(kill(std::atoi(pid.c_str()), 0), 0) << pid;  // nothing is left running
    EXPECT_EQ(pid.find('\n'), pid.size() - 1);  // started once: later calls fail at once

    kit::writeFile(box.iwpriv(), standin);
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);
    EXPECT_EQ(box.calls().back(), box.set("vap0") + "ACLAddEntry=00:0C:43:00:00:A");
}

// A stop signal while a program hangs ends both at once, and the file stays
// as the program found it: the ACL edit still pending then never reaches it.
TEST(FieldRules, StopSignalEndsToolAndProgramAndDropsPendingEdits) {
    using namespace std::chrono;
    for (int sig : {SIGTERM, SIGINT, SIGHUP}) {
        kit::Sandbox box(kit::accessPointSeed());
        std::string hung = box.root() + "/hung";
        hangDriverUtility(box);
        kit::Sandbox::Started run = box.start(box.changeArgs(18, "dot11ACL", 1));
        for (int i = 0; i < 3000 && kit::readFile(hung).find('\n') == std::string::npos; ++i) usleep(10000);
        pid_t group = std::atoi(kit::readFile(hung).c_str());
        ASSERT_GT(group, 0) << sig;
        std::string before = box.cfg();
        auto sent = steady_clock::now();
        kill(run.pid, sig);
        EXPECT_EQ(kit::Sandbox::finish(run).status, 128 + sig);
        EXPECT_LT(steady_clock::now() - sent, seconds(5)) << sig;
        for (int i = 0; i < 1000 && kill(-group, 0) == 0; ++i) usleep(10000);  // reaped by init
        EXPECT_NE(kill(-group, 0), 0) << sig;
        EXPECT_EQ(box.cfg(), before) << sig;
    }
}

// A caller that ignores SIGCHLD, or a trace whose reader has gone (SIGPIPE
// at its default), changes nothing: the change runs through promptly, and
// programs start with none of those signals ignored.
TEST(FieldRules, CallersSignalsChangeNothing) {
    using namespace std::chrono;
    for (bool closedTrace : {false, true}) {
        kit::Sandbox box(kit::accessPointSeed());
        std::string standin = kit::readFile(box.iwpriv());
        kit::writeFile(box.iwpriv(), standin.insert(standin.find('\n') + 1,
                                                    "grep SigIgn /proc/$$/status > \"$WLANSYNC_ROOT/ignored\"\n"));
        int trace[2];
        ASSERT_EQ(pipe2(trace, O_CLOEXEC), 0);
        close(trace[0]);
        kit::Env env("WLANSYNC_TRACE", closedTrace ? "1" : "0");
        auto started = steady_clock::now();
        kit::Run run = kit::Sandbox::finish(
            closedTrace ? box.start(box.changeArgs(18, "dot11ACL", 1), {"env", "--default-signal=PIPE"}, trace[1])
                        : box.start(box.changeArgs(18, "dot11ACL", 1), {"env", "--ignore-signal=CHLD"}));
        close(trace[1]);
        EXPECT_EQ(run.status, 0) << closedTrace;
        EXPECT_LT(steady_clock::now() - started, seconds(10)) << closedTrace;
        EXPECT_EQ(box.cfgLines().back(), "AccessControlList0=00:0C:43:00:00:A");
        std::string ignored = kit::readFile(box.root() + "/ignored");
        unsigned long long mask = std::strtoull(ignored.substr(ignored.find('\t') + 1).c_str(), nullptr, 16);
        for (int sig : {SIGCHLD, SIGPIPE, SIGTERM, SIGINT, SIGHUP}) EXPECT_EQ(mask >> (sig - 1) & 1, 0ull) << sig;
    }
}

// Each case's secret (pass phrase, WEP key, RADIUS secret, WDS key) is on its
// way to driver and file, yet the trace shows it nowhere.
TEST(FieldRules, TraceShowsStatementsProgramsAndFileEditsButNoSecret) {
    struct Case {
        std::string setup, secret;
        const char* table;
        std::vector<std::string> prior, shown;
    } cases[] = {
        {"UPDATE dot11Profile SET pskPassAscii='p4ss \"phrase\"'", "p4ss", "dot11VAP", {},
         {"trace: sql SELECT * from dot11VAP WHERE rowid=1 -> 1 row\n", "trace: run ifconfig vap0 up -> 0\n",
          " vap0 set WPAPSK=*** -> 0\n", " -WPAPSK1=***", " +WPAPSK1=***", " -\"SSID1=ap1 AP\"", " +SSID1=Office",
          " -#WPAPSK1=***", " -\"WPAPSK1 =***\"",
          " macAddress=\"02:00:00:00:00:0A\" where interfaceName==\"vap0\" -> 1 row changed\n"}},
        {"UPDATE dot11Profile SET security='WEP', wepAuth='open', defWepkeyIdx=0, wepkey0='w3p'", "w3p",
         "dot11VAP", {}, {" vap0 set Key1=*** -> 0\n", " +Key1Str1=***"}},
        {"", "secret", "radiusClient", {}, {" +RADIUS_Key=***", " -#RADIUS_Key=***", " -RADIUS_Key_old=***"}},
        {"UPDATE dot11Radio SET wdsEnabled=1; INSERT INTO dot11WDSPeers VALUES (1, 'N2', 2, 'TKIP', 'wdsk3y')",
         "wdsk3y", "dot11WDSPeers",
         {"radioNo", "macAddress", "wdsIndexNo", "pairwiseCipher", "pskPassAscii", "1", "N2", "2", "TKIP", "k"},
         {" -WdsKey=***", " +WdsKey=***", " -#WdsKey=***"}},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kit::accessPointSeed());
        // Lines an edit drops though their key is not in the exact form: old secrets all the same.
        box.setCfg(withLines(box.cfg(), {"SSID1=ap1 AP", "#WPAPSK1=old-psk", "WPAPSK1 =old-psk",
                                         "#RADIUS_Key=old-psk", "RADIUS_Key_old=old-psk", "#WdsKey=old-psk"}));
        box.interfaces({{"vap0", "02:00:00:00:00:0a"}});
        box.sql(c.setup);
        kit::Run traced = box.traced(23, c.table, 1, c.prior);
        for (const std::string& part : c.shown) EXPECT_NE(traced.errors.find(part), std::string::npos) << part;
        for (const std::string& secret : {c.secret, std::string("old-psk")})
            EXPECT_EQ(traced.errors.find(secret), std::string::npos) << traced.errors;
        EXPECT_EQ(box.change(23, c.table, 1, c.prior).errors, "");  // no trace without the variable
    }
}

}  // namespace
