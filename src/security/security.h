// Security and access control: keyword tables, the access-list handler.
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

int dot11ACLTblHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols,
                       int nRows, char** priorRow);

}  // extern "C"
