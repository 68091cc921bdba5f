// Line edits of the configuration file, as pure text.
#include <gtest/gtest.h>

#include "cfgfile/cfgfile.h"

using wlan::cfg::aclToggle;
using wlan::cfg::spliceEntry;

TEST(SpliceEntry, ReplacesOnlyTheEntryAtPos) {
    struct Case {
        const char* line;
        int pos;
        const char* value;
        const char* want;
    } cases[] = {
        {"EncrypType=NONE;NONE;NONE;NONE\n", 1, "AES", "EncrypType=AES;NONE;NONE;NONE"},
        {"EncrypType=NONE;NONE;NONE;NONE\n", 2, "AES", "EncrypType=NONE;AES;NONE;NONE"},
        {"EncrypType=NONE;NONE;NONE;NONE\n", 4, "AES", "EncrypType=NONE;NONE;NONE;AES"},
        {"EncrypType=\n", 1, "AES", "EncrypType=AES"},
        {"MaxStaNum=8;16;128;4\n", 3, "7", "MaxStaNum=8;16;7;4"},
        {"MaxStaNum=8;16;128;4\n", 2, "16", "MaxStaNum=8;16;128;4"},
        {"WdsList=a;b;c;d\n", 4, "00:00:00:00:00:00", "WdsList=a;b;c;00:00:00:00:00:00"},
        {"HideSSID=1;0\n", 4, "1", "HideSSID=1;0;;1"},  // a short list grows
        {"K=x=y;z\n", 2, "v", "K=x=y;v"},                // entries start after the first '='
    };
    for (const Case& c : cases)
        EXPECT_EQ(spliceEntry(c.line, c.pos, c.value), c.want) << c.line << " pos " << c.pos;
}

TEST(AclToggle, AddsAbsentAndRemovesPresentAddresses) {
    struct Case {
        const char* line;
        const char* mac;
        const char* want;
    } cases[] = {
        {"AccessControlList0=\n", "AA", "AccessControlList0=AA"},
        {"AccessControlList0=AA\n", "BB", "AccessControlList0=AA;BB"},
        {"AccessControlList0=AA;BB\n", "AA", "AccessControlList0=BB\n"},  // keeps its line end
        {"AccessControlList0=AA;BB\n", "BB", "AccessControlList0=AA;"},
        {"AccessControlList0=AA;BB;CC\n", "BB", "AccessControlList0=AA;CC\n"},
        {"AccessControlList0\n", "AA", "AccessControlList0\n"},  // shorter than an empty list
    };
    for (const Case& c : cases) EXPECT_EQ(aclToggle(c.line, c.mac), c.want) << c.line << c.mac;
}
