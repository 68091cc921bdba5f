// VAP lifecycle: starting and stopping VAPs by interface, by name and by
// profile, and the handlers of the profile, VAP, interface and MulToUni tables.
#pragma once

#include <cstdint>
#include <sqlite3.h>

extern "C" {

// One VAP on one interface of one radio: start (start non-zero) or stop.
int startStopVAPInstance(const char* dbFile, const char* vapName, const char* ifname,
                         int radioNo, int start);

// A VAP on every interface it runs on.
int startStopVAP(const char* dbFile, const char* vapName, int start);

// The interface's MAC address as "XX:XX:XX:XX:XX:XX" (out holds 18 bytes).
int dot11MacAddrGet(const char* ifname, char* out);
// Stores it into the macAddress column of table for the interface.
int dot11MacAddrUpdate(sqlite3* db, const char* table, const char* ifname);

// IGMP snooping (multicast to unicast) on one interface.
int dot11SetMulToUnivalue(const char* ifname, int value);

int startStopVAPUsingProfile(const char* dbFile, int opType, int64_t rowId, char** table,
                             int nCols, int nRows, char** priorRow);
int dot11VAPTblHandler(const char* dbFile, int opType, int64_t rowId, char** table, int nCols,
                       int nRows, char** priorRow);
int dot11InterfaceTblHandler(const char* dbFile, int opType, int64_t rowId, char** table,
                             int nCols, int nRows, char** priorRow);
int multicastEnableDisable(const char* dbFile, int opType, int64_t rowId, char** table,
                           int nCols, int nRows, char** priorRow);

}  // extern "C"
