// The replay switch at the platform seams.  --check and --resync run the
// handlers themselves to learn what the file should hold; while they do,
// every seam where a handler reaches the world only records:
//   Record: programs and driver requests are not run and count as succeeded,
//           log records are dropped, kernel requests (the MAC read) fail, the
//           file's commits keep the copy in memory, and every statement runs
//           on the given database, whatever file a handler names;
//   Apply:  --resync bringing the driver in step: programs run, but the
//           file's commits keep the copy (the file already holds the replay)
//           and the commands recorded as muted are not run.
#pragma once

#include <string>
#include <vector>

namespace wlan::replay {

enum class Mode { Off, Record, Apply };

void set(Mode mode);
bool recording();
// Commits keep the copy in memory and statements run on the given database.
bool holding();

// Called by adpCmdExec first: true when the command must not run (recorded
// in Record mode, muted in Apply mode); it then counts as succeeded.
bool skip(const char* const argv[]);

// The commands recorded since the last call (arguments joined by '\t'),
// taken; and the commands Apply mode skips.
std::vector<std::string> take();
void mute(std::vector<std::string> commands);

// A statement failed with SQLite's (extended) result code rc and message: the database
// could not be read, or a table the replay reads is missing, and the replay
// cannot tell.  Other SQL errors (a missing column) stay silent, as on the
// device.
void queryFailed(int rc, const char* message);
// The first such failure's message, or null.
const char* unreadable();

}  // namespace wlan::replay
