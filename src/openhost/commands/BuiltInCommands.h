#ifndef FERRULE_OPENHOST_COMMANDS_BUILT_IN_COMMANDS_H
#define FERRULE_OPENHOST_COMMANDS_BUILT_IN_COMMANDS_H

#include <optional>
#include <string>

#include "hostapi/HostRecords.h"
#include "openhost/core/Slot.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

/// The titles of one of the host's own steps.
struct StepTitles {
    const char* group;
    const char* title;
};

/// Answers the properties asked for: all of them for an empty cab.
void PutStepProps(CCabinet& props, const StepTitles& titles);

/// A parameter that may be stored as a text or as a string; host encoding.
std::optional<std::string> TextOrString(const CCabinet* cab, std::string_view key);

/// The record of a step of the host: its parameters stay with each command, Work does the step and answers how it
/// ended. Work may raise.
template <auto Work, auto GetProps>
AVCommandHandler StepHandler()
{
    static AVCommandHandlerRec record = [] {
        AVCommandHandlerRec made = {};
        made.size = sizeof(made);
        made.GetProps = &CSlot<GetProps>::Entry;
        made.Work = &CSlot<Work>::Entry;
        return made;
    }();
    return &record;
}

AVCommandHandler SaveStepHandler();
AVCommandHandler SecurityStepHandler();

}  // namespace openhost

#endif
