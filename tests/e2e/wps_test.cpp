// The dot11WPS table, end to end through the tool.
#include <gtest/gtest.h>

#include "sandbox.h"

namespace {

const char* kSeed = "INSERT INTO dot11Interface VALUES ('vap2', 'ap3', 1, '');"
                    "INSERT INTO dot11WPS VALUES ('ap3', 1), ('ap3', 0), ('ap3', 2), ('ap3', -3),"
                    " ('nobody', 1), ('ap3', NULL);";

TEST(WpsTable, ModeThenStatusReachFileAndDriver) {
    struct Case {
        int op;
        long row;
        int mode;
        bool failing;  // the driver's outcome is not looked at
    } cases[] = {{18, 1, 7, false}, {23, 2, 0, true}, {23, 3, 2, false}, {18, 4, -3, true}};
    for (const Case& c : cases) {
        kit::Sandbox box(kSeed);
        if (c.failing) box.failOn("WscConf");
        EXPECT_EQ(box.change(c.op, "dot11WPS", c.row).status, 0);
        std::string mode = "WscConfMode=" + std::to_string(c.mode);
        EXPECT_EQ(box.calls(), (std::vector<std::string>{box.iwpriv() + " vap2 set " + mode,
                                                         box.iwpriv() + " vap2 set WscConfStatus=2"}));
        auto lines = box.cfgLines();
        EXPECT_EQ(std::vector<std::string>(lines.end() - 2, lines.end()),
                  (std::vector<std::string>{mode, "WscConfStatus=2"}));
    }
}

TEST(WpsTable, RowsThatCannotBeAppliedRunNothing) {
    kit::Sandbox box(kSeed);
    std::string before = box.cfg();
    EXPECT_EQ(box.change(9, "dot11WPS", 1, {"vapName", "wpsEnabled", "ap3", "1"}).status, 255);
    EXPECT_EQ(box.change(18, "dot11WPS", 6).status, 255);
    EXPECT_EQ(box.log(), "");
    EXPECT_EQ(box.change(18, "dot11WPS", 5).status, 255);
    EXPECT_EQ(box.log(), "[8] dot11WPSTblHandler:3379: No VAP table entry found corresponding "
                         "to the VAP name : nobody.\n");
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);
}

}  // namespace
