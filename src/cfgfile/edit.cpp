// What every edit shares: where the files are, how a line's key is read.
#include <cstring>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"
#include "platform/sandbox.h"

namespace wlan::cfg {

std::string_view keyPart(std::string_view line) {
    size_t eq = line.find('=');
    return eq == std::string_view::npos ? line : line.substr(0, eq + 1);
}

std::string cfgPath() { return rootPath(kCfgFile); }
std::string rebuildPath() { return rootPath(kRebuildFile); }

bool holdsLineEnd(const char* value) {
    return value && (std::strchr(value, '\n') || std::strchr(value, '\r'));
}

}  // namespace wlan::cfg
