#include "tools/rename/NamePartList.h"

#include <utility>

#include "tools/rename/DlgSelectWhatToAddToFilenameRename.h"
#include "tools/rename/NamePartKinds.h"

CNamePartList::CNamePartList(DialogServices services, std::vector<CFileNamePart>& parts, int depth)
    : m_services(std::move(services)), m_parts(parts), m_depth(depth)
{
}

FormControl CNamePartList::PlainButton(const char* label, void (CNamePartList::*act)())
{
    return {.what = Button{label, [this, act] {
                               (this->*act)();
                               return FormAnswer::StayOpen;
                           }}};
}

Group CNamePartList::Describe(const char* title, int lines)
{
    ListView parts{.name = "Filename components",
                   .columns = {{"Component"}},
                   .count = [this] { return m_parts.size(); },
                   .text = [this](std::size_t row, std::size_t) { return m_parts[row].Description(); },
                   .selected = &m_selected,
                   .activates = "edit-part",
                   .lines = lines,
                   .width = 90};
    FormControl edit = PlainButton("&Edit...", &CNamePartList::Edit);
    edit.id = "edit-part";
    return {.title = title,
            .controls = {{.what = std::move(parts), .id = "parts", .grows = true},
                         {.what = Row{{PlainButton("&Add...", &CNamePartList::Add), std::move(edit),
                                       PlainButton("D&uplicate", &CNamePartList::Duplicate),
                                       PlainButton("&Delete", &CNamePartList::Delete),
                                       PlainButton("C&lear", &CNamePartList::Clear),
                                       PlainButton("Move U&p", &CNamePartList::MoveUp),
                                       PlainButton("Move Do&wn", &CNamePartList::MoveDown)}}}}};
}

/// Else the user is told what to do.
bool CNamePartList::IsSelected(const char* request)
{
    if (!m_selected.empty() && Selected() < m_parts.size()) return true;
    m_services.windows.Message(MessageKind::Warning, request);
    return false;
}

void CNamePartList::Insert(std::size_t place, CFileNamePart part)
{
    m_parts.insert(m_parts.begin() + static_cast<std::ptrdiff_t>(place), std::move(part));
    m_selected = {place};
}

void CNamePartList::Add()
{
    CDlgSelectWhatToAddToFilenameRename choice(m_services, m_depth < kMaxNamePartDepth);
    if (!choice.Show()) return;
    CFileNamePart part;
    part.kind = choice.Kind();
    if (!FindNamePartKind(part.kind)->edit(m_services, part, m_depth)) return;
    Insert(m_selected.empty() ? m_parts.size() : Selected() + 1, std::move(part));
}

void CNamePartList::Edit()
{
    if (!IsSelected("Please select a filename component you want to edit.")) return;
    if (const NamePartKindRow* const kind = FindNamePartKind(m_parts[Selected()].kind))
        (void)kind->edit(m_services, m_parts[Selected()], m_depth);
    else
        m_services.windows.Message(
            MessageKind::Warning,
            "This component is of a kind that this version does not know. It adds nothing to names; delete it, or "
            "use the version that the settings come from.");
}

void CNamePartList::Duplicate()
{
    if (IsSelected("Please select a component to duplicate.")) Insert(Selected() + 1, m_parts[Selected()]);
}

void CNamePartList::Delete()
{
    if (!IsSelected("Please select a filename component you want to delete.")) return;
    m_parts.erase(m_parts.begin() + static_cast<std::ptrdiff_t>(Selected()));
    m_selected.clear();
}

void CNamePartList::Clear()
{
    if (m_parts.empty()) return;
    if (!m_services.windows.Message(MessageKind::Question,
                                    "Do you reall want to clear all filename components?"))  // sic
        return;
    m_parts.clear();
    m_selected.clear();
}

void CNamePartList::Move(int by)
{
    if (!IsSelected("Please select a filename component you want to move.")) return;
    const std::size_t row = Selected(), other = row + static_cast<std::size_t>(by);
    if (other >= m_parts.size()) return;  // also for one in front of the first
    std::swap(m_parts[row], m_parts[other]);
    m_selected = {other};
}
