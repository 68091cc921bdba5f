// Checking and repairing the driver file: options, statements, the lines
// printed and the records logged.
#pragma once

#include "platform/log.h"

namespace wlan::resync {

inline constexpr char kVersionOption[] = "--version";
inline constexpr char kCheckOption[] = "--check";
inline constexpr char kResyncOption[] = "--resync";
// "wlanSyncTool <version> (<compiler> <version>, <target>)"
inline constexpr char kVersionLine[] = "wlanSyncTool %s (%s %s, %s)\n";

// One line per key out of step: the key (the line's key part without its
// '='), ": ", then how the file and the replay of the database differ.
// Every value is in double quotes with C escapes; a secret's as "***".
inline constexpr char kBoth[] = "%s: file %s, database %s\n";
inline constexpr char kFileOnly[] = "%s: in the file only\n";
inline constexpr char kDatabaseOnly[] = "%s: in the database only\n";
// Standard error of --check: the record --resync would log, so prefixed.
inline constexpr char kErrorPrefix[] = "wlanSyncTool: ";

// The tables the replay reads; without one of them it cannot tell.
inline constexpr const char* kNeededTables[] = {
    "dot11VAP",  "dot11Profile",   "dot11Interface", "dot11Radio",        "dot11Radio11n",
    "dot11Card", "dot11ACL",       "dot11WPS",       "dot11GlobalConfig", "dot11WDSPeers",
    "MulToUni",  "radiusClient",   "ipAddressTable", "vlan",              "vlanPortMgmt"};

// Statements.
inline constexpr char kTables[] = "SELECT name FROM sqlite_master WHERE type='table'";
inline constexpr char kBegin[] = "BEGIN";  // one snapshot for the whole replay
inline constexpr char kEnd[] = "COMMIT";
inline constexpr char kVaps[] = "SELECT vapName, vapEnabled FROM dot11VAP";
inline constexpr char kRadios[] = "SELECT radioNo, wdsEnabled FROM dot11Radio";
inline constexpr char kRowIds[] = "SELECT rowid FROM %s ORDER BY rowid";
inline constexpr char kRow[] = "SELECT * from %s WHERE rowid=%d";
inline constexpr char kVapAcl[] = "SELECT rowid FROM dot11ACL WHERE vapName='%q' ORDER BY rowid";
inline constexpr char kInterfaces[] = "SELECT interfaceName, vapName FROM dot11Interface";

// The access-control list's key, numbered by the VAP's digit.
inline constexpr char kAclKey[] = "AccessControlList";

// Records of --resync (standard error of --check): nothing was written.
inline constexpr LogMsg kNoDatabase{kLogError, "resync", 101,
                                    "Cannot read database %s: %s: nothing written.\n"};
inline constexpr LogMsg kNoTable{kLogError, "resync", 102,
                                 "Table %s missing in %s: nothing written.\n"};
inline constexpr LogMsg kNoFile{kLogError, "resync", 103, "Cannot read %s: nothing written.\n"};
inline constexpr LogMsg kNoLock{kLogError, "resync", 104, "Cannot lock %s: nothing written.\n"};
// The file was written; bringing the driver in step failed at one step.
inline constexpr LogMsg kStepFailed{kLogError, "resync", 105,
                                    "Cannot bring %s%s in step: status %d.\n"};

}  // namespace wlan::resync
