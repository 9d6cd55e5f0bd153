#include "jobs/TouchedNames.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/Names.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace {

constexpr std::uint64_t kAnyFolder = 0;

std::uint64_t HashOf(std::string_view bytes, std::uint64_t start)
{
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t hash = start ^ 0xCBF29CE484222325;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * kPrime;
    return hash ^ (hash >> 29);
}

/// The name without " (number)" at its end; the same when there is none.
std::string_view WithoutNumber(std::string_view base)
{
    if (!base.ends_with(')')) return base;
    const std::size_t open = base.rfind(" (");
    if (open == std::string_view::npos || open + 3 > base.size() - 1) return base;
    const std::string_view number = base.substr(open + 2, base.size() - open - 3);
    const bool digits = std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits ? base.substr(0, open) : base;
}

std::string ComparableText(std::string base)
{
    base = LowerCasedName(base);
    for (std::size_t before = 0; before != base.size();) {
        before = base.size();
        base.resize(WithoutNumber(base).size());
    }
    return base;
}

}  // namespace

std::string ComparableBase(std::string_view fileName) { return ComparableText(SplitPath(fileName).base); }

CTouchedNames::CTouchedNames(const WorkFacts& facts, const RunDescription& wanted) : m_anyFolder(facts.writesAnywhere)
{
    m_names.push_back({});  // the input itself
    for (const ResultName& result : facts.results) m_names.push_back({result, std::nullopt});
    if (WantsFolder(wanted.finalAction)) m_names.push_back({{.folder = wanted.destination}, std::nullopt});
    if (wanted.finalAction == FinalAction::Rename) m_names.push_back({{}, wanted.destination});
}

void CTouchedNames::AppendKeys(const std::string& folder, std::string_view name, std::vector<std::uint64_t>& keys)
{
    const std::string base = SplitPath(name).base;
    const auto append = [&](const std::string& made, std::uint64_t folderHash) {
        const std::uint64_t key = HashOf(ComparableText(made), folderHash);
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
    };
    for (const auto& [made, other] : m_names)
        append(other ? SplitPath(*other).base : made.before + base + made.after,
               FolderHash(made.folder ? *made.folder : folder));
    if (m_anyFolder) append(base, kAnyFolder);
    // What is done to the file behind a link is done to an input, too, when that is one.
    const std::string path = folder + std::string(name);
    std::error_code error;
    if (!std::filesystem::is_symlink(platform::StandardPath(path), error)) return;
    if (const std::string real = platform::CanonicalPath(path); !real.empty())
        append(SplitPath(real).base, FolderHash(FolderOf(real)));
}

std::uint64_t CTouchedNames::FolderHash(const std::string& folder)
{
    const auto [place, isNew] = m_folderHashes.emplace(folder, 0);
    if (!isNew) return place->second;
    const std::string canonical = platform::CanonicalPath(folder.empty() ? "." : folder);
    return place->second = HashOf(LowerCasedName(canonical.empty() ? folder : canonical), 1);
}
