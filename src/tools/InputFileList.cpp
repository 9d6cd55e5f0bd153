#include "tools/InputFileList.h"

#include <optional>

#include "base/Text.h"
#include "common/RegularExpression.h"
#include "engine/InputCollector.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kFolderLine[] = "FOLDER: [<]([^>]+)[>]";

CInputCollector NewCollector() { return CInputCollector({.extensions = {"pdf"}}); }

/// Of the text of a folder's line: nothing when it names none.
class CFolderOfLine {
public:
    CFolderOfLine() { (void)m_expression.Compile(kFolderLine, LetterCase::Matters); }

    std::optional<std::string> In(const std::string& line) const
    {
        const auto found = m_expression.Extract(CSearchedText::FromUtf8(platform::Utf8FromNarrow(line)), 1);
        if (!found || !*found) return std::nullopt;
        return platform::NarrowFromUtf8(**found);
    }

private:
    CRegularExpression m_expression;
};

}  // namespace

bool CInputFileList::AddFile(const std::string& path)
{
    if (!m_files.insert(path).second) return false;
    m_lines.push_back({.text = path});
    return true;
}

std::size_t CInputFileList::AddFolder(const std::string& folder)
{
    CInputCollector collector = NewCollector();
    if (platform::FolderExists(folder)) collector.AddPath(folder);
    const std::size_t count = collector.Paths().Size();
    Entry line{.text = FormatText("FOLDER: <%s> (%d files)", folder.c_str(), static_cast<int>(count)),
               .isFile = false};
    // A ">" in the path, and bytes that are no text, are not found again in the line.
    if (CFolderOfLine().In(line.text) != folder) line.folder = folder;
    m_lines.push_back(std::move(line));
    return count;
}

void CInputFileList::Remove(const std::vector<std::size_t>& places)
{
    std::vector<bool> stays(m_lines.size(), true);
    for (const std::size_t place : places)
        if (place < stays.size()) stays[place] = false;
    std::vector<Entry> rest;
    for (std::size_t place = 0; place < m_lines.size(); ++place) {
        if (stays[place])
            rest.push_back(std::move(m_lines[place]));
        else if (m_lines[place].isFile)
            m_files.erase(m_lines[place].text);
    }
    m_lines = std::move(rest);
}

void CInputFileList::Clear()
{
    m_lines.clear();
    m_files.clear();
}

std::string CInputFileList::CountLabel() const
{
    return FormatText("%d items(s) have been selected for processing.", static_cast<int>(m_lines.size()));  // sic
}

std::vector<std::string> CInputFileList::Files() const
{
    const CFolderOfLine folders;
    CInputCollector collector = NewCollector();
    for (const Entry& line : m_lines) {
        if (line.isFile) {
            collector.AddFile(line.text);
            continue;
        }
        const auto folder = line.folder.empty() ? folders.In(line.text) : line.folder;
        if (folder && platform::FolderExists(*folder)) collector.AddPath(*folder);
    }
    collector.KeepOneNameOfEachFile();
    std::vector<std::string> files;
    files.reserve(collector.Paths().Size());
    for (std::size_t index = 0; index < collector.Paths().Size(); ++index)
        files.push_back(collector.Paths().Path(index));
    return files;
}
