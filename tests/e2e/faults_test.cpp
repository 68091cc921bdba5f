// Faults a device meets: a busy or unreadable database, a missing or failing
// program, an unusable configuration file or lock, long values, many writers.
// Every change lost is said once.
#include <chrono>
#include <sqlite3.h>
#include <thread>

#include "cfgfile/cfgfile.h"
#include "sandbox.h"

namespace {

std::string mac(int i) {
    char text[18];
    std::snprintf(text, sizeof text, "02:00:00:00:%02X:%02X", i / 256, i % 256);
    return text;
}

// The database held by another writer; the tool waits for it.
struct Writer {
    sqlite3* db = nullptr;
    explicit Writer(const kit::Sandbox& box) {
        sqlite3_open(box.db().c_str(), &db);
        sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    }
    ~Writer() { sqlite3_close(db); }
};

// n concurrent changes, each inserting its own ACL row for ap1 (or ap1 and
// ap2 by turns): all done, every address in the file, one driver call each.
// All started from this one thread, then waited for: a child forked from
// one of many threads of an emulated test program (qemu-arm) can deadlock
// inside the emulator before it ever runs the tool.
void concurrentWriters(const kit::Sandbox& box, int n, int vaps) {
    std::string rows;
    for (int i = 0; i < n; ++i)
        rows += "INSERT INTO dot11ACL VALUES ('ap" + std::to_string(1 + i % vaps) + "', '" + mac(i) + "');";
    box.sql(rows);
    std::vector<kit::Sandbox::Started> runs;
    for (int i = 0; i < n; ++i) runs.push_back(box.start(box.changeArgs(18, "dot11ACL", i + 2)));
    for (int i = 0; i < n; ++i) EXPECT_EQ(kit::Sandbox::finish(runs[i]).status, 0) << i;
    std::string cfg = box.cfg();
    for (int i = 0; i < n; ++i) EXPECT_NE(cfg.find(mac(i)), std::string::npos) << i;
    EXPECT_EQ(box.calls().size(), size_t(n));
}

TEST(Faults, DatabaseLockedByAnotherWriterIsWaitedFor) {
    kit::Sandbox box(kit::accessPointSeed());  // its ACL row: ap1's 00:0C:43:00:00:A
    Writer writer(box);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::seconds(2));
        sqlite3_exec(writer.db, "COMMIT", nullptr, nullptr, nullptr);
    });
    auto start = std::chrono::steady_clock::now();
    kit::Run run = box.change(18, "dot11ACL", 1);
    release.join();
    EXPECT_EQ(run.status, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList0=00:0C:43:00:00:A");
}

// Held past the busy handler's 10 s: the change is lost, and said so (its
// own CTest test, labelled "busy").
TEST(Faults, BusyDatabasePastTheHandlersLimitIsSaid) {
    kit::Sandbox box(kit::accessPointSeed());
    Writer writer(box);
    kit::Run run = box.change(18, "dot11ACL", 1);
    EXPECT_EQ(run.status, 255);
    EXPECT_EQ(box.log(), "[8] sqlite3QueryResGet:212: Cannot read database " + box.db() +
                             " (database is locked): change not applied.\n");
}

TEST(Faults, DatabaseThatCannotBeReadIsSaidOnce) {
    // {the database file's bytes ("" for none), SQLite's message}
    for (auto [bytes, message] : {std::pair{"", "unable to open database file"},
                                  {"not a database, just text\n", "file is not a database"}}) {
        kit::Sandbox box(kit::accessPointSeed());
        std::remove(box.db().c_str());
        if (*bytes) kit::writeFile(box.db(), bytes);
        EXPECT_EQ(box.change(23, "dot11VAP", 1).status, 255);
        EXPECT_EQ(box.log(), "[8] sqlite3QueryResGet:212: Cannot read database " + box.db() + " (" + message +
                                 "): change not applied.\n");
        EXPECT_EQ(kit::readFile(box.db()), bytes);  // a missing one is not created
        EXPECT_TRUE(box.calls().empty());
    }
}

