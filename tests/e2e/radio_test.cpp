// The radio table (channel, mode, WDS switch) and its 802.11n table.
#include <gtest/gtest.h>

#include "platform/sql.h"
#include "radio/radio.h"
#include "sandbox.h"

namespace {

const char* kSeed =
    "INSERT INTO dot11VAP (vapName, vapEnabled, profileName, radioList) VALUES ('ap1',1,'p','1');"
    "INSERT INTO dot11Profile (profileName, security) VALUES ('p', 'WEP');"
    "INSERT INTO dot11Interface VALUES ('vap2', 'ap1', 1, '');"
    "INSERT INTO dot11Radio VALUES (1,'ra0',1,0,6,'bg','g only',0,0,0,1);"
    "INSERT INTO dot11Radio11n VALUES (1,'20',1,'auto');"
    "INSERT INTO dot11WDSPeers VALUES (1,'A1',1,'CCMP','secret'), (1,'A2',2,'CCMP','secret'),"
    " (1,'A9',99999999999,'CCMP','secret');";
const std::string kZero = "00:00:00:00:00:00";

// The radio row as the framework passes it, with the WDS switch as it was.
std::vector<std::string> was(const std::string& wds) {
    return {"radioNo", "interfaceName", "cardNo", "rogueAPEnabled", "configuredChannel", "band",
            "opMode", "dothEnabled", "dothMaxPower", "dothMarkDfs", "wdsEnabled", "1", "ra0", "1",
            "0", "6", "bg", "g only", "0", "0", "0", wds};
}

std::string line(const kit::Sandbox& box, const std::string& key) {
    for (const auto& l : box.cfgLines())
        if (l.rfind(key + "=", 0) == 0) return l;
    return "";
}

TEST(RadioTable, ModeThenChannelFileBeforeDriver) {
    for (auto [channel, command, tail] :
         {std::tuple{"6", "Channel=6", "\nAutoChannelSelect=0\nChannel=6"},
          std::tuple{"0", "AutoChannelSel=1", "\nAutoChannelSelect=1"}}) {
        kit::Sandbox box(kSeed);
        box.sql(std::string("UPDATE dot11Radio SET configuredChannel=") + channel + ";");
        box.setCfg("Channel=9\nX=1\n");
        EXPECT_EQ(box.change(23, "dot11Radio", 1, was("1")).status, 0);
        std::string set = box.iwpriv() + " vap2 set ";
        EXPECT_EQ(box.calls(),
                  (std::vector<std::string>{set + "WirelessMode=4", set + "HtBw=0", set + command}));
        EXPECT_TRUE(box.cfg().ends_with(tail + std::string("\nWdsEnable=1\n"))) << box.cfg();
        EXPECT_EQ(box.cfg().starts_with("Channel=9\n"), *channel == '0');
    }
    kit::Sandbox box(kSeed);
    box.sql("UPDATE dot11Radio SET configuredChannel=11;");
    box.failOn("Channel=11");
    EXPECT_EQ(box.change(23, "dot11Radio", 1, was("0")).status, 7);
    EXPECT_EQ(line(box, "Channel"), "Channel=11");   // the file first
    EXPECT_EQ(line(box, "WdsEnable"), "WdsEnable=0");  // the WDS step skipped
}

TEST(RadioTable, RowsThatApplyNothing) {
    struct Case {
        const char* table;
        std::string setup;
        int opType;
        std::vector<std::string> prior;
        int status;
    } cases[] = {
        {"dot11Radio", "", 9, {}, 0},
        {"dot11Radio", "UPDATE dot11Radio SET rogueAPEnabled=NULL;", 18, {}, 255},
        {"dot11Radio", "UPDATE dot11Radio SET dothMarkDfs=NULL;", 23, was("1"), 255},
        {"dot11Radio", "", 23, {}, 255},  // no prior switch value
        {"dot11Radio", "UPDATE dot11VAP SET vapEnabled=0;", 23, was("0"), 0},
        {"dot11Radio11n", "UPDATE dot11Radio SET opMode='ng';", 18, {}, 0},
        {"dot11Radio11n", "", 23, {}, 0},  // "g only"
        {"dot11Radio11n", "UPDATE dot11Radio SET opMode='ng'; UPDATE dot11Radio11n SET puren=0;", 23, {}, 0},
        {"dot11Radio11n", "UPDATE dot11Radio SET opMode='ng';"
                          "UPDATE dot11Radio11n SET puren=0, mimoPreamble=NULL;", 23, {}, 255},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kSeed);
        box.sql(c.setup);
        std::string before = box.cfg();
        EXPECT_EQ(box.change(c.opType, c.table, 1, c.prior).status, c.status) << c.table << c.setup;
        EXPECT_TRUE(box.calls().empty()) << c.setup;
        EXPECT_EQ(box.cfg(), before) << c.setup;
    }
}

