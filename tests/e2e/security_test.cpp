// Security: the dot11ACL and dot11WPS tables end to end through the tool, and a profile's
// security applied to a VAP interface in-process, as the VAP start calls it.
#include "sandbox.h"
#include "security/security.h"

namespace {

const char* kSeed = "INSERT INTO dot11VAP (vapName) VALUES ('ap1'), ('ap2'); INSERT INTO dot11Interface VALUES"
                    " ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, ''), ('vap3', 'ghost', 1, '');";

// The address reaches driver and file byte for byte: no shell ever sees it.
TEST(AclTable, InsertAddsAndDeleteRemovesTheAddressAsItStands) {
    kit::Sandbox box(kSeed);
    const std::string mac = box.armed("x'; touch PWNED; '$(touch PWNED)`touch PWNED` \"q\"");
    box.sql("INSERT INTO dot11ACL VALUES ('ap2', " + kit::sqlText(mac) + ");");
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);
    EXPECT_EQ(kit::readFile(box.root() + "/calls.log"), box.iwpriv() + "\tvap1\tset\tACLAddEntry=" + mac + "\n");
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList1=" + mac);

    box.sql("DELETE FROM dot11ACL;");
    EXPECT_EQ(box.change(9, "dot11ACL", 1, kit::aclRow("ap2", mac)).status, 0);
    EXPECT_EQ(box.calls().back(), box.set("vap1") + "ACLDelEntry=" + mac);
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList1=");
    EXPECT_FALSE(box.pwned());
    EXPECT_EQ(box.log(), "");
}

TEST(AclTable, RowsThatCannotBeAppliedChangeNothingAndRefusalsAreTheExitStatus) {
    kit::Sandbox box(kSeed);
    box.sql("INSERT INTO dot11ACL VALUES ('ap1', NULL), ('nobody', 'M1'), ('ap1', 'M3');");
    std::string before = box.cfg();
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 255);  // null address
    EXPECT_EQ(box.change(18, "dot11ACL", 2).status, 255);  // no interface
    EXPECT_EQ(box.change(23, "dot11ACL", 3).status, 255);  // updated, not inserted
    EXPECT_EQ(box.change(9, "dot11ACL", 4, kit::aclRow("ghost", "M4")).status, 255);  // VAP gone
    EXPECT_EQ(box.change(9, "dot11ACL", 4, {"vapName", "ap1"}).status, 255);     // no address
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);

    // Insertion does not ask dot11VAP: an interface row is enough.
    box.sql("INSERT INTO dot11ACL VALUES ('ghost', 'M5');");
    EXPECT_EQ(box.change(18, "dot11ACL", 4).status, 0);
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList3=M5");
    box.failOn("ACLDelEntry");  // a refused deletion is logged and is the exit status
    EXPECT_EQ(box.change(9, "dot11ACL", 1, kit::aclRow("ap1", "M1")).status, 7);
    EXPECT_EQ(box.log(), "[8] dot11ACLTblHandler:1176: Failed to delete mac address.\n");
}

const char* kWpsSeed = "INSERT INTO dot11Interface VALUES ('vap2', 'ap3', 1, ''); INSERT INTO dot11WPS VALUES"
                       " ('ap3', 1), ('ap3', 0), ('ap3', 2), ('ap3', -3), ('nobody', 1), ('ap3', NULL);";

TEST(WpsTable, ModeThenStatusReachFileAndDriver) {
    // {opType, row, WscConfMode}; a refused command changes nothing.
    for (auto [op, row, mode] : {std::tuple{18, 1, 7}, {23, 2, 0}, {23, 3, 2}, {18, 4, -3}}) {
        kit::Sandbox box(kWpsSeed);
        if (row % 2 == 0) box.failOn("WscConf");
        EXPECT_EQ(box.change(op, "dot11WPS", row).status, 0);
        std::string modeLine = "WscConfMode=" + std::to_string(mode);
        EXPECT_EQ(box.calls(), box.sets("vap2", {modeLine, "WscConfStatus=2"}));
        EXPECT_TRUE(box.cfg().ends_with(modeLine + "\nWscConfStatus=2\n")) << mode;
    }
    kit::Sandbox box(kWpsSeed);  // deleted, no value, no interface: nothing runs
    std::string before = box.cfg();
    EXPECT_EQ(box.change(9, "dot11WPS", 1, {"vapName", "wpsEnabled", "ap3", "1"}).status, 255);
    EXPECT_EQ(box.change(18, "dot11WPS", 6).status, 255);
    EXPECT_EQ(box.change(18, "dot11WPS", 5).status, 255);  // the only one logged
    EXPECT_EQ(box.log(), "[8] dot11WPSTblHandler:3379: No VAP table entry found corresponding to the VAP name : nobody.\n");
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);
}

