#include "common/MetadataImport.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"

namespace {

constexpr char kTooFewFields[] =
    "The input document contains less than two field.\nPlease verify file content and formatting.";  // sic
constexpr char kNoFilename[] =
    "The input document does not contain a required \"Filename\" field.\nPlease verify file formatting.";
constexpr char kNoFields[] =
    "The input document does not contain any required fields.\nPlease verify file formatting.";

// Tables come from any system, so both separators of paths count.
constexpr char kAnySeparator[] = "/\\";

std::string NameIn(const std::string& path)
{
    const std::size_t end = path.find_last_of(kAnySeparator);
    return end == std::string::npos ? path : path.substr(end + 1);
}

/// Documents by what may be called their names.
class CDocumentNames {
public:
    explicit CDocumentNames(const std::vector<std::string>& paths) : m_paths(paths)
    {
        for (std::size_t place = 0; place < paths.size(); ++place) {
            m_exact.emplace(paths[place], place);
            m_anyCase.emplace(MatchedName(paths[place]), place);
            m_names.emplace(MatchedName(NameIn(paths[place])), place);
        }
    }

    /// None, one, or all that the name fits.
    std::vector<std::size_t> Find(const std::string& name, FileMatch match) const
    {
        if (const auto found = m_exact.find(name); found != m_exact.end()) return {found->second};
        if (auto found = All(m_anyCase, MatchedName(name)); !found.empty()) return found;
        const bool hasFolder = name.find_first_of(kAnySeparator) != std::string::npos;
        if (hasFolder && match == FileMatch::FullPath) return {};
        const std::string bare = NameIn(name);
        auto found = All(m_names, MatchedName(bare));
        std::vector<std::size_t> exact;
        std::ranges::copy_if(found, std::back_inserter(exact),
                             [&](std::size_t place) { return NameIn(m_paths[place]) == bare; });
        return exact.empty() ? found : exact;
    }

private:
    using Places = std::unordered_multimap<std::string, std::size_t>;

    static std::vector<std::size_t> All(const Places& places, const std::string& key)
    {
        std::vector<std::size_t> found;
        for (auto [at, end] = places.equal_range(key); at != end; ++at) found.push_back(at->second);
        std::ranges::sort(found);
        return found;
    }

    const std::vector<std::string>& m_paths;
    std::unordered_map<std::string, std::size_t> m_exact;
    Places m_anyCase, m_names;  // by small letters
};

std::optional<std::size_t> ColumnOf(const SeparatedRecord& heading, const std::string& name)
{
    for (std::size_t column = 0; column < heading.values.size(); ++column)
        if (EqualsIgnoreCaseAscii(Trim(heading.values[column]), name)) return column;
    return std::nullopt;
}

std::string SeveralText(const SeparatedRecord& record, const std::string& name,
                        const std::vector<std::size_t>& places, const std::vector<std::string>& paths)
{
    std::string text =
        FormatText("Line %d: \"%s\" names several documents:", static_cast<int>(record.line), name.c_str());
    for (const std::size_t place : places) text += "\n    " + paths[place];
    return text + "\nPlease write the full path.";
}

}  // namespace

Expected<MetadataImport> ImportMetadata(const std::vector<SeparatedRecord>& table,
                                        const std::vector<std::string>& paths, const MetadataImportRules& rules)
{
    if (table.empty() || table[0].values.size() < 2) return Failure(kTooFewFields);
    const auto nameColumn = ColumnOf(table[0], "Filename");
    if (!nameColumn) return Failure(kNoFilename);
    std::vector<std::pair<std::size_t, std::size_t>> taken;  // field and column
    for (std::size_t field = 0; field < rules.fields.size(); ++field)
        if (const auto column = ColumnOf(table[0], rules.fields[field])) taken.emplace_back(field, *column);
    if (taken.empty()) return Failure(kNoFields);

    const CDocumentNames names(paths);
    MetadataImport import;
    std::map<std::pair<std::size_t, std::size_t>, std::string> values;  // the last one for a document counts
    for (std::size_t at = 1; at < table.size(); ++at) {
        const SeparatedRecord& record = table[at];
        if (record.values.size() == 1 && record.values[0].empty()) continue;
        ++import.records;
        const std::string name = *nameColumn < record.values.size() ? record.values[*nameColumn] : std::string();
        const auto found = name.empty() ? std::vector<std::size_t>() : names.Find(name, rules.match);
        if (found.empty()) ++import.unmatched;
        if (found.size() > 1) import.refused.push_back(SeveralText(record, name, found, paths));
        if (found.size() != 1) continue;
        for (const auto& [field, column] : taken) {
            if (column >= record.values.size()) continue;  // a line that is too short says nothing of it
            const std::string& text = record.values[column];
            if (text.empty() ? !rules.clearEmpty : text == rules.notAValue) continue;
            values[{found[0], field}] = text;
        }
    }
    for (auto& [key, text] : values) import.values.push_back({key.first, key.second, std::move(text)});
    return import;
}
