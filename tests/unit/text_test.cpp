// Pure text: column lookup, the keyword tables and line edits of the configuration file.
#include <gtest/gtest.h>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "security/security.h"

namespace {

// A join of 3 columns and 2 rows; "profileName" stands twice.
char* kJoin[] = {(char*)"profileName", (char*)"ssid", (char*)"profileName",
                 (char*)"p1",          (char*)"net1", (char*)"vapSide1",
                 (char*)"p2",          nullptr,       (char*)"vapSide2"};

TEST(QueryResValueGet, FindsByNameInTheRowAsked) {
    // The leftmost of two equal names; SQL NULL; names are case-sensitive.
    for (auto [row, name, want] :
         {std::tuple<int, const char*, const char*>{0, "profileName", "p1"}, {1, "profileName", "p2"},
          {0, "ssid", "net1"}, {1, "ssid", nullptr}, {0, "missing", nullptr}, {0, "ProfileName", nullptr}})
        EXPECT_STREQ(queryResValueGet(kJoin, 3, row, name), want) << name << " row " << row;
    EXPECT_EQ(queryResValueGet(kJoin, 0, 0, "profileName"), nullptr);
}

int cipher(const char* word) { return (int)dot11CipherStrToVal(word); }

// The other words are met through the handlers that look them up.
TEST(Keywords, MapWholeWordsOnly) {
    for (auto [lookup, word, want] :
         {std::tuple{&cipher, "CCMP+TKIP", 6}, {&cipher, "CCMP ", 0}, {&dot11SecurityStrToVal, "WEP+WPA+WPA2", 0x62},
          {&dot11SecurityStrToVal, "", 0}, {&dot11AuthMethodStrToVal, "RADIUS+PSK", 3},
          {&dot11AuthMethodStrToVal, "psk", 0}, {&dot11ModeStrToVal, "b and g", 0x34000},
          {&dot11ModeStrToVal, "NG40+", -1}})
        EXPECT_EQ(lookup(word), want) << "'" << word << "'";
}

}  // namespace

using wlan::cfg::aclToggle;
using wlan::cfg::spliceEntry;

TEST(SpliceEntry, ReplacesOnlyTheEntryAtPos) {
    const char* list = "EncrypType=NONE;NONE;NONE;NONE\n";
    for (auto [line, pos, want] :
         {std::tuple{list, 1, "EncrypType=AES;NONE;NONE;NONE"}, {list, 2, "EncrypType=NONE;AES;NONE;NONE"},
          {list, 4, "EncrypType=NONE;NONE;NONE;AES"}, {"EncrypType=\n", 1, "EncrypType=AES"},
          {"HideSSID=1;0\n", 4, "HideSSID=1;0;;AES"},  // a short list grows
          {"K=x=y;z\n", 2, "K=x=y;AES"}})             // entries start after the first '='
        EXPECT_EQ(spliceEntry(line, pos, "AES"), want) << line << " pos " << pos;
}

TEST(AclToggle, AddsAbsentAndRemovesPresentAddresses) {
    for (auto [line, mac, want] :
         {std::tuple{"AccessControlList0=\n", "AA", "AccessControlList0=AA"},
          {"AccessControlList0=AA\n", "BB", "AccessControlList0=AA;BB"},
          {"AccessControlList0=AA;BB\n", "AA", "AccessControlList0=BB\n"},  // keeps its line end
          {"AccessControlList0=AA;BB\n", "BB", "AccessControlList0=AA;"},
          {"AccessControlList0=AB;A\n", "A", "AccessControlList0=AB;"},    // whole entries only
          {"AccessControlList0=AB\n", "List0", "AccessControlList0=AB;List0"},
          {"AccessControlList0=AA;BB;CC\n", "AA;BB", "AccessControlList0=CC\n"},  // a run of entries
          {"AccessControlList0\n", "AA", "AccessControlList0\n"}})  // shorter than an empty list
        EXPECT_EQ(aclToggle(line, mac), want) << line << mac;
}
