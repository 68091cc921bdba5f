// Invocation and dispatch.
#include "main/dispatch.h"
#include "platform/platform.h"
#include "sandbox.h"

namespace {

TEST(Invocation, NamesArgumentsAndTablesThatCannotBeHandledGiveMinusOne) {
    kit::Sandbox box("INSERT INTO dot11ACL VALUES ('ap1', '00:00:00:00:00:01');"
                     "INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, '');");
    using Args = std::vector<std::string>;
    const Args noRow = {box.db(), "18", "dot11ACL", "2"};
    const std::string tool = WLANSYNC_TOOL, empty = box.root() + "/empty.db";
    kit::writeFile(empty, "");  // a database with no tables
    // {argv0, arguments, output}
    for (const auto& [argv0, args, output] : std::vector<std::tuple<std::string, Args, std::string>>{
             {"wlanSyncTool", noRow, ""},  // the name passes: no such row
             {"wlanSyncTool2", noRow, "Illegal invocation of wlanSyncTool (wlanSyncTool2)"},
             {"/x/WLANSYNCTOOL", noRow, "Illegal invocation of wlanSyncTool (WLANSYNCTOOL)"},
             {"/x/wlanSyncTool/", noRow, "Illegal invocation of wlanSyncTool ()"},
             {"/x/wlanSyncTool", {box.db(), "18", "dot11ACL"},
              "Usage:/x/wlanSyncTool <DBFile> <opType> <tblName> <rowId>\n"},
             {tool, {box.db(), "18", "dot11acl", "1"}, ""},                  // letter case
             {tool, {box.db(), "18", "vlan", "1"}, ""},                      // no handler
             {tool, {box.db(), "18", "dot11ACL WHERE 1=1; --", "1"}, ""},   // not a table name
             {tool, {box.db(), "4294967314", "dot11ACL", "1"}, ""},  // held to the int range: no insert
             {tool, {box.db(), "18", "dot11ACL", "4294967297"}, ""},  // nor row 1
             {tool, {empty, "18", "dot11ACL", "1"}, ""},
             {tool, {"--check"}, "Usage:" + tool + " <DBFile> <opType> <tblName> <rowId>\n"},
             {tool, {"--version", "x"}, "Usage:" + tool + " <DBFile> <opType> <tblName> <rowId>\n"},
             {"/x/wlanSyncToo", {"--check", box.db()}, "Illegal invocation of wlanSyncTool (wlanSyncToo)"}}) {
        kit::Run run = box.tool(args, argv0);
        EXPECT_EQ(std::tuple(run.status, run.output), std::tuple(255, output)) << argv0 << testing::PrintToString(args);
    }
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.log(), "");  // a row gone, a table missing or without handler: normal, silent
}

// What the handler was given, and whether a query naming the database file
// ran on the dispatcher's connection (a temporary table is seen only there).
struct Seen { int opType, nCols, nRows; int64_t rowId; char** table; std::string mac; const char* priorMac; bool oneConnection; } seen;

int recordingHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols, int nRows, char** prior) {
    sqlite3_exec(wlanDbHandle, "CREATE TEMP TABLE here (x)", nullptr, nullptr, nullptr);
    int cols = 0, rows = 0;
    char** here = sqlite3QueryResGet(nullptr, dbFile, "SELECT * FROM here", &cols, &rows);
    sqlite3_free_table(here);
    seen = {opType, nCols, nRows, rowId, table, table ? queryResValueGet(table, nCols, 0, "macAddress") : "",
            queryResValueGet(prior, nCols, 0, "macAddress"), here != nullptr};
    return 42;
}

TEST(Dispatch, HandsTheRowOrThePriorRowToTheHandler) {
    kit::Sandbox box("INSERT INTO dot11ACL (rowid, vapName, macAddress) VALUES (-5, 'ap1', 'M');");
    const TblHandlerEntry handlers[] = {{"dot11ACL", recordingHandler}, {nullptr, nullptr}};
    // A deleted row is only on the command line: one row of name-value pairs (the odd word left out).
    char* five[] = {(char*)"a", (char*)"b", (char*)"1", (char*)"2", (char*)"odd", nullptr};
    EXPECT_EQ(wlan::dispatchTo(handlers, box.db().c_str(), 9, "dot11ACL", 3, five, 5), 42);
    EXPECT_EQ(std::tuple(seen.table, seen.nCols, seen.nRows, seen.oneConnection), std::tuple(nullptr, 2, 1, true));

    // No prior row given: nothing is read past the arguments.  The query runs on
    // this invocation's connection, not the closed one, which is closed after the handler.
    char* noPrior[] = {nullptr};
    EXPECT_EQ(wlan::dispatchTo(handlers, box.db().c_str(), 0, "dot11ACL", -5, noPrior, 0), 42);
    EXPECT_EQ(std::tuple(seen.opType, seen.rowId, seen.nRows, seen.mac), std::tuple(0, -5, 1, "M"));
    EXPECT_EQ(std::tuple(seen.priorMac, seen.oneConnection, wlanDbHandle), std::tuple(nullptr, true, nullptr));
}

// A database that fails once the handler has begun: the change was applied
// in part, and that is said once, however many queries fail.
std::string unreadable;
int failingHandler(const char*, int, int64_t, char**, int, int, char**) {
    int cols, rows;
    for (int i = 0; i < 2; ++i)
        sqlite3_free_table(sqlite3QueryResGet(nullptr, unreadable.c_str(), "SELECT * FROM dot11ACL", &cols, &rows));
    return -1;
}

TEST(Dispatch, DatabaseFailureInTheHandlerIsAChangeAppliedInPart) {
    kit::Entered box("INSERT INTO dot11ACL VALUES ('ap1', 'M');");
    unreadable = box.root() + "/text.db";
    kit::writeFile(unreadable, "not a database, just text\n");
    const TblHandlerEntry handlers[] = {{"dot11ACL", failingHandler}, {nullptr, nullptr}};
    EXPECT_EQ(wlan::dispatchTo(handlers, box.db().c_str(), 18, "dot11ACL", 1, nullptr, 0), -1);
    EXPECT_EQ(box.log(), "[8] sqlite3QueryResGet:212: Cannot read database " + unreadable +
                             " (file is not a database): change applied only in part.\n");
}

}  // namespace
