// Where the tool goes beyond the device in the field: values never select
// lines, a program that never returns is stopped at its deadline, and a
// trace on standard error tells what an invocation did.
#include <cstdlib>
#include <sys/stat.h>

#include "sandbox.h"

namespace {

// ap1 (WPA2-PSK, enabled) on vap0 and ap2 (open, disabled) on vap1; an ACL
// row to add and a RADIUS server.
const char* kSeed =
    "INSERT INTO dot11Card VALUES (1, 'rt2860');"
    "INSERT INTO dot11Radio VALUES (1, 'wlan0', 1, 0, 6, '2.4GHz', 'ng', 0, 0, 0, 0);"
    "INSERT INTO dot11Radio11n VALUES (1, '20', 0, 'long');"
    "INSERT INTO dot11Profile (profileName, ssid, broadcastSSID, security, authMethods, pskPassAscii,"
    " pairwiseCiphers, groupKeyUpdateInterval, pmksaLifetime, preAuthStatus) VALUES ('wpa', 'Office', 1, 'WPA2',"
    " 'PSK', 'pass', 'CCMP', 3600, 60, 0), ('open', 'Guest', 1, 'OPEN', NULL, NULL, NULL, NULL, NULL, 0);"
    "INSERT INTO dot11VAP VALUES ('ap1', 1, 'wpa', '1', 32, 100, 1, 2347, 2346, 'Short', 3, 0, 'Open'),"
    " ('ap2', 1, 'open', '1', 16, 100, 1, 2347, 2346, 'Long', 1, 0, 'Open');"
    "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, '');"
    "INSERT INTO dot11ACL VALUES ('ap1', '00:0C:43:00:00:A'); INSERT INTO MulToUni VALUES (0);"
    "INSERT INTO radiusClient VALUES ('10.0.0.5', '1812', 'secret');";

const std::vector<std::string> kAclRow = {"vapName", "macAddress", "ap1", "00:0C:43:00:00:A"};

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

bool hasLine(const kit::Sandbox& box, const std::string& line) {
    return box.cfg().find("\n" + line + "\n") != std::string::npos;
}

TEST(FieldRules, ValuesHoldingKeyNamesNeverSelectLines) {
    struct Case {
        std::vector<std::string> lines;  // put in the file first; each must survive byte for byte
        int opType;
        const char* table;
        long rowId;
        std::vector<std::string> prior = {};
    } cases[] = {
        {{"WPAPSK1=my SSID1 pass"}, 23, "dot11VAP", 2},       // SSID2 and WPAPSK2 rewritten
        {{"SSID2=Cafe SSID1 free"}, 23, "dot11VAP", 1},       // SSID1 rewritten
        {{"WPAPSK1=AuthMode is WPA2"}, 23, "dot11VAP", 2},    // AuthMode list spliced
        {{"SSID2=my EAPifname", "SSID3=RADIUS_Key=x;y"}, 18, "radiusClient", 1},
        {{"AccessControlList0=00:0C:43:00:00:AB"}, 9, "dot11ACL", 1, kAclRow},  // removing a shorter address
        {{"SSID2=AccessControlList0 WdsList"}, 18, "dot11ACL", 1},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kSeed);
        box.setCfg(withLines(box.cfg(), c.lines));
        box.change(c.opType, c.table, c.rowId, c.prior);
        for (const std::string& line : c.lines) EXPECT_TRUE(hasLine(box, line)) << line;
    }

    // Adding an address that is a part of an entry is not "already there",
    // and a text that is only a part of the key names no entry.
    kit::Sandbox box(kSeed);
    box.setCfg(withLines(box.cfg(), {"AccessControlList0=00:0C:43:00:00:AB"}));
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);
    EXPECT_TRUE(hasLine(box, "AccessControlList0=00:0C:43:00:00:AB;00:0C:43:00:00:A"));
    box.sql("DELETE FROM dot11ACL;");
    EXPECT_EQ(box.change(9, "dot11ACL", 1, kAclRow).status, 0);
    EXPECT_TRUE(hasLine(box, "AccessControlList0=00:0C:43:00:00:AB;"));  // the last entry leaves its ';'
    EXPECT_EQ(box.change(9, "dot11ACL", 1, {"vapName", "macAddress", "ap1", "List0"}).status, 0);
    EXPECT_TRUE(hasLine(box, "AccessControlList0=00:0C:43:00:00:AB;"));
}

