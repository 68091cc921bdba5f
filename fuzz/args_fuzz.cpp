// The command line: table name, operation, row id and prior row reach the
// dispatcher and the handlers' column lookups (a deletion runs the real
// handlers on its prior row).
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "main/dispatch.h"
#include "sandbox.h"

namespace {

std::string db;

int lookAround(const char*, int, int64_t, char** table, int nCols, int, char** prior) {
    for (const char* name : {"vapName", "macAddress", "radioNo", "x"}) {
        queryResValueGet(prior, nCols, 0, name);
        if (table) queryResValueGet(table, nCols, 0, name);
    }
    return 0;
}

const TblHandlerEntry kLookers[] = {{"dot11ACL", lookAround}, {"dot11VAP", lookAround},
                                    {nullptr, nullptr}};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string root = fuzzSandbox();
    std::string kit = WLANSYNC_HOSTKIT;
    std::system((kit + "/sandbox.sh " + root).c_str());
    setenv("WLANSYNC_ROOT", root.c_str(), 1);
    db = root + "/tmp/system.db";
    std::system(("sqlite3 " + db + " \"INSERT INTO dot11VAP (vapName) VALUES ('ap1');"
                 " INSERT INTO dot11ACL VALUES ('ap1', 'M');\"").c_str());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const int ops[] = {9, 18, 23, 0, -1};
    int opType = in.PickValueInArray(ops);
    int rowId = in.ConsumeIntegralInRange(-3, 3);
    bool real = in.ConsumeBool();
    std::string table = in.ConsumeRandomLengthString(24);
    std::vector<std::string> words;
    while (in.remaining_bytes() > 0 && words.size() < 16) words.push_back(in.ConsumeRandomLengthString(24));
    std::vector<char*> prior;
    for (auto& w : words) prior.push_back(w.data());
    prior.push_back(nullptr);
    // The real handlers run commands: only deletions, whose rows come from here.
    if (real && opType == 9)
        tblHandlerDispatch(db.c_str(), opType, table.c_str(), rowId, prior.data(), int(words.size()));
    else
        wlan::dispatchTo(kLookers, db.c_str(), opType, table.c_str(), rowId, prior.data(),
                         int(words.size()));
    return 0;
}
