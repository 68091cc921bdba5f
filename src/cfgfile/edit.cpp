// The file mechanics shared by every edit: the device's cat/grep/echo/mv
// pipelines, done in-process with the same files and the same results.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"
#include "platform/log.h"
#include "platform/platform.h"
#include "platform/sandbox.h"
#include "platform/trace.h"

namespace wlan::cfg {

void FileCloser::operator()(FILE* f) const { adpFileClose(f); }

bool readLine(FILE* file, std::string& line) {
    char buffer[512];
    line.clear();
    while (adpFileGets(buffer, sizeof buffer, file)) {
        line += buffer;
        if (!line.empty() && line.back() == '\n') return true;
    }
    return !line.empty();
}

namespace {

bool keyHoldsAny(const std::string& line, std::initializer_list<const char*> needles) {
    std::string_view key = keyPart(line);
    for (const char* needle : needles)
        if (key.find(needle) != std::string_view::npos) return true;
    return false;
}

// fsync through a descriptor of its own: the writers have closed the file.
bool syncPath(const char* path, int flags) {
    int fd = open(path, O_RDONLY | O_CLOEXEC | flags);
    if (fd < 0) return false;
    bool synced = fsync(fd) == 0;
    close(fd);
    return synced;
}

// The folder is synced once, after the invocation's last rename: until then
// a power cut may bring back the old name's file, never a half one.
bool folderSyncDue = false;

void syncCfgFolder() {
    if (!folderSyncDue) return;
    folderSyncDue = false;
    std::string folder = cfgPath();
    folder.erase(folder.rfind('/'));
    syncPath(folder.c_str(), O_DIRECTORY);
}

}  // namespace

std::string_view keyPart(std::string_view line) {
    size_t eq = line.find('=');
    return eq == std::string_view::npos ? line : line.substr(0, eq + 1);
}

std::string cfgPath() { return rootPath(kCfgFile); }
std::string extractPath() { return rootPath(kExtractFile); }
std::string rebuildPath() { return rootPath(kRebuildFile); }

bool holdsLineEnd(const char* value) {
    return value && (std::strchr(value, '\n') || std::strchr(value, '\r'));
}

bool copyLines(const char* src, const char* dst, std::initializer_list<const char*> needles,
               bool keep) {
    File in(adpFileOpen(src, "r"));
    if (!in) return false;
    File out(std::fopen(dst, "w"));
    if (!out) return false;
    std::string line;
    while (readLine(in.get(), line)) {
        if (keyHoldsAny(line, needles) != keep) continue;
        if (line.back() != '\n') line += '\n';  // grep ends every line it prints
        if (std::fputs(line.c_str(), out.get()) == EOF) return false;
    }
    return std::fflush(out.get()) == 0 && !std::ferror(in.get());
}

bool splitCfg(const char* needle, bool wantExtract) {
    std::string cfg = cfgPath();
    if ((wantExtract && !copyLines(cfg.c_str(), extractPath().c_str(), {needle}, true)) ||
        !copyLines(cfg.c_str(), rebuildPath().c_str(), {needle}, false))
        return rewriteFailed();
    return true;
}

bool replaceLines(std::initializer_list<const char*> needles, const std::vector<std::string>& lines) {
    std::string cfg = cfgPath(), rebuild = rebuildPath();
    if (!copyLines(cfg.c_str(), rebuild.c_str(), needles, false)) return false;
    for (const std::string& line : lines)
        if (!appendLine(rebuild.c_str(), line)) return false;
    return replaceCfgFile(rebuild.c_str()) == 0;
}

bool appendLine(const char* file, const std::string& line) {
    File out(std::fopen(file, "a"));
    if (!out) return false;
    std::string text = line + "\n";
    return std::fputs(text.c_str(), out.get()) != EOF && std::fflush(out.get()) == 0;
}

int replaceCfgFile(const char* from) {
    if (trace::on()) trace::replacement(cfgPath().c_str(), from);
    // On flash file systems a rename that overtakes the data it names leaves
    // an empty file after a power cut: the new file reaches the disk first.
    if (!syncPath(from, 0) || std::rename(from, cfgPath().c_str()) != 0) return 1;
    folderSyncDue = true;
    static const bool syncAtExit = std::atexit(syncCfgFolder) == 0;
    if (!syncAtExit) syncCfgFolder();
    return 0;
}

bool rewriteFailed() {
    logMsg(kCfgUnreadable, cfgPath().c_str());
    return false;
}

bool commitCfg() { return replaceCfgFile(rebuildPath().c_str()) == 0 || rewriteFailed(); }

bool listWithEntry(const char* listKey, const std::string& entry) {
    File in(adpFileOpen(cfgPath().c_str(), "r"));
    if (!in) return false;
    std::string line;
    while (readLine(in.get(), line)) {
        if (keyPart(line).find(listKey) != std::string_view::npos && findEntry(line, entry).found)
            return true;
    }
    return false;
}

}  // namespace wlan::cfg
