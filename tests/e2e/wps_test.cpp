// The dot11WPS table, end to end through the tool.
#include <gtest/gtest.h>

#include "sandbox.h"

namespace {

const char* kSeed = "INSERT INTO dot11Interface VALUES ('vap2', 'ap3', 1, '');"
                    "INSERT INTO dot11WPS VALUES ('ap3', 1), ('ap3', 0), ('ap3', 2), ('ap3', -3),"
                    " ('nobody', 1), ('ap3', NULL);";

TEST(WpsTable, ModeThenStatusReachFileAndDriver) {
    // {opType, row, WscConfMode}; a refused command changes nothing.
    for (auto [op, row, mode] : {std::tuple{18, 1, 7}, {23, 2, 0}, {23, 3, 2}, {18, 4, -3}}) {
        kit::Sandbox box(kSeed);
        if (row % 2 == 0) box.failOn("WscConf");
        EXPECT_EQ(box.change(op, "dot11WPS", row).status, 0);
        std::string set = box.iwpriv() + " vap2 set ", modeLine = "WscConfMode=" + std::to_string(mode);
        EXPECT_EQ(box.calls(), (std::vector<std::string>{set + modeLine, set + "WscConfStatus=2"}));
        EXPECT_TRUE(box.cfg().ends_with(modeLine + "\nWscConfStatus=2\n")) << mode;
    }
    kit::Sandbox box(kSeed);  // deleted, no value, no interface: nothing runs
    std::string before = box.cfg();
    EXPECT_EQ(box.change(9, "dot11WPS", 1, {"vapName", "wpsEnabled", "ap3", "1"}).status, 255);
    EXPECT_EQ(box.change(18, "dot11WPS", 6).status, 255);
    EXPECT_EQ(box.log(), "");
    EXPECT_EQ(box.change(18, "dot11WPS", 5).status, 255);
    EXPECT_EQ(box.log(), "[8] dot11WPSTblHandler:3379: No VAP table entry found corresponding to the VAP name : nobody.\n");
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);
}

}  // namespace
