// The platform layer's own records: a change that could not be made in
// full is said once, in the log's usual form.
#pragma once

#include "platform/log.h"

namespace wlan {

// The database itself failed (not a statement): its file, SQLite's message,
// then kNotApplied or kInPart.
inline constexpr LogMsg kDatabaseFailed{kLogError, "sqlite3QueryResGet", 212,
                                        "Cannot read database %s (%s): change %s.\n"};
inline constexpr char kNotApplied[] = "not applied";
inline constexpr char kInPart[] = "applied only in part";

// A program not found or not executable: its path.
inline constexpr LogMsg kCannotStart{kLogError, "adpCmdExec", 58,
                                     "Cannot start %s: not found or not executable.\n"};

}  // namespace wlan
