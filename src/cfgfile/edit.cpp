// The file mechanics shared by every edit: the device's cat/grep/echo/mv
// pipelines, done in-process with the same files and the same results.
#include <cstdio>
#include <cstring>

#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"
#include "platform/log.h"
#include "platform/platform.h"
#include "platform/sandbox.h"

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

bool containsAny(const std::string& line, std::initializer_list<const char*> needles) {
    for (const char* needle : needles)
        if (line.find(needle) != std::string::npos) return true;
    return false;
}

}  // namespace

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
        if (containsAny(line, needles) != keep) continue;
        if (line.back() != '\n') line += '\n';  // grep ends every line it prints
        if (std::fputs(line.c_str(), out.get()) == EOF) return false;
    }
    return std::fflush(out.get()) == 0 && !std::ferror(in.get());
}

bool splitCfg(const char* needle, bool wantExtract) {
    std::string cfg = cfgPath();
    if ((wantExtract && !copyLines(cfg.c_str(), extractPath().c_str(), {needle}, true)) ||
        !copyLines(cfg.c_str(), rebuildPath().c_str(), {needle}, false)) {
        logMsg(kCfgUnreadable, cfg.c_str());
        return false;
    }
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
    return std::rename(from, cfgPath().c_str()) == 0 ? 0 : 1;
}

bool lineWithHolds(const char* needle, const std::string& text) {
    File in(adpFileOpen(cfgPath().c_str(), "r"));
    if (!in) return false;
    std::string line;
    while (readLine(in.get(), line)) {
        if (line.find(needle) != std::string::npos && line.find(text) != std::string::npos)
            return true;
    }
    return false;
}

}  // namespace wlan::cfg
