// The tables the tool handles and their handlers, in the order the device's
// libraries expect.
#include "main/dispatch.h"
#include "security/security.h"

extern "C" const TblHandlerEntry handlers[] = {
    {"dot11WPS", dot11WPSTblHandler},
    {"dot11ACL", dot11ACLTblHandler},
    {nullptr, nullptr},
};
