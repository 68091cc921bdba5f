// Security and access control: keyword tables, a profile's security, the
// access-list and WPS handlers.
#pragma once

#include <cstdint>

#include "main/keyword.h"

extern "C" {

// The database's security words and their codes.
extern const KeywordEntry cipherTbl[];        // "pairwiseCiphers": 2 TKIP, 4 CCMP, 1 WEP
extern const KeywordEntry securityModeTbl[];  // "security": 0x01 open, 0x02 WEP, 0x20 WPA, 0x40 WPA2
extern const KeywordEntry authMethodTbl[];    // "authMethods": 0x1 RADIUS, 0x2 PSK

// The word's code, 0 for a word in no row.
uint32_t dot11CipherStrToVal(const char* word);
int dot11SecurityStrToVal(const char* word);
int dot11AuthMethodStrToVal(const char* word);

// Applies the security of profile profileName (ssid: the profile's SSID) to
// VAP interface ifname, each setting written to the configuration file and
// then sent to the driver; ends at the first failing command.  0 when done
// (or when a value was missing after a command had run), -1 when nothing
// could be applied, else the failing command's status.
int dot11SecurityApply(const char* dbFile, const char* profileName, const char* ssid,
                       const char* ifname);

int dot11ACLTblHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols,
                       int nRows, char** priorRow);
int dot11WPSTblHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols,
                       int nRows, char** priorRow);

}  // extern "C"

