#include "jobs/PlannedFiles.h"

#include <algorithm>
#include <chrono>
#include <numeric>
#include <string_view>
#include <utility>

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

void CTouchedNames::AppendKeys(const std::string& folder, std::string_view name, bool isLink,
                               std::vector<std::uint64_t>& keys)
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
    if (!isLink) return;
    if (const std::string real = platform::CanonicalPath(folder + std::string(name)); !real.empty())
        append(SplitPath(real).base, FolderHash(FolderOf(real)));
}

std::uint64_t CTouchedNames::FolderHash(const std::string& folder)
{
    const auto [place, isNew] = m_folderHashes.emplace(folder, 0);
    if (!isNew) return place->second;
    const std::string canonical = platform::CanonicalPath(folder.empty() ? "." : folder);
    return place->second = HashOf(LowerCasedName(canonical.empty() ? folder : canonical), 1);
}

namespace {

/// Sets of files that are joined pair by pair.
class CUnions {
public:
    explicit CUnions(std::size_t files) : m_parents(files) { std::iota(m_parents.begin(), m_parents.end(), 0u); }

    /// The first file of the set, which stands for it.
    std::uint32_t First(std::uint32_t file)
    {
        while (m_parents[file] != file) file = m_parents[file] = m_parents[m_parents[file]];
        return file;
    }

    void Join(std::uint32_t one, std::uint32_t other)
    {
        one = First(one);
        other = First(other);
        m_parents[std::max(one, other)] = std::min(one, other);
    }

private:
    std::vector<std::uint32_t> m_parents;
};

}  // namespace

std::vector<std::uint32_t> CCollisionGroups::Groups(std::size_t files)
{
    std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    CUnions unions(files);
    for (std::size_t i = 1; i < m_entries.size(); ++i)
        if (m_entries[i].key == m_entries[i - 1].key) unions.Join(m_entries[i].file, m_entries[i - 1].file);
    m_entries = {};

    // A first file stands before the others of its set, so the group can be told when the second one comes.
    std::vector<std::uint32_t> groups(files, 0);
    for (std::uint32_t file = 0; file < files; ++file)
        if (const std::uint32_t first = unions.First(file); first != file) groups[file] = groups[first] = 1;
    std::uint32_t count = 0;
    for (std::uint32_t file = 0; file < files; ++file) {
        if (groups[file] == 0) continue;
        const std::uint32_t first = unions.First(file);
        groups[file] = first == file ? ++count : groups[first];
    }
    return groups;
}

namespace {

std::int64_t NowNanoseconds()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::uint64_t IdentityOf(const platform::FileStamp& stamp)
{
    return (stamp.inode + 1) * 0x9E3779B97F4A7C15 ^ stamp.device * 0xC2B2AE3D27D4EB4F;
}

}  // namespace

CPlannedFiles::CPlannedFiles(CInputCollector inputs, double minAgeSeconds) : m_inputs(std::move(inputs))
{
    const CPathStore& paths = m_inputs.Paths();
    m_files.reserve(paths.Size());
    const std::int64_t newest = NowNanoseconds() - static_cast<std::int64_t>(minAgeSeconds * 1e9);
    for (std::uint32_t index = 0; index < paths.Size(); ++index) {
        bool isLink = false;
        const auto stamp = platform::StampOf(paths.Path(index), isLink);
        if (!stamp) {
            m_files.push_back({0, 0, 0, index, isLink});
        } else if (minAgeSeconds > 0 && stamp->modifiedNanoseconds > newest) {
            ++m_tooYoung;
        } else {
            m_files.push_back({stamp->size, stamp->modifiedNanoseconds, IdentityOf(*stamp), index, isLink});
        }
    }
}

void CPlannedFiles::ForEach(CTouchedNames& names, const std::function<void(const PlannedFile&)>& visit) const
{
    const std::vector<std::uint32_t> groups = Groups(names);
    PlannedFile planned;
    for (const File& file : m_files) {
        planned.group = groups[static_cast<std::size_t>(planned.number++)];
        planned.path = m_inputs.Paths().Path(file.index);
        planned.size = file.size;
        planned.modifiedNanoseconds = file.modifiedNanoseconds;
        visit(planned);
    }
}

std::vector<std::uint32_t> CPlannedFiles::Groups(CTouchedNames& names) const
{
    const CPathStore& paths = m_inputs.Paths();
    CCollisionGroups groups;
    std::vector<std::uint64_t> keys;
    for (std::uint32_t place = 0; place < m_files.size(); ++place) {
        const File& file = m_files[place];
        keys.clear();
        names.AppendKeys(paths.FolderText(paths.FolderOfItem(file.index)), paths.Name(file.index), file.isLink, keys);
        if (file.identity != 0) keys.push_back(file.identity);
        for (const std::uint64_t key : keys) groups.Add(key, place);
    }
    return groups.Groups(m_files.size());
}
