#include "hostcalls/HostEntry.h"

#include "hostcalls/HostSlot.h"

ASCallback WrapCallback(void* procedure)
{
    return HostCall(HOST_SLOT(Core, ASCallbackCreate), HostTables().Extension(), procedure);
}
