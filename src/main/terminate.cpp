// The C++ runtime's terminate handler, replaced: the default one names the
// exception's type and so links in the runtime's whole symbol demangler.
// Nothing in the tool catches an exception; one that escapes (memory
// exhausted) ends the process as before, with a shorter message.
#include <cstdlib>
#include <unistd.h>

namespace __gnu_cxx {

void __verbose_terminate_handler() {
    static const char kText[] = "wlanSyncTool: terminate called\n";
    ssize_t written = write(2, kText, sizeof kText - 1);
    (void)written;
    std::abort();
}

}  // namespace __gnu_cxx
