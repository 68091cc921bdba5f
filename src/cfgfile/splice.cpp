// Per-interface value lists (Key=v1;v2;v3;v4, one value per VAP or WDS slot)
// and the access-control lists.
#include <cstring>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"

namespace wlan::cfg {

namespace {

// Lines taken with a list only because their key contains the edited one
// ("EncrypType", "AuthMode"); they are carried along unchanged.
constexpr const char* kPassThrough[] = {"WdsEncrypType", "MeshEncrypType", "MeshAuthMode"};

bool passThrough(const std::string& line) {
    for (const char* prefix : kPassThrough)
        if (line.compare(0, std::strlen(prefix), prefix) == 0) return true;
    return false;
}

// An empty access-control list, "AccessControlListN=".
constexpr size_t kEmptyAclLine = 19;

}  // namespace

std::string spliceEntry(const std::string& line, int pos, const std::string& value) {
    size_t start = line.find('=');
    if (start == std::string::npos || pos < 1) return line;
    ++start;
    for (int entry = 1; entry < pos; ++entry) {
        size_t semi = line.find(';', start);
        if (semi == std::string::npos) {
            // Fewer entries than pos: the list grows by empty entries.
            return line + std::string(static_cast<size_t>(pos - entry), ';') + value;
        }
        start = semi + 1;
    }
    std::string spliced = line.substr(0, start) + value;
    size_t semi = line.find(';', start);
    if (semi == std::string::npos) return spliced;  // last entry: the old value goes
    return spliced + line.substr(semi);
}

EntryAt findEntry(const std::string& line, const std::string& text) {
    size_t eq = line.find('=');
    if (eq == std::string::npos) return {false, 0, 0};
    // A text holding ';' matches a run of whole entries.
    for (size_t at = line.find(text, eq + 1); at != std::string::npos; at = line.find(text, at + 1)) {
        size_t end = at + text.size();
        if ((at == eq + 1 || line[at - 1] == ';') && (end == line.size() || line[end] == ';'))
            return {true, at, end == line.size() ? std::string::npos : end};
    }
    return {false, 0, 0};
}

std::string aclToggle(const std::string& line, const std::string& mac) {
    EntryAt at = findEntry(line, mac);
    if (at.found) {
        // The entry and its separator go; the last entry leaves the ';' before it.
        return line.substr(0, at.begin) + (at.end == std::string::npos ? "" : line.substr(at.end + 1));
    }
    if (line.size() == kEmptyAclLine) return line + mac;
    if (line.size() > kEmptyAclLine) return line + ";" + mac;
    return line;
}

}  // namespace wlan::cfg

using namespace wlan::cfg;

extern "C" int concat_nd_modify_cfg_file(int pos, const char* key, const char* value) {
    if (!key || !value) return -1;
    Lines taken;
    if (!takeLines({key}, &taken)) return -1;
    // Every line taken goes back, in its file order (the device loses the
    // carried-along lines that stand before the key's own line), each with
    // one line end (the device's echo added an empty line after each).
    for (const std::string& line : taken) {
        if (passThrough(line) || line.find('=') == std::string::npos) appendLine(line);
        else appendLine(spliceEntry(line, pos, value));
    }
    return 0;
}
