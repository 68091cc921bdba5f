// The tables the tool handles and their handlers, in the order the device's
// libraries expect.
#include "auth/auth.h"
#include "main/dispatch.h"
#include "radio/radio.h"
#include "security/security.h"
#include "vap/vap.h"

extern "C" const TblHandlerEntry handlers[] = {
    {"dot11Interface", dot11InterfaceTblHandler},
    {"dot11VAP", dot11VAPTblHandler},
    {"VlanPortMgmt", vlanPortMgmtTblHandler},
    {"dot11WPS", dot11WPSTblHandler},
    {"dot11Radio", dot11RadioTblHandler},
    {"dot11GlobalConfig", dot11GlobalConfigTblHandler},
    {"dot11Profile", startStopVAPUsingProfile},
    {"dot11ACL", dot11ACLTblHandler},
    {"dot11Radio11n", dot11Radio11nTblHandler},
    {"dot11WDSPeers", dot11WDSPeersTblHandler},
    {"radiusClient", radiusClientHandler},
    {"MulToUni", multicastEnableDisable},
    {nullptr, nullptr},
};
