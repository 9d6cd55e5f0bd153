#pragma once

#include <wx/frame.h>
#include <wx/listctrl.h>

#include <functional>
#include <map>
#include <vector>

#include "openhost/app/HostWindow.h"

namespace openhost {

/// The window itself: the menus and the list of documents.
class CFrame final : public wxFrame {
public:
    /// The content is borrowed.
    explicit CFrame(CWindowContent& content);

    /// Shows the menus and documents that there are now.
    void Refresh();
    std::optional<std::size_t> SelectedDocument() const;
    /// What the user has chosen since the last call. It is done outside of the toolkit's own calls: a plug-in may
    /// open windows, and close this one.
    std::vector<std::function<void()>> TakeChosen();

private:
    void RefreshMenus();
    void Fill(wxMenu& menu, const std::vector<WindowMenuItem>& items);
    void UpdateMenu(wxMenu* menu);

    CWindowContent& m_content;
    wxListView* m_list;
    std::vector<WindowDocument> m_shown;
    std::string m_outline;                  // of the menus
    std::map<int, WindowMenuItem> m_items;  // by the number of the item
    std::vector<std::function<void()>> m_chosen;
};

}  // namespace openhost
