// Whole edits of a fuzzed configuration file whose lines and values hold key
// names.  Checks what every edit must keep: the lines whose key part does
// not hold the text sought come first, unchanged and in order; after them
// only lines whose key part holds it, never an empty one; no line split or
// merged; a refused edit changes nothing; the same edit again leaves the
// file as it is, not even rewritten (but an access-list toggle, or a list
// entry holding ';', which splits).
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

#include "cfgfile/cfgfile.h"
#include "sandbox.h"
#include "text.h"

namespace {

std::string cfg;

std::string slurp() { return kit::readFile(cfg); }

bool keyHolds(const std::string& line, const std::string& sought) {
    return wlan::cfg::keyPart(line).find(sought) != std::string_view::npos;
}

constexpr const char* kWords[] = {"EncrypType", "WdsEncrypType", "SSID", "SSID1", "SSID2", "AccessPolicy0",
                                  "WPAPSK", "WPAPSK3", "Key2Str1", "AccessControlList", "AccessControlList1",
                                  "Channel", "Channel=", "WdsList", "EAPifname", "RADIUS_Key", "=", ";", " "};

// Text made of key names, separators and fuzz.
std::string words(FuzzedDataProvider& in) {
    std::string text;
    for (int n = in.ConsumeIntegralInRange(0, 4); n > 0; --n)
        text += in.ConsumeBool() ? in.PickValueInArray(kWords) : in.ConsumeRandomLengthString(6);
    return text;
}

// Key, an '=' most of the time, then a value: each may hold key names.
std::string file(FuzzedDataProvider& in) {
    std::string text;
    for (int n = in.ConsumeIntegralInRange(0, 12); n > 0; --n) {
        std::string line = words(in) + (in.ConsumeIntegralInRange(0, 4) ? "=" : "") + words(in);
        for (char& c : line)  // a text file: no NUL, one line
            if (c == '\n' || c == '\0') c = ' ';
        text += line + "\n";
    }
    return text;
}

// before -> after kept the property for sought; changed counts the lines the
// edit may write after the kept ones (-1: one per selected line).
void check(const std::string& before, const std::string& after, const std::string& sought, int changed) {
    std::vector<std::string> b = kit::lines(before), a = kit::lines(after);
    size_t kept = 0, selected = 0;
    for (const std::string& line : b) {
        if (keyHolds(line, sought)) {
            ++selected;
        } else if (kept >= a.size() || a[kept++] != line) {
            std::abort();
        }
    }
    size_t written = 0;
    for (size_t i = kept; i < a.size(); ++i) {
        if (!keyHolds(a[i], sought)) std::abort();  // an empty line too
        ++written;
    }
    if (written != (changed < 0 ? selected : static_cast<size_t>(changed))) std::abort();
}

// What the edit of key for VAP idx looks for, and how many lines it writes.
std::pair<std::string, int> sought(const std::string& key, int idx) {
    std::string n = std::to_string(idx + 1);
    if (key == "EncrypType") return {key, -1};
    if (key == "AccessPolicy") return {key + std::to_string(idx), 1};
    if (key == "SSID" || key == "WPAPSK" || key == "Key2Str") return {key + n, 1};
    if (key == "AccessControlList") return {key + std::to_string(idx), -1};
    return {key + "=", 1};
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string root = fuzzSandbox();
    std::filesystem::create_directories(root + "/etc/Wireless/RT2860AP");
    setenv("WLANSYNC_ROOT", root.c_str(), 1);
    cfg = root + "/etc/Wireless/RT2860AP/RT2860AP.dat";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const char* keys[] = {"EncrypType", "SSID", "AccessPolicy", "WPAPSK", "Key2Str", "AccessControlList", "Channel"};
    std::string key = in.PickValueInArray(keys);
    int idx = in.ConsumeIntegralInRange(0, 4);
    std::string ifname = "vap" + std::to_string(idx);
    int intValue = in.ConsumeIntegralInRange(-2, 3);
    std::string text = in.ConsumeBool() ? words(in) : in.ConsumeRandomLengthString(40);
    text = text.c_str();  // values reach the tool as C strings
    int slot = in.ConsumeIntegralInRange(0, 5);
    int what = in.ConsumeIntegralInRange(0, 2);
    wlan::cfg::discard();
    kit::writeFile(cfg, file(in));

    std::string before = slurp();
    std::pair<std::string, int> edit;
    auto apply = [&] {
        bool done;
        if (what == 0) {
            done = update_cfg_file(ifname.c_str(), key.c_str(), intValue, text.c_str()) == 0;
            edit = sought(key, idx);
        } else if (what == 1) {
            done = dot11WdsAddMac(slot, text.c_str()) == 0;
            edit = {"WdsList", -1};
        } else {
            done = !wlan::cfg::holdsLineEnd(text.c_str()) && wlan::cfg::replaceLines({"EAPifname"}, {"EAPifname=" + text});
            edit = {"EAPifname", 1};
        }
        return wlan::cfg::commit() && done;
    };
    bool done = apply();
    std::string after = slurp();
    if (!done && after != before) std::abort();  // a refused edit changes nothing
    if (!done) return 0;
    check(before, after, edit.first, edit.second);
    // An access list toggles; a list entry holding ';' becomes two entries.
    if ((what == 0 && key == "AccessControlList") || (edit.second < 0 && text.find(';') != std::string::npos))
        return 0;
    struct stat first, second;
    stat(cfg.c_str(), &first);
    apply();
    stat(cfg.c_str(), &second);
    if (slurp() != after || first.st_ino != second.st_ino) std::abort();
    return 0;
}
