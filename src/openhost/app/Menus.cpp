#include "openhost/app/Menus.h"

#include <algorithm>

#include "openhost/app/AppState.h"
#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"

namespace openhost {

namespace {

template <class T>
void InsertAt(std::vector<T*>& list, T& element, AVMenuIndex position)
{
    const bool inside = position >= 0 && static_cast<std::size_t>(position) < list.size();
    list.insert(inside ? list.begin() + position : list.end(), &element);
}

CMenuItem* FindBelow(CMenu& menu, const std::function<bool(CMenuItem&)>& fits)
{
    for (CMenuItem* const item : menu.items) {
        if (fits(*item)) return item;
        if (!item->submenu) continue;
        if (CMenuItem* const found = FindBelow(*item->submenu, fits)) return found;
    }
    return nullptr;
}

CMenu* FindMenuFrom(CMenu& menu, const std::function<bool(CMenu&)>& fits)
{
    if (fits(menu)) return &menu;
    for (CMenuItem* const item : menu.items) {
        if (!item->submenu) continue;
        if (CMenu* const found = FindMenuFrom(*item->submenu, fits)) return found;
    }
    return nullptr;
}

bool LeadsTo(CMenu& from, const CMenu& wanted)
{
    return FindMenuFrom(from, [&](CMenu& menu) { return &menu == &wanted; }) != nullptr;
}

}  // namespace

AVMenu CMenus::NewMenu(std::string title, std::string name, ASExtension owner)
{
    auto menu = std::make_unique<CMenu>();
    menu->title = std::move(title);
    menu->name = std::move(name);
    menu->owner = owner;
    menu->references.held = 1;
    return m_menus.Add(std::move(menu));
}

AVMenuItem CMenus::NewItem(std::string title, std::string name, CMenu* submenu, ASExtension owner)
{
    Require(!submenu || !submenu->references.attached, "the submenu already has its place");
    auto item = std::make_unique<CMenuItem>();
    item->title = std::move(title);
    item->name = std::move(name);
    item->owner = owner;
    item->references.held = 1;
    if (submenu) Attach(*item, *submenu);
    return m_items.Add(std::move(item));
}

void CMenus::Attach(CMenuItem& item, CMenu& submenu)
{
    item.submenu = &submenu;
    submenu.parentItem = &item;
    submenu.references.attached = true;
}

AVMenubar CMenus::Bar() const { return reinterpret_cast<AVMenubar>(const_cast<CMenus*>(this)); }

void CMenus::RequireBar(AVMenubar bar) const { Require(bar == Bar(), "not the host's menu bar"); }

AVMenu CMenus::Acquire(CMenu& menu)
{
    ++menu.references.held;
    return MenuHandle(menu);
}

AVMenuItem CMenus::Acquire(CMenuItem& item)
{
    ++item.references.held;
    return ItemHandle(item);
}

void CMenus::Release(AVMenu handle)
{
    CMenu& menu = MenuAt(handle);
    Require(menu.references.held > 0, "the menu was released more often than acquired");
    --menu.references.held;
    DestroyIfDead(menu);
}

void CMenus::Release(AVMenuItem handle)
{
    CMenuItem& item = ItemAt(handle);
    Require(item.references.held > 0, "the menu item was released more often than acquired");
    --item.references.held;
    DestroyIfDead(item);
}

void CMenus::AddToBar(CMenu& menu, AVMenuIndex position, bool hidden)
{
    Require(!menu.references.attached, "the menu already has its place");
    InsertAt(m_bar, menu, position);
    menu.references.attached = menu.onBar = true;
    menu.hiddenOnBar = hidden;
}

void CMenus::AddItem(CMenu& menu, CMenuItem& item, AVMenuIndex position)
{
    Require(!item.references.attached, "the menu item already has its place");
    Require(!item.submenu || !LeadsTo(*item.submenu, menu), "a menu cannot be its own submenu");
    InsertAt(menu.items, item, position);
    item.references.attached = true;
    item.parent = &menu;
}

void CMenus::Remove(CMenu& menu)
{
    if (!menu.references.attached) return;
    std::erase(m_bar, &menu);
    if (menu.parentItem) menu.parentItem->submenu = nullptr;
    menu.parentItem = nullptr;
    menu.references.attached = menu.onBar = menu.hiddenOnBar = false;
    DestroyIfDead(menu);
}

void CMenus::Remove(CMenuItem& item)
{
    if (!item.references.attached) return;
    std::erase(item.parent->items, &item);
    item.parent = nullptr;
    item.references.attached = false;
    DestroyIfDead(item);
}

void CMenus::DestroyIfDead(CMenu& menu)
{
    if (!menu.references.Dead()) return;
    while (!menu.items.empty()) Remove(*menu.items.back());
    m_menus.Take(MenuHandle(menu));
}

void CMenus::DestroyIfDead(CMenuItem& item)
{
    if (!item.references.Dead()) return;
    if (item.submenu) Remove(*item.submenu);
    m_items.Take(ItemHandle(item));
}

void CMenus::DropOwner(ASExtension owner)
{
    std::vector<AVMenuItem> items;
    m_items.ForEach([&](const CMenuItem& item) {
        if (item.owner == owner) items.push_back(ItemHandle(item));
    });
    for (AVMenuItem handle : items) {
        CMenuItem* const item = m_items.Find(handle);
        if (!item) continue;
        item->execute = {};
        item->computeEnabled = {};
        item->computeMarked = {};
        item->computeVisible = {};
        Remove(*item);
    }
}

CMenu* CMenus::FindMenu(const std::function<bool(CMenu&)>& fits) const
{
    for (CMenu* const menu : m_bar)
        if (CMenu* const found = FindMenuFrom(*menu, fits)) return found;
    return nullptr;
}

CMenuItem* CMenus::FindItem(const std::function<bool(CMenuItem&)>& fits) const
{
    for (CMenu* const menu : m_bar)
        if (CMenuItem* const found = FindBelow(*menu, fits)) return found;
    return nullptr;
}

CMenu* CMenus::FindMenu(std::string_view name) const
{
    return FindMenu([&](CMenu& menu) { return menu.name == name; });
}

CMenuItem* CMenus::FindItem(std::string_view name) const
{
    return FindItem([&](CMenuItem& item) { return item.name == name; });
}

bool IsEnabled(const CMenuItem& item)
{
    return !item.computeEnabled.procedure || CallPlugIn(item.computeEnabled.procedure, item.computeEnabled.data) != 0;
}

bool IsMarked(const CMenuItem& item)
{
    return item.computeMarked.procedure && CallPlugIn(item.computeMarked.procedure, item.computeMarked.data) != 0;
}

void Execute(const CMenuItem& item)
{
    if (item.submenu || item.IsSeparator()) return;
    const auto execute = item.execute;  // the item may go while its procedures run
    const auto hostAction = item.hostAction;
    if (!IsEnabled(item)) return;
    if (execute.procedure) CallPlugIn(execute.procedure, execute.data);
    if (hostAction) hostAction();
}

namespace {

constexpr AVMenuIndex kAtTheEnd = 9999;

/// The menu in its place, which alone keeps it.
CMenu& OnBar(const char* title, const char* name)
{
    auto& menus = Part<CMenus>();
    const AVMenu menu = menus.NewMenu(title, name, nullptr);
    menus.AddToBar(menus.MenuAt(menu), kAtTheEnd);
    menus.Release(menu);
    return menus.MenuAt(menu);
}

CMenuItem& Item(CMenu& menu, const char* title, const char* name, CMenu* submenu = nullptr)
{
    auto& menus = Part<CMenus>();
    const AVMenuItem item = menus.NewItem(title, name, submenu, nullptr);
    menus.AddItem(menu, menus.ItemAt(item), kAtTheEnd);
    menus.Release(item);
    return menus.ItemAt(item);
}

void Submenu(CMenu& menu, const char* title, const char* itemName, const char* menuName)
{
    auto& menus = Part<CMenus>();
    const AVMenu submenu = menus.NewMenu(title, menuName, nullptr);
    Item(menu, title, itemName, &menus.MenuAt(submenu));
    menus.Release(submenu);
}

}  // namespace

void MakeStandardMenus()
{
    CMenu& file = OnBar("&File", "File");
    if (Part<AppSettings>().quitItem) Item(file, "E&xit", "Quit").hostAction = [] { Part<AppWishes>().quit = true; };
    OnBar("&Edit", "Edit");
    OnBar("Plu&g-Ins", "Extensions");
    CMenu& help = OnBar("&Help", "Help");
    Submenu(help, "About Plug-Ins", "AboutExtensionsItem", "AboutExtensions");
    Submenu(help, "Using Plug-Ins", "UsingExtensionsItem", "UsingExtensions");
}

void AddFileItems(const std::vector<HostItem>& items)
{
    auto& menus = Part<CMenus>();
    AVMenuIndex place = 0;
    for (const HostItem& wanted : items) {
        const AVMenuItem item = menus.NewItem(wanted.title, wanted.name, nullptr, nullptr);
        menus.ItemAt(item).hostAction = wanted.choose;
        menus.AddItem(*menus.FindMenu("File"), menus.ItemAt(item), place++);
        menus.Release(item);
    }
}

}  // namespace openhost
