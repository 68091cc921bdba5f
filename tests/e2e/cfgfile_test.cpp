// Configuration-file edits on a real file in a sandbox.
#include <gtest/gtest.h>

#include "cfgfile/cfgfile.h"
#include "sandbox.h"

namespace {

int countContaining(const std::vector<std::string>& lines, const std::string& text) {
    int n = 0;
    for (const auto& line : lines) n += line.find(text) != std::string::npos;
    return n;
}

TEST(UpdateCfgFile, EachKeyClassRewritesItsLineLast) {
    struct Case {
        const char* ifname;
        const char* key;
        int intValue;
        const char* text;
        const char* lastLine;
        const char* gone;  // no line but the last contains this
    } cases[] = {
        {"vap1", "SSID", -1, "my net's $(x)", "SSID2=my net's $(x)", "SSID2"},
        {"vap0", "AccessPolicy", 1, nullptr, "AccessPolicy0=1", "AccessPolicy0"},
        {"vap3", "WPAPSK", -1, "secret", "WPAPSK4=secret", "WPAPSK4"},
        {"vap2", "Key1Str", -1, "k", "Key1Str3=k", "Key1Str3"},
        {"vap0", "Channel", 6, nullptr, "Channel=6", "Channel="},
        {"vap0", "Channel", 0, "ignored", "Channel=0", "Channel="},
        {"vap2", "HideSSID", 1, nullptr, "HideSSID=0;0;1;0", "HideSSID"},
        {"vap3", "RekeyInterval", -7, nullptr, "RekeyInterval=-7", "RekeyInterval="},
    };
    for (const Case& c : cases) {
        kit::Sandbox box;
        box.enter();
        size_t before = box.cfgLines().size();
        EXPECT_EQ(update_cfg_file(c.ifname, c.key, c.intValue, c.text), 0) << c.key;
        auto lines = box.cfgLines();
        EXPECT_EQ(lines.back(), c.lastLine);
        EXPECT_EQ(countContaining(lines, c.gone), 1) << c.key;
        EXPECT_EQ(lines.size(), before) << c.key;
        EXPECT_EQ(box.log(), "");
    }
}

TEST(UpdateCfgFile, ListKeysCarryThePassThroughLinesAlong) {
    kit::Sandbox box;
    box.enter();
    box.setCfg("A=1\nEncrypType=NONE;NONE;NONE;NONE\nB=2\nWdsEncrypType=NONE\nMeshEncrypType=NONE\n");
    update_cfg_file("vap1", "EncrypType", -1, "AES");
    EXPECT_EQ(box.cfg(),
              "A=1\nB=2\nEncrypType=NONE;AES;NONE;NONE\nWdsEncrypType=NONE\n\nMeshEncrypType=NONE\n\n");
}

TEST(UpdateCfgFile, RefusesWhatItCannotWrite) {
    struct Case {
        const char* ifname;
        const char* text;
        const char* record;
    } cases[] = {
        {"vap4", "x", "[8] update_cfg_file:441: Invalid interface called (vap4).\n"},
        {"vap9", "x", "[8] update_cfg_file:441: Invalid interface called (vap9).\n"},
        {"vap", "x", "[8] update_cfg_file:441: Invalid interface called (vap).\n"},
        {"ra0", "x", "[8] update_cfg_file:433: Interface called is not a VAP (ra0).\n"},
        {"wds0", "x", "[8] update_cfg_file:433: Interface called is not a VAP (wds0).\n"},
        {"vap0", "a\nInjected=1", "[8] update_cfg_file:447: Value of SSID holds a line end: not written.\n"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box;
        box.enter();
        std::string before = box.cfg();
        EXPECT_NE(update_cfg_file(c.ifname, "SSID", -1, c.text), 0);
        EXPECT_EQ(box.cfg(), before) << c.ifname;
        EXPECT_EQ(box.log(), c.record);
    }
}

TEST(UpdateCfgFile, MissingFileIsLoggedAndNotCreated) {
    kit::Sandbox box;
    box.enter();
    std::remove(box.cfgPath().c_str());
    EXPECT_NE(update_cfg_file("vap0", "Channel", 6, nullptr), 0);
    EXPECT_EQ(kit::readFile(box.cfgPath()), "");
    EXPECT_NE(box.log().find("Cannot rewrite"), std::string::npos);
}

TEST(UpdateCfgFile, AccessControlListTogglesAddresses) {
    kit::Sandbox box;
    box.enter();
    const char* steps[][2] = {
        {"AA:AA:AA:AA:AA:01", "AccessControlList0=AA:AA:AA:AA:AA:01"},
        {"AA:AA:AA:AA:AA:02", "AccessControlList0=AA:AA:AA:AA:AA:01;AA:AA:AA:AA:AA:02"},
        {"AA:AA:AA:AA:AA:02", "AccessControlList0=AA:AA:AA:AA:AA:01;"},
    };
    for (auto& step : steps) {
        update_cfg_file("vap0", "AccessControlList", -1, step[0]);
        EXPECT_EQ(box.cfgLines().back(), step[1]);
    }
}

TEST(WdsList, SlotsAreSetAndClearedInPlace) {
    kit::Sandbox box;
    box.enter();
    const std::string zero = "00:00:00:00:00:00";
    EXPECT_EQ(dot11WdsAddMac(2, "02:00:00:00:00:02"), 0);
    EXPECT_EQ(box.cfgLines().back(), "WdsList=" + zero + ";02:00:00:00:00:02;" + zero + ";" + zero);
    EXPECT_EQ(dot11WdsAddMac(4, "04:00:00:00:00:04"), 0);
    EXPECT_EQ(dot11WdsDelMac(4), 0);
    EXPECT_EQ(box.cfgLines().back(), "WdsList=" + zero + ";02:00:00:00:00:02;" + zero + ";" + zero);

    std::string before = box.cfg();
    EXPECT_EQ(dot11WdsAddMac(5, "05:00:00:00:00:05"), -1);
    EXPECT_EQ(dot11WdsAddMac(0, "05:00:00:00:00:05"), -1);
    EXPECT_EQ(dot11WdsAddMac(1, nullptr), -1);
    EXPECT_EQ(dot11WdsDelMac(5), -1);
    EXPECT_EQ(box.cfg(), before);
    EXPECT_EQ(box.log(), "");
}

}  // namespace
