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

// Statements.
inline constexpr char kBegin[] = "BEGIN";  // one snapshot for the whole replay
inline constexpr char kEnd[] = "COMMIT";
inline constexpr char kVaps[] = "SELECT vapName, vapEnabled FROM dot11VAP";
inline constexpr char kRadios[] = "SELECT radioNo, wdsEnabled FROM dot11Radio";
inline constexpr char kCountryRows[] = "SELECT rowid FROM dot11GlobalConfig ORDER BY rowid";
inline constexpr char kWpsRows[] = "SELECT rowid FROM dot11WPS ORDER BY rowid";
inline constexpr char kRow[] = "SELECT * from %s WHERE rowid=%d";
inline constexpr char kVapAcl[] = "SELECT macAddress FROM dot11ACL WHERE vapName='%q' ORDER BY rowid";
inline constexpr char kInterfaces[] = "SELECT interfaceName, vapName FROM dot11Interface";

// The access-control list's key, numbered by the VAP's digit.
inline constexpr char kAclKey[] = "AccessControlList";

// Records of --resync (standard error of --check): nothing was written.
// The database: SQLite's message ("no such table: dot11WPS" for a table the
// replay reads).
inline constexpr LogMsg kNoDatabase{kLogError, "resync", 101,
                                    "Cannot read database %s: %s: nothing written.\n"};
inline constexpr LogMsg kNoFile{kLogError, "resync", 103, "Cannot read %s: nothing written.\n"};
inline constexpr LogMsg kNoLock{kLogError, "resync", 104, "Cannot lock %s: nothing written.\n"};
// The file was written; bringing the driver in step failed at one step.
inline constexpr LogMsg kStepFailed{kLogError, "resync", 105,
                                    "Cannot bring %s%s in step: status %d.\n"};

}  // namespace wlan::resync
