// --check and --resync: the replay (the current driver file with the
// handlers themselves run into the in-memory copy, through a driver layer
// that only records) compared with the file, line by line in any order.
#pragma once

#include <string>
#include <vector>

#include "cfgfile/cfgfile.h"

namespace wlan::resync {

// When argv is "--version", "--check <DBFile>" or "--resync <DBFile>":
// true, with the invocation's exit status.
bool invoked(int argc, char** argv, int& status);

// One key whose lines differ between two files (as multisets): its lines on
// each side, in file order.  Keys in the order their differing lines stand,
// before's first.
struct KeyLines {
    std::string key;  // the key part without its '='
    cfg::Lines before, after;
};
std::vector<KeyLines> differences(const cfg::Lines& before, const cfg::Lines& after);

// Who writes a line in the replay, and so who brings the driver in step
// with it: each step of the replay is one actor.
struct Actor {
    enum Kind { Radio, Instance, Wds, Multicast, Country, Wps, Radius, Acl } kind;
    std::string vap, ifname;  // ifname: the interface it acts on, "" for none of its own
    int number;               // radio number or row id
};

struct Replay {
    std::vector<Actor> actors;
    // Entries a step changed, in replay order: key, entry (from 0 after the
    // '=', split at ';'; -1 for the key's lines as a whole), actor.
    struct Write {
        std::string key;
        int entry, actor;
    };
    std::vector<Write> writes;
    std::vector<std::string> radioCommands;  // what the radio handlers sent
    cfg::Lines file;                         // the file before the replay
};

// Runs the replay into the copy (the platform records); false when the file
// cannot be read.
bool replay(const char* dbFile, Replay& r);

// Brings the running driver in step with the keys in changed (the file
// already holds them); 0, or 1 when a step failed (one record each).
int bringInStep(const char* dbFile, const Replay& r, const std::vector<KeyLines>& changed);

}  // namespace wlan::resync
