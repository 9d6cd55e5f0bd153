// From the name of a host function to its entry in its table. For this folder only.
#pragma once

#include "hostapi/HostInterface.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"

namespace hostcalls {
/// The entry of a slot. Throws CHostException with "not implemented" when the table or the entry is missing.
[[nodiscard]] void* SlotEntry(HostTable table, int slot, const char* function);
}  // namespace hostcalls

/// The host function `function` of the table `table`, typed: HostCall(HOST_SLOT(ASExtra, ASCabNew)).
#define HOST_SLOT(table, function) \
    reinterpret_cast<function##SlotProc>(hostcalls::SlotEntry(HostTable::table, kSlot##function, #function))
