#include "hostcalls/Index.h"

#include "hostapi/IndexTable.h"
#include "hostcalls/HostTables.h"

namespace {

using Report = std::function<void(const std::string&)>;

void HOSTCALL TakeReport(const char* json, void* clientData)
{
    hostcalls::Quietly([&] { (*static_cast<const Report*>(clientData))(json ? json : ""); });
}

}  // namespace

bool IndexTablePresent() { return HostTables().Has(HostTable::FerruleIndex); }

IndexStatus CarryOutIndexOrder(const std::string& order, const Report& report)
{
    Report copy = report;
    void* const clientData = &copy;
    return HostCall(HOST_SLOT(FerruleIndex, IndexCarryOut), order.c_str(), &TakeReport, clientData);
}
