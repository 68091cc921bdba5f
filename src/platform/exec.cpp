#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "platform/log.h"
#include "platform/platform.h"
#include "platform/replay.h"
#include "platform/signals.h"
#include "platform/trace.h"
#include "platform/wext.h"

extern char** environ;

namespace {

// A program that never returns (a wedged driver) must not hold the tool,
// and through its lock every later change, for ever.
constexpr int kDefaultDeadline = 30;
constexpr int kTimedOut = 128 + SIGKILL;  // what a killed program gives
constexpr long kNoPipeLook = 10000000L;   // ns between looks when no pipe could be made

// Names the program and its interface, never a value: pass phrases travel
// in these argument lists, and the first argument is never one.
constexpr wlan::LogMsg kTimedOutMsg{wlan::kLogError, "adpCmdExec", 61, "%s%s%s timed out after %d s\n"};

int deadlineSeconds() {
    const char* text = std::getenv("WLANSYNC_CMD_TIMEOUT");
    if (!text || !*text) return kDefaultDeadline;
    char* end = nullptr;
    long seconds = std::strtol(text, &end, 10);
    return *end == '\0' && seconds > 0 && seconds <= 86400 ? static_cast<int>(seconds) : kDefaultDeadline;
}

// Programs that ran past their deadline in this invocation: a wedged driver
// stays wedged, so their later calls fail at once instead of each waiting.
std::vector<std::string> hung;

bool isHung(const char* program) {
    for (const std::string& name : hung)
        if (name == program) return true;
    return false;
}

timespec operator-(const timespec& a, const timespec& b) {
    timespec d{a.tv_sec - b.tv_sec, a.tv_nsec - b.tv_nsec};
    if (d.tv_nsec < 0) {
        --d.tv_sec;
        d.tv_nsec += 1000000000L;
    }
    return d;
}

// Waits for pid until the deadline; false when it is still running then.
// The pipe is drained before each look, so a child that ends after it
// leaves a byte that ends the next poll at once.  Stop signals are let in
// only while polling.
bool waitUntil(pid_t pid, const timespec& deadline, const sigset_t& pollMask, int& status) {
    pollfd woken{wlan::signals::waitFd(), POLLIN, 0};
    for (;;) {
        wlan::signals::drain();
        pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid) return true;
        if (done < 0 && errno != EINTR) {
            status = 127 << 8;  // lost: report it as a program that could not run
            return true;
        }
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        timespec left = deadline - now;
        if (left.tv_sec < 0) return false;
        if (woken.fd < 0 && (left.tv_sec > 0 || left.tv_nsec > kNoPipeLook)) left = {0, kNoPipeLook};
        ppoll(&woken, 1, &left, &pollMask);
    }
}

int runBounded(const char* const argv[], const sigset_t& callerMask) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    // The tool prints nothing on success: the programs' chatter goes nowhere.
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    // Its own process group, so that whatever it started goes with it; the
    // caller's signal mask, not the blocked stop signals; none of the
    // tool's own dispositions.
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&attr, 0);
    posix_spawnattr_setsigmask(&attr, &callerMask);
    wlan::signals::spawnDefaults(attr);
    pid_t pid;
    int err = posix_spawnp(&pid, argv[0], &actions, &attr, const_cast<char* const*>(argv), environ);
    posix_spawnattr_destroy(&attr);
    posix_spawn_file_actions_destroy(&actions);
    if (err != 0) return 127;
    wlan::signals::running(pid);

    int seconds = deadlineSeconds();
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += seconds;
    sigset_t pollMask = callerMask;
    sigdelset(&pollMask, SIGCHLD);
    int status = 0;
    bool ended = waitUntil(pid, deadline, pollMask, status);
    wlan::signals::running(0);
    if (!ended) {
        kill(-pid, SIGKILL);
        kill(pid, SIGKILL);  // in case it left its group
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        hung.emplace_back(argv[0]);
        bool named = argv[1] && !std::strchr(argv[1], '=');
        wlan::logMsg(kTimedOutMsg, argv[0], named ? " " : "", named ? argv[1] : "", seconds);
        return kTimedOut;
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return 127;
}

}  // namespace

extern "C" int adpCmdExec(const char* const argv[]) {
    if (!argv || !argv[0]) return 127;
    if (wlan::replay::skip(argv)) return 0;  // a replay: recorded, counts as succeeded
    if (int rc; wlan::wext::run(argv, rc)) return rc;  // the driver asked directly: no process
    if (isHung(argv[0])) return kTimedOut;
    // Stop signals get in only while the program is waited for, so their
    // handler kills the group of a program that runs, never a reaped one.
    sigset_t callerMask;
    sigprocmask(SIG_BLOCK, &wlan::signals::stops(), &callerMask);
    int rc = runBounded(argv, callerMask);
    sigprocmask(SIG_SETMASK, &callerMask, nullptr);
    wlan::trace::run(argv, rc);
    return rc;
}
