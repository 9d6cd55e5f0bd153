#pragma once

#include <set>
#include <string>
#include <string_view>
#include <type_traits>

#include "openhost/core/Tables.h"

namespace testsupport {

/// Counts every call of a plug-in into the host and lets one of them raise.
class CCallGate {
public:
    static CCallGate& Instance()
    {
        static CCallGate gate;
        return gate;
    }

    /// The call with this number (from 1) raises; 0 lets all pass. Starts counting anew.
    void RaiseOnCall(int number)
    {
        *this = {};
        m_raiseAt = number;
    }
    int Calls() const { return m_calls; }
    bool Raised() const { return !m_name.empty(); }
    /// The function whose call raised.
    const std::string& RaisedName() const { return m_name; }

    /// One more call; answers whether it is the one to raise.
    bool Count(openhost::Table table, int slot)
    {
        if (++m_calls != m_raiseAt) return false;
        m_name = openhost::SlotName(table, slot);
        return true;
    }
    [[noreturn]] static void Raise()
    {
        openhost::Part<openhost::CFrames>().Remember(genErrGeneral, "an error made by the test");
        openhost::Part<openhost::CFrames>().LeaveThroughTop();
    }

private:
    int m_calls = 0;
    int m_raiseAt = 0;
    std::string m_name;
};

/// The gate in front of one function.
template <openhost::Table table, int slot, class Proc>
struct CInterposed {
    static void Install(openhost::CTables&, std::string_view) {}  // variadic functions stay as they are
};

template <openhost::Table table, int slot, class R, class... A>
struct CInterposed<table, slot, R(HOSTCALL*)(A...)> {
    using Proc = R(HOSTCALL*)(A...);
    static inline Proc real = nullptr;
    static inline bool raisesAfterwards = false;

    static R HOSTCALL Entry(A... arguments)
    {
        const bool raise = CCallGate::Instance().Count(table, slot);
        if (raise && raisesAfterwards) real(arguments...);
        if (raise) CCallGate::Raise();
        return real(arguments...);
    }

    static void Install(openhost::CTables& tables, std::string_view name)
    {
        static const std::set<std::string_view> passing = {"ASRaise",
                                                           "ASPushExceptionFrame",
                                                           "ASPopExceptionFrame",
                                                           "ASGetExceptionErrorCode",
                                                           "ASmalloc",
                                                           "ASrealloc",
                                                           "ASfree",
                                                           "ASGetErrorString"};
        static const std::set<std::string_view> closing = {"ASStmClose", "ASFileClose", "PDDocClose", "AVDocClose"};
        if (!tables.Offers(table, slot) || passing.contains(name)) return;
        real = reinterpret_cast<Proc>(tables.Get(table)[slot]);
        raisesAfterwards =
            closing.contains(name) || name.find("Destroy") != name.npos || name.find("Release") != name.npos;
        tables.PutTyped<Proc>(table, slot, &Entry);
    }
};

/// Puts the gate in front of every function that the host offers, except those of the exception mechanism itself and
/// of the memory. What releases something does its work before it raises: a release that does nothing is a leak of
/// the host's, not of the plug-in's.
inline void InterposeEverything(openhost::CTables& tables)
{
#define INSTALL(table, slot, function) \
    CInterposed<openhost::Table::table, slot, function##SlotProc>::Install(tables, #function);
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
