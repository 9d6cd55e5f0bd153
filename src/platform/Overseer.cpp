#include "platform/Overseer.h"

#include <atomic>
#include <utility>

#include "platform/FileProblem.h"
#include "platform/Oversight.h"

namespace platform {
namespace {

COverseer* installed = nullptr;
std::string temporaryTag;

}  // namespace

COverseer* InstallOverseer(COverseer* overseer) { return std::exchange(installed, overseer); }

COverseer* Overseer() { return installed; }

void SetTemporaryTag(const std::string& tag) { temporaryTag = tag; }

std::string TemporaryPrefix(const std::string& tag) { return tag.empty() ? ".ferrule-" : ".ferrule-" + tag + '-'; }

std::string NextTemporaryName(unsigned long processId)
{
    static std::atomic<unsigned> counter{0};
    return TemporaryPrefix(temporaryTag) + std::to_string(processId) + '-' + std::to_string(++counter) + ".tmp";
}

std::optional<FileResult> AskOverseer(COverseer::Act act, const std::string& file, const std::string& target)
{
    if (!installed) return std::nullopt;
    const auto answer = installed->Ask(act, file, target);
    if (answer == COverseer::Answer::Refuse) return Failure(FileProblem::Canceled);
    // In a trial run nothing was prepared that could be done.
    if (answer == COverseer::Answer::Pretend || Pretending()) return FileResult{};
    return std::nullopt;
}

bool Pretending() { return installed && installed->Pretends(); }

std::optional<bool> PretendedExistence(const std::string& path)
{
    return Pretending() ? installed->Exists(path) : std::nullopt;
}

}  // namespace platform
