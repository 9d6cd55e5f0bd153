// The check of one step of a sequence, and what is to be said about the protection that a step gives.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "hostcalls/Cab.h"

// What is to be said about the protection that a step gives, whichever step it is.

class CSequenceFindings;

/// Passwords as they are used.
struct Protection {
    std::string openPassword, permissionsPassword;
    bool mayGetOpenPassword = false;  // from somewhere else
    bool restricts = false;           // not all rights are given
    bool isRc4 = false, isShortKey = false;
};

/// Weak encryption; passwords that are missing, alike, or useless.
void CheckProtection(const Protection& protection, CSequenceFindings& findings);

/// Whether the encryption can express a password: AES with 256 bits, or an older method. It is told of by `which`,
/// never by its text.
void CheckPasswordIsTaken(const char* which, const std::string& password, bool aes256, CSequenceFindings& findings);

struct SequenceStep;

// What follows may throw CHostException.

/// The parameters that steps have when none are given, each handler asked once.
class CStepDefaults {
public:
    /// A null view when the host makes no such step.
    CCabView Of(const std::string& handler);

private:
    std::map<std::string, std::optional<CCab>> m_defaults;
};

/// Whether the host has the step and what it lacks of it in an unattended run; the parameters of a step of the
/// plug-in against its defaults; what the step's description has to say.
void CheckStep(const SequenceStep& step, CStepDefaults& defaults, CSequenceFindings& findings);

/// For a step that is about a file: it does nothing, and says nothing, when the file under this parameter is not
/// there.
void CheckNamedFile(const SequenceStep& step, const char* parameter, CSequenceFindings& findings);