TEST(Faults, ProgramMissingOrFailing) {
    kit::Sandbox box(kit::accessPointSeed());
    box.sql("INSERT INTO dot11ACL VALUES ('ap1', '" + mac(2) + "');");
    std::remove(box.iwpriv().c_str());
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 127);  // could not be started
    EXPECT_EQ(box.cfgLines().back(), "AccessControlList0=00:0C:43:00:00:A");  // written first
    kit::writeFile(box.iwpriv(), "#!/bin/sh\nkill -9 $$\n");
    chmod(box.iwpriv().c_str(), 0755);
    EXPECT_EQ(box.change(18, "dot11ACL", 2).status, 128 + 9);
    EXPECT_EQ(box.log(), "[8] adpCmdExec:58: Cannot start " + box.iwpriv() + ": not found or not executable.\n");

    // A missing daemon: stopped, never started again, and said once; its restart counts as done.
    std::remove(box.daemon().c_str());
    EXPECT_EQ(box.change(18, "radiusClient", 1).status, 0);
    EXPECT_EQ(kit::count(box.log(), "[8] adpCmdExec:58: Cannot start " + box.daemon() + ": not found"), 1u);
    EXPECT_EQ(box.calls().back(), "killall rt2860apd");
}

// Whatever stands where the lock file goes, concurrent changes are
// serialised on the driver file's folder: none lost, none in vain.
TEST(Faults, UnusableLockFileLosesNoChange) {
    kit::Sandbox box(kit::accessPointSeed());
    mkdir((box.root() + "/tmp/wlanSyncTool.lock").c_str(), 0755);
    concurrentWriters(box, 40, 1);
    EXPECT_EQ(box.log(), "");

    // No lock at all (the folder gone too): the change is refused, and said so.
    std::string folder = box.root() + "/etc/Wireless/RT2860AP";
    std::system(("rm -rf " + folder).c_str());
    kit::writeFile(folder, "");
    EXPECT_EQ(box.change(18, "dot11ACL", 1).status, 255);
    EXPECT_EQ(box.log(), "[8] main:48: Cannot lock " + box.root() +
                             "/tmp/wlanSyncTool.lock nor the driver file's folder: change not applied.\n");
    EXPECT_EQ(box.calls().size(), 40u);
}

// A file that cannot be replaced (its temporary name taken by a folder, as
// a full disk would refuse it) or read: one record for the whole change, the
// old file kept, and the change fails.
TEST(Faults, UnusableConfigurationFileIsNeverHalfWritten) {
    kit::Sandbox box(kit::accessPointSeed());
    std::string before = box.cfg();
    mkdir((box.root() + "/etc/Wireless/RT2860AP/rt2860AP1.dat").c_str(), 0755);
    kit::Run run = box.traced(23, "dot11VAP", 1);
    EXPECT_EQ(run.status, 255);
    EXPECT_EQ(box.cfg(), before);
    EXPECT_EQ(kit::count(box.log(), "update_cfg_file:452: Cannot rewrite"), 1u) << box.log();
    EXPECT_NE(run.errors.find(" -> failed: left unchanged\n"), std::string::npos) << run.errors;

    rmdir((box.root() + "/etc/Wireless/RT2860AP/rt2860AP1.dat").c_str());
    std::remove(box.cfgPath().c_str());  // a missing file is not created
    EXPECT_EQ(box.change(23, "dot11VAP", 1).status, 255);
    EXPECT_NE(access(box.cfgPath().c_str(), F_OK), 0);
    EXPECT_EQ(kit::count(box.log(), "update_cfg_file:452: Cannot rewrite"), 2u);
}

TEST(Faults, LongValuesAreWrittenWhole) {
    kit::Entered box;
    for (size_t n : {255u, 256u, 511u, 512u, 513u, 4096u}) {  // each list edit reads the last one's long line
        std::string ssid(n, 'x');
        EXPECT_EQ(update_cfg_file("vap1", "SSID", -1, ssid.c_str()), 0);
        EXPECT_EQ(box.cfgLines().back(), "SSID2=" + ssid);
        EXPECT_EQ(update_cfg_file("vap1", "AuthMode", -1, ssid.c_str()), 0);
        EXPECT_EQ(box.cfgLine("AuthMode="), "AuthMode=OPEN;" + ssid + ";OPEN;OPEN");
    }
}

TEST(Faults, ManyConcurrentWritersKeepEveryEdit) {  // and long access lists: 100 entries each
    kit::Sandbox box(kit::accessPointSeed());
    concurrentWriters(box, 200, 2);
}

}  // namespace
