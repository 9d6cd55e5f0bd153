// What happens to an input file after it has been processed.
#pragma once

#include <string>

class CLogWriter;

enum class FinalActionResult {
    Done,
    Failed,      // logged; the input file is where it was
    UnknownCode  // logged; nothing was done
};

struct FinalActionOutcome {
    FinalActionResult result = FinalActionResult::Done;
    std::string reason = {};  // why it failed: a sentence without its full stop, and the path that it is about
    std::string path = {};
};

struct FinalAction {
    int code = 0;               // 0 to 8
    std::string destination;    // a folder, a new name, or a program, as the code demands
    bool failIfExists = false;  // for code 1 alone: do not replace an existing copy
};

struct FinalActionName {
    int code;
    const char* name;
};

/// The actions that people are offered, by name, in the order of the list they choose from. Code 4 is not offered.
inline constexpr FinalActionName kOfferedFinalActions[] = {
    {0, "Do nothing"},
    {1, "Copy to a different folder (overwrite existing files)"},
    {8, "Copy to a different folder (create multiple versions)"},
    {2, "Move to a different folder (do not overwrite)"},
    {6, "Move to a different folder (overwrite existing files)"},
    {7, "Move to a different folder (create multiple versions)"},
    {3, "Delete document from disk"},
    {5, "Execute application"},
};

inline constexpr int kFinalActionNothing = 0;
inline constexpr int kFinalActionRename = 4;
inline constexpr int kFinalActionExecute = 5;

/// Whether the action, when it succeeds, removes the input from its place for good or for another folder.
[[nodiscard]] bool TakesInputAway(int code);
/// Whether nothing is left under the input's name when the action has succeeded.
[[nodiscard]] bool VacatesInput(int code);
/// Whether the action wants a folder as its destination.
[[nodiscard]] bool WantsFolder(int code);

/// Applies an action to an input file and logs the outcome.
///
/// 0 nothing, 1 copy and replace, 2 move, 3 delete, 4 rename, 5 open with a program, 6 move and replace, 7 move under
/// a free name, 8 copy under a free name. Nothing but 1 and 6 ever replaces a file, and no failure loses the input.
[[nodiscard]] FinalActionOutcome ApplyFinalAction(const std::string& inputPath, const FinalAction& action,
                                                  CLogWriter& log);
