#ifndef FERRULE_TESTS_SUPPORT_INTERPOSER_H
#define FERRULE_TESTS_SUPPORT_INTERPOSER_H

#include <string>

#include "openhost/core/Tables.h"

namespace testsupport {

/// Counts every call of a plug-in into the host and lets one of them raise.
class CCallGate {
public:
    static CCallGate& Instance();

    /// The call with this number (from 1) raises; 0 lets all pass. Starts counting anew.
    void RaiseOnCall(int number);
    int Calls() const { return m_calls; }
    bool Raised() const { return m_raised; }
    /// The function whose call raised.
    const std::string& RaisedName() const { return m_name; }

    /// One more call; answers whether it is the one to raise.
    bool Count(openhost::Table table, int slot);
    [[noreturn]] void Raise();

private:
    int m_calls = 0;
    int m_raiseAt = 0;
    bool m_raised = false;
    std::string m_name;
};

/// Puts the gate in front of every function that the host offers, except those of the exception mechanism itself and
/// of the memory. What releases something does its work before it raises: a release that does nothing is a leak of
/// the host's, not of the plug-in's.
void InterposeEverything(openhost::CTables& tables);

}  // namespace testsupport

#endif
