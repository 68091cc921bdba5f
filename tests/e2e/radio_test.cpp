// The radio tables: channel, mode and WDS switch, 802.11n, WDS peers and country.
#include "platform/sql.h"
#include "radio/radio.h"
#include "sandbox.h"

namespace {

const char* kSeed =
    "INSERT INTO dot11VAP (vapName, vapEnabled, profileName, radioList) VALUES ('ap1',1,'p','1');"
    "INSERT INTO dot11Profile (profileName, security) VALUES ('p', 'WEP');"
    "INSERT INTO dot11Interface VALUES ('vap2', 'ap1', 1, ''); INSERT INTO dot11Radio11n VALUES (1,'20',1,'auto');"
    "INSERT INTO dot11Radio VALUES (1,'ra0',1,0,6,'bg','g only',0,0,0,1); INSERT INTO dot11WDSPeers VALUES"
    " (1,'A1',1,'CCMP','secret'), (1,'A2',2,'CCMP','secret'), (1,'A9',99999999999,'CCMP','secret');";
const std::string kZero = "00:00:00:00:00:00";

// The prior radio row as the framework passes it: 11 names, then the values;
// only the WDS switch, the last column, is read.
std::vector<std::string> was(const std::string& wds) {
    std::vector<std::string> row(22, "x");
    row[10] = "wdsEnabled";
    row[21] = wds;
    return row;
}

TEST(RadioTable, ModeThenChannelFileBeforeDriver) {
    for (auto [channel, command, tail] :
         {std::tuple{"6", "Channel=6", "\nAutoChannelSelect=0\nChannel=6"},
          std::tuple{"0", "AutoChannelSel=1", "\nAutoChannelSelect=1"}}) {
        kit::Sandbox box(kSeed);
        box.sql(std::string("UPDATE dot11Radio SET configuredChannel=") + channel + ";");
        box.setCfg("Channel=9\nX=1\n");
        EXPECT_EQ(box.change(23, "dot11Radio", 1, was("1")).status, 0);
        EXPECT_EQ(box.calls(), box.sets("vap2", {"WirelessMode=4", "HtBw=0", command}));
        EXPECT_TRUE(box.cfg().ends_with(tail + std::string("\nWdsEnable=1\n"))) << box.cfg();
        EXPECT_EQ(box.cfg().starts_with("Channel=9\n"), *channel == '0');
    }
    kit::Sandbox box(kSeed);
    box.sql("UPDATE dot11Radio SET configuredChannel=11;");
    box.failOn("Channel=11");
    EXPECT_EQ(box.change(23, "dot11Radio", 1, was("0")).status, 7);
    EXPECT_EQ(box.cfgLine("Channel="), "Channel=11");   // the file first
    EXPECT_EQ(box.cfgLine("WdsEnable="), "WdsEnable=0");  // the WDS step skipped
}

TEST(RadioTable, RowsThatApplyNothing) {
    const std::string ng = "UPDATE dot11Radio SET opMode='ng';";
    struct Case { const char* table; std::string setup; int opType; std::vector<std::string> prior; int status; };
    const Case cases[] = {
        {"dot11Radio", "", 9, {}, 0}, {"dot11Radio", "UPDATE dot11Radio SET rogueAPEnabled=NULL;", 18, {}, 255},
        {"dot11Radio", "UPDATE dot11Radio SET dothMarkDfs=NULL;", 23, was("1"), 255},
        {"dot11Radio", "", 23, {}, 255},  // no prior switch value
        {"dot11Radio", "UPDATE dot11VAP SET vapEnabled=0;", 23, was("0"), 0},
        {"dot11Radio11n", ng, 18, {}, 0}, {"dot11Radio11n", "", 23, {}, 0},  // "g only"
        {"dot11Radio11n", ng + "UPDATE dot11Radio11n SET puren=0;", 23, {}, 0},
        {"dot11Radio11n", ng + "UPDATE dot11Radio11n SET puren=0, mimoPreamble=NULL;", 23, {}, 255},
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
        EXPECT_EQ(box.cfgLine(w.substr(0, w.find('=') + 1)), w);
    EXPECT_EQ(box.cfgLine("WdsList="), "WdsList=A1;A2;" + kZero + ";" + kZero);
    auto calls = box.calls();  // wds2147483646: a slot no list holds
    EXPECT_EQ(std::vector(calls.begin() + 3, calls.end()),
              (std::vector<std::string>{"ifconfig wds0 up", "ifconfig wds1 up", "ifconfig wds2147483646 up",
                                        "killall rt2860apd", box.root() + "/mavo2.0/bin/rt2860apd"}));

    box.sql("UPDATE dot11Radio SET wdsEnabled=0; UPDATE dot11WDSPeers SET pskPassAscii='new', pairwiseCipher='OPEN';");
    EXPECT_EQ(box.change(23, "dot11Radio", 1, was("1")).status, 0);
    EXPECT_EQ(box.cfgLine("WdsList="), "WdsList=" + kZero + ";" + kZero + ";" + kZero + ";" + kZero);
    EXPECT_EQ(box.cfgLine("WdsEncrypType="), "WdsEncrypType=WEP");  // ap1's security word
    EXPECT_EQ(box.cfgLine("WdsKey="), "WdsKey=new");
    EXPECT_EQ(box.calls().back(), "ifconfig wds2147483646 down");
    EXPECT_EQ(box.log(), "[8] dot11MgmtConfigWDS:3756: WDS add failed for Peer : A9.\n"
                         "[8] dot11MgmtConfigWDS:3769: WDS delete failed for Peer : A9.\n");
}

TEST(RadioTable, BothHandlersCalledDirectlyAtVapStart) {
    kit::Sandbox box(kSeed);
    box.sql("UPDATE dot11Radio SET opMode='ng';");
    box.enter();
    for (auto [handler, table] : {std::pair{&dot11RadioTblHandler, "dot11Radio"},
                                  std::pair{&dot11Radio11nTblHandler, "dot11Radio11n"}}) {
        auto row = wlan::Rows::query(nullptr, box.db().c_str(), ("SELECT * FROM " + std::string(table)).c_str());
        EXPECT_EQ(handler(box.db().c_str(), 23, 0, row.table(), row.cols(), 1, nullptr), 0);
    }
    EXPECT_EQ(box.cfgLine("WdsEnable="), "WdsEnable=1");  // no prior row: the peers are left alone
    EXPECT_EQ(box.cfgLine("WdsKey="), "WdsKey=");
    EXPECT_EQ(box.calls().back(), box.set("vap2") + "WirelessMode=6");
    EXPECT_EQ(box.cfgLines().back(), "WirelessMode=6");
}

const char* kPeersSeed =
    "INSERT INTO dot11Radio (radioNo, wdsEnabled) VALUES (1, 1), (2, 0);"
    "INSERT INTO dot11WDSPeers VALUES (1,'M2',2,'OPEN',NULL), (1,'M3',3,'CCMP',NULL), (1,'M7',7,'OPEN',NULL),"
    " (2,'M1',1,'OPEN',NULL), (1,'M9',65537,'OPEN',NULL), (1,'N2',2,'TKIP','k1'), (1,'N2',2,'TKIP','k2'),"
    " (1,'N2',2,'OPEN','y'), (1,'N2',2,'OPEN','k1'), (1,'N2',2,'TKIP','a' || char(10) || 'b');";

std::vector<std::string> peer(const std::string& radio, const std::string& mac, const std::string& slot,
                              const std::string& cipher = "OPEN", const std::string& key = "") {
    return {"radioNo", "macAddress", "wdsIndexNo", "pairwiseCipher", "pskPassAscii", radio, mac, slot, cipher, key};
}

TEST(WdsPeersTable, OnePeerAtATime) {
    // changed "": file and daemon untouched.
    struct Case { int opType; long rowId; std::vector<std::string> prior; int status;
                  std::string ifconfig, changed, log = ""; } cases[] = {
        {18, 1, {}, 0, "wds1 up", "WdsList=a;M2;c;d"},
        {18, 5, {}, 0, "wds0 up", "WdsList=M9;b;c;d"},  // slot 65537 is 1: 16 bits
        {9, 1, peer("1", "M2", "2"), 0, "wds1 down", "WdsList=a;00:00:00:00:00:00;c;d"},
        {18, 2, {}, 255, "", ""},  // CCMP without a key
        {18, 3, {}, 255, "", "", "[8] dot11WDSPeersTblHandler:3904: WDS add failed for peer : M7.\n"},
        {9, 3, peer("1", "M7", "0"), 255, "", "", "[8] dot11WDSPeersTblHandler:3916: WDS delete failed for peer : M7.\n"},
        {18, 4, {}, 0, "", ""},  // WDS off on radio 2
        {9, 4, peer("2", "M1", "1"), 0, "", ""},
        {23, 6, peer("1", "M2", "2", "TKIP", "k1"), 255, "", ""},  // only the address moved
        {23, 8, peer("1", "M2", "2", "OPEN", "x"), 255, "", ""},   // open links have no key
        {23, 7, peer("1", "M2", "2", "TKIP", "k1"), 0, "", "WdsKey=k2"},
        {23, 9, peer("1", "M2", "2", "CCMP", "k1"), 0, "", "WdsKey="},
        // A refused key keeps the old one; the daemon is restarted all the same.
        {23, 10, peer("1", "M2", "2", "TKIP", "k1"), 0, "", "WdsList=a;b;c;d",
         "[8] update_cfg_file:447: Value of WdsKey holds a line end: not written.\n"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kPeersSeed);
        box.setCfg("A=1\nWdsKey=old\nWdsList=a;b;c;d\n");
        std::string before = box.cfg();
        EXPECT_EQ(box.change(c.opType, "dot11WDSPeers", c.rowId, c.prior).status, c.status) << c.rowId;
        std::vector<std::string> want;
        if (!c.ifconfig.empty()) want.push_back("ifconfig " + c.ifconfig);
        if (!c.changed.empty()) want.insert(want.end(), {"killall rt2860apd", box.root() + "/mavo2.0/bin/rt2860apd"});
        EXPECT_EQ(box.calls(), want) << c.rowId;
        auto lines = box.cfgLines();  // the changed line goes last, before EAPifname
        if (c.changed.empty()) EXPECT_EQ(box.cfg(), before) << c.rowId;
        else EXPECT_EQ(lines.at(lines.size() - 2), c.changed) << c.rowId;
        EXPECT_EQ(box.log(), c.log) << c.rowId;
    }
}

TEST(GlobalConfigTable, CountrySetsRegionsAndCode) {
    // The country as SQL; settings: sent to vap1, the first also the file's last line.
    struct Case { std::string country; int opType, status; std::vector<std::string> settings;
                  std::string log = "", fail = ""; } cases[] = {
        {"'840'", 23, 0, {"CountryRegion=0", "CountryRegionABand=0", "CountryCode=US"}},
        {"'8'", 18, 0, {"CountryRegion=1", "CountryCode=AL"}},
        {"'392'", 23, 0, {"CountryRegion=1", "CountryRegionABand=9", "CountryCode=JP"}},
        {"'999'", 23, 0, {"CountryRegion=1", "CountryCode="}},
        {"'abc'", 23, 0, {"CountryRegion=5", "CountryRegionABand=7", "CountryCode=DB"}},  // the first row
        {"'840'", 9, 0, {}}, {"'840'", 5, 255, {}}, {"NULL", 23, 255, {}},
        {"'840'; UPDATE dot11Interface SET vapName='unused'", 23, 0, {}},
        {"'840'", 23, 7, {"CountryRegion=0"}, "", "CountryRegion"},  // file first, then stop
        {"'4294967304'", 23, 255, {}, "[8] dot11GlobalConfigTblHandler:3470: Unknown country code : 2147483647.\n"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box("INSERT INTO dot11Interface VALUES ('vap0', 'unused', 1, ''), ('vap1', 'ap1', 1, ''),"
                         " ('vap2', 'ap2', 2, ''); INSERT INTO dot11GlobalConfig VALUES (0);");
        box.sql("UPDATE dot11GlobalConfig SET country=" + c.country + ";");
        if (!c.fail.empty()) box.failOn(c.fail);
        std::string before = box.cfg();
        EXPECT_EQ(box.change(c.opType, "dot11GlobalConfig", 1).status, c.status) << c.country;
        EXPECT_EQ(box.calls(), box.sets("vap1", c.settings)) << c.country;
        if (c.settings.empty()) EXPECT_EQ(box.cfg(), before) << c.country;
        else EXPECT_EQ(box.cfgLines().back(), c.settings.front()) << c.country;
        EXPECT_EQ(box.log(), c.log);
    }
}

}  // namespace
