#include "platform/sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wlan {

const char* sandboxRoot() {
    const char* root = std::getenv("WLANSYNC_ROOT");
    return root ? root : "";
}

std::string rootPath(const char* fixed) {
    return std::string(sandboxRoot()) + fixed;
}

void makeParentDirs(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        std::string dir = path.substr(0, slash);
        if (mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) return;
    }
}

namespace {

bool lockFd(int fd) {
    if (fd < 0) return false;
    while (flock(fd, LOCK_EX) != 0) {
        if (errno != EINTR) {
            close(fd);
            return false;
        }
    }
    return true;  // the descriptor stays open until the process exits
}

}  // namespace

bool holdProcessLock() {
    std::string path = rootPath(kLockFile);
    // O_CLOEXEC: the daemon that the tool starts must not keep the lock.
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        makeParentDirs(path);
        fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    }
    // A lock file that cannot be used (a folder in its place, a full or
    // read-only /tmp) must not let two changes read and write the driver
    // file at once: every invocation falls back to the same folder.
    return lockFd(fd) ||
           lockFd(open(rootPath(kLockFolder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace wlan
