#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include "platform/platform.h"

extern char** environ;

extern "C" int adpCmdExec(const char* const argv[]) {
    if (!argv || !argv[0]) return 127;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    // The tool prints nothing on success: the programs' chatter goes nowhere.
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    int err = posix_spawnp(&pid, argv[0], &actions, nullptr, const_cast<char* const*>(argv),
                           environ);
    posix_spawn_file_actions_destroy(&actions);
    if (err != 0) return 127;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return 127;
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return 127;
}
