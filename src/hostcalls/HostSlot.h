// From the name of a host function to its entry in its table. For this folder only.
#pragma once

#include "hostapi/HostInterface.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"

namespace hostcalls {

/// The entry of a slot. Throws CHostException with "not implemented" when the table or the entry is missing.
[[nodiscard]] void* SlotEntry(HostTable table, int slot, const char* function);

/// A raise of our own making: the host answered "no" where only a value makes sense.
[[noreturn]] inline void ThrowHostError(ASErrorCode code) { throw CHostException({code, HostErrorText(code)}); }

/// For destructors: whatever goes wrong in `work` has nobody to be told to.
template <class Work>
void Quietly(Work work) noexcept
{
    try {
        work();
    } catch (...) {  // what could not be given back stays with the host
    }
}

/// Runs `work` at the end of its block, quietly.
template <class Work>
class CAtEnd {
public:
    explicit CAtEnd(Work work) : m_work(work) {}
    ~CAtEnd() { Quietly(m_work); }
    CAtEnd(const CAtEnd&) = delete;
    CAtEnd& operator=(const CAtEnd&) = delete;

private:
    Work m_work;
};

}  // namespace hostcalls

/// The host function `function` of the table `table`, typed: HostCall(HOST_SLOT(ASExtra, ASCabNew)).
#define HOST_SLOT(table, function) \
    reinterpret_cast<function##SlotProc>(hostcalls::SlotEntry(HostTable::table, kSlot##function, #function))
