#include "openhost/app/Menus.h"

#include "unit/openhost_app/HostFixture.h"

using namespace openhost;

namespace {

struct Counted {
    int calls = 0;
    ASBool enabled = 1;
};
void HOSTCALL Count(void* data) { ++static_cast<Counted*>(data)->calls; }
ASBool HOSTCALL Enabled(void* data) { return static_cast<Counted*>(data)->enabled; }
ASBool RaiseWhenAsked(void*) { Raise(genErrGeneral, "deliberate"); }

class Menus : public CHostFixture {
protected:
    AVMenubar Bar() { return HOST(AcroView, AVAppGetMenubar); }
    AVMenu Menu(const char* name) { return HOST(AcroView, AVMenubarAcquireMenuByName, Bar(), name); }
    AVMenuItem Item(const char* name) { return HOST(AcroView, AVMenubarAcquireMenuItemByName, Bar(), name); }
    AVMenuItem New(const char* title, const char* name, AVMenu submenu = nullptr)
    {
        return HOST(AcroView, AVMenuItemNew, title, name, submenu, ASBool{0}, '\0', AVFlagBits16{0}, AVIcon{},
                    ASExtension{});
    }
    void Add(AVMenu menu, AVMenuItem item, int position = 9999)
    {
        HOST(AcroView, AVMenuAddMenuItem, menu, item, AVMenuIndex{position});
    }
};

}  // namespace

TEST_F(Menus, NamesAreFoundExactlyAndThroughSubmenusAndNothingIsInTwoPlaces)
{
    for (const char* name : {"File", "Edit", "Extensions", "AboutExtensions", "UsingExtensions"})
        EXPECT_NE(Menu(name), nullptr) << name;
    for (const char* name : {"extensions", "Quit", ""}) EXPECT_EQ(Menu(name), nullptr) << name;
    const AVMenu below = HOST(AcroView, AVMenuNew, "Below", "T:Below", ASExtension{});
    Add(Menu("Extensions"), New("Opens", "T:Opens", below));
    Add(below, New("Deep", "T:Deep"));
    EXPECT_EQ(HOST(AcroView, AVMenuItemGetParentMenu, Item("T:Deep")), below);
    EXPECT_REFUSED(Add(Menu("File"), Item("T:Deep"))) << "one place at a time";
    EXPECT_REFUSED(New("P", "T:P", below)) << "a submenu has one item";
    const AVMenu circle = HOST(AcroView, AVMenuNew, "S", "T:S", ASExtension{});
    EXPECT_REFUSED(Add(circle, New("O", "T:O", circle))) << "a menu inside itself";
    EXPECT_EQ(Item("T:deep"), nullptr);
}

TEST_F(Menus, PositionsInsertAndPastTheEndAppend)
{
    const AVMenu menu = Menu("Extensions");
    Add(menu, New("b", "b"));
    Add(menu, New("a", "a"), 0);
    Add(menu, New("d", "d"), 9999);
    Add(menu, New("c", "c"), 2);
    std::string order;
    for (int index = 0; index < HOST(AcroView, AVMenuGetNumMenuItems, menu); ++index)
        order +=
            AtomText(HOST(AcroView, AVMenuItemGetName, HOST(AcroView, AVMenuAcquireMenuItemByIndex, menu, index)));
    EXPECT_EQ(order, "abcd");
    EXPECT_EQ(HOST(AcroView, AVMenuAcquireMenuItemByIndex, menu, 4), nullptr);
}

