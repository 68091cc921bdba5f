// The field trace.  With WLANSYNC_TRACE=1 the tool writes to standard error
// one line per step at its seams: each statement with the rows it gave (or
// changed), each program run with its arguments and status, each
// commit of the driver configuration file with the lines it drops and adds.  Pass phrases, WEP keys, RADIUS secrets and WDS keys show as ***.
// Without the variable nothing is written and nothing is read for it.
#pragma once

#include <sqlite3.h>
#include <string>
#include <string_view>

namespace wlan::trace {

bool on();

// The trace's own rules, for other output that shows file lines: whether a
// key part names a secret (its value is then shown as ***), and a word in
// double quotes with C escapes.
bool secret(std::string_view key);
std::string quoted(std::string_view word);
inline constexpr char kMasked[] = "***";

// A query and its row count; error is SQLite's message when it failed.
void statement(const char* text, int rows, const char* error);

// From now on each statement that writes through db is traced with the
// rows it changed (the queries trace themselves through statement()).
void writesOn(sqlite3* db);

// A program run: its arguments and its status.
void run(const char* const argv[], int status);

// A request made in-process where a program would have run: a driver
// setting, or (flags) "up"/"down", on ifname, and its status.
void request(const char* ifname, const char* arg, bool flags, int status);

// A commit of the file at path from the bytes before to the bytes after;
// ok is false when it failed and the file kept before.
void commit(const char* path, const std::string& before, const std::string& after, bool ok);

}  // namespace wlan::trace
