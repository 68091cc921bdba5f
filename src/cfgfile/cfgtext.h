// The driver configuration file: its fixed paths and the records its edits log.
#pragma once

#include "platform/log.h"

namespace wlan::cfg {

// The driver reads its settings from this file at start.
inline constexpr char kCfgFile[] = "/etc/Wireless/RT2860AP/RT2860AP.dat";
// Temporary: the new configuration file while it is written, before it is
// renamed over the old one (lower-case "rt": another file).
inline constexpr char kRebuildFile[] = "/etc/Wireless/RT2860AP/rt2860AP1.dat";

inline constexpr char kWdsListKey[] = "WdsList";
inline constexpr char kEmptyWdsSlot[] = "00:00:00:00:00:00";

inline constexpr LogMsg kNotVap{kLogError, "update_cfg_file", 433,
                                "Interface called is not a VAP (%s).\n"};
inline constexpr LogMsg kInvalidIf{kLogError, "update_cfg_file", 441,
                                   "Invalid interface called (%s).\n"};

// Refusals: nothing is written and the file stays as it was.
inline constexpr LogMsg kValueLineEnd{kLogError, "update_cfg_file", 447,
                                      "Value of %s holds a line end: not written.\n"};
// The file could not be read or replaced: once per invocation.
inline constexpr LogMsg kCfgUnreadable{kLogError, "update_cfg_file", 452,
                                       "Cannot rewrite %s: left unchanged.\n"};
// The same for a symbolic link that leads nowhere (dangling, a loop) or to a
// file in a folder the tool cannot write: the link, then the last path reached.
inline constexpr LogMsg kCfgLinkUnusable{kLogError, "update_cfg_file", 453,
                                         "Cannot rewrite %s (a link to %s): left unchanged.\n"};
inline constexpr LogMsg kWdsLineEnd{kLogError, "dot11WdsAddMac", 3602,
                                    "Value of %s holds a line end: not written.\n"};

}  // namespace wlan::cfg
