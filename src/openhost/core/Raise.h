#ifndef FERRULE_OPENHOST_CORE_RAISE_H
#define FERRULE_OPENHOST_CORE_RAISE_H

#include <exception>
#include <string>

#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "hostapi/HostTypes.h"

namespace openhost {

/// An error on its way to the plug-in. Host code throws it; the entry of the slot turns it into a raise after every
/// C++ object of the call is gone.
class CHostRaise final : public std::exception {
public:
    CHostRaise(ASErrorCode code, std::string message) : m_code(code), m_message(std::move(message)) {}
    ASErrorCode Code() const { return m_code; }
    const std::string& Message() const { return m_message; }
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    ASErrorCode m_code;
    std::string m_message;
};

/// Ends the current host call with `code`. The message names what was concerned and why; it becomes the error's text
/// until the next raise. An empty message leaves the text that belongs to the code.
[[noreturn]] void Raise(ASErrorCode code, std::string message = {});

/// Raises genErrBadParm unless the condition holds.
inline void Require(bool condition, const char* what)
{
    if (!condition) Raise(genErrBadParm, what);
}

/// The text of an error code: the message of the last raise when it had this code, else the text registered for the
/// code, else empty.
std::string ErrorText(ASErrorCode code);

/// Makes a new code of the plug-in error system with a text of its own (UTF-8).
ASErrorCode RegisterErrorText(ASErrSeverity severity, std::string text);

}  // namespace openhost

#endif
