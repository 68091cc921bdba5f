// Column lookup and the keyword tables.
#include <gtest/gtest.h>

#include "driver/driver.h"
#include "main/dispatch.h"
#include "security/security.h"

namespace {

// A join of 3 columns and 2 rows; "profileName" stands twice.
char* kJoin[] = {(char*)"profileName", (char*)"ssid", (char*)"profileName",
                 (char*)"p1",          (char*)"net1", (char*)"vapSide1",
                 (char*)"p2",          nullptr,       (char*)"vapSide2"};

TEST(QueryResValueGet, FindsByNameInTheRowAsked) {
    struct Case {
        int row;
        const char* name;
        const char* want;
    } cases[] = {
        {0, "profileName", "p1"},  // leftmost of two equal names
        {1, "profileName", "p2"},
        {0, "ssid", "net1"},
        {1, "ssid", nullptr},  // SQL NULL
        {0, "missing", nullptr},
        {0, "ProfileName", nullptr},  // case-sensitive
    };
    for (const Case& c : cases) {
        const char* got = queryResValueGet(kJoin, 3, c.row, c.name);
        if (c.want) EXPECT_STREQ(got, c.want) << c.name << " row " << c.row;
        else EXPECT_EQ(got, nullptr) << c.name << " row " << c.row;
    }
    EXPECT_EQ(queryResValueGet(kJoin, 3, 1, "profileName"), kJoin[6]);  // entry nCols*(row+1)+c
    EXPECT_EQ(queryResValueGet(kJoin, 0, 0, "profileName"), nullptr);
}

TEST(Keywords, MapWholeWordsOnly) {
    struct Case {
        int (*lookup)(const char*);
        const char* word;
        int want;
    } cases[] = {
        {[](const char* w) { return (int)dot11CipherStrToVal(w); }, "TKIP+CCMP", 6},
        {[](const char* w) { return (int)dot11CipherStrToVal(w); }, "CCMP+TKIP", 6},
        {[](const char* w) { return (int)dot11CipherStrToVal(w); }, "WEP", 1},
        {[](const char* w) { return (int)dot11CipherStrToVal(w); }, "AES", 0},
        {[](const char* w) { return (int)dot11CipherStrToVal(w); }, "ccmp", 0},
        {[](const char* w) { return (int)dot11CipherStrToVal(w); }, "CCMP ", 0},
        {dot11SecurityStrToVal, "WEP+WPA", 0x22},
        {dot11SecurityStrToVal, "WEP+WPA+WPA2", 0x62},
        {dot11SecurityStrToVal, "WPA+WPA2", 0x60},
        {dot11SecurityStrToVal, "", 0},
        {dot11AuthMethodStrToVal, "RADIUS+PSK", 3},
        {dot11AuthMethodStrToVal, "RADIUS", 1},
        {dot11AuthMethodStrToVal, "psk", 0},
        {dot11ModeStrToVal, "ng40+", 0xb0000},
        {dot11ModeStrToVal, "na40-", 0x80000},
        {dot11ModeStrToVal, "b and g", 0x34000},
        {dot11ModeStrToVal, "NG40+", -1},
        {dot11ModeStrToVal, "ng 40+", -1},
        {dot11ModeStrToVal, "", -1},
    };
    for (const Case& c : cases) EXPECT_EQ(c.lookup(c.word), c.want) << "'" << c.word << "'";
}

}  // namespace
