#include "tools/rename/RenameLists.h"

#include "base/Names.h"
#include "base/Text.h"
#include "common/SeparatedText.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "protocol/RenameOrder.h"

namespace {

using platform::FileResult;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kListPrefix = "renaming-", kListSuffix = ".csv";

/// Whole lines only: a program that ends while it writes leaves part of one.
std::string_view WholeLines(std::string_view text)
{
    const auto end = text.rfind("\r\n");
    return text.substr(0, end == text.npos ? 0 : end + 2);
}

}  // namespace

std::string ListedPath(const std::string& path) { return TextFromBytes(platform::Utf8FromNarrow(path)); }

std::string PathFromList(const std::string& text) { return platform::NarrowFromUtf8(BytesFromText(text)); }

Expected<CRenameLists> CRenameLists::Begin(const std::string& folder, const std::vector<RenameLine>& lines)
{
    (void)platform::CreateFolders(folder);
    CRenameLists lists(WithTrailingSeparator(folder) + std::string(kListPrefix) +
                       std::to_string(platform::NanosecondsSince1970()) + std::string(kListSuffix));
    std::string text = RenamePlanHeading();
    for (const RenameLine& line : lines) text += RenamePlanLine(line.path, line.newName);
    platform::CAtomicFile file(lists.m_path, platform::Existing::Fail);
    file.Write(text.data(), text.size());
    FileResult written = file.Commit();
    if (written) written = lists.m_lock.emplace().TryLock(lists.m_path);
    if (written) return lists;
    return Failure(lists.m_path + ": the list of new names cannot be written (" +
                   platform::ErrorText(written.errorNumber) + ").");
}

std::optional<CRenameLists> CRenameLists::Interrupted(const std::string& folder)
{
    for (const platform::FolderEntry& entry : platform::ListFolder(folder)) {
        if (!entry.name.starts_with(kListPrefix) || !entry.name.ends_with(kListSuffix)) continue;
        CRenameLists lists(WithTrailingSeparator(folder) + entry.name);
        if (!lists.m_lock.emplace().TryLock(lists.m_path)) continue;
        lists.m_interrupted = true;
        lists.ReadWayBack();
        lists.ReadList();
        return lists;
    }
    return std::nullopt;
}

void CRenameLists::ReadWayBack()
{
    const auto text = ReadDecodedText(WayBackPath(), CharacterSet::Utf8);
    if (!text) return;
    const std::string_view whole = WholeLines(text->utf8);
    (void)ForEachRename(
        whole, [&](const RenameLine& line) { Remember(PathFromList(line.newName), PathFromList(line.path)); });
    if (m_wayBack.Open(WayBackPath()))
        (void)m_wayBack.Truncate(m_targets.empty() ? 0 : kUtf8Mark.size() + whole.size());
}

void CRenameLists::ReadList()
{
    const auto text = ReadDecodedText(m_path, CharacterSet::Utf8);
    if (!text) return;
    (void)ForEachRename(text->utf8, [&](const RenameLine& line) {
        const std::string from = PathFromList(line.path), to = PathFromList(line.newName);
        const bool isName = to.find_first_of("/\\") == to.npos;
        if (!to.empty()) m_planned[from] = isName ? FolderOf(from) + to : to;
    });
}

bool CRenameLists::HasLeft(const std::string& from) const
{
    if (platform::NameExists(WaitingPlaceOf(from))) return false;
    return m_taken.contains(from) || !platform::NameExists(from);
}

std::string CRenameLists::MayBeAt(const std::string& from) const
{
    const auto planned = m_planned.find(from);
    return planned != m_planned.end() && platform::NameExists(planned->second) ? planned->second : std::string();
}

const std::string* CRenameLists::TargetOf(const std::string& from) const
{
    const auto found = m_targets.find(from);
    return found == m_targets.end() ? nullptr : &found->second;
}

void CRenameLists::Remember(const std::string& from, const std::string& to)
{
    m_targets[from] = to;
    m_taken.insert(to);
}

FileResult CRenameLists::Add(const std::string& from, const std::string& to)
{
    std::string text = m_targets.empty() ? RenamePlanHeading() : std::string();
    text += RenamePlanLine(ListedPath(to), ListedPath(from));
    FileResult written;
    if (!m_wayBack.IsOpen()) written = m_wayBack.Open(WayBackPath());
    if (written) written = m_wayBack.Write(text);
    if (written) Remember(from, to);
    return written;
}

void CRenameLists::Finish()
{
    m_wayBack.Close();
    if (!m_targets.empty())
        (void)platform::MoveFile(WayBackPath(), FolderOf(m_path) + kWayBackList, platform::Existing::Replace);
    else if (platform::NameExists(WayBackPath()))
        (void)platform::DeleteFile(WayBackPath());
    m_lock.reset();
    (void)platform::DeleteFile(m_path);
}
