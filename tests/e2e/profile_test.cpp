// A profile's security applied to vap0, in-process as the VAP start calls it.
#include <gtest/gtest.h>

#include "sandbox.h"
#include "security/security.h"

namespace {

using Lines = std::vector<std::string>;

// Profile "it's" (SSID "Joe's net"): WPA2, PSK, CCMP; used by ap1 on vap0.
const char* kSeed =
    "INSERT INTO dot11Profile (profileName, ssid, security, wepAuth, defWepkeyIdx, wepkey0,"
    " wepkey2, authMethods, pskPassAscii, pairwiseCiphers, groupKeyUpdateInterval,"
    " pmksaLifetime, preAuthStatus) VALUES ('it''s', 'Joe''s net', 'WPA2', 'Open', 0, 'k0',"
    " 'k2', 'PSK', 'pass', 'CCMP', 3600, 20, 1);"
    "INSERT INTO dot11VAP (vapName, profileName, apIsolation, defACLPolicy)"
    " VALUES ('ap1', 'it''s', 1, 'Deny'), ('ap2', 'it''s', 0, 'Open');"
    "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, '');"
    "INSERT INTO dot11ACL VALUES ('ap1', 'M1'), ('ap1', 'M2'), ('ap2', 'N1');";

const Lines kWpa = {"RekeyMethod=TIME", "RekeyInterval=3600", "PMKCachePeriod=20"};
const Lines kPsk = {"AuthMode=WPA2PSK", "SSID=Joe's net", "WPAPSK=pass", "DefaultKeyID=2"};
const Lines kCommon = {"IEEE8021X=0", "PreAuth=1", "NoForwarding=1", "AccessPolicy=2",
                       "ACLAddEntry=M1", "ACLAddEntry=M2"};

Lines join(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Lines run(const kit::Sandbox& box, const char* ifname, int& status) {
    box.enter();
    status = dot11SecurityApply(box.db().c_str(), "it's", "Joe's net", ifname);
    Lines settings;
    for (const auto& call : box.calls()) settings.push_back(call.substr(box.iwpriv().size() + 10));
    return settings;
}

TEST(SecurityApply, ProfileWordsBecomeDriverSettingsInOrder) {
    struct Case {
        const char* sql;  // run on the seed
        Lines settings;
        int status;
        const char* cfgLine = nullptr;  // a line the file then holds
    } cases[] = {
        {"", join({kPsk, {"EncrypType=AES"}, kWpa, kCommon}), 0},
        {"UPDATE dot11Profile SET security='OPEN', preAuthStatus=-1;",
         join({{"AuthMode=OPEN", "EncrypType=NONE", "IEEE8021X=0", "PreAuth=-1"},
               Lines(kCommon.begin() + 2, kCommon.end())}), 0, "PreAuth=-1"},
        {"UPDATE dot11Profile SET security='WEP', wepAuth='Shared';",
         join({{"EncrypType=WEP", "AuthMode=SHARED", "DefaultKeyID=1", "Key1=k0"}, kCommon}), 0,
         "Key1Str1=k0"},
        {"UPDATE dot11Profile SET security='WEP', wepAuth='open', defWepkeyIdx=2;",
         join({{"EncrypType=WEP", "DefaultKeyID=3", "Key3=k2"}, kCommon}), 0},
        {"UPDATE dot11Profile SET security='WEP', defWepkeyIdx=4;",  // no column wepkey4
         {"EncrypType=WEP", "AuthMode=OPEN", "DefaultKeyID=5"}, 0},
        {"UPDATE dot11Profile SET security='WPA+WPA2', authMethods='RADIUS',"
         " pairwiseCiphers='TKIP+CCMP';",
         join({{"AuthMode=WPA1WPA2", "EncrypType=TKIPAES"}, kWpa, kCommon}), 0},
        {"UPDATE dot11Profile SET security='WEP+WPA', authMethods='PSK+RADIUS',"
         " pairwiseCiphers='OPEN';",
         join({{"AuthMode=WPAPSK"}, Lines(kPsk.begin() + 1, kPsk.end()), kWpa, kCommon}), 0},
        {"UPDATE dot11Profile SET pskPassAscii=NULL;", {"AuthMode=WPA2PSK", "SSID=Joe's net"}, 0},
        {"UPDATE dot11Profile SET authMethods=NULL;", {}, -1},
        {"UPDATE dot11Profile SET security='wpa2'; UPDATE dot11VAP SET defACLPolicy='deny';",
         join({Lines(kCommon.begin(), kCommon.begin() + 3), {"AccessPolicy=3"},
               Lines(kCommon.begin() + 4, kCommon.end())}), 0},
        {"UPDATE dot11Profile SET ssid='other';",  // no VAP row joins: ends at apIsolation
         join({kPsk, {"EncrypType=AES"}, kWpa, Lines(kCommon.begin(), kCommon.begin() + 2)}), 0},
        {"UPDATE dot11Profile SET security=NULL;", {}, -1},
        {"DELETE FROM dot11Profile;", {}, -1},
    };
    for (const Case& c : cases) {
        kit::Sandbox box(std::string(kSeed) + c.sql);
        int status;
        EXPECT_EQ(run(box, "vap0", status), c.settings) << c.sql;
        EXPECT_EQ(status, c.status) << c.sql;
        EXPECT_EQ(box.log(), "");
        if (c.cfgLine) {
            EXPECT_NE(box.cfg().find(std::string("\n") + c.cfgLine + "\n"), std::string::npos);
        }
    }
}

// Each setting is in the file before its command runs, and the first
// failing command ends the function with its status.
TEST(SecurityApply, WritesTheFileFirstAndStopsAtTheFirstFailure) {
    const std::pair<const char*, const char*> steps[] = {
        {"AuthMode=WPA2PSK", "AuthMode=WPA2PSK;OPEN;OPEN;OPEN"}, {"SSID=", "SSID1=Joe's net"},
        {"WPAPSK=", "WPAPSK1=pass"}, {"DefaultKeyID=", "DefaultKeyID=2;1;1;1"},
        {"EncrypType=", "EncrypType=AES;NONE;NONE;NONE"}, {"RekeyMethod=", "RekeyMethod=TIME"},
        {"RekeyInterval=", "RekeyInterval=3600"}, {"PMKCachePeriod=", "PMKCachePeriod=20"},
        {"IEEE8021X=", "IEEE8021X=0"}, {"PreAuth=", "PreAuth=1"},
        {"NoForwarding=", "NoForwarding=1"}, {"AccessPolicy=", "AccessPolicy0=2"},
        {"ACLAddEntry=M1", nullptr}};
    for (size_t i = 0; i < std::size(steps); ++i) {
        kit::Sandbox box(kSeed);
        std::string cfg = box.cfg();
        box.setCfg(cfg.replace(cfg.find("IEEE8021X=0"), 11, "IEEE8021X=1"));
        box.failOn(std::string("set ") + steps[i].first);
        int status;
        Lines settings = run(box, "vap0", status);
        EXPECT_EQ(status, 7) << steps[i].first;
        EXPECT_EQ(settings.back().rfind(steps[i].first, 0), 0u) << steps[i].first;
        Lines file = box.cfgLines();
        auto has = [&](const char* line) {
            return line && std::find(file.begin(), file.end(), line) != file.end();
        };
        EXPECT_EQ(has(steps[i].second), steps[i].second != nullptr) << steps[i].first;
        if (i + 1 < std::size(steps)) {
            EXPECT_FALSE(has(steps[i + 1].second)) << steps[i].first;
        }
    }
}

TEST(SecurityApply, LoadsTheListOfTheVapOnTheInterface) {
    kit::Sandbox box(kSeed);
    int status;
    EXPECT_EQ(run(box, "vap1", status).back(), "ACLAddEntry=N1");
    box.sql("DELETE FROM dot11Interface;");  // none runs there: the first VAP's list
    EXPECT_EQ(run(box, "vap1", status).back(), "ACLAddEntry=M2");
    EXPECT_EQ(status, 0);
}

}  // namespace
