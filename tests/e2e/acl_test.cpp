// The dot11ACL table, end to end through the tool.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "sandbox.h"

namespace {

const char* kSeed =
    "INSERT INTO dot11VAP (vapName, vapEnabled, profileName, radioList) VALUES ('ap1',1,'p','1');"
    "INSERT INTO dot11VAP (vapName, vapEnabled, profileName, radioList) VALUES ('ap2',1,'p','1');"
    "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, '');"
    "INSERT INTO dot11Interface VALUES ('vap1', 'ap2', 1, '');"
    "INSERT INTO dot11Interface VALUES ('vap3', 'ghost', 1, '');";

std::vector<std::string> prior(const std::string& vap, const std::string& mac) {
    return {"vapName", "macAddress", vap, mac};
}

TEST(AclTable, InsertAddsAndDeleteRemovesTheAddress) {
    kit::Sandbox box(kSeed);
    box.sql("INSERT INTO dot11ACL VALUES ('ap2', '00:11:22:33:44:55');");
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);
    EXPECT_EQ(box.calls(), std::vector<std::string>{box.iwpriv() + " vap1 set ACLAddEntry=00:11:22:33:44:55"});
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList1=00:11:22:33:44:55");

    box.sql("DELETE FROM dot11ACL;");
    EXPECT_EQ(box.change(9, "dot11ACL", 1, prior("ap2", "00:11:22:33:44:55")).status, 0);
    EXPECT_EQ(box.calls().back(), box.iwpriv() + " vap1 set ACLDelEntry=00:11:22:33:44:55");
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList1=");
    EXPECT_EQ(box.log(), "");
}

TEST(AclTable, RowsThatCannotBeAppliedChangeNothing) {
    kit::Sandbox box(kSeed);
    box.sql("INSERT INTO dot11ACL VALUES ('ap1', NULL);"       // 1: null address
            "INSERT INTO dot11ACL VALUES ('nobody', 'M1');"    // 2: no interface
            "INSERT INTO dot11ACL VALUES ('ap1', 'M3');");     // 3: updated, not inserted
    std::string before = box.cfg();
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 255);
    EXPECT_EQ(box.change(18, "dot11ACL", 2).status, 255);
    EXPECT_EQ(box.change(23, "dot11ACL", 3).status, 255);
    EXPECT_EQ(box.change(9, "dot11ACL", 4, prior("ghost", "M4")).status, 255);  // VAP gone
    EXPECT_EQ(box.change(9, "dot11ACL", 4, {"vapName", "ap1"}).status, 255);     // no address
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.cfg(), before);

    // Insertion does not ask dot11VAP: an interface row is enough.
    box.sql("INSERT INTO dot11ACL VALUES ('ghost', 'M5');");
    EXPECT_EQ(box.change(18, "dot11ACL", 4).status, 0);
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList3=M5");
}

TEST(AclTable, DriverFailureIsTheExitStatus) {
    kit::Sandbox box(kSeed);
    box.sql("INSERT INTO dot11ACL VALUES ('ap1', 'M1');");
    box.failOn("ACLAddEntry");
    box.failOn("ACLDelEntry");
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 7);
    EXPECT_EQ(box.log(), "");
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList0=M1");  // written before the command
    EXPECT_EQ(box.change(9, "dot11ACL", 1, prior("ap1", "M1")).status, 7);
    EXPECT_EQ(box.log(), "[8] dot11ACLTblHandler:1176: Failed to delete mac address.\n");
}

TEST(AclTable, ValuesNeverRunAnything) {
    for (std::string mac : {"x'; touch PWNED; '", "$(touch PWNED)", "`touch PWNED` \"q\" ;|&"}) {
        kit::Sandbox box(kSeed);
        size_t at;
        while ((at = mac.find("PWNED")) != std::string::npos) mac.replace(at, 5, box.root() + "/pwned");
        std::string quoted;
        for (char c : mac) quoted += c == '\'' ? std::string("''") : std::string(1, c);
        box.sql("INSERT INTO dot11ACL VALUES ('ap1', '" + quoted + "');");
        EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 0);
        auto record = kit::readFile(box.root() + "/calls.log");
        EXPECT_EQ(record, box.iwpriv() + "\tvap0\tset\tACLAddEntry=" + mac + "\n");
        EXPECT_EQ(box.cfgLines().back(), "AccessControlList0=" + mac);
        EXPECT_NE(access((box.root() + "/pwned").c_str(), F_OK), 0) << mac;
    }
}

TEST(AclTable, ConcurrentInsertionsAllReachTheFile) {
    kit::Sandbox box(kSeed);
    const int n = 20;
    for (int i = 1; i <= n; ++i)
        box.sql("INSERT INTO dot11ACL VALUES ('ap1', '00:00:00:00:00:" + std::to_string(10 + i) + "');");
    std::vector<std::thread> runs;
    std::vector<int> status(n);
    for (int i = 0; i < n; ++i)
        runs.emplace_back([&, i] { status[i] = box.change(18, "dot11ACL", i + 1).status; });
    for (auto& t : runs) t.join();
    for (int s : status) EXPECT_EQ(s, 0);
    std::string list;
    for (const auto& line : box.cfgLines())
        if (line.rfind("AccessControlList0=", 0) == 0) list = line;
    for (int i = 1; i <= n; ++i)
        EXPECT_NE(list.find("00:00:00:00:00:" + std::to_string(10 + i)), std::string::npos) << i;
}

}  // namespace
