#include "openhost/script/ScriptChanges.h"

#include <stdexcept>

namespace openhost {

CPageBoxes& CScriptChanges::Boxes()
{
    if (!m_present) m_present.emplace(m_document);
    return *m_present;
}

void CScriptChanges::CheckMayChange() const
{
    if (!m_document.Allows(PdfRight::Change)) throw std::runtime_error("the document must not be changed");
}

PageBox CScriptChanges::Box(int page0, BoxKind kind)
{
    PageBox box = Boxes().Box(page0, kind);
    if (kind == BoxKind::Media) return box;
    const PageBox outer = Box(page0, kind == BoxKind::Crop ? BoxKind::Media : BoxKind::Crop);
    if (const auto set = m_boxes.find({page0, kind}); set != m_boxes.end()) box = set->second.value_or(outer);
    const PageBox inner = box.Within(outer);
    return inner.IsEmpty() ? outer : inner;
}

void CScriptChanges::SetBox(int page0, BoxKind kind, const std::optional<PageBox>& box)
{
    CheckMayChange();
    if (kind == BoxKind::Media) throw std::runtime_error("this host does not set the media box");
    if (box && box->IsEmpty()) throw std::runtime_error("the box is empty: it takes left, top, right and bottom");
    if (box && box->Within(Box(page0, BoxKind::Media)).IsEmpty())
        throw std::runtime_error("the box lies beside page " + std::to_string(page0));
    m_boxes[{page0, kind}] = box ? std::optional(box->Within(Box(page0, BoxKind::Media))) : std::nullopt;
}

std::string CScriptChanges::Layout()
{
    const std::string present = m_layout ? *m_layout : PageLayoutOf(m_document);
    return present.empty() ? "SinglePage" : present;
}

void CScriptChanges::SetLayout(const std::string& name)
{
    CheckMayChange();
    m_layout = name;
}

std::optional<OpenView> CScriptChanges::View() { return m_view ? m_view : OpenViewOf(m_document); }

void CScriptChanges::SetView(const OpenView& view)
{
    CheckMayChange();
    m_view = view;
}

bool CScriptChanges::Apply()
{
    bool changed = false;
    for (const auto& [place, box] : m_boxes) changed |= Boxes().SetBox(place.first, place.second, box);
    if (m_layout) changed |= SetPageLayout(m_document, *m_layout);
    if (m_view) changed |= SetOpenDestination(m_document, std::nullopt, *m_view);
    if (changed) m_document.SetModified(true);
    return changed;
}

}  // namespace openhost
