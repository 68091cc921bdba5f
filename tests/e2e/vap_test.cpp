// The VAP lifecycle end to end: the tool runs against a sandbox whose
// interfaces are real tap devices with known MAC addresses.
#include "sandbox.h"

namespace {

kit::Sandbox accessPoint() {
    kit::Sandbox box(kit::accessPointSeed());
    box.interfaces({{"vap0", "00:1a:2b:3c:4d:50"}, {"vap1", "00:1a:2b:3c:4d:51"}, {"vap2", "00:1a:2b:3c:4d:52"}});
    return box;
}

TEST(VapLifecycle, EnablingStartsTheVapInOrderAndStoresItsMac) {
    kit::Sandbox box = accessPoint();
    EXPECT_EQ(box.change(23, "dot11VAP", 1).status, 0);
    std::vector<std::string> want = box.sets("vap0", {
        "WirelessMode=7", "HtBw=0", "Channel=6", "MaxStaNum=32", "BeaconPeriod=100", "DtimPeriod=1",
        "RTSThreshold=2347", "FragThreshold=2346", "TxPreamble=1", "AuthMode=WPA2PSK", "SSID=Office",
        "WPAPSK=pass phrase", "DefaultKeyID=2", "EncrypType=AES", "RekeyMethod=TIME", "RekeyInterval=3600",
        "PMKCachePeriod=60", "IEEE8021X=0", "PreAuth=0", "NoForwarding=0", "AccessPolicy=2",
        "ACLAddEntry=00:0C:43:00:00:A", "HideSSID=0", "WmmCapable=1", "WmmMapping=" + std::string(64, '2'),
        "SSID=Office", "IgmpSnEnable=1", "ResetCounter=0", "IgmpSnEnable=1"});
    want.insert(want.begin(), "ifconfig vap0 up");
    EXPECT_EQ(box.calls(), want);
    EXPECT_EQ(box.log(), "[128] startStopVAP:2994: Starting VAP ap1.\n"
                         "[128] startStopVAPInstance:546: Starting VAP instance : vap0.\n");
    EXPECT_EQ(box.sql("SELECT macAddress FROM dot11Interface WHERE rowid=1"), "00:1A:2B:3C:4D:50");
    for (std::string line : {"FragThershold=2346", "SSID1=Office", "WPAPSK1=pass phrase",
                             "AuthMode=WPA2PSK;OPEN;OPEN;OPEN", "IgmpSnEnable=1", "Channel=6"})
        EXPECT_TRUE(box.cfgHas(line)) << line;
}

TEST(VapLifecycle, DisablingOrAnUnusedInterfaceOnlyBringsInterfacesDown) {
    kit::Sandbox box = accessPoint();
    box.sql("UPDATE dot11VAP SET vapEnabled=0 WHERE vapName='ap1';");
    std::string before = box.cfg();
    EXPECT_EQ(box.change(23, "dot11VAP", 1).status, 0);
    EXPECT_EQ(box.calls(), std::vector<std::string>{"ifconfig vap0 down"});
    EXPECT_EQ(box.log(), "[128] startStopVAP:2994: Stoping VAP ap1.\n"
                         "[128] startStopVAPInstance:546: Stoping VAP instance : vap0.\n");
    EXPECT_EQ(box.cfg(), before);

    // An interface row stops its VAP only when given the name "unused".
    box.sql("UPDATE dot11Interface SET vapName='unused' WHERE interfaceName='vap1';"
            "UPDATE dot11Interface SET vapName='ap1', macAddress='X' WHERE interfaceName='vap2';");
    const std::vector<std::string> prior = {"interfaceName", "vapName", "radioNo", "macAddress", "vapX", "ap2", "1", ""};
    EXPECT_EQ(box.change(23, "dot11Interface", 2, prior).status, 0);
    EXPECT_EQ(box.change(23, "dot11Interface", 3, prior).status, 0);  // mac changed
    EXPECT_EQ(box.calls(), (std::vector<std::string>{"ifconfig vap0 down", "ifconfig vap1 down"}));
    EXPECT_EQ(box.change(23, "dot11Interface", 2, {"interfaceName", "vap1"}).status, 255);
}

TEST(VapLifecycle, ProfileUpdateRestartsItsEnabledVapsInRowOrder) {
    kit::Sandbox box = accessPoint();
    box.sql("INSERT INTO dot11VAP (vapName, vapEnabled, profileName) VALUES ('ap3', 1, 'open'), ('ap4', 0, 'open');");
    EXPECT_EQ(box.change(23, "dot11Profile", 2).status, 0);
    // In row order; ap3 is started though it has no interface; ap4 is disabled.
    EXPECT_EQ(box.log(), "[128] startStopVAPUsingProfile:1477: Starting VAPs using profile : open.\n"
                         "[128] startStopVAP:2994: Starting VAP ap2.\n"
                         "[128] startStopVAPInstance:546: Starting VAP instance : vap1.\n"
                         "[128] startStopVAPInstance:546: Starting VAP instance : vap2.\n"
                         "[128] startStopVAP:2994: Starting VAP ap3.\n");
    EXPECT_EQ(box.change(18, "dot11Profile", 2).status, 0);
}

TEST(VapLifecycle, FailuresAUserMeets) {
    // tail: the last calls, each found in its line; record: one the log must hold.
    struct Case { const char *name, *sql, *failOn; int status; std::vector<std::string> tail; const char* record; };
    const Case cases[] = {
        {"VAP twice in dot11VAP", "INSERT INTO dot11VAP (vapName, vapEnabled) VALUES ('ap1', 0);", "", 255,
         {"ResetCounter=0"}, ""},
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
        box.sql(c.sql);
        box.failOn(c.failOn);  // "" fails nothing
        EXPECT_EQ(box.change(23, "dot11VAP", 1).status, c.status) << c.name;
        auto calls = box.calls();
        ASSERT_GE(calls.size(), c.tail.size()) << c.name;
        if (c.tail.size() == 1) { EXPECT_EQ(calls.size(), 1u) << c.name; }  // nothing else ran
        for (size_t i = 0; i < c.tail.size(); ++i) {
            const std::string& call = calls[calls.size() - c.tail.size() + i];
            EXPECT_NE(call.find(c.tail[i]), std::string::npos) << c.name << ": " << call;
        }
        EXPECT_NE(box.log().find(c.record), std::string::npos) << c.name;
        EXPECT_EQ(box.sql("SELECT macAddress FROM dot11Interface WHERE rowid=1"), "00:1A:2B:3C:4D:50") << c.name;
    }
}

TEST(MulToUni, SwitchReachesEveryInterfaceCarryingAVap) {
    for (std::string enabled : {"1", "2", "0"}) {
        kit::Sandbox box(kit::accessPointSeed());
        box.sql("UPDATE MulToUni SET Enabled=" + enabled + ";");
        EXPECT_EQ(box.change(23, "MulToUni", 1).status, 0);
        const std::string on = "IgmpSnEnable=" + enabled;
        EXPECT_EQ(box.calls(),
                  (std::vector<std::string>{box.set("vap0") + on, box.set("vap1") + on, box.set("vap2") + on}));
        EXPECT_EQ(box.cfgLines().back(), "IgmpSnEnable=" + enabled);
    }
    kit::Sandbox box(kit::accessPointSeed());
    box.failOn("vap1 set IgmpSnEnable");
    EXPECT_EQ(box.change(23, "MulToUni", 1).status, 7);
    EXPECT_EQ(box.calls().size(), 2u);  // vap2 left alone
    EXPECT_EQ(box.log(), "[8] dot11SetMulToUnivalue:3300: VAP (vap1) set IGMP snoop failed.\n"
                         "[8] multicastEnableDisable:3252: Failed to enable multicast to unicast for : vap1.\n");
    box.sql("DELETE FROM MulToUni;");
    EXPECT_EQ(box.change(9, "MulToUni", 1).status, 255);
}

}  // namespace
