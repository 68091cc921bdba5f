// Edits of the driver configuration file.  Each edit takes out the lines it
// changes and appends their new text last: kept lines first, in their old
// order, changed lines at the end, each line with exactly one line end.
//
// An invocation's edits go to a copy of the file in memory, read at its
// first edit, and reach the file in one durable replacement (commit) right
// before a program that reads the file starts (the driver when an interface
// opens, the 802.1X daemon) and when the dispatch ends.  So a change is one
// replacement, and a power cut leaves the file before or after it, never
// partway.  Lines are selected by their key part alone (through the first
// '=', the whole line without one), so that a value holding a key's name - an
// SSID "Cafe SSID1 free" - never drops, moves or splices a line.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log.h"

extern "C" {

// Writes key of VAP interface ifname (vap0..vap3): intValue when it is 0 or
// more, else textValue.  Returns 0 once the copy holds it, -1 otherwise.
int update_cfg_file(const char* ifname, const char* key, int intValue, const char* textValue);

// Entry pos (from 1) of key's list line replaced by value; the lines whose
// key part holds key move last with it.  -1 when the file cannot be read.
int concat_nd_modify_cfg_file(int pos, const char* key, const char* value);

// Sets or clears (00:00:00:00:00:00) slot 1..4 of the WdsList line.
int dot11WdsAddMac(int slot, const char* mac);
int dot11WdsDelMac(int slot);

}  // extern "C"

namespace wlan::cfg {

using Lines = std::vector<std::string>;

// Takes every line whose key part holds one of needles out of the copy (into
// taken, when given, in file order; without line ends).  False when the file
// could not be read: then nothing may be edited.
bool takeLines(std::initializer_list<const char*> needles, Lines* taken);

// Appends a line (given without line end) to the copy.
void appendLine(std::string_view line);

// The lines taken for needles replaced by lines, appended last.
bool replaceLines(std::initializer_list<const char*> needles, const Lines& lines);

// True when a line of the copy whose key part holds listKey has the entry.
bool listWithEntry(const char* listKey, const std::string& entry);

// Writes the copy over the file (written whole, old mode and owner, synced,
// renamed, folder synced) when it differs from it.  True when the file holds
// every edit made so far; otherwise the old file stays.
bool commit();

// The copy's lines (read at the first call); null when the file cannot be
// read.
const Lines* held();

// Forgets the copy and its edits (a new sandbox, or a file written behind
// the tool's back).
void discard();

// Entry pos of a list line (Key=v1;v2;...) replaced by value.  A list
// shorter than pos is extended with empty entries.
std::string spliceEntry(const std::string& line, int pos, const std::string& value);

// An access-control list line with the entry mac removed when it holds it,
// appended otherwise.
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

// The resolved paths.
std::string cfgPath();
std::string rebuildPath();

// A value that cannot stand on one line of the file.
bool holdsLineEnd(const char* value);

}  // namespace wlan::cfg
