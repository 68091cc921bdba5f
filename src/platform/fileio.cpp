#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/platform.h"
#include "platform/replay.h"

extern "C" {

FILE* adpFileOpen(const char* path, const char* mode) {
    return path && mode ? std::fopen(path, mode) : nullptr;
}

char* adpFileGets(char* buffer, int size, FILE* file) {
    return std::fgets(buffer, size, file);
}

int adpFileClose(FILE* file) {
    return file ? std::fclose(file) : 0;
}

int adpIoctl(int fd, unsigned long request, void* arg) {
    if (wlan::replay::recording()) {  // a replay reads nothing from the kernel
        errno = ENODEV;
        return -1;
    }
    return ioctl(fd, request, arg);
}

int adpClose(int fd) {
    return close(fd);
}

int umiInit(void) {
    // One thread, one short run: SQLite's mutexes and memory statistics are
    // a tenth of a VAP start's instructions and buy nothing here.  Only
    // possible before SQLite is first used; later it is refused, harmlessly.
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    wlan::useShortLivedMemory();
    return 0;
}

}  // extern "C"
