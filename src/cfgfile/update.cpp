// One driver key of one VAP interface.
#include <cstring>
#include <string>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"

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

// Every line whose key holds needle replaced by one new line.
bool editLine(const std::string& needle, const std::string& newLine) {
    if (!takeLines({needle.c_str()}, nullptr)) return false;
    appendLine(newLine);
    return true;
}

// The address added to, or removed from, the VAP's access-control list.
bool editAccessControl(const std::string& listKey, const std::string& mac) {
    Lines taken;
    if (!takeLines({listKey.c_str()}, &taken)) return false;
    for (const std::string& line : taken) appendLine(aclToggle(line, mac));
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
        edited = concat_nd_modify_cfg_file(pos, key, value.c_str()) == 0;
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
    // A file that cannot be read is logged once, where it is read.
    return edited ? 0 : -1;
}
