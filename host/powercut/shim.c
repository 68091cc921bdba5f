/* Preloaded into the tool during the reference run: before each rename onto
 * the driver configuration file, copies the file about to replace it into
 * $POWERCUT_STATES/NNNNN, so that every state an uninterrupted run passes
 * through is on record. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static void record(int dirfd, const char *from, const char *to) {
    static const char name[] = "/RT2860AP.dat";
    const char *dir = getenv("POWERCUT_STATES");
    size_t n = strlen(to), k = sizeof name - 1;
    if (!dir || n < k || strcmp(to + n - k, name) != 0) return;
    int in = openat(dirfd, from, O_RDONLY), out = -1;
    char path[4096], buf[8192];
    for (int i = 0; in >= 0 && out < 0 && i < 100000; i++) {
        snprintf(path, sizeof path, "%s/%05d", dir, i);
        out = open(path, O_WRONLY | O_CREAT | O_EXCL, 0644);
    }
    ssize_t got;
    while (in >= 0 && out >= 0 && (got = read(in, buf, sizeof buf)) > 0)
        if (write(out, buf, (size_t)got) != got) break;
    if (out >= 0) close(out);
    if (in >= 0) close(in);
}

int rename(const char *from, const char *to) {
    record(AT_FDCWD, from, to);
    int (*real)(const char *, const char *) = (int (*)(const char *, const char *))dlsym(RTLD_NEXT, "rename");
    return real(from, to);
}

int renameat(int fromdir, const char *from, int todir, const char *to) {
    record(fromdir, from, to);
    int (*real)(int, const char *, int, const char *) =
        (int (*)(int, const char *, int, const char *))dlsym(RTLD_NEXT, "renameat");
    return real(fromdir, from, todir, to);
}
