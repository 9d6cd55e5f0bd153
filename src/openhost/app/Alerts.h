#ifndef FERRULE_OPENHOST_APP_ALERTS_H
#define FERRULE_OPENHOST_APP_ALERTS_H

#include <map>
#include <string>
#include <string_view>

#include "hostapi/HostTypes.h"

namespace openhost {

/// Messages to a person, of whom there is none here: each is said in the diagnostics and answered at once.
///
/// The answer is the one that does no harm when nobody has read the question: a message is taken note of (its first
/// button, the default one), but what asks for a confirmation is not confirmed (Cancel, No).
inline constexpr ASInt32 kFirstButton = 1;

/// Says an alert's text as one line.
void SayAlert(std::string_view text);

/// Answers to alerts that plug-ins remember under a name of theirs; 0 for a name without one.
struct AlertAnswers {
    std::map<std::string, ASInt32> byName;
};

}  // namespace openhost

#endif
