// Whole edits of a fuzzed configuration file with fuzzed names and values.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

#include "cfgfile/cfgfile.h"
#include "sandbox.h"

namespace {

std::string cfg;

std::string slurp() {
    std::ifstream in(cfg, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string root = fuzzSandbox();
    mkdir((root + "/etc").c_str(), 0755);
    mkdir((root + "/etc/Wireless").c_str(), 0755);
    mkdir((root + "/etc/Wireless/RT2860AP").c_str(), 0755);
    setenv("WLANSYNC_ROOT", root.c_str(), 1);
    cfg = root + "/etc/Wireless/RT2860AP/RT2860AP.dat";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const char* keys[] = {"EncrypType", "SSID", "AccessPolicy", "WPAPSK", "Key2Str",
                          "AccessControlList", "Channel", "WdsList"};
    const char* key = in.PickValueInArray(keys);
    std::string ifname = "vap" + in.ConsumeBytesAsString(in.ConsumeIntegralInRange(0, 2));
    int intValue = in.ConsumeIntegralInRange(-2, 3);
    std::string text = in.ConsumeRandomLengthString(40);
    int slot = in.ConsumeIntegralInRange(-1, 6);
    std::ofstream(cfg, std::ios::binary) << in.ConsumeRemainingBytesAsString();

    std::string before = slurp();
    int rc = update_cfg_file(ifname.c_str(), key, intValue, text.c_str());
    std::string after = slurp();
    // A refused edit leaves the file as it was; a single key always ends it.
    if (rc != 0 && after != before) std::abort();
    if (rc == 0 && std::string(key) == "Channel") {
        std::string value = intValue >= 0 ? std::to_string(intValue) : text.c_str();
        std::string last = "Channel=" + value + "\n";
        if (after.size() < last.size() || after.compare(after.size() - last.size(), last.size(), last) != 0)
            std::abort();
    }
    dot11WdsAddMac(slot, text.c_str());
    return 0;
}
