// Fixed paths and the development sandbox.  With WLANSYNC_ROOT unset every
// path is the device's own; with WLANSYNC_ROOT=R each fixed absolute path is
// taken below R, wherever it appears (command lines, messages, files).
#pragma once

#include <string>

namespace wlan {

// The tool's own fixed files.
inline constexpr char kLockFile[] = "/tmp/wlanSyncTool.lock";
inline constexpr char kLogFile[] = "/var/log/wlanSyncTool.log";
// Locked instead when the lock file cannot be used: the driver file's
// folder, always there where a change can be made.
inline constexpr char kLockFolder[] = "/etc/Wireless/RT2860AP";

// The sandbox root, or "" on the device.
const char* sandboxRoot();

// fixed, or fixed below the sandbox root.
std::string rootPath(const char* fixed);

// Creates the directories leading to path (mkdir -p of its parent).
void makeParentDirs(const std::string& path);

// Serialises tool processes: an exclusive lock on the lock file or, when
// that cannot be used, on kLockFolder, held from the call until the process
// ends and never inherited by the programs the tool starts.  False when
// neither could be had: then nothing may be changed.
bool holdProcessLock();

}  // namespace wlan
