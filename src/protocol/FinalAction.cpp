#include "protocol/FinalAction.h"

#include <algorithm>
#include <string>

#include "base/Text.h"
#include "protocol/Words.h"

namespace {

constexpr FinalActionFacts kActions[] = {
    {FinalAction::Nothing, "nothing", "leave it where it is", Destination::None, "Do nothing"},
    {FinalAction::Copy, "copy", "copy it, replacing a file of the same name", Destination::Folder,
     "Copy to a different folder (overwrite existing files)"},
    {FinalAction::Move, "move", "move it, unless a file of the same name exists", Destination::Folder,
     "Move to a different folder (do not overwrite)"},
    {FinalAction::Delete, "delete", "delete it", Destination::None, "Delete document from disk"},
    {FinalAction::Rename, "rename", "rename it in its own folder", Destination::NewName, ""},
    {FinalAction::Execute, "execute", "start a program with it", Destination::Program, "Execute application"},
    {FinalAction::MoveReplace, "move-replace", "move it, replacing a file of the same name", Destination::Folder,
     "Move to a different folder (overwrite existing files)"},
    {FinalAction::MoveVersions, "move-versions", "move it, under a new name when the name is taken",
     Destination::Folder, "Move to a different folder (create multiple versions)"},
    {FinalAction::CopyVersions, "copy-versions", "copy it, under a new name when the name is taken",
     Destination::Folder, "Copy to a different folder (create multiple versions)"},
};

constexpr WordTable<4> kDestinations = {"", "folder", "new name", "program"};

}  // namespace

std::span<const FinalActionFacts> FinalActions() { return kActions; }

const FinalActionFacts& FactsOf(FinalAction action) { return kActions[static_cast<std::size_t>(action)]; }

const FinalActionFacts* FindFinalAction(std::string_view wordOrCode)
{
    for (const FinalActionFacts& facts : kActions)
        if (EqualsIgnoreCaseAscii(wordOrCode, facts.word) ||
            wordOrCode == std::to_string(static_cast<int>(facts.action)))
            return &facts;
    return nullptr;
}

std::string_view DestinationWord(Destination destination) { return WordOf(kDestinations, destination); }

bool TakesInputAway(FinalAction action) { return VacatesInput(action) && action != FinalAction::Rename; }

bool VacatesInput(FinalAction action)
{
    switch (action) {
        case FinalAction::Move:
        case FinalAction::Delete:
        case FinalAction::Rename:
        case FinalAction::MoveReplace:
        case FinalAction::MoveVersions:
            return true;
        default:
            return false;
    }
}

bool WantsFolder(FinalAction action)
{
    return std::ranges::any_of(kActions, [&](const FinalActionFacts& facts) {
        return facts.action == action && facts.destination == Destination::Folder;
    });
}
