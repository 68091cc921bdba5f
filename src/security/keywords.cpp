#include "security/security.h"


extern "C" {

// "OPEN" and "WEP" are security words: a WDS link without a cipher word of
// its own is mapped from its security word with the same lookup.
const KeywordEntry cipherTbl[] = {
    {"TKIP", 2}, {"CCMP", 4}, {"TKIP+CCMP", 6}, {"CCMP+TKIP", 6},
    {"OPEN", 0}, {"WEP", 1},  {nullptr, 0},
};

const KeywordEntry securityModeTbl[] = {
    {"OPEN", 0x01},    {"WEP", 0x02},     {"WPA", 0x20},           {"WPA2", 0x40},
    {"WPA+WPA2", 0x60}, {"WEP+WPA", 0x22}, {"WEP+WPA+WPA2", 0x62}, {nullptr, 0},
};

const KeywordEntry authMethodTbl[] = {
    {"PSK", 2}, {"RADIUS", 1}, {"PSK+RADIUS", 3}, {"RADIUS+PSK", 3}, {nullptr, 0},
};

uint32_t dot11CipherStrToVal(const char* word) {
    return static_cast<uint32_t>(wlan::keywordLookup(cipherTbl, word));
}

int dot11SecurityStrToVal(const char* word) {
    return wlan::keywordLookup(securityModeTbl, word);
}

int dot11AuthMethodStrToVal(const char* word) {
    return wlan::keywordLookup(authMethodTbl, word);
}

}  // extern "C"

