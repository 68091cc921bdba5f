// The tool's signals.  A caller may hand down any disposition through exec;
// the tool sets its own at start so that a change ends only in one of two
// ways: it runs to its end, or a stop signal ends it at once.
#pragma once

#include <csignal>
#include <spawn.h>
#include <sys/types.h>

namespace wlan::signals {

// At the start of main: SIGTERM, SIGINT and SIGHUP kill the running
// program's group and end the tool with 128 + signal, without its exit-time
// work (pending file edits are dropped); SIGPIPE is ignored; SIGCHLD wakes
// waitFd().
void install();

// Readable after any child changed state since the caller last drained it
// (the SIGCHLD handler writes a byte to a non-blocking pipe).  Sets the
// handler up on first use, so that the tool's code runs in any process;
// -1 when no pipe could be made.
int waitFd();
void drain();

// The stop signals, which adpCmdExec holds back except while it waits.
const sigset_t& stops();

// The process group that a stop signal kills first; 0 for none.
void running(pid_t group);

// Programs start with the default disposition of every signal set here.
void spawnDefaults(posix_spawnattr_t& attr);

}  // namespace wlan::signals
