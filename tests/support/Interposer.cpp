#include "support/Interposer.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <type_traits>

namespace testsupport {

namespace {

using openhost::CTables;
using openhost::Table;

const std::set<std::string_view> kPassing = {
    "ASRaise", "ASPushExceptionFrame", "ASPopExceptionFrame", "ASGetExceptionErrorCode", "ASmalloc", "ASrealloc",
    "ASfree",  "ASGetErrorString"};

bool Releases(std::string_view name)
{
    static const std::set<std::string_view> exact = {"ASStmClose", "ASFileClose", "PDDocClose", "AVDocClose"};
    return exact.contains(name) || name.find("Destroy") != name.npos || name.find("Release") != name.npos;
}

template <Table table, int slot, class Proc>
struct CInterposed {
    static void Install(CTables&, std::string_view) {}  // variadic functions stay as they are
};

template <Table table, int slot, class R, class... A>
struct CInterposed<table, slot, R(HOSTCALL*)(A...)> {
    using Proc = R(HOSTCALL*)(A...);
    static inline Proc real = nullptr;
    static inline bool raisesAfterwards = false;

    static R HOSTCALL Entry(A... arguments)
    {
        const bool raise = CCallGate::Instance().Count(table, slot);
        if (raise && !raisesAfterwards) CCallGate::Instance().Raise();
        if constexpr (std::is_void_v<R>) {
            real(arguments...);
            if (raise) CCallGate::Instance().Raise();
        } else {
            R result = real(arguments...);
            if (raise) CCallGate::Instance().Raise();
            return result;
        }
    }

    static void Install(CTables& tables, std::string_view name)
    {
        if (!tables.Offers(table, slot) || kPassing.contains(name)) return;
        real = reinterpret_cast<Proc>(tables.Get(table)[slot]);
        raisesAfterwards = Releases(name);
        tables.PutTyped<Proc>(table, slot, &Entry);
    }
};

}  // namespace

CCallGate& CCallGate::Instance()
{
    static CCallGate gate;
    return gate;
}

void CCallGate::RaiseOnCall(int number)
{
    m_calls = 0;
    m_raiseAt = number;
    m_raised = false;
    m_name.clear();
}

bool CCallGate::Count(Table table, int slot)
{
    if (++m_calls != m_raiseAt) return false;
    m_raised = true;
    m_name = openhost::SlotName(table, slot);
    return true;
}

void CCallGate::Raise()
{
    openhost::Part<openhost::CFrames>().Remember(genErrGeneral, "an error made by the test");
    openhost::Part<openhost::CFrames>().LeaveThroughTop();
}

void InterposeEverything(CTables& tables)
{
#define INSTALL(table, slot, function) \
    CInterposed<Table::table, slot, function##SlotProc>::Install(tables, #function);
    HOST_SLOTS_CORE(INSTALL)
    HOST_SLOTS_ACROSUPPORT(INSTALL)
    HOST_SLOTS_COS(INSTALL)
    HOST_SLOTS_PDMODEL(INSTALL)
    HOST_SLOTS_ACROVIEW(INSTALL)
    HOST_SLOTS_WIN(INSTALL)
    HOST_SLOTS_ASEXTRA(INSTALL)
#undef INSTALL
}

}  // namespace testsupport
