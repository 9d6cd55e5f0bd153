#include "openhost/app/AppState.h"
#include "openhost/app/Menus.h"

namespace openhost {

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

}  // namespace openhost
