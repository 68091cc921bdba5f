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
    const std::string tool = WLANSYNC_TOOL;
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
             {tool, {box.root() + "/missing.db", "18", "dot11ACL", "1"}, ""}}) {
        kit::Run run = box.tool(args, argv0);
        EXPECT_EQ(run.output, output) << argv0 << " " << args[2];
        EXPECT_EQ(run.status, 255) << argv0 << " " << args[2];
    }
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.log(), "");
    EXPECT_NE(access((box.root() + "/missing.db").c_str(), F_OK), 0);  // not created
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
    char* five[] = {(char*)"a", (char*)"b", (char*)"1", (char*)"2", (char*)"odd", nullptr};
    EXPECT_EQ(wlan::dispatchTo(handlers, box.db().c_str(), 9, "dot11ACL", 3, five, 5), 42);
    EXPECT_EQ(seen.table, nullptr);  // a deleted row is only on the command line: one row of name-value pairs
    EXPECT_EQ(seen.nCols, 2);
    EXPECT_EQ(seen.nRows, 1);
    EXPECT_TRUE(seen.oneConnection);

    char* noPrior[] = {nullptr};
    EXPECT_EQ(wlan::dispatchTo(handlers, box.db().c_str(), 0, "dot11ACL", -5, noPrior, 0), 42);
    EXPECT_EQ(seen.opType, 0);
    EXPECT_EQ(seen.rowId, -5);
    EXPECT_EQ(seen.nRows, 1);
    EXPECT_EQ(seen.mac, "M");
    EXPECT_EQ(seen.priorMac, nullptr);  // no prior row given: nothing read past the arguments
    EXPECT_TRUE(seen.oneConnection);  // the next invocation's connection, not the closed one
    EXPECT_EQ(wlanDbHandle, nullptr);  // closed after the handler
}

}  // namespace
