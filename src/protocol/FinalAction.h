// What happens to an input file after it has been processed: the actions that there are, and their properties.
#pragma once

#include <optional>
#include <span>
#include <string_view>

/// The numbers are the codes that people and scripts use.
enum class FinalAction {
    Nothing = 0,
    Copy = 1,
    Move = 2,
    Delete = 3,
    Rename = 4,
    Execute = 5,
    MoveReplace = 6,
    MoveVersions = 7,
    CopyVersions = 8
};

/// What the destination of an action means.
enum class Destination { None, Folder, NewName, Program };

struct FinalActionFacts {
    FinalAction action;
    std::string_view word;  ///< on the command line
    std::string_view help;  ///< what happens to the input
    Destination destination;
    /// What people choose it by in a list; empty: it is not offered there.
    std::string_view offered;
};

/// All of them, in the order of their codes.
[[nodiscard]] std::span<const FinalActionFacts> FinalActions();
/// `action` must be one of the enumeration.
[[nodiscard]] const FinalActionFacts& FactsOf(FinalAction action);

/// By word, in any letter case, or by code. Null when there is none.
[[nodiscard]] const FinalActionFacts* FindFinalAction(std::string_view wordOrCode);

/// "folder", "new name", "program"; empty when there is no destination.
[[nodiscard]] std::string_view DestinationWord(Destination destination);

/// Whether the action, when it succeeds, removes the input from its place for good or for another folder.
[[nodiscard]] bool TakesInputAway(FinalAction action);
/// Whether nothing is left under the input's name when the action has succeeded.
[[nodiscard]] bool VacatesInput(FinalAction action);
/// Whether the action wants a folder as its destination.
[[nodiscard]] bool WantsFolder(FinalAction action);
