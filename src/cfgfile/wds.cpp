// The WDS peer list: WdsList=mac1;mac2;mac3;mac4, slot k for peer k (wds<k-1>).
#include "cfgfile/cfgfile.h"
#include "cfgfile/cfgtext.h"

using namespace wlan::cfg;

namespace {

constexpr int kWdsSlots = 4;

int writeSlot(int slot, const char* entry) {
    // A failed edit leaves the file as it was and, as on the device, does not
    // change the result: callers only hear of bad slots.
    concat_nd_modify_cfg_file(slot, kWdsListKey, entry);
    return 0;
}

}  // namespace

extern "C" int dot11WdsAddMac(int slot, const char* mac) {
    if (slot < 1 || slot > kWdsSlots || !mac) return -1;
    if (holdsLineEnd(mac)) {
        wlan::logMsg(kWdsLineEnd, kWdsListKey);
        return -1;
    }
    return writeSlot(slot, mac);
}

extern "C" int dot11WdsDelMac(int slot) {
    if (slot < 1 || slot > kWdsSlots) return -1;
    return writeSlot(slot, kEmptyWdsSlot);
}