// Profile "it's" (SSID "Joe's net"): WPA2, PSK, CCMP; used by ap1 on vap0 and ap2 on vap1.
const std::string kProfileSeed =
    "INSERT INTO dot11Profile (profileName, ssid, security, wepAuth, defWepkeyIdx, wepkey0, wepkey2,"
    " authMethods, pskPassAscii, pairwiseCiphers, groupKeyUpdateInterval, pmksaLifetime, preAuthStatus)"
    " VALUES ('it''s', 'Joe''s net', 'WPA2', 'Open', 0, 'k0', 'k2', 'PSK', 'pass', 'CCMP', 3600, 20, 1);"
    "INSERT INTO dot11VAP (vapName, profileName, apIsolation, defACLPolicy)"
    " VALUES ('ap1', 'it''s', 1, 'Deny'), ('ap2', 'it''s', 0, 'Open');"
    "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, '');"
    "INSERT INTO dot11ACL VALUES ('ap1', 'M1'), ('ap1', 'M2'), ('ap1', NULL), ('ap1', 'M3'), ('ap2', 'N1');";
const std::string kPsk = "AuthMode=WPA2PSK|SSID=Joe's net|WPAPSK=pass|DefaultKeyID=2|";
const std::string kRekey = "RekeyMethod=TIME|RekeyInterval=3600|PMKCachePeriod=20|";
const std::string kCommon = "IEEE8021X=0|PreAuth=1|NoForwarding=1|";
const std::string kAcl = "AccessPolicy=2|ACLAddEntry=M1|ACLAddEntry=M2|";

// The driver settings sent, each followed by '|', and the status.
std::pair<std::string, int> apply(const kit::Sandbox& box, const char* ifname) {
    box.enter();
    int status = dot11SecurityApply(box.db().c_str(), "it's", "Joe's net", ifname);
    std::string settings;
    for (const auto& call : box.calls()) settings += call.substr(box.set(ifname).size()) + "|";
    return {settings, status};
}

TEST(SecurityApply, ProfileWordsBecomeDriverSettingsInOrder) {
    const std::string set = "UPDATE dot11Profile SET ";
    // cfgLine: a line the file then holds; refused: the driver refuses this setting.
    struct Case { std::string sql, settings; int status; std::string cfgLine = "", refused = ""; } cases[] = {
        {"", kPsk + "EncrypType=AES|" + kRekey + kCommon + kAcl, 0},
        {set + "security='OPEN', preAuthStatus=-1", "AuthMode=OPEN|EncrypType=NONE|IEEE8021X=0|"
         "PreAuth=-1|NoForwarding=1|" + kAcl, 0, "PreAuth=-1"},
        {set + "security='WEP', wepAuth='Shared'",
         "EncrypType=WEP|AuthMode=SHARED|DefaultKeyID=1|Key1=k0|" + kCommon + kAcl, 0, "Key1Str1=k0"},
        {set + "security='WEP', wepAuth='open', defWepkeyIdx=2",
         "EncrypType=WEP|DefaultKeyID=3|Key3=k2|" + kCommon + kAcl, 0},
        {set + "security='WEP', defWepkeyIdx=4", "EncrypType=WEP|AuthMode=OPEN|DefaultKeyID=5|", 0},
        {"ALTER TABLE dot11Profile ADD wepkey4 TEXT;" + set + "security='WEP', defWepkeyIdx=4, wepkey4='k'",
         "EncrypType=WEP|AuthMode=OPEN|DefaultKeyID=5|" + kCommon + kAcl, 0},
        {set + "security='WPA+WPA2', authMethods='RADIUS', pairwiseCiphers='TKIP+CCMP'",
         "AuthMode=WPA1WPA2|EncrypType=TKIPAES|" + kRekey + kCommon + kAcl, 0},
        {set + "security='WEP+WPA', authMethods='PSK+RADIUS', pairwiseCiphers='OPEN'",
         "AuthMode=WPAPSK|" + kPsk.substr(17) + kRekey + kCommon + kAcl, 0},
        {set + "pskPassAscii=NULL", "AuthMode=WPA2PSK|SSID=Joe's net|", 0},
        {set + "authMethods=NULL", "", -1},
        {set + "security='wpa2'; UPDATE dot11VAP SET defACLPolicy='deny'",
         kCommon + "AccessPolicy=3|ACLAddEntry=M1|ACLAddEntry=M2|", 0},
        {set + "ssid='other'", kPsk + "EncrypType=AES|" + kRekey + "IEEE8021X=0|PreAuth=1|", 0},
        {"DELETE FROM dot11Profile", "", -1},
        {"", kPsk + "EncrypType=AES|RekeyMethod=TIME|", 7, "RekeyMethod=TIME", "RekeyMethod"},
        {"", kPsk + "EncrypType=AES|" + kRekey + kCommon + "AccessPolicy=2|ACLAddEntry=M1|", 7, "", "ACLAdd"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kProfileSeed + c.sql + ";");
        if (!c.refused.empty()) box.failOn("set " + c.refused);
        EXPECT_EQ(apply(box, "vap0"), std::pair(c.settings, c.status)) << c.sql;
        EXPECT_NE(box.cfg().find(c.cfgLine + "\n"), std::string::npos) << c.cfgLine;
        EXPECT_EQ(box.log(), "");
    }
    // The list loaded is the one of the VAP on the interface; when none runs there, the first VAP's.
    kit::Sandbox box(kProfileSeed);
    EXPECT_TRUE(apply(box, "vap1").first.ends_with("AccessPolicy=2|ACLAddEntry=N1|"));
    box.sql("DELETE FROM dot11Interface;");
    EXPECT_TRUE(apply(box, "vap1").first.ends_with("AccessPolicy=2|" + kAcl.substr(15)));
}

}  // namespace
