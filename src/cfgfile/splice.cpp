// Per-interface value lists (Key=v1;v2;v3;v4, one value per VAP or WDS slot)
// and the access-control lists.
#include <cstring>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"
#include "platform/platform.h"

namespace wlan::cfg {

namespace {

// Lines that reach the extract file only because their key contains the
// edited one ("EncrypType", "AuthMode"); they are copied unchanged.
constexpr const char* kPassThrough[] = {"WdsEncrypType", "MeshEncrypType", "MeshAuthMode"};

bool passThrough(const std::string& line) {
    for (const char* prefix : kPassThrough)
        if (line.compare(0, std::strlen(prefix), prefix) == 0) return true;
    return false;
}

std::string withoutLineEnd(std::string line) {
    if (!line.empty() && line.back() == '\n') line.pop_back();
    return line;
}

// An empty access-control list, "AccessControlListN=" and its line end.
constexpr size_t kEmptyAclLine = 20;

}  // namespace

std::string spliceEntry(const std::string& line, int pos, const std::string& value) {
    size_t start = line.find('=');
    if (start == std::string::npos || pos < 1) return line;
    ++start;
    for (int entry = 1; entry < pos; ++entry) {
        size_t semi = line.find(';', start);
        if (semi == std::string::npos) {
            // Fewer entries than pos: the list grows by empty entries.
            std::string grown = line;
            if (!grown.empty() && grown.back() == '\n') grown.pop_back();
            return grown + std::string(static_cast<size_t>(pos - entry), ';') + value;
        }
        start = semi + 1;
    }
    std::string spliced = line.substr(0, start) + value;
    size_t semi = line.find(';', start);
    if (semi == std::string::npos) return spliced;  // last entry: old value and line end go
    spliced += line.substr(semi);
    if (spliced.back() == '\n') spliced.pop_back();
    return spliced;
}

EntryAt findEntry(const std::string& line, const std::string& text) {
    size_t eq = line.find('=');
    if (eq == std::string::npos) return {false, 0, 0};
    size_t stop = line.size() - (!line.empty() && line.back() == '\n' ? 1 : 0);
    // A text holding ';' matches a run of whole entries.
    for (size_t at = line.find(text, eq + 1); at != std::string::npos && at + text.size() <= stop;
         at = line.find(text, at + 1)) {
        size_t end = at + text.size();
        if ((at == eq + 1 || line[at - 1] == ';') && (end == stop || line[end] == ';'))
            return {true, at, end == stop ? std::string::npos : end};
    }
    return {false, 0, 0};
}

std::string aclToggle(const std::string& line, const std::string& mac) {
    EntryAt at = findEntry(line, mac);
    if (at.found) {
        // The entry and its separator go; the last entry leaves the ';' before it.
        return line.substr(0, at.begin) + (at.end == std::string::npos ? "" : line.substr(at.end + 1));
    }
    if (line.size() == kEmptyAclLine) return line.substr(0, kEmptyAclLine - 1) + mac;
    if (line.size() > kEmptyAclLine) return line.substr(0, line.size() - 1) + ";" + mac;
    return line;
}

}  // namespace wlan::cfg

using namespace wlan::cfg;

extern "C" int concat_nd_modify_cfg_file(int pos, const char* key, const char* value) {
    if (!key || !value) return -1;
    File extract(adpFileOpen(extractPath().c_str(), "r"));
    if (!extract) {
        wlan::logMsg(kNotFound, key);
        return -1;
    }
    // Every extracted line is kept, in its file order: the device re-creates
    // the rebuild file at the edited line and so loses pass-through lines that
    // stand before it.
    std::string rebuild = rebuildPath();
    std::string line;
    while (readLine(extract.get(), line)) {
        bool ok;
        if (passThrough(line)) ok = appendLine(rebuild.c_str(), line);  // keeps its own line end too
        else if (line.find('=') == std::string::npos) ok = appendLine(rebuild.c_str(), withoutLineEnd(line));
        else ok = appendLine(rebuild.c_str(), spliceEntry(line, pos, value));
        if (!ok) {
            rewriteFailed();
            return -1;
        }
    }
    return 0;
}
