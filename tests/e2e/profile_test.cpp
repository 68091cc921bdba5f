// A profile's security applied to a VAP interface, in-process as the VAP start calls it.
#include <gtest/gtest.h>

#include "sandbox.h"
#include "security/security.h"

namespace {

// Profile "it's" (SSID "Joe's net"): WPA2, PSK, CCMP; used by ap1 on vap0 and ap2 on vap1.
const std::string kSeed =
    "INSERT INTO dot11Profile (profileName, ssid, security, wepAuth, defWepkeyIdx, wepkey0, wepkey2,"
    " authMethods, pskPassAscii, pairwiseCiphers, groupKeyUpdateInterval, pmksaLifetime, preAuthStatus)"
    " VALUES ('it''s', 'Joe''s net', 'WPA2', 'Open', 0, 'k0', 'k2', 'PSK', 'pass', 'CCMP', 3600, 20, 1);"
    "INSERT INTO dot11VAP (vapName, profileName, apIsolation, defACLPolicy)"
    " VALUES ('ap1', 'it''s', 1, 'Deny'), ('ap2', 'it''s', 0, 'Open');"
    "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, '');"
    "INSERT INTO dot11ACL VALUES ('ap1', 'M1'), ('ap1', 'M2'), ('ap1', NULL), ('ap1', 'M3'),"
    " ('ap2', 'N1');";
const std::string kPsk = "AuthMode=WPA2PSK|SSID=Joe's net|WPAPSK=pass|DefaultKeyID=2|";
const std::string kRekey = "RekeyMethod=TIME|RekeyInterval=3600|PMKCachePeriod=20|";
const std::string kCommon = "IEEE8021X=0|PreAuth=1|NoForwarding=1|";
const std::string kAcl = "AccessPolicy=2|ACLAddEntry=M1|ACLAddEntry=M2|";

// The driver settings sent, each followed by '|'.
std::string apply(const kit::Sandbox& box, const char* ifname, int& status) {
    box.enter();
    status = dot11SecurityApply(box.db().c_str(), "it's", "Joe's net", ifname);
    std::string settings;
    for (const auto& call : box.calls()) settings += call.substr(box.iwpriv().size() + 10) + "|";
    return settings;
}

TEST(SecurityApply, ProfileWordsBecomeDriverSettingsInOrder) {
    const std::string set = "UPDATE dot11Profile SET ";
    struct Case {
        std::string sql, settings;
        int status;
        std::string cfgLine = "";  // a line the file then holds
        std::string refused = "";  // the driver refuses this setting
    } cases[] = {
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
        kit::Sandbox box(kSeed + c.sql + ";");
        if (!c.refused.empty()) box.failOn("set " + c.refused);
        int status;
        EXPECT_EQ(apply(box, "vap0", status), c.settings) << c.sql;
        EXPECT_EQ(status, c.status) << c.sql;
        EXPECT_NE(box.cfg().find(c.cfgLine + "\n"), std::string::npos) << c.cfgLine;
        EXPECT_EQ(box.log(), "");
    }
}

// The driver utility keeps a copy of the file as it stands at each command.
TEST(SecurityApply, EachKeyIsInTheFileBeforeItsCommandRuns) {
    const char* lines[] = {"AuthMode=WPA2PSK;OPEN", "SSID1=Joe's net", "WPAPSK1=pass", "DefaultKeyID=2;1",
        "EncrypType=AES;NONE", "RekeyMethod=TIME", "RekeyInterval=3600", "PMKCachePeriod=20",
        "IEEE8021X=0", "PreAuth=1", "NoForwarding=1", "AccessPolicy0=2", "(none)"};
    kit::Sandbox box(kSeed);
    std::string cfg = box.cfg();
    box.setCfg(cfg.replace(cfg.find("IEEE8021X=0"), 11, "IEEE8021X=1"));
    kit::writeFile(box.iwpriv(), "#!/bin/sh\nd=\"$WLANSYNC_ROOT/snap\"; mkdir -p \"$d\"\n"
                                 "cp \"$WLANSYNC_ROOT/etc/Wireless/RT2860AP/RT2860AP.dat\" \"$d/$(ls \"$d\" | wc -l)\"\n");
    box.enter();
    EXPECT_EQ(dot11SecurityApply(box.db().c_str(), "it's", "Joe's net", "vap0"), 0);
    for (size_t i = 0; i + 1 < std::size(lines); ++i) {
        std::string snap = kit::readFile(box.root() + "/snap/" + std::to_string(i));
        EXPECT_NE(snap.find(lines[i]), std::string::npos) << lines[i];
        EXPECT_EQ(snap.find(lines[i + 1]), std::string::npos) << lines[i];
    }
}

TEST(SecurityApply, LoadsTheListOfTheVapOnTheInterface) {
    kit::Sandbox box(kSeed);
    int status;
    EXPECT_TRUE(apply(box, "vap1", status).ends_with("AccessPolicy=2|ACLAddEntry=N1|"));
    box.sql("DELETE FROM dot11Interface;");  // none runs there: the first VAP's list
    EXPECT_TRUE(apply(box, "vap1", status).ends_with("AccessPolicy=2|" + kAcl.substr(15)));
}

}  // namespace
