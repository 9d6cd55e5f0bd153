#include "openhost/jobs/Originals.h"

#include <array>
#include <cstdio>

#include "base/Names.h"
#include "base/Unicode.h"
#include "platform/Files.h"

namespace openhost {

namespace {

constexpr int kFilesOfFolder = 1000;
constexpr int kAttempts = 1000;
/// Leaves room for the number in front, where a name may have 255 bytes.
constexpr std::size_t kLongestName = 200;

std::string Padded(int number)
{
    std::array<char, 16> text;
    std::snprintf(text.data(), text.size(), "%07d", number);
    return text.data();
}

/// The end of a long name, with its extension.
std::string ShortName(const std::string& path)
{
    const std::string name = FileName(path);
    if (name.size() <= kLongestName) return name;
    std::size_t begin = name.size() - kLongestName;
    while (begin < name.size() && (static_cast<unsigned char>(name[begin]) & 0xC0) == 0x80) ++begin;  // whole letters
    return name.substr(begin);
}

platform::FileResult MakeFolder(const std::string& path)
{
    const auto made = platform::CreatePrivateFolder(path);
    // Another worker may have made it.
    if (made || platform::ProblemOf(made) != platform::FileProblem::Exists || !platform::IsOwnFolder(path))
        return made;
    return {};
}

Failure NotKept(const std::string& path, const std::string& folder, const platform::FileResult& result)
{
    return Failure("The original " + path + " cannot be kept in " + folder + " (" +
                   platform::ErrorText(result.errorNumber) + "), so nothing was done to it.");
}

}  // namespace

Expected<std::string> COriginals::Keep(const std::string& path, int number)
{
    const std::string folder = m_keeping.folder + kSeparator + Padded(number / kFilesOfFolder);
    if (folder != m_folder) {
        if (const auto made = MakeFolder(folder); !made) return NotKept(path, m_keeping.folder, made);
        m_folder = folder;
    }
    platform::FileResult kept;
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        std::string place =
            folder + kSeparator + Padded(number) + '-' + std::to_string(attempt) + ' ' + ShortName(path);
        if (platform::NameExists(place)) continue;  // of an earlier act for this file
        kept = m_keeper.Keep(path, place);
        if (kept) return place;
        if (platform::ProblemOf(kept) != platform::FileProblem::Exists) break;
    }
    return NotKept(path, m_keeping.folder, kept);
}

Expected<std::optional<FormerFile>> LookAtFormer(const std::string& path)
{
    platform::FileResult looked;
    auto traits = platform::TraitsOf(path, &looked);
    if (!looked && platform::ProblemOf(looked) != platform::FileProblem::Missing)
        return Failure("Nobody can tell what stands at " + path + " (" + platform::ErrorText(looked.errorNumber) +
                       "), so nothing was done to it.");
    if (!traits || platform::FolderExists(path)) return std::optional<FormerFile>();
    return std::optional(FormerFile{.link = platform::LinkText(path), .traits = std::move(*traits)});
}

}  // namespace openhost
