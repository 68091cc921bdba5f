// Line edits of the configuration file, as pure text: the list splice and the access-list toggle.
#include <gtest/gtest.h>

#include "cfgfile/cfgfile.h"

using wlan::cfg::aclToggle;
using wlan::cfg::spliceEntry;

TEST(SpliceEntry, ReplacesOnlyTheEntryAtPos) {
    const char* list = "EncrypType=NONE;NONE;NONE;NONE";
    for (auto [line, pos, want] :
         {std::tuple{list, 1, "EncrypType=AES;NONE;NONE;NONE"}, {list, 2, "EncrypType=NONE;AES;NONE;NONE"},
          {list, 4, "EncrypType=NONE;NONE;NONE;AES"}, {"EncrypType=", 1, "EncrypType=AES"},
          {"HideSSID=1;0", 4, "HideSSID=1;0;;AES"},  // a short list grows
          {"K=x=y;z", 2, "K=x=y;AES"}})             // entries start after the first '='
        EXPECT_EQ(spliceEntry(line, pos, "AES"), want) << line << " pos " << pos;
}

TEST(AclToggle, AddsAbsentAndRemovesPresentAddresses) {
    for (auto [line, mac, want] :
         {std::tuple{"AccessControlList0=", "AA", "AccessControlList0=AA"},
          {"AccessControlList0=AA", "BB", "AccessControlList0=AA;BB"},
          {"AccessControlList0=AA;BB", "AA", "AccessControlList0=BB"},
          {"AccessControlList0=AA;BB", "BB", "AccessControlList0=AA;"},
          {"AccessControlList0=AB;A", "A", "AccessControlList0=AB;"},    // whole entries only
          {"AccessControlList0=AB", "List0", "AccessControlList0=AB;List0"},
          {"AccessControlList0=AA;BB;CC", "AA;BB", "AccessControlList0=CC"},  // a run of entries
          {"AccessControlList0", "AA", "AccessControlList0"}})  // shorter than an empty list
        EXPECT_EQ(aclToggle(line, mac), want) << line << mac;
}
