#include "platform/signals.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace wlan::signals {

namespace {

constexpr int kStops[] = {SIGTERM, SIGINT, SIGHUP};

volatile sig_atomic_t group = 0;
int pipeFds[2] = {-1, -1};

sigset_t stopSet() {
    sigset_t set;
    sigemptyset(&set);
    for (int sig : kStops) sigaddset(&set, sig);
    return set;
}

// Only async-signal-safe calls: the group goes, then the tool, skipping
// destructors and atexit work, so a pending edit never reaches the file.
void stop(int sig) {
    if (pid_t g = group; g > 0) {
        kill(-g, SIGKILL);
        kill(g, SIGKILL);  // in case it left its group
    }
    _exit(128 + sig);
}

void childChanged(int) {
    int saved = errno;
    char byte = 0;
    [[maybe_unused]] ssize_t n = write(pipeFds[1], &byte, 1);  // a full pipe is readable anyway
    errno = saved;
}

void handle(int sig, void (*handler)(int), const sigset_t& mask) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_mask = mask;
    action.sa_flags = SA_RESTART;
    sigaction(sig, &action, nullptr);
}

}  // namespace

const sigset_t& stops() {
    static const sigset_t set = stopSet();
    return set;
}

int waitFd() {
    static const bool ready = [] {
        if (pipe2(pipeFds, O_NONBLOCK | O_CLOEXEC) != 0) return false;
        sigset_t none;
        sigemptyset(&none);
        handle(SIGCHLD, childChanged, none);
        return true;
    }();
    return ready ? pipeFds[0] : -1;
}

void drain() {
    char bytes[64];
    while (pipeFds[0] >= 0 && read(pipeFds[0], bytes, sizeof bytes) > 0) {
    }
}

void install() {
    // A caller that ignores SIGCHLD would have its children reaped behind
    // the tool's back, and every wait would last the whole deadline.
    waitFd();
    for (int sig : kStops) handle(sig, stop, stops());  // one stop at a time
    // A reader that has gone (a trace piped into head) ends no change.
    signal(SIGPIPE, SIG_IGN);
    sigset_t unblock = stops();
    sigaddset(&unblock, SIGCHLD);
    sigprocmask(SIG_UNBLOCK, &unblock, nullptr);
}

void running(pid_t g) { group = g; }

void spawnDefaults(posix_spawnattr_t& attr) {
    sigset_t set = stops();
    sigaddset(&set, SIGCHLD);
    sigaddset(&set, SIGPIPE);
    posix_spawnattr_setsigdefault(&attr, &set);
}

}  // namespace wlan::signals
