#include "platform/FileSteps.h"

namespace platform {

std::optional<FileResult> AskOverseer(COverseer::Act act, const std::string& file, const std::string& target)
{
    COverseer* const overseer = Overseer();
    if (!overseer) return std::nullopt;
    const auto answer = overseer->Ask(act, file, target);
    if (answer == COverseer::Answer::Refuse) return Failure(FileProblem::Cancelled);
    // In a trial run nothing was prepared that could be done.
    if (answer == COverseer::Answer::Pretend || Pretending()) return FileResult{};
    return std::nullopt;
}

bool Pretending()
{
    const COverseer* const overseer = Overseer();
    return overseer && overseer->Pretends();
}

std::optional<bool> PretendedExistence(const std::string& path)
{
    return Pretending() ? Overseer()->Exists(path) : std::nullopt;
}

}  // namespace platform
