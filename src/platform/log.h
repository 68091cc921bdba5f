// A log record as the device writes it: category, the logging operation's
// name, its fixed source line and the message format.  Each subsystem keeps
// its records together in one header.
#pragma once

namespace wlan {

inline constexpr int kLogError = 8;
inline constexpr int kLogNotice = 128;

struct LogMsg {
    int category;
    const char* function;
    int line;
    const char* format;
};

// adpModuleDebugSyslogProto(3, category, function, line, 0, 0, format, ...).
int logMsg(LogMsg msg, ...);  // by value: va_start may not name a reference

}  // namespace wlan
