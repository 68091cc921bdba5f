// The tables the tool handles and their handlers, in the order the device's
// libraries expect.
#include "auth/auth.h"
#include "main/dispatch.h"
#include "security/security.h"

extern "C" const TblHandlerEntry handlers[] = {
    {"VlanPortMgmt", vlanPortMgmtTblHandler},
    {"dot11WPS", dot11WPSTblHandler},
    {"dot11ACL", dot11ACLTblHandler},
    {"radiusClient", radiusClientHandler},
    {nullptr, nullptr},
};