TEST(RadioTable, WdsSwitchReprogramsEveryPeer) {
    kit::Sandbox box(kSeed);
    EXPECT_EQ(box.change(23, "dot11Radio", 1, was("0")).status, 0);
    for (std::string w : {"WdsEnable=1", "WdsEncrypType=AES", "WdsKey=secret"})
        EXPECT_EQ(line(box, w.substr(0, w.find('='))), w);
    EXPECT_EQ(line(box, "WdsList"), "WdsList=A1;A2;" + kZero + ";" + kZero);
    auto calls = box.calls();
    EXPECT_EQ(std::vector(calls.begin() + 3, calls.end()),
              (std::vector<std::string>{"ifconfig wds0 up", "ifconfig wds1 up",
                                        "ifconfig wds2147483646 up",  // a slot no list holds
                                        "killall rt2860apd", box.root() + "/mavo2.0/bin/rt2860apd"}));

    box.sql("UPDATE dot11Radio SET wdsEnabled=0;"
            "UPDATE dot11WDSPeers SET pskPassAscii='new', pairwiseCipher='OPEN';");
    EXPECT_EQ(box.change(23, "dot11Radio", 1, was("1")).status, 0);
    EXPECT_EQ(line(box, "WdsList"), "WdsList=" + kZero + ";" + kZero + ";" + kZero + ";" + kZero);
    EXPECT_EQ(line(box, "WdsEncrypType"), "WdsEncrypType=WEP");  // ap1's security word
    EXPECT_EQ(line(box, "WdsKey"), "WdsKey=new");
    calls = box.calls();
    EXPECT_EQ(calls.back(), "ifconfig wds2147483646 down");
    EXPECT_EQ(box.log(), "[8] dot11MgmtConfigWDS:3756: WDS add failed for Peer : A9.\n"
                         "[8] dot11MgmtConfigWDS:3769: WDS delete failed for Peer : A9.\n");
}

TEST(RadioTable, BothHandlersCalledDirectlyAtVapStart) {
    kit::Sandbox box(kSeed);
    box.sql("UPDATE dot11Radio SET opMode='ng';");
    box.enter();
    for (auto [handler, table] : {std::pair{&dot11RadioTblHandler, "dot11Radio"},
                                  std::pair{&dot11Radio11nTblHandler, "dot11Radio11n"}}) {
        std::string all = std::string("SELECT * FROM ") + table;
        auto row = wlan::Rows::query(nullptr, box.db().c_str(), all.c_str());
        EXPECT_EQ(handler(box.db().c_str(), 23, 0, row.table(), row.cols(), 1, nullptr), 0);
    }
    EXPECT_EQ(line(box, "WdsEnable"), "WdsEnable=1");  // no prior row: the peers are left alone
    EXPECT_EQ(line(box, "WdsKey"), "WdsKey=");
    EXPECT_EQ(box.calls().back(), box.iwpriv() + " vap2 set WirelessMode=6");
    EXPECT_EQ(box.cfgLines().back(), "WirelessMode=6");
}

}  // namespace
