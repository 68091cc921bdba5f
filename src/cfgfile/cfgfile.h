// Edits of the driver configuration file.  Each edit splits the file into
// the lines to change (the extract file) and the lines to keep (the rebuild
// file), appends the changed lines to the rebuild file and moves it over the
// configuration file: kept lines first, in their old order, changed lines
// last.  The work is done in-process, so no value ever reaches a shell.
//
// Lines are selected by their key part alone (through the first '=', the
// whole line without one), so that a value holding a key's name - an SSID
// "Cafe SSID1 free" - never drops, moves or splices a line.  Each new file
// is synced before it is renamed over the configuration file.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log.h"

extern "C" {

// Writes key of VAP interface ifname (vap0..vap3): intValue when it is 0 or
// more, else textValue.  Returns 0 once the file was replaced, non-zero
// otherwise.
int update_cfg_file(const char* ifname, const char* key, int intValue, const char* textValue);

// Appends the extract file's lines to the rebuild file, entry pos (from 1)
// of key's list line replaced by value.  Returns -1 when nothing may be
// moved over the configuration file.
int concat_nd_modify_cfg_file(int pos, const char* key, const char* value);

// Sets or clears (00:00:00:00:00:00) slot 1..4 of the WdsList line.
int dot11WdsAddMac(int slot, const char* mac);
int dot11WdsDelMac(int slot);

}  // extern "C"

namespace wlan::cfg {

// Entry pos of a list line (Key=v1;v2;...) replaced by value, without line
// end.  A list shorter than pos is extended with empty entries.
std::string spliceEntry(const std::string& line, int pos, const std::string& value);

// An access-control list line with the entry mac removed when it holds it,
// appended otherwise; without line end unless the removal kept the old one.
std::string aclToggle(const std::string& line, const std::string& mac);

// The text of line through its first '=', or the whole line.
std::string_view keyPart(std::string_view line);

// Where the first whole entry equal to text stands in a list line (entries
// run from the first '=' or a ';' to the next ';' or the line end; a text
// holding ';' spans whole entries): [begin, end), end at the ';' that
// follows it or npos for the last entry.
struct EntryAt {
    bool found;
    size_t begin, end;
};
EntryAt findEntry(const std::string& line, const std::string& text);

// True when a line whose key part holds listKey has the entry text.
bool listWithEntry(const char* listKey, const std::string& entry);

// cat src | grep [-v] needle... > dst, the needles sought in each line's key
// part: the lines that hold one of them (keep == true) or none of them.
// False when src cannot be read or dst cannot be written.
bool copyLines(const char* src, const char* dst, std::initializer_list<const char*> needles,
               bool keep);

// The configuration file split on needle: the lines holding it to the
// extract file (when wanted), the others to the rebuild file.  Logs and
// returns false when it cannot be done; the configuration file is untouched.
bool splitCfg(const char* needle, bool wantExtract);

// Whole-line rewrite: every line whose key holds one of the needles dropped, the new
// lines appended last, the result moved over the configuration file.  False,
// with the file untouched, when that cannot be done.
bool replaceLines(std::initializer_list<const char*> needles, const std::vector<std::string>& lines);

// echo 'line' >> file.
bool appendLine(const char* file, const std::string& line);

// mv -f from over the configuration file, made durable: from is synced
// before the rename and the folder after the invocation's last rename.
// 0 on success; on failure the old file stays.
int replaceCfgFile(const char* from);

// Logs that the configuration file could not be rewritten and is left as
// it was; returns false.
bool rewriteFailed();

// The rebuild file moved over the configuration file; logs and returns
// false when that cannot be done.
bool commitCfg();

struct FileCloser {
    void operator()(FILE* f) const;
};
using File = std::unique_ptr<FILE, FileCloser>;

// The next whole line, whatever its length, its line end kept; false at the
// end of the file.
bool readLine(FILE* file, std::string& line);

// The resolved paths.
std::string cfgPath();
std::string extractPath();
std::string rebuildPath();

// A value that cannot stand on one line of the file.
bool holdsLineEnd(const char* value);

}  // namespace wlan::cfg
