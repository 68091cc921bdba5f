#include "platform/log.h"

#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <syslog.h>
#include <unistd.h>

#include "platform/platform.h"
#include "platform/replay.h"
#include "platform/sandbox.h"

namespace {

std::string vformat(const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int n = vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (n <= 0) return {};
    std::string text(static_cast<size_t>(n), '\0');
    vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

// One record is one line: the final line end goes, inner ones are escaped.
std::string oneLine(const std::string& message) {
    std::string out;
    size_t end = message.size();
    if (end > 0 && message[end - 1] == '\n') --end;
    for (size_t i = 0; i < end; ++i) {
        if (message[i] == '\n') out += "\\n";
        else out += message[i];
    }
    return out;
}

int vlog(int category, const char* function, int line, const char* format, va_list args) {
    if (wlan::replay::recording()) return 0;  // a replay logs nothing
    std::string message = oneLine(vformat(format, args));
    if (*wlan::sandboxRoot() == '\0') {
        static bool opened = false;
        if (!opened) {
            openlog("wlanSyncTool", 0, LOG_USER);
            opened = true;
        }
        int priority = category == wlan::kLogError ? LOG_ERR : LOG_INFO;
        syslog(priority, "%s:%d: %s", function, line, message.c_str());
        return 0;
    }
    std::string record = "[" + std::to_string(category) + "] " + function + ":" +
                         std::to_string(line) + ": " + message + "\n";
    std::string path = wlan::rootPath(wlan::kLogFile);
    int fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        wlan::makeParentDirs(path);
        fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    }
    if (fd < 0) return 0;
    // One write per record keeps concurrent tool processes' records whole.
    ssize_t written = write(fd, record.data(), record.size());
    (void)written;
    close(fd);
    return 0;
}

}  // namespace

extern "C" int adpModuleDebugSyslogProto(int, int category, const char* function, int line,
                                         int, int, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int rc = vlog(category, function, line, format, args);
    va_end(args);
    return rc;
}

namespace wlan {

int logMsg(LogMsg msg, ...) {
    va_list args;
    va_start(args, msg);
    int rc = vlog(msg.category, msg.function, msg.line, msg.format, args);
    va_end(args);
    return rc;
}

}  // namespace wlan
