// The invocation's copy of the configuration file and its commit: the one
// place that reads and replaces the file.
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"
#include "platform/platform.h"
#include "platform/replay.h"
#include "platform/trace.h"

namespace wlan::cfg {

namespace {

struct Copy {
    enum State { Unread, Read, Unreadable } state = Unread;
    std::string path;  // the file it was read from (the sandbox may change)
    Lines lines;       // without line ends
    bool finalEnd = true;  // the last line ends in a line end
    bool edited = false;   // edits since the last commit
    std::string onDisk;    // the file's bytes as read or last written
};

Copy copy;
bool reported = false;  // one record per invocation, however many edits fail

void report() {
    if (!reported) logMsg(kCfgUnreadable, cfgPath().c_str());
    reported = true;
}

std::string text() {
    std::string out;
    for (size_t i = 0; i < copy.lines.size(); ++i) {
        out += copy.lines[i];
        if (i + 1 < copy.lines.size() || copy.finalEnd) out += '\n';
    }
    return out;
}

bool load() {
    std::string path = cfgPath();
    if (copy.state != Copy::Unread && copy.path == path) return copy.state == Copy::Read;
    copy = Copy{};
    copy.path = path;
    copy.state = Copy::Unreadable;
    FILE* file = adpFileOpen(path.c_str(), "r");
    if (!file) return report(), false;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) copy.onDisk.append(buffer, n);
    bool failed = std::ferror(file);
    adpFileClose(file);
    if (failed) return report(), false;
    for (size_t at = 0; at < copy.onDisk.size();) {
        size_t end = copy.onDisk.find('\n', at);
        if (end == std::string::npos) {
            copy.lines.push_back(copy.onDisk.substr(at));
            copy.finalEnd = false;
            break;
        }
        copy.lines.push_back(copy.onDisk.substr(at, end - at));
        at = end + 1;
    }
    copy.state = Copy::Read;
    return true;
}

bool keyHoldsAny(std::string_view line, std::initializer_list<const char*> needles) {
    std::string_view key = keyPart(line);
    for (const char* needle : needles)
        if (key.find(needle) != std::string_view::npos) return true;
    return false;
}

bool writeAll(int fd, const std::string& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

// The new file is written whole under the rebuild file's name with the old
// file's mode (it holds pass phrases) and owner, synced, and only then
// renamed over the old one: on flash file systems a rename that overtakes
// its data leaves an empty file after a power cut.  The folder is synced
// after the rename so that the new name itself survives one.
bool replace(const std::string& bytes) {
    std::string from = rebuildPath();
    struct stat old;
    bool hadOld = stat(copy.path.c_str(), &old) == 0;
    int fd = open(from.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    bool ok = writeAll(fd, bytes);
    if (ok && hadOld) {
        if (fchown(fd, old.st_uid, old.st_gid) != 0) {
            // Not ours to give away: the mode still holds.
        }
        ok = fchmod(fd, old.st_mode & 07777) == 0;
    }
    ok = ok && fsync(fd) == 0;
    ok = close(fd) == 0 && ok;
    if (!ok || std::rename(from.c_str(), copy.path.c_str()) != 0) {
        unlink(from.c_str());
        return false;
    }
    std::string folder = copy.path.substr(0, copy.path.rfind('/'));
    int dir = open(folder.empty() ? "/" : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        fsync(dir);
        close(dir);
    }
    return true;
}

}  // namespace

bool takeLines(std::initializer_list<const char*> needles, Lines* taken) {
    if (!load()) return false;
    // Kept lines close up in place: an edit runs for every setting of a
    // VAP start, over every line of the file.
    size_t kept = 0;
    for (std::string& line : copy.lines) {
        if (keyHoldsAny(line, needles)) {
            if (taken) taken->push_back(std::move(line));
        } else {
            if (&line != &copy.lines[kept]) copy.lines[kept] = std::move(line);
            ++kept;
        }
    }
    copy.lines.resize(kept);
    copy.finalEnd = true;  // every line written ends in its line end
    copy.edited = true;
    return true;
}

void appendLine(std::string_view line) {
    if (copy.state != Copy::Read) return;
    copy.lines.emplace_back(line);
    copy.finalEnd = true;
    copy.edited = true;
}

bool replaceLines(std::initializer_list<const char*> needles, const Lines& lines) {
    if (!takeLines(needles, nullptr)) return false;
    for (const std::string& line : lines) appendLine(line);
    return true;
}

bool listWithEntry(const char* listKey, const std::string& entry) {
    if (!load()) return false;
    for (const std::string& line : copy.lines)
        if (keyPart(line).find(listKey) != std::string_view::npos && findEntry(line, entry).found)
            return true;
    return false;
}

bool commit() {
    // A replay keeps its edits in memory.
    if (copy.state != Copy::Read || !copy.edited || replay::holding()) return copy.state != Copy::Unreadable;
    std::string bytes = text();
    // The same bytes: nothing to write, rename or sync.
    if (bytes == copy.onDisk) {
        if (trace::on()) trace::commit(copy.path.c_str(), copy.onDisk, bytes, true);
        copy.edited = false;
        return true;
    }
    bool ok = replace(bytes);
    if (trace::on()) trace::commit(copy.path.c_str(), copy.onDisk, bytes, ok);
    if (!ok) {
        report();
        return false;
    }
    copy.onDisk = std::move(bytes);
    copy.edited = false;
    return true;
}

const Lines* held() { return load() ? &copy.lines : nullptr; }

void discard() {
    copy = Copy{};
    reported = false;
}

}  // namespace wlan::cfg
