// The check of one step of a sequence.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "hostcalls/Cab.h"

class CSequenceFindings;
struct SequenceStep;

// All of them throw CHostException.

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
