#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Handles.h"

namespace openhost {

class CMenu;

/// One procedure of a plug-in with its data.
template <class Procedure>
struct WithData {
    Procedure procedure = nullptr;
    void* data = nullptr;
};

/// What plug-ins hold of a menu or an item: counted references, besides the place in a menu that keeps it alive too.
struct MenuReferences {
    int held = 0;           ///< references that somebody has to release
    bool attached = false;  ///< stands in a menu, in an item or in the bar
    bool Dead() const { return held == 0 && !attached; }
};

struct CMenuItem {
    std::string title;  // host encoding
    std::string name;
    CMenu* submenu = nullptr;
    CMenu* parent = nullptr;
    bool longMenusOnly = false;
    char shortcut = 0;
    AVFlagBits16 shortcutFlags = 0;
    ASExtension owner = nullptr;
    MenuReferences references;
    WithData<AVExecuteProc> execute;
    WithData<AVComputeEnabledProc> computeEnabled;
    WithData<AVComputeMarkedProc> computeMarked;
    WithData<AVComputeVisibleProc> computeVisible;
    std::function<void()> hostAction;  // an item of the host itself

    bool IsSeparator() const { return title == "-"; }
};

class CMenu {
public:
    std::string title;  // host encoding
    std::string name;
    ASExtension owner = nullptr;
    CMenuItem* parentItem = nullptr;
    bool onBar = false;
    bool hiddenOnBar = false;
    MenuReferences references;
    std::vector<CMenuItem*> items;
};

/// The menu bar with everything below it, and the menus and items that are not (or no longer) in it.
///
/// New and Acquire give a reference that is released once. An object lives as long as somebody holds a reference or
/// it stands in its place. Releasing more than was acquired raises genErrBadParm.
class CMenus {
public:
    CMenus() = default;
    CMenus(const CMenus&) = delete;
    CMenus& operator=(const CMenus&) = delete;

    AVMenu NewMenu(std::string title, std::string name, ASExtension owner);
    AVMenuItem NewItem(std::string title, std::string name, CMenu* submenu, ASExtension owner);

    CMenu& MenuAt(AVMenu menu) const { return m_menus.At(menu); }
    CMenuItem& ItemAt(AVMenuItem item) const { return m_items.At(item); }
    /// Raises genErrBadParm unless this is the one menu bar.
    void RequireBar(AVMenubar bar) const;
    AVMenubar Bar() const;

    AVMenu Acquire(CMenu& menu);
    AVMenuItem Acquire(CMenuItem& item);
    void Release(AVMenu handle);
    void Release(AVMenuItem handle);

    /// Positions past the end append. Raises genErrBadParm for what stands in a place already, and for an item whose
    /// submenu leads back to the menu.
    void AddToBar(CMenu& menu, AVMenuIndex position, bool hidden = false);
    void AddItem(CMenu& menu, CMenuItem& item, AVMenuIndex position);
    void Remove(CMenu& menu);
    void Remove(CMenuItem& item);
    void DropOwner(ASExtension owner);

    /// The first that fits, in the order of the bar, each submenu right behind its item; null when there is none.
    CMenu* FindMenu(const std::function<bool(CMenu&)>& fits) const;
    CMenuItem* FindItem(const std::function<bool(CMenuItem&)>& fits) const;
    CMenu* FindMenu(std::string_view name) const;
    CMenuItem* FindItem(std::string_view name) const;

    const std::vector<CMenu*>& OnBar() const { return m_bar; }
    std::size_t LiveMenus() const { return m_menus.Live(); }
    std::size_t LiveItems() const { return m_items.Live(); }

private:
    void Attach(CMenuItem& item, CMenu& submenu);
    void DestroyIfDead(CMenu& menu);
    void DestroyIfDead(CMenuItem& item);

    CHandles<CMenu, AVMenu> m_menus{"menu"};
    CHandles<CMenuItem, AVMenuItem> m_items{"menu item"};
    std::vector<CMenu*> m_bar;
};

inline AVMenu MenuHandle(const CMenu& menu) { return CHandles<CMenu, AVMenu>::HandleOf(menu); }
inline AVMenuItem ItemHandle(const CMenuItem& item) { return CHandles<CMenuItem, AVMenuItem>::HandleOf(item); }

/// Asks the item's procedure; true without one.
bool IsEnabled(const CMenuItem& item);
/// The same for its mark; false without a procedure.
bool IsMarked(const CMenuItem& item);
/// Does what choosing the item does: nothing when it is disabled or has a submenu.
void Execute(const CMenuItem& item);

/// "File" with "Quit" (unless the settings say there is none), "Edit", "Extensions", and "Help" with the submenus in
/// which plug-ins present themselves. Choosing "Quit" only asks the host to end; that happens after the present call.
void MakeStandardMenus();

/// An item of the host itself.
struct HostItem {
    const char* title;
    const char* name;
    std::function<void()> choose;
};
/// Puts items in front of the others of the "File" menu.
void AddFileItems(const std::vector<HostItem>& items);

}  // namespace openhost
