// "killall <name>" made in-process where the tool speaks to the driver
// directly: stopping the 802.1X daemon was half the processes a day of
// changes started there.  Elsewhere killall runs as before.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include "platform/platform.h"
#include "platform/trace.h"
#include "platform/wext.h"

namespace {

constexpr long kLookNs = 10000000L;  // between looks at the processes signalled
constexpr int kTermLooks = 200;      // 2 s for SIGTERM to work
constexpr int kKillLooks = 100;      // 1 s more after SIGKILL
constexpr size_t kCommLength = 15;   // the kernel keeps this much of a process's name
constexpr int kMaxPids = 64;

int pids[kMaxPids];
int count;

// Whether process pid runs (a zombie has stopped: its parent reaps it) and,
// when name is given, its name as killall matches it (a script's own name,
// not its shell's) is name.
bool runs(pid_t pid, const char* name) {
    char path[32], stat[512];
    std::snprintf(path, sizeof path, "/proc/%d/stat", static_cast<int>(pid));
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    ssize_t n = read(fd, stat, sizeof stat - 1);
    close(fd);
    stat[n > 0 ? n : 0] = '\0';
    char* open = std::strchr(stat, '(');
    char* end = std::strrchr(stat, ')');
    if (!open || !end || end + 2 >= stat + n || end[2] == 'Z') return false;
    *end = '\0';  // a name may hold ')' too
    return !name || std::strncmp(open + 1, name, kCommLength) == 0;
}

// Waits up to looks looks until every process signalled has gone; those
// left stay in pids.
void waitGone(int looks) {
    for (int look = 0;; ++look) {
        int left = 0;
        for (int i = 0; i < count; ++i)
            if (runs(pids[i], nullptr)) pids[left++] = pids[i];
        count = left;
        if (count == 0 || look == looks) return;
        timespec pause{0, kLookNs};
        while (nanosleep(&pause, &pause) != 0 && errno == EINTR) {
        }
    }
}

}  // namespace

namespace wlan {

int processesNamed(const char* name, int* found, int max) {
    int n = 0;
    if (DIR* proc = opendir("/proc")) {
        // The tool itself is never named as a daemon it looks for.
        while (dirent* entry = readdir(proc)) {
            pid_t pid = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
            if (pid > 0 && n < max && runs(pid, name)) found[n++] = pid;
        }
        closedir(proc);
    }
    return n;
}

bool stopByName(const char* const argv[], int& status) {
    if (std::strcmp(argv[0], "killall") != 0 || !argv[1] || argv[2] || !wext::direct()) return false;
    count = processesNamed(argv[1], pids, kMaxPids);
    status = count == 0;  // killall's: 1 when it found none
    for (int i = 0; i < count; ++i) kill(pids[i], SIGTERM);
    waitGone(kTermLooks);
    for (int i = 0; i < count; ++i) kill(pids[i], SIGKILL);
    waitGone(kKillLooks);
    trace::request(argv[1], "stop", true, status);
    return true;
}

}  // namespace wlan