TEST(FieldRules, ProgramPastItsDeadlineIsKilledAndLaterOnesRunNormally) {
    kit::Sandbox box(kSeed);
    std::string standin = box.iwpriv() + ".standin";
    std::rename(box.iwpriv().c_str(), standin.c_str());
    kit::writeFile(box.iwpriv(), "#!/bin/sh\necho $$ >> \"$WLANSYNC_ROOT/hung\"\nsleep 600\n");
    chmod(box.iwpriv().c_str(), 0755);
    setenv("WLANSYNC_CMD_TIMEOUT", "1", 1);
    kit::Run run = box.change(23, "dot11VAP", 1);
    unsetenv("WLANSYNC_CMD_TIMEOUT");
    EXPECT_NE(run.status, 0);
    // One record, without the value; the failing step logs its own; nothing is left running.
    std::string log = box.log();
    std::string record = "[8] adpCmdExec:61: " + box.iwpriv() + " vap0 timed out after 1 s\n";
    EXPECT_EQ(log.find(record), log.rfind(record));
    EXPECT_NE(log.find(record), std::string::npos) << log;
    EXPECT_NE(log.find("[8] startStopVAPInstance:"), std::string::npos) << log;
    EXPECT_EQ(log.find("Channel=6"), std::string::npos);
    std::string pid = kit::readFile(box.root() + "/hung");
    EXPECT_NE(kill(std::atoi(pid.c_str()), 0), 0) << pid;
    EXPECT_EQ(pid.find('\n'), pid.size() - 1);  // started once: later calls fail at once

    std::rename(standin.c_str(), box.iwpriv().c_str());
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);
    EXPECT_EQ(box.calls().back(), box.set("vap0") + "ACLAddEntry=00:0C:43:00:00:A");
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
          " vap0 set WPAPSK=*** -> 0\n", " -WPAPSK1=*** +WPAPSK1=***", " -\"SSID1=ap1 AP\" +SSID1=Office",
          " macAddress=\"02:00:00:00:00:0A\" where interfaceName==\"vap0\" -> 1 row changed\n"}},
        {"UPDATE dot11Profile SET security='WEP', wepAuth='open', defWepkeyIdx=0, wepkey0='w3p'", "w3p",
         "dot11VAP", {}, {" vap0 set Key1=*** -> 0\n", " +Key1Str1=***"}},
        {"", "secret", "radiusClient", {}, {" +RADIUS_Key=***"}},
        {"UPDATE dot11Radio SET wdsEnabled=1; INSERT INTO dot11WDSPeers VALUES (1, 'N2', 2, 'TKIP', 'wdsk3y')",
         "wdsk3y", "dot11WDSPeers",
         {"radioNo", "macAddress", "wdsIndexNo", "pairwiseCipher", "pskPassAscii", "1", "N2", "2", "TKIP", "k"},
         {" -WdsKey=*** +WdsKey=***"}},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kSeed);
        box.setCfg(withLines(box.cfg(), {"SSID1=ap1 AP"}));
        box.interfaces({{"vap0", "02:00:00:00:00:0a"}});
        box.sql(c.setup);
        setenv("WLANSYNC_TRACE", "1", 1);
        kit::Run traced = box.change(23, c.table, 1, c.prior);
        unsetenv("WLANSYNC_TRACE");
        for (const std::string& part : c.shown) EXPECT_NE(traced.errors.find(part), std::string::npos) << part;
        EXPECT_EQ(traced.errors.find(c.secret), std::string::npos) << traced.errors;
        EXPECT_EQ(box.change(23, c.table, 1, c.prior).errors, "");  // no trace without the variable
    }
}

}  // namespace
