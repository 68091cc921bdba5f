// wlanMeasure CMD ARGS...: runs CMD and prints "<wall ms> <cpu ms> <peak RSS kB>
// <exit status>" for CMD's own process, not the programs it starts: it is
// stopped as it exits, while its memory can still be read.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <signal.h>
#include <sstream>
#include <string>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

long peakRssKb(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}

// CPU time: the scheduler's nanoseconds where the kernel keeps them, else
// clock ticks.
double cpuMs(pid_t pid) {
    std::ifstream sched("/proc/" + std::to_string(pid) + "/schedstat");
    double ns = 0;
    if (sched >> ns) return ns / 1e6;
    std::ifstream statFile("/proc/" + std::to_string(pid) + "/stat");
    std::string stat((std::istreambuf_iterator<char>(statFile)), {});
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string field;
    long ticks = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i)
        if (i == 14 || i == 15) ticks += std::stol(field);
    return 1000.0 * double(ticks) / double(sysconf(_SC_CLK_TCK));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s command [args...]\n", argv[0]);
        return 2;
    }
    auto start = std::chrono::steady_clock::now();
    pid_t pid = fork();
    if (pid == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ptrace(PTRACE_SETOPTIONS, pid, nullptr,
           reinterpret_cast<void*>(PTRACE_O_TRACEEXIT | PTRACE_O_TRACEEXEC));
    ptrace(PTRACE_CONT, pid, nullptr, nullptr);
    long rss = -1;
    double cpu = 0;
    while (waitpid(pid, &status, 0) == pid && !WIFEXITED(status) && !WIFSIGNALED(status)) {
        int signal = WSTOPSIG(status);
        if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) {
            rss = peakRssKb(pid);  // still readable: the process has not let go of it
            cpu = cpuMs(pid);
            signal = 0;
        } else if (signal == SIGTRAP) {
            signal = 0;  // the exec stop
        }
        ptrace(PTRACE_CONT, pid, nullptr, reinterpret_cast<void*>(long(signal)));
    }
    double wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    std::printf("%.1f %.2f %ld %d\n", wall, cpu, rss, code);
    return 0;
}
