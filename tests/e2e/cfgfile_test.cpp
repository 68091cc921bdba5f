// Configuration-file edits on a real file in a sandbox, and the wireless mode through the stand-in utility.
#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "sandbox.h"

namespace {

TEST(UpdateCfgFile, EachKeyClassRewritesItsLineLast) {
    kit::Entered box;
    size_t before = box.cfgLines().size();
    // {ifname, key, number, text, the new last line, found on no other line}
    for (auto [ifname, key, number, text, last, gone] :
         {std::tuple<const char*, const char*, int, const char*, const char*, const char*>{
              "vap1", "SSID", -1, "my net's $(x)", "SSID2=my net's $(x)", "SSID2"},
          {"vap0", "AccessPolicy", 1, nullptr, "AccessPolicy0=1", "AccessPolicy0"},
          {"vap3", "WPAPSK", -1, "secret", "WPAPSK4=secret", "WPAPSK4"},
          {"vap2", "Key1Str", -1, "k", "Key1Str3=k", "Key1Str3"},
          {"vap0", "Channel", 6, nullptr, "Channel=6", "Channel="},
          {"vap0", "Channel", 0, "ignored", "Channel=0", "Channel="},
          {"vap2", "HideSSID", 1, nullptr, "HideSSID=0;0;1;0", "HideSSID"},
          {"vap3", "RekeyInterval", -7, nullptr, "RekeyInterval=-7", "RekeyInterval="}}) {
        EXPECT_EQ(update_cfg_file(ifname, key, number, text), 0) << key;
        auto lines = box.cfgLines();
        EXPECT_EQ(lines.back(), last);
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [&](const std::string& l) { return l.find(gone) != std::string::npos; }), 1) << key;
        EXPECT_EQ(lines.size(), before) << key;
    }
    EXPECT_EQ(box.log(), "");

    // A list key takes the lines whose keys contain it along, each with one line end;
    // empty lines already there stay.
    box.setCfg("A=1\nEncrypType=NONE;NONE;NONE;NONE\n\nB=2\nWdsEncrypType=NONE\nMeshEncrypType=NONE");
    update_cfg_file("vap1", "EncrypType", -1, "AES");
    EXPECT_EQ(box.cfg(), "A=1\n\nB=2\nEncrypType=NONE;AES;NONE;NONE\nWdsEncrypType=NONE\nMeshEncrypType=NONE\n");
}

TEST(UpdateCfgFile, RefusesWhatItCannotWriteAndChangesNothing) {
    kit::Entered box;
    std::string before = box.cfg();
    for (auto [ifname, text] : {std::pair{"vap4", "x"}, {"vap", "x"}, {"wds0", "x"}, {"vap0", "a\nInjected=1"}})
        EXPECT_NE(update_cfg_file(ifname, "SSID", -1, text), 0) << ifname;
    // WDS slots run from 1 to 4; setting and clearing them is met through the WDS handlers.
    for (int slot : {0, 5})
        EXPECT_TRUE(dot11WdsAddMac(slot, "05:00:00:00:00:05") == -1 && dot11WdsDelMac(slot) == -1) << slot;
    EXPECT_EQ(dot11WdsAddMac(1, nullptr), -1);
    EXPECT_EQ(box.cfg(), before);
    EXPECT_EQ(box.log(), "[8] update_cfg_file:441: Invalid interface called (vap4).\n"
                         "[8] update_cfg_file:441: Invalid interface called (vap).\n"
                         "[8] update_cfg_file:433: Interface called is not a VAP (wds0).\n"
                         "[8] update_cfg_file:447: Value of SSID holds a line end: not written.\n");
}

TEST(SetMode, SendsAndWritesEachStep) {
    using Lines = std::vector<std::string>;
    // {mode, settings sent, the file's last lines}
    for (auto [keyword, sent, last] :
         {std::tuple{"na", Lines{"WirelessMode=8", "Ht_Bw=0"}, Lines{"WirelessMode=8", "HT_BW=0"}},
          {"ng40+", {"WirelessMode=7", "HtBw=1", "HtExtcha=0"}, {"WirelessMode=7", "HT_BW=1", "HT_EXTCHA=0"}},
          {"na40-", {"WirelessMode=8", "HtBw=1", "HtExtcha=1"}, {"WirelessMode=8", "HT_BW=1", "HT_EXTCHA=1"}}}) {
        kit::Entered box;
        EXPECT_EQ(dot11SetMode("vap0", dot11ModeStrToVal(keyword)), 0);
        EXPECT_EQ(box.calls(), box.sets("vap0", sent)) << keyword;
        auto lines = box.cfgLines();
        EXPECT_EQ(Lines(lines.end() - last.size(), lines.end()), last) << keyword;
        // No extension channel: its line stays where it was.
        EXPECT_TRUE(sent.size() == 3 || box.cfg().find("\nHT_EXTCHA=0\nHT_LinkAdapt") != std::string::npos);
    }
}

TEST(SetMode, RefusesTurboAAndUnknownCodesAndTheLastCommandDecides) {
    kit::Entered box;
    std::string before = box.cfg();
    EXPECT_EQ(dot11SetMode("vap0", 0x50000), -1);  // turbo A: no record
    EXPECT_EQ(dot11SetMode("vap0", -1), -1);
    EXPECT_EQ(dot11SetMode(nullptr, 0x10000), -1);
    EXPECT_EQ(box.log(), "[8] dot11SetMode:2838: Invalid mode value : -1.\n");
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);

    // The last command decides; names that are no VAP's still reach the driver.
    box.failOn("WirelessMode=");
    EXPECT_EQ(dot11SetMode("wds0", 0x30000), 0);  // the bandwidth command succeeded
    EXPECT_EQ(box.calls().size(), 2u);
    EXPECT_NE(box.log().find("Interface called is not a VAP (wds0)"), std::string::npos);
    box.failOn("HtBw=");
    EXPECT_EQ(dot11SetMode("vap0", 0x30000), 7);
}

}  // namespace
