// The VAP lifecycle end to end: the tool runs against a sandbox whose
// interfaces are real tap devices with known MAC addresses.
#include <algorithm>
#include <gtest/gtest.h>

#include "sandbox.h"

namespace {

// ", dscpCosMap0, ..." and ", 'value', ..." for the 64 DSCP columns.
std::pair<std::string, std::string> dscpColumns(const char* value) {
    std::string names, values;
    for (int d = 0; d < 64; ++d) {
        names += ", dscpCosMap" + std::to_string(d);
        values += std::string(", '") + value + "'";
    }
    return {names, values};
}

// Radio 1 and card 1; VAP ap1 on vap0 with a WPA2-PSK profile and QoS on;
// ap2 (disabled) on vap1 and vap2; MulToUni on.
std::string seed() {
    auto [dscpNames, dscpValues] = dscpColumns("Default");
    return "INSERT INTO dot11Card VALUES (1, 'rt2860');"
           "INSERT INTO dot11Radio VALUES (1, 'wlan0', 1, 0, 6, '2.4GHz', 'ng', 0, 0, 0, 0);"
           "INSERT INTO dot11Radio11n VALUES (1, '20', 0, 'long');"
           "INSERT INTO dot11Profile (profileName, ssid, broadcastSSID, security, authMethods,"
           " pskPassAscii, pairwiseCiphers, groupKeyUpdateInterval, pmksaLifetime, preAuthStatus,"
           " qosEnable, defaultCos" + dscpNames + ") VALUES ('wpa', 'Office', 1, 'WPA2', 'PSK',"
           " 'pass phrase', 'CCMP', 3600, 60, 0, 1, 'Video'" + dscpValues + ");"
           "INSERT INTO dot11Profile (profileName, ssid, broadcastSSID, security, preAuthStatus)"
           " VALUES ('open', 'Guest', 0, 'OPEN', 0);"
           "INSERT INTO dot11VAP VALUES ('ap1', 1, 'wpa', '1', 32, 100, 1, 2347, 2346, 'Short', 3,"
           " 0, 'Deny');"
           "INSERT INTO dot11VAP VALUES ('ap2', 0, 'open', '1', 16, 100, 1, 2347, 2346, 'Long', 1,"
           " 1, 'Open');"
           "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, ''),"
           " ('vap2', 'ap2', 1, ''), ('vap3', 'unused', 1, '');"
           "INSERT INTO dot11ACL VALUES ('ap1', '00:00:00:00:00:AA');"
           "INSERT INTO MulToUni VALUES (1);";
}

kit::Sandbox accessPoint() {
    kit::Sandbox box(seed());
    box.interfaces({{"vap0", "00:1a:2b:3c:4d:50"}, {"vap1", "00:1a:2b:3c:4d:51"},
                    {"vap2", "00:1a:2b:3c:4d:52"}});
    return box;
}

TEST(VapLifecycle, EnablingStartsTheVapInOrderAndStoresItsMac) {
    kit::Sandbox box = accessPoint();
    kit::Run run = box.change(23, "dot11VAP", 1);
    EXPECT_EQ(run.status, 0);
    const std::string set = box.iwpriv() + " vap0 set ";
    std::vector<std::string> want = {
        "ifconfig vap0 up",
        set + "WirelessMode=7", set + "HtBw=0", set + "Channel=6",
        set + "MaxStaNum=32", set + "BeaconPeriod=100", set + "DtimPeriod=1",
        set + "RTSThreshold=2347", set + "FragThreshold=2346", set + "TxPreamble=1",
        set + "AuthMode=WPA2PSK", set + "SSID=Office", set + "WPAPSK=pass phrase",
        set + "DefaultKeyID=2", set + "EncrypType=AES", set + "RekeyMethod=TIME",
        set + "RekeyInterval=3600", set + "PMKCachePeriod=60", set + "IEEE8021X=0",
        set + "PreAuth=0", set + "NoForwarding=0", set + "AccessPolicy=2",
        set + "ACLAddEntry=00:00:00:00:00:AA",
        set + "HideSSID=0", set + "WmmCapable=1", set + "WmmMapping=" + std::string(64, '2'),
        set + "SSID=Office", set + "IgmpSnEnable=1", set + "ResetCounter=0",
        set + "IgmpSnEnable=1"};
    EXPECT_EQ(box.calls(), want);
    EXPECT_EQ(box.log(), "[128] startStopVAP:2994: Starting VAP ap1.\n"
                         "[128] startStopVAPInstance:546: Starting VAP instance : vap0.\n");
    EXPECT_EQ(box.value("SELECT macAddress FROM dot11Interface WHERE interfaceName='vap0'"),
              "00:1A:2B:3C:4D:50");
    auto lines = box.cfgLines();
    for (const char* line : {"FragThershold=2346", "SSID1=Office", "WPAPSK1=pass phrase",
                             "AuthMode=WPA2PSK;OPEN;OPEN;OPEN", "IgmpSnEnable=1", "Channel=6"})
        EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line;
}

TEST(VapLifecycle, DisablingOnlyBringsInterfacesDown) {
    kit::Sandbox box = accessPoint();
    box.sql("UPDATE dot11VAP SET vapEnabled=0 WHERE vapName='ap1';");
    std::string before = box.cfg();
    EXPECT_EQ(box.change(23, "dot11VAP", 1).status, 0);
    EXPECT_EQ(box.calls(), std::vector<std::string>{"ifconfig vap0 down"});
    EXPECT_EQ(box.log(), "[128] startStopVAP:2994: Stoping VAP ap1.\n"
                         "[128] startStopVAPInstance:546: Stoping VAP instance : vap0.\n");
    EXPECT_EQ(box.cfg(), before);
}

TEST(VapLifecycle, ProfileUpdateRestartsItsEnabledVapsInRowOrder) {
    kit::Sandbox box = accessPoint();
    box.sql("INSERT INTO dot11VAP (vapName, vapEnabled, profileName, radioList) VALUES"
            " ('ap3', 1, 'open', '1'), ('ap4', 0, 'open', '1');"
            "UPDATE dot11VAP SET vapEnabled=1 WHERE vapName='ap2';");
    EXPECT_EQ(box.change(23, "dot11Profile", 2).status, 0);
    std::string log = box.log();
    EXPECT_EQ(log.find("[128] startStopVAPUsingProfile:1477: Starting VAPs using profile : open."), 0u);
    size_t ap2 = log.find("Starting VAP ap2."), ap3 = log.find("Starting VAP ap3.");
    EXPECT_LT(ap2, ap3);
    EXPECT_NE(ap3, std::string::npos);  // started, though it has no interface
    EXPECT_EQ(log.find("ap4"), std::string::npos);
    EXPECT_EQ(box.change(18, "dot11Profile", 2).status, 0);
}

TEST(VapLifecycle, InterfaceRowsStopOnlyWhenGivenUnused) {
    kit::Sandbox box = accessPoint();
    box.sql("UPDATE dot11Interface SET vapName='unused' WHERE interfaceName='vap1';"
            "UPDATE dot11Interface SET vapName='ap1', macAddress='X' WHERE interfaceName='vap2';");
    auto prior = [](const char* vap, const char* mac) {
        return std::vector<std::string>{"interfaceName", "vapName", "radioNo", "macAddress",
                                        "vapX", vap, "1", mac};
    };
    EXPECT_EQ(box.change(23, "dot11Interface", 2, prior("ap2", "")).status, 0);
    EXPECT_EQ(box.change(23, "dot11Interface", 3, prior("ap2", "")).status, 0);  // mac changed
    EXPECT_EQ(box.calls(), std::vector<std::string>{"ifconfig vap1 down"});
    EXPECT_EQ(box.change(23, "dot11Interface", 2, {"interfaceName", "vap1"}).status, 255);
}

TEST(VapLifecycle, FailuresAUserMeets) {
    struct Case {
        const char* name;
        const char* sql;
        const char* failOn;
        int status;
        std::vector<std::string> tail;  // the last calls, each found in its line
        const char* record;             // a record the log must hold
    } cases[] = {
        {"VAP twice in dot11VAP", "INSERT INTO dot11VAP (vapName, vapEnabled) VALUES ('ap1', 0);",
         "", 255, {"ResetCounter=0"}, ""},
        {"missing radio", "DELETE FROM dot11Radio;", "", 255, {"ResetCounter=0"},
         "[8] startStopVAPInstance:611: Failed to perform database operation into table."},
        {"missing card", "DELETE FROM dot11Card;", "", 255, {"ifconfig vap0 up", "ResetCounter=0"},
         "[8] startStopVAPInstance:644: Failed to perform database operation into table."},
        {"failing command", "", "MaxStaNum", 255, {"MaxStaNum=32", "ResetCounter=0"},
         "[8] startStopVAPInstance:702: VAP (vap0) set maximum clients failed."},
        {"rtsCtsProtect 2", "UPDATE dot11VAP SET rtsCtsProtect=2 WHERE vapName='ap1';", "", 0,
         {"TxPreamble=1", "ResetCounter=0", "IgmpSnEnable=1"}, ""},
    };
    for (const Case& c : cases) {
        kit::Sandbox box = accessPoint();
        if (*c.sql) box.sql(c.sql);
        if (*c.failOn) box.failOn(c.failOn);
        EXPECT_EQ(box.change(23, "dot11VAP", 1).status, c.status) << c.name;
        auto calls = box.calls();
        ASSERT_GE(calls.size(), c.tail.size()) << c.name;
        if (c.tail.size() == 1) {
            EXPECT_EQ(calls.size(), 1u) << c.name;  // nothing else ran
        }
        for (size_t i = 0; i < c.tail.size(); ++i) {
            const std::string& call = calls[calls.size() - c.tail.size() + i];
            EXPECT_NE(call.find(c.tail[i]), std::string::npos) << c.name << ": " << call;
        }
        EXPECT_NE(box.log().find(c.record), std::string::npos) << c.name;
        EXPECT_EQ(box.value("SELECT macAddress FROM dot11Interface WHERE interfaceName='vap0'"),
                  "00:1A:2B:3C:4D:50") << c.name;
    }
}

TEST(MulToUni, SwitchReachesEveryInterfaceCarryingAVap) {
    struct Case {
        int enabled;
        std::vector<std::string> sent;  // interfaces sent IgmpSnEnable
    } cases[] = {{1, {"vap0", "vap1", "vap2"}}, {2, {"vap0", "vap1", "vap2"}}, {0, {"vap0", "vap1", "vap2"}}};
    for (const Case& c : cases) {
        kit::Sandbox box(seed());
        box.sql("UPDATE MulToUni SET Enabled=" + std::to_string(c.enabled) + ";");
        EXPECT_EQ(box.change(23, "MulToUni", 1).status, 0);
        std::vector<std::string> want;
        for (const auto& ifname : c.sent)
            want.push_back(box.iwpriv() + " " + ifname + " set IgmpSnEnable=" + std::to_string(c.enabled));
        EXPECT_EQ(box.calls(), want);
        EXPECT_EQ(box.cfgLines().back(), "IgmpSnEnable=" + std::to_string(c.enabled));
    }
    kit::Sandbox box(seed());
    box.failOn("vap1 set IgmpSnEnable");
    EXPECT_EQ(box.change(23, "MulToUni", 1).status, 7);
    EXPECT_EQ(box.calls().size(), 2u);  // vap2 left alone
    EXPECT_EQ(box.log(), "[8] dot11SetMulToUnivalue:3300: VAP (vap1) set IGMP snoop failed.\n"
                         "[8] multicastEnableDisable:3252: Failed to enable multicast to unicast for : vap1.\n");
    box.sql("DELETE FROM MulToUni;");
    EXPECT_EQ(box.change(9, "MulToUni", 1).status, 255);
}

}  // namespace
