// One driver key of one VAP interface.
#include <cstring>
#include <string>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"
#include "platform/platform.h"

using namespace wlan::cfg;

namespace {

enum class KeyClass { List, NumberedPos, NumberedIdx, AccessControl, Single };

struct KeyRule {
    const char* key;
    bool prefix;  // compare only the rule's own length
    KeyClass keyClass;
};

// Tested in order, first match wins.
constexpr KeyRule kKeyRules[] = {
    {"EncrypType", false, KeyClass::List},
    {"DefaultKeyID", false, KeyClass::List},
    {"HideSSID", false, KeyClass::List},
    {"AuthMode", false, KeyClass::List},
    {"WmmCapable", false, KeyClass::List},
    {"MaxStaNum", false, KeyClass::List},
    {"SSID", false, KeyClass::NumberedPos},
    {"AccessPolicy", true, KeyClass::NumberedIdx},
    {"WPAPSK", false, KeyClass::NumberedPos},
    {"Key", true, KeyClass::NumberedPos},
    {"AccessControlList", true, KeyClass::AccessControl},
};

KeyClass classify(const char* key) {
    for (const KeyRule& rule : kKeyRules) {
        bool match = rule.prefix ? std::strncmp(key, rule.key, std::strlen(rule.key)) == 0
                                 : std::strcmp(key, rule.key) == 0;
        if (match) return rule.keyClass;
    }
    return KeyClass::Single;
}

// The list line of the key, entry pos replaced.
bool editList(const char* key, int pos, const std::string& value) {
    return splitCfg(key, true) && concat_nd_modify_cfg_file(pos, key, value.c_str()) == 0;
}

// Every line whose key holds needle replaced by one new line.
bool editLine(const std::string& needle, const std::string& newLine) {
    if (!splitCfg(needle.c_str(), false)) return false;
    return appendLine(rebuildPath().c_str(), newLine) || rewriteFailed();
}

// The address added to, or removed from, the VAP's access-control list.
bool editAccessControl(const std::string& listKey, const std::string& mac) {
    if (!splitCfg(listKey.c_str(), true)) return false;
    std::string rebuild = rebuildPath();
    File in(adpFileOpen(extractPath().c_str(), "r"));
    if (!in) return false;  // its lines could not be rebuilt: no move
    std::string line;
    while (readLine(in.get(), line))
        if (!appendLine(rebuild.c_str(), aclToggle(line, mac))) return rewriteFailed();
    return true;
}

}  // namespace

extern "C" int update_cfg_file(const char* ifname, const char* key, int intValue,
                               const char* textValue) {
    if (!ifname || !key) return -1;
    if (std::strncmp(ifname, "vap", 3) != 0) {
        wlan::logMsg(kNotVap, ifname);
        return -1;
    }
    // The digit is the VAP's place in the per-VAP lists: vap0..vap3 only.
    char digit = ifname[3];
    if (digit < '0' || digit > '3') {
        wlan::logMsg(kInvalidIf, ifname);
        return -1;
    }
    int idx = digit - '0';
    int pos = idx + 1;

    // A negative number without a text is written as the number.
    std::string value = intValue >= 0 || !textValue ? std::to_string(intValue) : textValue;
    if (holdsLineEnd(value.c_str())) {
        wlan::logMsg(kValueLineEnd, key);
        return -1;
    }

    bool edited = false;
    switch (classify(key)) {
    case KeyClass::List:
        edited = editList(key, pos, value);
        break;
    case KeyClass::NumberedPos:
        edited = editLine(key + std::to_string(pos), key + std::to_string(pos) + "=" + value);
        break;
    case KeyClass::NumberedIdx:
        edited = editLine(key + std::to_string(idx), key + std::to_string(idx) + "=" + value);
        break;
    case KeyClass::AccessControl:
        edited = editAccessControl(key + std::to_string(idx), value);
        break;
    case KeyClass::Single:
        edited = editLine(std::string(key) + "=", std::string(key) + "=" + value);
        break;
    }
    // Failures are logged where they happen; the file stays as it was.
    return edited && commitCfg() ? 0 : -1;
}
