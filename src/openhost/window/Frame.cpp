#include "openhost/window/Frame.h"

#include <wx/menu.h>
#include <wx/sizer.h>

namespace openhost {

namespace {

wxString Shown(const std::string& utf8) { return wxString::FromUTF8(utf8.c_str()); }

std::string OutlineOf(const std::vector<WindowMenuItem>& items)
{
    std::string outline;
    for (const WindowMenuItem& item : items) outline += '(' + item.title + '\n' + OutlineOf(item.items) + ')';
    return outline;
}

}  // namespace

CFrame::CFrame(CWindowContent& content)
    : wxFrame(nullptr, wxID_ANY, Shown(content.Title())), m_content(content), m_list(new wxListView(this))
{
    m_list->AppendColumn("Document", wxLIST_FORMAT_LEFT, FromDIP(320));
    m_list->AppendColumn("Pages", wxLIST_FORMAT_RIGHT, FromDIP(80));
    m_list->AppendColumn("Security", wxLIST_FORMAT_LEFT, FromDIP(160));
    m_list->AppendColumn("Folder", wxLIST_FORMAT_LEFT, FromDIP(320));
    m_list->SetName("Open documents");
    auto* const sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(m_list, 1, wxEXPAND);
    SetSizer(sizer);
    SetInitialSize(FromDIP(wxSize(900, 420)));
    Centre();
    Bind(wxEVT_MENU, [this](wxCommandEvent& event) {
        const auto item = m_items.find(event.GetId());
        if (item != m_items.end()) m_chosen.push_back(item->second.choose);
    });
    Bind(wxEVT_MENU_OPEN, [this](wxMenuEvent& event) { UpdateMenu(event.GetMenu()); });
    // The program ends the window when it ends itself.
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
        event.Veto();
        m_chosen.push_back([this] { m_content.Closed(); });
    });
}

// Menus of plug-ins come and go, but hardly ever.
void CFrame::RefreshMenus()
{
    const auto menus = m_content.Menus();
    std::string outline;
    for (const WindowMenu& menu : menus) outline += menu.title + '\n' + OutlineOf(menu.items);
    if (outline == m_outline) return;
    m_outline = outline;
    m_items.clear();
    auto* const bar = new wxMenuBar;
    for (const WindowMenu& shown : menus) {
        auto* const menu = new wxMenu;
        Fill(*menu, shown.items);
        bar->Append(menu, Shown(shown.title));
    }
    wxMenuBar* const old = GetMenuBar();
    SetMenuBar(bar);
    delete old;
}

void CFrame::Fill(wxMenu& menu, const std::vector<WindowMenuItem>& items)
{
    for (const WindowMenuItem& item : items) {
        if (item.title == "-") {
            menu.AppendSeparator();
        } else if (item.choose) {
            // All may carry a mark, since a plug-in may give it one at any time; the kind is fixed by the toolkit.
            wxMenuItem* const shown = menu.Append(wxID_ANY, Shown(item.title), "",
                                                  item.marked && item.marked() ? wxITEM_CHECK : wxITEM_NORMAL);
            m_items[shown->GetId()] = item;
        } else {
            auto* const submenu = new wxMenu;
            Fill(*submenu, item.items);
            menu.AppendSubMenu(submenu, Shown(item.title));
        }
    }
}

void CFrame::UpdateMenu(wxMenu* menu)
{
    if (!menu) return;
    for (wxMenuItem* const item : menu->GetMenuItems()) {
        const auto known = m_items.find(item->GetId());
        if (known == m_items.end()) continue;
        if (known->second.enabled) item->Enable(known->second.enabled());
        if (item->IsCheckable()) item->Check(known->second.marked());
    }
}

void CFrame::Refresh()
{
    RefreshMenus();
    const auto documents = m_content.Documents();
    if (documents == m_shown) return;
    const auto selected = SelectedDocument();
    m_list->DeleteAllItems();
    for (const WindowDocument& document : documents) {
        const long row = m_list->InsertItem(m_list->GetItemCount(), Shown(document.name));
        m_list->SetItem(row, 1, wxString::Format("%d", document.pages));
        m_list->SetItem(row, 2, Shown(document.security));
        const std::size_t end = document.path.find_last_of("/\\");
        m_list->SetItem(row, 3, Shown(end == std::string::npos ? "" : document.path.substr(0, end)));
    }
    // The one that was opened last, unless the selected one is still there.
    const bool grew = documents.size() > m_shown.size();
    m_shown = documents;
    if (m_shown.empty()) return;
    const std::size_t last = m_shown.size() - 1;
    m_list->Select(static_cast<long>(grew || !selected || *selected > last ? last : *selected));
}

std::optional<std::size_t> CFrame::SelectedDocument() const
{
    const long row = m_list->GetFirstSelected();
    return row < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(row));
}

std::vector<std::function<void()>> CFrame::TakeChosen() { return std::exchange(m_chosen, {}); }

}  // namespace openhost
