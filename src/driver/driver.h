// Driver commands and the small operations built on them.
#pragma once

#include "main/keyword.h"

extern "C" {

// ifconfig <ifname> up|down; the command's result.
int dot11IfUpDown(const char* ifname, int up);

// One address added to / removed from a VAP's access-control list, in the
// configuration file and the driver.  -1 for a null argument, else the
// driver command's result.
int dot11AclAddMac(const char* ifname, const char* mac);
int dot11AclDelMac(const char* ifname, const char* mac);

// The wireless-mode keywords and their codes; every 802.11n mode is 0x60000
// or more.
extern const KeywordEntry dot11ModeTbl[];

// The code of a mode keyword, -1 for none.
int dot11ModeStrToVal(const char* keyword);

// Wireless mode, bandwidth and extension channel of a mode code, written to
// the configuration file and sent to the driver; the last command's result,
// -1 for a null name, "turbo A" or an unknown code.
int dot11SetMode(const char* ifname, int mode);

}  // extern "C"

namespace wlan {

// Runs "<iwpriv> <ifname> set <Key=Value>" with Key=Value formatted from
// format; the Key=Value text reaches the driver utility as one argument.
int drvSet(const char* ifname, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace wlan
