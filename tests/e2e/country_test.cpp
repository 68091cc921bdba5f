// Country and regulatory region.
#include <gtest/gtest.h>

#include "radio/radio.h"
#include "sandbox.h"

namespace {

TEST(CountryTable, SampleRows) {
    auto fields = [](const CountryEntry& e) {
        return std::tuple(e.isoNumber, std::string(e.isoCode), std::string(e.name), e.supportA,
                          e.regionA, e.supportG, e.regionG);
    };
    std::pair<int, CountryEntry> cases[] = {
        {0, {0, "DB", "Debug", 1, 7, 1, 5}},     {46, {392, "JP", "JAPAN", 1, 9, 1, 1}},
        {86, {158, "TW", "TAIWAN", 1, 3, 1, 0}}, {94, {840, "US", "UNITED STATES", 1, 0, 1, 0}},
        {101, {999, "", "", 0, 0, 1, 1}},
    };
    EXPECT_EQ(std::size(allCountry), 102u);
    for (const auto& [i, want] : cases) EXPECT_EQ(fields(allCountry[i]), fields(want)) << i;
}

const char* kSeed =
    "INSERT INTO dot11Interface VALUES ('vap0', 'unused', 1, ''), ('vap1', 'ap1', 1, ''),"
    " ('vap2', 'ap2', 2, '');"
    "INSERT INTO dot11GlobalConfig VALUES ('840');";

TEST(GlobalConfigTable, CountrySetsRegionsAndCode) {
    struct Case {
        std::string setup;
        int opType, status;
        std::vector<std::string> commands;  // after "<iwpriv> vap1 set "
        std::string log = "", fail = "";
    } cases[] = {
        {"", 23, 0, {"CountryRegion=0", "CountryRegionABand=0", "CountryCode=US"}},
        {"UPDATE dot11GlobalConfig SET country='8';", 18, 0, {"CountryRegion=1", "CountryCode=AL"}},
        {"UPDATE dot11GlobalConfig SET country='999';", 23, 0, {"CountryRegion=1", "CountryCode="}},
        {"UPDATE dot11GlobalConfig SET country='abc';", 23, 0,
         {"CountryRegion=5", "CountryRegionABand=7", "CountryCode=DB"}},
        {"", 9, 0, {}},
        {"", 5, 255, {}},
        {"UPDATE dot11Interface SET vapName='unused';", 23, 0, {}},
        {"UPDATE dot11GlobalConfig SET country=NULL;", 23, 255, {}},
        {"", 23, 7, {"CountryRegion=0"}, "", "CountryRegion"},  // file first, then stop
        {"UPDATE dot11GlobalConfig SET country='4294967304';", 23, 255, {},
         "[8] dot11GlobalConfigTblHandler:3470: Unknown country code : 2147483647.\n"},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(kSeed);
        box.sql(c.setup);
        if (!c.fail.empty()) box.failOn(c.fail);
        std::string before = box.cfg();
        EXPECT_EQ(box.change(c.opType, "dot11GlobalConfig", 1).status, c.status) << c.setup;
        std::vector<std::string> want;
        for (const auto& cmd : c.commands) want.push_back(box.iwpriv() + " vap1 set " + cmd);
        EXPECT_EQ(box.calls(), want) << c.setup;
        if (want.empty()) EXPECT_EQ(box.cfg(), before) << c.setup;
        else EXPECT_EQ(box.cfgLines().back(), c.commands.front()) << c.setup;
        EXPECT_EQ(box.log(), c.log);
    }
}

}  // namespace
