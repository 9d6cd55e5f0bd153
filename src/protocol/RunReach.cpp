#include "protocol/RunReach.h"

#include <algorithm>

#include "base/Names.h"
#include "base/Text.h"
#include "protocol/Json.h"

namespace {

/// Whether no part of the path leads up, so that its beginning tells where it is.
bool IsStraight(const std::string& path)
{
    std::string part;
    for (const char character : path + kSeparator) {
        const bool separates = character == '/' || character == kSeparator;
        if (separates && (part == ".." || part == ".")) return false;
        part = separates ? std::string() : part + character;
    }
    return true;
}

bool IsBelow(const std::string& path, const std::string& folder)
{
    const std::string begin = WithTrailingSeparator(folder);
    return path.size() > begin.size() && path.starts_with(begin);
}

bool IsBelowOneOf(const std::string& path, const std::vector<std::string>& folders)
{
    return std::any_of(folders.begin(), folders.end(),
                       [&](const std::string& folder) { return !folder.empty() && IsBelow(path, folder); });
}

}  // namespace

bool RunReach::CoversInput(const std::string& path) const
{
    return IsStraight(path) &&
           (std::find(inputs.begin(), inputs.end(), path) != inputs.end() || IsBelowOneOf(path, inputs));
}

bool RunReach::Covers(const std::string& path, const std::string& input) const
{
    return IsStraight(path) && (anywhere || FolderOf(path) == FolderOf(input) || IsBelowOneOf(path, folders));
}

bool RunReach::CoversKept(const std::string& path) const
{
    return IsStraight(path) && !kept.empty() && IsBelow(path, kept);
}

bool RunReach::IsWithin(const RunReach& other) const
{
    const auto allIn = [](const std::vector<std::string>& some, const std::vector<std::string>& all) {
        return std::all_of(some.begin(), some.end(), [&](const std::string& each) {
            return std::find(all.begin(), all.end(), each) != all.end();
        });
    };
    return allIn(inputs, other.inputs) && allIn(folders, other.folders) && (!anywhere || other.anywhere) &&
           kept == other.kept;
}

Json RunReachJson(const RunReach& reach)
{
    Json object = {{"id", reach.run}, {"inputs", TextsOf(reach.inputs)}, {"folders", TextsOf(reach.folders)}};
    if (reach.anywhere) object["anywhere"] = true;
    if (!reach.kept.empty()) object["kept"] = TextFromBytes(reach.kept);
    return object;
}

RunReach RunReachFrom(const Json& object)
{
    return {.run = TextAt(object, "id"),
            .inputs = BytesListAt(object, "inputs"),
            .folders = BytesListAt(object, "folders"),
            .anywhere = FlagAt(object, "anywhere"),
            .kept = BytesAt(object, "kept")};
}
