// Edits of the driver configuration file.  Each edit splits the file into
// the lines to change (the extract file) and the lines to keep (the rebuild
// file), appends the changed lines to the rebuild file and moves it over the
// configuration file: kept lines first, in their old order, changed lines
// last.  The work is done in-process, so no value ever reaches a shell.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

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

// An access-control list line with mac removed when it holds it, appended
// otherwise; without line end unless the removal kept the old one.
std::string aclToggle(const std::string& line, const std::string& mac);

// True when a line containing needle exists and holds text.
bool lineWithHolds(const char* needle, const std::string& text);

// cat src | grep [-v] needle... > dst: the lines that contain one of the
// needles (keep == true) or none of them.  False when src cannot be read or
// dst cannot be written.
bool copyLines(const char* src, const char* dst, std::initializer_list<const char*> needles,
               bool keep);

// The configuration file split on needle: the lines holding it to the
// extract file (when wanted), the others to the rebuild file.  Logs and
// returns false when it cannot be done; the configuration file is untouched.
bool splitCfg(const char* needle, bool wantExtract);

// Whole-line rewrite: every line holding one of the needles dropped, the new
// lines appended last, the result moved over the configuration file.  False,
// with the file untouched, when that cannot be done.
bool replaceLines(std::initializer_list<const char*> needles, const std::vector<std::string>& lines);

// echo 'line' >> file.
bool appendLine(const char* file, const std::string& line);

// mv -f rebuild file over the configuration file; 0 on success.
int replaceCfgFile(const char* from);

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
