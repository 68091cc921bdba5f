// Line edits of the configuration file: list splice and access-list toggle.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

#include "cfgfile/cfgfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    int pos = in.ConsumeIntegralInRange(-2, 6);
    std::string value = in.ConsumeRandomLengthString(64);
    std::string line = in.ConsumeRemainingBytesAsString();
    if (line.empty() || line.back() != '\n') line += '\n';

    std::string spliced = wlan::cfg::spliceEntry(line, pos, value);
    size_t eq = line.find('=');
    if (eq != std::string::npos && pos >= 1) {
        // The key is kept and the value lands in the line.
        if (spliced.compare(0, eq + 1, line, 0, eq + 1) != 0) std::abort();
        if (spliced.find(value) == std::string::npos) std::abort();
    }
    std::string toggled = wlan::cfg::aclToggle(line, value);
    if (toggled.size() > line.size() + value.size() + 1) std::abort();
    return 0;
}