TEST_F(Menus, AnItemLivesAsLongAsItIsHeldOrInPlace)
{
    const auto live = Part<CMenus>().LiveItems();
    const AVMenuItem item = New("One", "T:One");
    Add(Menu("Edit"), item);
    HOST(AcroView, AVMenuItemRelease, item);
    EXPECT_EQ(Part<CMenus>().LiveItems(), live + 1) << "the menu keeps it";
    EXPECT_REFUSED(HOST(AcroView, AVMenuItemRelease, item)) << "nobody holds it";
    EXPECT_EQ(Item("T:One"), item);
    HOST(AcroView, AVMenuItemRemove, item);
    EXPECT_EQ(Item("T:One"), nullptr);
    EXPECT_EQ(Part<CMenus>().LiveItems(), live + 1) << "the search left a reference";
    HOST(AcroView, AVMenuItemRelease, item);
    EXPECT_EQ(Part<CMenus>().LiveItems(), live);
    EXPECT_REFUSED(HOST(AcroView, AVMenuItemExecute, item)) << "a dead handle";
}

TEST_F(Menus, AnUnusedMenuTakesItsItemsAndSubmenusWithIt)
{
    const auto items = Part<CMenus>().LiveItems();
    const auto menus = Part<CMenus>().LiveMenus();
    const AVMenu menu = HOST(AcroView, AVMenuNew, "M", "T:M", ASExtension{});
    const AVMenu below = HOST(AcroView, AVMenuNew, "S", "T:S", ASExtension{});
    const AVMenuItem item = New("I", "T:I", below);
    Add(menu, item);
    HOST(AcroView, AVMenuItemRelease, item);
    HOST(AcroView, AVMenuRelease, below);
    EXPECT_EQ(Part<CMenus>().LiveMenus(), menus + 2);
    HOST(AcroView, AVMenuRelease, menu);
    EXPECT_EQ(Part<CMenus>().LiveMenus(), menus);
    EXPECT_EQ(Part<CMenus>().LiveItems(), items);
}

TEST_F(Menus, ExecutingDoesNothingWhenDisabledOrASubmenuOrASeparatorAndQuitIsOnlyAskedFor)
{
    const struct {
        const char* title;
        ASBool enabled;
        bool submenu;
        int calls;
    } rows[] = {{"plain", 1, false, 1}, {"disabled", 0, false, 0}, {"opens", 1, true, 0}, {"-", 1, false, 0}};
    for (const auto& row : rows) {
        Counted counted{0, row.enabled};
        const AVMenu below = row.submenu ? HOST(AcroView, AVMenuNew, "S", "T:S", ASExtension{}) : nullptr;
        const AVMenuItem item = New(row.title, "T:X", below);
        HOST(AcroView, AVMenuItemSetExecuteProc, item, &Count, static_cast<void*>(&counted));
        HOST(AcroView, AVMenuItemSetComputeEnabledProc, item, &Enabled, static_cast<void*>(&counted));
        HOST(AcroView, AVMenuItemExecute, item);
        EXPECT_EQ(counted.calls, row.calls) << row.title;
        HOST(AcroView, AVMenuItemSetComputeEnabledProc, item, &CSlot<&RaiseWhenAsked>::Entry,
             static_cast<void*>(nullptr));
        const ASErrorCode raised = RaisedBy([&] { HOST(AcroView, AVMenuItemExecute, item); });
        EXPECT_EQ(raised != 0, row.calls > 0 || row.enabled == 0) << row.title;
    }
    HOST(AcroView, AVMenuItemExecute, Item("Quit"));
    EXPECT_TRUE(Part<AppWishes>().quit);
    EXPECT_NE(Item("Quit"), nullptr) << "the host is still there";
}

TEST_F(Menus, WhatAPlugInAddedGoesWithIt)
{
    const auto extension = reinterpret_cast<ASExtension>(this);
    {
        const CActiveExtensionScope active(extension);
        Add(Menu("Edit"), New("Mine", "T:Mine"));
    }
    Add(Menu("Edit"), New("Other", "T:Other"));
    Part<CMenus>().DropOwner(extension);
    EXPECT_EQ(Item("T:Mine"), nullptr);
    EXPECT_NE(Item("T:Other"), nullptr);
    EXPECT_NE(Item("Quit"), nullptr);
}
