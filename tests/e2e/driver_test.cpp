// Driver commands through the stand-in driver utility.
#include <gtest/gtest.h>

#include "driver/driver.h"
#include "sandbox.h"

namespace {

TEST(SetMode, SendsAndWritesEachStep) {
    struct Case {
        const char* keyword;
        std::vector<std::string> commands;  // after "<iwpriv> vap0 set "
        std::vector<std::string> lastLines;
    } cases[] = {
        {"na", {"WirelessMode=8", "Ht_Bw=0"}, {"WirelessMode=8", "HT_BW=0"}},
        {"g only", {"WirelessMode=4", "HtBw=0"}, {"WirelessMode=4", "HT_BW=0"}},
        {"ng40+", {"WirelessMode=7", "HtBw=1", "HtExtcha=0"}, {"WirelessMode=7", "HT_BW=1", "HT_EXTCHA=0"}},
        {"na40-", {"WirelessMode=8", "HtBw=1", "HtExtcha=1"}, {"WirelessMode=8", "HT_BW=1", "HT_EXTCHA=1"}},
    };
    for (const auto& c : cases) {
        kit::Sandbox box;
        box.enter();
        EXPECT_EQ(dot11SetMode("vap0", dot11ModeStrToVal(c.keyword)), 0);
        std::vector<std::string> want;
        for (const auto& cmd : c.commands) want.push_back(box.iwpriv() + " vap0 set " + cmd);
        EXPECT_EQ(box.calls(), want) << c.keyword;
        auto lines = box.cfgLines();
        std::vector<std::string> tail(lines.end() - c.lastLines.size(), lines.end());
        EXPECT_EQ(tail, c.lastLines) << c.keyword;
        if (c.commands.size() == 2) {  // no extension channel: its line stays where it was
            EXPECT_NE(box.cfg().find("\nHT_EXTCHA=0\nHT_LinkAdapt"), std::string::npos) << c.keyword;
        }
    }
}

TEST(SetMode, RefusesTurboAAndUnknownCodes) {
    kit::Sandbox box;
    box.enter();
    std::string before = box.cfg();
    EXPECT_EQ(dot11SetMode("vap0", 0x50000), -1);
    EXPECT_EQ(box.log(), "");
    EXPECT_EQ(dot11SetMode("vap0", -1), -1);
    EXPECT_EQ(box.log(), "[8] dot11SetMode:2838: Invalid mode value : -1.\n");
    EXPECT_EQ(dot11SetMode(nullptr, 0x10000), -1);
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);
}

TEST(SetMode, LastCommandDecidesAndNonVapNamesStillReachTheDriver) {
    kit::Sandbox box;
    box.enter();
    box.failOn("WirelessMode=");
    EXPECT_EQ(dot11SetMode("wds0", 0x30000), 0);  // the bandwidth command succeeded
    EXPECT_EQ(box.calls().size(), 2u);
    EXPECT_NE(box.log().find("Interface called is not a VAP (wds0)"), std::string::npos);
    box.failOn("HtBw=");
    EXPECT_EQ(dot11SetMode("vap0", 0x30000), 7);
}

TEST(DriverHelpers, InterfaceAndAccessListCommands) {
    kit::Sandbox box;
    box.enter();
    EXPECT_EQ(dot11IfUpDown("wds0", 1), 0);
    EXPECT_EQ(dot11IfUpDown("wds0", 0), 0);
    EXPECT_EQ(dot11AclDelMac("vap1", nullptr), -1);
    EXPECT_EQ(dot11AclAddMac(nullptr, "AA"), -1);
    EXPECT_EQ(box.calls(), (std::vector<std::string>{"ifconfig wds0 up", "ifconfig wds0 down"}));

    // Adding an address the list already holds keeps it there.
    EXPECT_EQ(dot11AclAddMac("vap1", "00:00:00:00:00:01"), 0);
    EXPECT_EQ(dot11AclAddMac("vap1", "00:00:00:00:00:01"), 0);
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList1=00:00:00:00:00:01");
    // Removing one it lacks does not add it.
    EXPECT_EQ(dot11AclDelMac("vap1", "00:00:00:00:00:02"), 0);
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList1=00:00:00:00:00:01");
    EXPECT_EQ(box.calls().back(), box.iwpriv() + " vap1 set ACLDelEntry=00:00:00:00:00:02");
}

}  // namespace
