#include <algorithm>
#include <cstring>

#include "openhost/app/AppState.h"
#include "openhost/app/Menus.h"
#include "openhost/app/Slots.h"
#include "openhost/core/Atoms.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

CMenus& Menus() { return Part<CMenus>(); }
CMenu& At(AVMenu menu) { return Menus().MenuAt(menu); }
CMenuItem& At(AVMenuItem item) { return Menus().ItemAt(item); }

/// Writes as much of the title as fits and answers its whole length.
AVTArraySize WriteTitle(const std::string& title, char* buffer, AVTArraySize size)
{
    if (buffer && size > 0) {
        const std::size_t length = std::min(title.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(buffer, title.data(), length);
        buffer[length] = 0;
    }
    return static_cast<AVTArraySize>(title.size());
}

template <class T>
AVMenuIndex IndexIn(const std::vector<T*>& list, const T& element)
{
    const auto found = std::find(list.begin(), list.end(), &element);
    return found == list.end() ? -1 : static_cast<AVMenuIndex>(found - list.begin());
}

template <class T>
T* AtIndex(const std::vector<T*>& list, AVMenuIndex index)
{
    return index >= 0 && static_cast<std::size_t>(index) < list.size() ? list[static_cast<std::size_t>(index)]
                                                                       : nullptr;
}

template <class T>
auto AcquireOrNull(T* object) -> decltype(Menus().Acquire(*object))
{
    return object ? Menus().Acquire(*object) : nullptr;
}

// ---- the bar ----

AVMenubar Bar() { return Menus().Bar(); }
void Show(AVMenubar bar) { Menus().RequireBar(bar); }

AVTArraySize MenuCount(AVMenubar bar)
{
    Menus().RequireBar(bar);
    return static_cast<AVTArraySize>(Menus().OnBar().size());
}

AVMenu MenuByName(AVMenubar bar, const char* name)
{
    Menus().RequireBar(bar);
    Require(name != nullptr, "a menu is looked for by its name");
    return AcquireOrNull(Menus().FindMenu(name));
}

AVMenu MenuByIndex(AVMenubar bar, AVMenuIndex index)
{
    Menus().RequireBar(bar);
    return AcquireOrNull(AtIndex(Menus().OnBar(), index));
}

AVMenu MenuByPredicate(AVMenubar bar, AVMenuPredicate predicate, void* clientData)
{
    Menus().RequireBar(bar);
    Require(predicate != nullptr, "no predicate");
    return AcquireOrNull(
        Menus().FindMenu([&](CMenu& menu) { return CallPlugIn(predicate, MenuHandle(menu), clientData) != 0; }));
}

AVMenuItem ItemByName(AVMenubar bar, const char* name)
{
    Menus().RequireBar(bar);
    Require(name != nullptr, "a menu item is looked for by its name");
    return AcquireOrNull(Menus().FindItem(name));
}

AVMenuItem ItemByPredicate(AVMenubar bar, AVMenuItemPredicate predicate, void* clientData)
{
    Menus().RequireBar(bar);
    Require(predicate != nullptr, "no predicate");
    return AcquireOrNull(
        Menus().FindItem([&](CMenuItem& item) { return CallPlugIn(predicate, ItemHandle(item), clientData) != 0; }));
}

AVMenuIndex MenuIndex(AVMenubar bar, AVMenu menu)
{
    Menus().RequireBar(bar);
    return IndexIn(Menus().OnBar(), At(menu));
}

void AddMenu(AVMenubar bar, AVMenu menu, AVMenuIndex position)
{
    Menus().RequireBar(bar);
    Menus().AddToBar(At(menu), position);
}

void AddHiddenMenu(AVMenubar bar, AVMenu menu)
{
    Menus().RequireBar(bar);
    const auto end = static_cast<AVMenuIndex>(Menus().OnBar().size());
    Menus().AddToBar(At(menu), end, true);
}

// ---- menus ----

AVMenu NewMenu(const char* title, const char* name, ASExtension owner)
{
    Require(title && name, "a menu needs a title and a name");
    return Menus().NewMenu(title, name, owner);
}

AVMenu NewMenuWithText(ASConstText title, const char* name, ASExtension owner)
{
    return NewMenu(TextAt(title).HostBytes().c_str(), name, owner);
}

AVMenu AcquireMenu(AVMenu menu) { return Menus().Acquire(At(menu)); }
void ReleaseMenu(AVMenu menu) { Menus().Release(menu); }
void RemoveMenu(AVMenu menu) { Menus().Remove(At(menu)); }
ASAtom MenuName(AVMenu menu) { return AtomFromText(At(menu).name); }
AVTArraySize MenuTitle(AVMenu menu, char* buffer, AVTArraySize size)
{
    return WriteTitle(At(menu).title, buffer, size);
}
void MenuTitleAsText(AVMenu menu, ASText title) { TextAt(title).SetHostBytes(At(menu).title); }
AVTArraySize ItemCount(AVMenu menu) { return static_cast<AVTArraySize>(At(menu).items.size()); }
AVMenuItem ItemByIndex(AVMenu menu, AVMenuIndex index) { return AcquireOrNull(AtIndex(At(menu).items, index)); }
AVMenuIndex ItemIndex(AVMenu menu, AVMenuItem item) { return IndexIn(At(menu).items, At(item)); }
AVMenubar ParentBar(AVMenu menu) { return At(menu).onBar ? Menus().Bar() : nullptr; }
ASBool IsHiddenOnBar(AVMenu menu) { return At(menu).hiddenOnBar; }
void AddItem(AVMenu menu, AVMenuItem item, AVMenuIndex position) { Menus().AddItem(At(menu), At(item), position); }

AVMenuItem ParentItem(AVMenu menu)
{
    CMenuItem* const item = At(menu).parentItem;
    return item ? ItemHandle(*item) : nullptr;
}

// ---- items ----

AVMenuItem NewItem(const char* title, const char* name, AVMenu submenu, ASBool longMenusOnly, char shortcut,
                   AVFlagBits16 flags, AVIcon, ASExtension owner)
{
    Require(title && name, "a menu item needs a title and a name");
    const ASExtension creator = owner ? owner : Part<ActiveExtension>().current;
    const AVMenuItem handle = Menus().NewItem(title, name, submenu ? &At(submenu) : nullptr, creator);
    CMenuItem& item = At(handle);
    item.longMenusOnly = longMenusOnly != 0;
    item.shortcut = shortcut;
    item.shortcutFlags = flags;
    return handle;
}

AVMenuItem NewItemWithText(ASConstText title, const char* name, AVMenu submenu, ASBool longMenusOnly, char shortcut,
                           AVFlagBits16 flags, AVIcon icon, ASExtension owner)
{
    return NewItem(TextAt(title).HostBytes().c_str(), name, submenu, longMenusOnly, shortcut, flags, icon, owner);
}

AVMenuItem AcquireItem(AVMenuItem item) { return Menus().Acquire(At(item)); }
void ReleaseItem(AVMenuItem item) { Menus().Release(item); }
void RemoveItem(AVMenuItem item) { Menus().Remove(At(item)); }
ASAtom ItemName(AVMenuItem item) { return AtomFromText(At(item).name); }
AVTArraySize ItemTitle(AVMenuItem item, char* buffer, AVTArraySize size)
{
    return WriteTitle(At(item).title, buffer, size);
}
void ItemTitleAsText(AVMenuItem item, ASText title) { TextAt(title).SetHostBytes(At(item).title); }
void SetItemTitleText(AVMenuItem item, ASConstText title) { At(item).title = TextAt(title).HostBytes(); }
ASBool LongOnly(AVMenuItem item) { return At(item).longMenusOnly; }
void SetExecute(AVMenuItem item, AVExecuteProc procedure, void* data) { At(item).execute = {procedure, data}; }
void SetEnabled(AVMenuItem item, AVComputeEnabledProc procedure, void* data)
{
    At(item).computeEnabled = {procedure, data};
}
void SetMarked(AVMenuItem item, AVComputeMarkedProc procedure, void* data)
{
    At(item).computeMarked = {procedure, data};
}
void SetVisible(AVMenuItem item, AVComputeVisibleProc procedure, void* data)
{
    At(item).computeVisible = {procedure, data};
}
AVMenu AcquireSubmenu(AVMenuItem item) { return AcquireOrNull(At(item).submenu); }
ASBool Enabled(AVMenuItem item) { return IsEnabled(At(item)); }
void ExecuteItem(AVMenuItem item) { Execute(At(item)); }

void SetItemTitle(AVMenuItem item, const char* title)
{
    Require(title != nullptr, "a menu item needs a title");
    At(item).title = title;
}

ASBool Shortcut(AVMenuItem item, char* key, AVFlagBits16* flags)
{
    const CMenuItem& asked = At(item);
    if (!asked.shortcut) return 0;
    if (key) *key = asked.shortcut;
    if (flags) *flags = asked.shortcutFlags;
    return 1;
}

ASBool Marked(AVMenuItem item)
{
    const auto computed = At(item).computeMarked;
    return computed.procedure && CallPlugIn(computed.procedure, computed.data) != 0;
}

ASBool Visible(AVMenuItem item)
{
    const auto computed = At(item).computeVisible;
    return !computed.procedure || CallPlugIn(computed.procedure, computed.data) != 0;
}

AVMenu ParentMenu(AVMenuItem item)
{
    CMenu* const menu = At(item).parent;
    return menu ? MenuHandle(*menu) : nullptr;
}

void OfferBarSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppGetMenubar, Bar);
    OFFER(tables, AcroView, AVMenubarShow, Show);
    OFFER(tables, AcroView, AVMenubarHide, Show);
    OFFER(tables, AcroView, AVMenubarGetNumMenus, MenuCount);
    OFFER(tables, AcroView, AVMenubarAcquireMenuByName, MenuByName);
    OFFER(tables, AcroView, AVMenubarAcquireMenuByIndex, MenuByIndex);
    OFFER(tables, AcroView, AVMenubarAcquireMenuByPredicate, MenuByPredicate);
    OFFER(tables, AcroView, AVMenubarAcquireMenuItemByName, ItemByName);
    OFFER(tables, AcroView, AVMenubarAcquireMenuItemByPredicate, ItemByPredicate);
    OFFER(tables, AcroView, AVMenubarGetMenuIndex, MenuIndex);
    OFFER(tables, AcroView, AVMenubarAddMenu, AddMenu);
    OFFER(tables, AcroView, AVMenubarAddHiddenMenu, AddHiddenMenu);
}

void OfferMenuObjectSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVMenuNew, NewMenu);
    OFFER(tables, AcroView, AVMenuNewWithASText, NewMenuWithText);
    OFFER(tables, AcroView, AVMenuAcquire, AcquireMenu);
    OFFER(tables, AcroView, AVMenuRelease, ReleaseMenu);
    OFFER(tables, AcroView, AVMenuRemove, RemoveMenu);
    OFFER(tables, AcroView, AVMenuGetName, MenuName);
    OFFER(tables, AcroView, AVMenuGetTitle, MenuTitle);
    OFFER(tables, AcroView, AVMenuGetTitleAsASText, MenuTitleAsText);
    OFFER(tables, AcroView, AVMenuGetNumMenuItems, ItemCount);
    OFFER(tables, AcroView, AVMenuAcquireMenuItemByIndex, ItemByIndex);
    OFFER(tables, AcroView, AVMenuGetMenuItemIndex, ItemIndex);
    OFFER(tables, AcroView, AVMenuGetParentMenubar, ParentBar);
    OFFER(tables, AcroView, AVMenuGetParentMenuItem, ParentItem);
    OFFER(tables, AcroView, AVMenuAddMenuItem, AddItem);
    OFFER(tables, AcroView, AVMenuIsHiddenOnMenubar, IsHiddenOnBar);
}

void OfferItemSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVMenuItemNew, NewItem);
    OFFER(tables, AcroView, AVMenuItemNewWithASText, NewItemWithText);
    OFFER(tables, AcroView, AVMenuItemAcquire, AcquireItem);
    OFFER(tables, AcroView, AVMenuItemRelease, ReleaseItem);
    OFFER(tables, AcroView, AVMenuItemRemove, RemoveItem);
    OFFER(tables, AcroView, AVMenuItemGetName, ItemName);
    OFFER(tables, AcroView, AVMenuItemGetTitle, ItemTitle);
    OFFER(tables, AcroView, AVMenuItemGetTitleAsASText, ItemTitleAsText);
    OFFER(tables, AcroView, AVMenuItemSetTitle, SetItemTitle);
    OFFER(tables, AcroView, AVMenuItemSetTitleWithASText, SetItemTitleText);
    OFFER(tables, AcroView, AVMenuItemGetShortcut, Shortcut);
    OFFER(tables, AcroView, AVMenuItemGetLongOnly, LongOnly);
    OFFER(tables, AcroView, AVMenuItemSetExecuteProc, SetExecute);
    OFFER(tables, AcroView, AVMenuItemSetComputeEnabledProc, SetEnabled);
    OFFER(tables, AcroView, AVMenuItemSetComputeMarkedProc, SetMarked);
    OFFER(tables, AcroView, AVMenuItemSetComputeVisibleProc, SetVisible);
    OFFER(tables, AcroView, AVMenuItemAcquireSubmenu, AcquireSubmenu);
    OFFER(tables, AcroView, AVMenuItemIsEnabled, Enabled);
    OFFER(tables, AcroView, AVMenuItemIsMarked, Marked);
    OFFER(tables, AcroView, AVMenuItemIsVisible, Visible);
    OFFER(tables, AcroView, AVMenuItemExecute, ExecuteItem);
    OFFER(tables, AcroView, AVMenuItemGetParentMenu, ParentMenu);
}

}  // namespace

void OfferMenuSlots(CTables& tables)
{
    OfferBarSlots(tables);
    OfferMenuObjectSlots(tables);
    OfferItemSlots(tables);
}

}  // namespace openhost
