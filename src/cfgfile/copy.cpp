// The invocation's copy of the configuration file and its commit: the one
// place that reads and replaces the file.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
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
    std::string path;    // the file it was read from (the sandbox may change)
    std::string target;  // where path leads through its symbolic links: read and replaced
    bool linked = false;  // path is a symbolic link
    Lines lines;         // without line ends
    std::string crs;     // per line: 1 when its line end is CR LF
    char crlf = 0;       // the file's own line end (its first line's), for new lines
    std::string takenCrs;  // the line ends of the lines last taken, for their new text
    size_t reused = 0;
    bool finalEnd = true;  // the last line ends in a line end
    bool edited = false;   // edits since the last commit
    std::string onDisk;    // the file's bytes as read or last written
};

Copy copy;
bool reported = false;  // one record per invocation, however many edits fail

void report() {
    if (reported) return;
    reported = true;
    if (!copy.linked) logMsg(kCfgUnreadable, cfgPath().c_str());
    else logMsg(kCfgLinkUnusable, copy.path.c_str(), copy.target.c_str());
}

// Firmware keeps /etc in RAM and links the file to a partition that
// survives a reboot: the link's final target is the file to read and
// replace, never the link itself.  False for a dangling link or a loop;
// target is then the last path reached.
bool follow() {
    std::string& target = copy.target;
    for (int hops = 0; hops < 40; ++hops) {
        char to[PATH_MAX];
        ssize_t n = readlink(target.c_str(), to, sizeof to);
        if (n < 0) return errno == EINVAL || !copy.linked;  // not a link, or a plain missing file
        if (n == 0 || n == sizeof to) return false;
        copy.linked = true;
        std::string link(to, static_cast<size_t>(n));  // relative: to the link's folder
        target = link[0] == '/' ? link : target.substr(0, target.rfind('/') + 1) + link;
    }
    return false;
}

std::string text() {
    std::string out;
    for (size_t i = 0; i < copy.lines.size(); ++i) {
        out += copy.lines[i];
        if (copy.crs[i]) out += '\r';
        if (i + 1 < copy.lines.size() || copy.finalEnd) out += '\n';
    }
    return out;
}

// A line's CR before its line end belongs to the line end, not the value.
void addLine(std::string line) {
    char cr = !line.empty() && line.back() == '\r';
    if (cr) line.pop_back();
    copy.lines.push_back(std::move(line));
    copy.crs.push_back(cr);
}

bool load() {
    std::string path = cfgPath();
    if (copy.state != Copy::Unread && copy.path == path) return copy.state == Copy::Read;
    copy = Copy{};
    copy.target = std::string(path);
    copy.path = std::move(path);
    copy.state = Copy::Unreadable;
    FILE* file = follow() ? adpFileOpen(copy.target.c_str(), "r") : nullptr;
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
            addLine(copy.onDisk.substr(at));
            copy.finalEnd = false;
            break;
        }
        addLine(copy.onDisk.substr(at, end - at));
        at = end + 1;
    }
    copy.crlf = !copy.crs.empty() && copy.crs[0];
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

// The new file is written whole under the rebuild file's name, in the
// target's folder (a rename cannot cross file systems), with the old file's
// mode (it holds pass phrases) and owner, synced, and only then renamed over
// the old one: on flash file systems a rename that overtakes its data leaves
// an empty file after a power cut.  The folder is synced after the rename so
// that the new name itself survives one.  A temporary file left by an
// invocation that was cut off goes; the new one is created, never reused.
bool replace(const std::string& bytes) {
    std::string folder = copy.target.substr(0, copy.target.rfind('/') + 1);
    std::string from = folder + (std::strrchr(kRebuildFile, '/') + 1);
    struct stat old;
    bool hadOld = stat(copy.target.c_str(), &old) == 0;
    unlink(from.c_str());
    int fd = open(from.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
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
    if (!ok || std::rename(from.c_str(), copy.target.c_str()) != 0) {
        unlink(from.c_str());
        return false;
    }
    int dir = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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
    copy.takenCrs.clear();
    copy.reused = 0;
    for (size_t i = 0; i < copy.lines.size(); ++i) {
        std::string& line = copy.lines[i];
        if (keyHoldsAny(line, needles)) {
            if (taken) taken->push_back(std::move(line));
            copy.takenCrs.push_back(copy.crs[i]);
        } else {
            if (i != kept) copy.lines[kept] = std::move(line);
            copy.crs[kept++] = copy.crs[i];
        }
    }
    copy.lines.resize(kept);
    copy.crs.resize(kept);
    copy.finalEnd = true;  // every line written ends in its line end
    copy.edited = true;
    return true;
}

// A rewritten line keeps its own line end, in the order the lines were
// taken; a new one takes the file's.
void appendLine(std::string_view line) {
    if (copy.state != Copy::Read) return;
    copy.lines.emplace_back(line);
    copy.crs.push_back(copy.reused < copy.takenCrs.size() ? copy.takenCrs[copy.reused++] : copy.crlf);
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
