// WDS peers added, removed and re-keyed one at a time.
#include <gtest/gtest.h>

#include "sandbox.h"

namespace {

const char* kSeed =
    "INSERT INTO dot11Radio (radioNo, wdsEnabled) VALUES (1, 1), (2, 0);"
    "INSERT INTO dot11WDSPeers VALUES (1,'M2',2,'OPEN',NULL), (1,'M3',3,'CCMP',NULL),"
    " (1,'M7',7,'OPEN',NULL), (2,'M1',1,'OPEN',NULL), (1,'M9',65537,'OPEN',NULL),"
    " (1,'N2',2,'TKIP','k1'), (1,'N2',2,'TKIP','k2'), (1,'N2',2,'OPEN','y'), (1,'N2',2,'OPEN','k1'),"
    " (1,'N2',2,'TKIP','a' || char(10) || 'b');";

std::vector<std::string> peer(const std::string& radio, const std::string& mac, const std::string& slot,
                              const std::string& cipher = "OPEN", const std::string& key = "") {
    return {"radioNo", "macAddress", "wdsIndexNo", "pairwiseCipher", "pskPassAscii",
            radio, mac, slot, cipher, key};
}

TEST(WdsPeersTable, OnePeerAtATime) {
    struct Case {
        int opType;
        long rowId;
        std::vector<std::string> prior;
        int status;
        std::string ifconfig, changed, log = "";  // changed "": file and daemon untouched
    } cases[] = {
        {18, 1, {}, 0, "wds1 up", "WdsList=a;M2;c;d"},
        {18, 5, {}, 0, "wds0 up", "WdsList=M9;b;c;d"},  // slot 65537 is 1: 16 bits
        {9, 1, peer("1", "M2", "2"), 0, "wds1 down", "WdsList=a;00:00:00:00:00:00;c;d"},
        {18, 2, {}, 255, "", ""},  // CCMP without a key
        {18, 3, {}, 255, "", "", "[8] dot11WDSPeersTblHandler:3904: WDS add failed for peer : M7.\n"},
        {9, 3, peer("1", "M7", "0"), 255, "", "",
         "[8] dot11WDSPeersTblHandler:3916: WDS delete failed for peer : M7.\n"},
        {18, 4, {}, 0, "", ""},  // WDS off on radio 2
        {9, 4, peer("2", "M1", "1"), 0, "", ""},
        {23, 6, peer("1", "M2", "2", "TKIP", "k1"), 255, "", ""},  // only the address moved
        {23, 8, peer("1", "M2", "2", "OPEN", "x"), 255, "", ""},   // open links have no key
        {23, 7, peer("1", "M2", "2", "TKIP", "k1"), 0, "", "WdsKey=k2"},
        {23, 9, peer("1", "M2", "2", "CCMP", "k1"), 0, "", "WdsKey="},
        {23, 10, peer("1", "M2", "2", "TKIP", "k1"), 255, "", "",
         "[8] update_cfg_file:447: Value of WdsKey holds a line end: not written.\n"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kSeed);
        box.setCfg("A=1\nWdsKey=old\nWdsList=a;b;c;d\n");
        std::string before = box.cfg();
        EXPECT_EQ(box.change(c.opType, "dot11WDSPeers", c.rowId, c.prior).status, c.status) << c.rowId;
        std::vector<std::string> want;
        if (!c.ifconfig.empty()) want.push_back("ifconfig " + c.ifconfig);
        if (!c.changed.empty())
            want.insert(want.end(), {"killall rt2860apd", box.root() + "/mavo2.0/bin/rt2860apd"});
        EXPECT_EQ(box.calls(), want) << c.rowId;
        auto lines = box.cfgLines();  // the changed line goes last, before EAPifname
        if (c.changed.empty()) EXPECT_EQ(box.cfg(), before) << c.rowId;
        else EXPECT_EQ(lines.at(lines.size() - 2), c.changed) << c.rowId;
        EXPECT_EQ(box.log(), c.log) << c.rowId;
    }
}

}  // namespace
