// Invocation and dispatch.
#include <gtest/gtest.h>

#include "main/dispatch.h"
#include "sandbox.h"

namespace {

TEST(Invocation, ChecksTheNameItRunsUnder) {
    kit::Sandbox box;
    std::vector<std::string> args = {box.db(), "18", "dot11ACL", "1"};
    struct Case {
        std::string argv0;
        int status;
        std::string output;
    } cases[] = {
        {"wlanSyncTool", 255, ""},  // passes: no row 1, so -1
        {"/usr/bin/wlanSyncTool", 255, ""},
        {"wlanSyncTool2", 255, "Illegal invocation of wlanSyncTool (wlanSyncTool2)"},
        {"/x/WLANSYNCTOOL", 255, "Illegal invocation of wlanSyncTool (WLANSYNCTOOL)"},
        {"/x/wlanSyncTool/", 255, "Illegal invocation of wlanSyncTool ()"},
    };
    for (const Case& c : cases) EXPECT_EQ(box.tool(args, c.argv0).output, c.output) << c.argv0;
    kit::Run usage = box.tool({box.db(), "18", "dot11ACL"}, "/x/wlanSyncTool");
    EXPECT_EQ(usage.status, 255);
    EXPECT_EQ(usage.output, "Usage:/x/wlanSyncTool <DBFile> <opType> <tblName> <rowId>\n");
}

TEST(Invocation, RowsAndTablesThatCannotBeHandledGiveMinusOne) {
    kit::Sandbox box("INSERT INTO dot11ACL VALUES ('ap1', '00:00:00:00:00:01');");
    const std::vector<std::string> cases[] = {
        {box.db(), "18", "dot11ACL", "2"},                    // no such row
        {box.db(), "18", "dot11acl", "1"},                    // letter case
        {box.db(), "18", "vlan", "1"},                        // no handler
        {box.db(), "18", "dot11ACL WHERE 1=1; --", "1"},     // not a table name
        {box.root() + "/missing.db", "18", "dot11ACL", "1"},  // no database
    };
    for (const auto& args : cases) {
        kit::Run run = box.tool(args);
        EXPECT_EQ(run.status, 255) << args[2];
        EXPECT_EQ(run.output, "");
    }
    EXPECT_TRUE(box.calls().empty());
    EXPECT_EQ(box.log(), "");
    EXPECT_EQ(kit::readFile(box.root() + "/missing.db"), "");
}

struct Seen {
    int calls = 0;
    int opType = 0;
    int64_t rowId = 0;
    char** table = nullptr;
    int nCols = -1, nRows = -1;
    char** prior = nullptr;
    std::string firstValue;
    const char* priorMac = nullptr;
} seen;

int recordingHandler(const char*, int opType, int64_t rowId, char** table, int nCols, int nRows,
                     char** prior) {
    seen = {seen.calls + 1, opType, rowId, table, nCols, nRows, prior,
            table ? queryResValueGet(table, nCols, 0, "macAddress") : "",
            queryResValueGet(prior, nCols, 0, "macAddress")};
    return 42;
}

const TblHandlerEntry kTable[] = {{"dot11ACL", recordingHandler}, {nullptr, nullptr}};

TEST(Dispatch, HandsTheRowOrThePriorRowToTheHandler) {
    kit::Sandbox box("INSERT INTO dot11ACL (rowid, vapName, macAddress) VALUES (-5, 'ap1', 'M');");
    char* noPrior[] = {nullptr};
    seen = {};
    EXPECT_EQ(wlan::dispatchTo(kTable, box.db().c_str(), 9, "dot11ACL", 3, noPrior, 0), 42);
    EXPECT_EQ(seen.table, nullptr);
    EXPECT_EQ(seen.nCols, 0);
    EXPECT_EQ(seen.nRows, 1);
    EXPECT_EQ(seen.prior, noPrior);

    char* five[] = {(char*)"a", (char*)"b", (char*)"1", (char*)"2", (char*)"odd", nullptr};
    EXPECT_EQ(wlan::dispatchTo(kTable, box.db().c_str(), 9, "dot11ACL", 3, five, 5), 42);
    EXPECT_EQ(seen.nCols, 2);

    EXPECT_EQ(wlan::dispatchTo(kTable, box.db().c_str(), 0, "dot11ACL", -5, noPrior, 0), 42);
    EXPECT_EQ(seen.opType, 0);
    EXPECT_EQ(seen.rowId, -5);
    EXPECT_EQ(seen.nRows, 1);
    EXPECT_EQ(seen.firstValue, "M");
    EXPECT_EQ(seen.priorMac, nullptr);  // no prior row given: nothing read past the arguments
    EXPECT_EQ(seen.calls, 3);
    EXPECT_EQ(wlanDbHandle, nullptr);  // closed after the handler
}

}  // namespace
