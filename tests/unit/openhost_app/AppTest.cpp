// What an application has: idle procedures, notifications, alerts, menus and views.
#include <functional>

#include "openhost/app/Alerts.h"
#include "openhost/app/Events.h"
#include "openhost/app/HostWindow.h"
#include "openhost/app/Menus.h"
#include "openhost/app/Views.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

/// Client data that does what the test says.
struct Caller {
    int calls = 0;
    std::function<void()> work;
};
void Run(void* data)
{
    auto& caller = *static_cast<Caller*>(data);
    ++caller.calls;
    if (caller.work) caller.work();
}
void HOSTCALL Idle(void* data) { CSlot<&Run>::Entry(data); }
void HOSTCALL OnDocument(PDDoc document, void* data)
{
    EXPECT_EQ(document, reinterpret_cast<PDDoc>(0x1234));
    CSlot<&Run>::Entry(data);
}

class Events : public CHostFixture {
protected:
    void Register(Caller& caller, ASUns32 period)
    {
        HOST(AcroView, AVAppRegisterIdleProc, &Idle, static_cast<void*>(&caller), period);
    }
    void Unregister(Caller& caller) { HOST(AcroView, AVAppUnregisterIdleProc, &Idle, static_cast<void*>(&caller)); }
    void Listen(Caller& caller, NSelector selector = AVDocWillOpenFromPDDocNSEL)
    {
        HOST(AcroView, AVAppRegisterNotification, selector, ASExtension{}, reinterpret_cast<void*>(&OnDocument),
             static_cast<void*>(&caller));
    }
    void Unlisten(Caller& caller)
    {
        HOST(AcroView, AVAppUnregisterNotification, AVDocWillOpenFromPDDocNSEL, ASExtension{},
             reinterpret_cast<void*>(&OnDocument), static_cast<void*>(&caller));
    }
    void Send() { Notify(AVDocWillOpenFromPDDocNSEL, reinterpret_cast<PDDoc>(0x1234)); }
    CIdleProcedures& Procedures() { return Part<CIdleProcedures>(); }
    void CallAt(std::uint64_t milliseconds)
    {
        now = milliseconds;
        Procedures().CallDue();
    }
};

}  // namespace

TEST_F(Events, TheFirstIdleCallComesAtOnceAndThePeriodIsTheLeastDistance)
{
    Caller caller, once;
    Register(caller, 60);
    HOST(AcroView, AVAppRegisterIdleProcExWithName, &Idle, static_cast<void*>(&once), ASBool{0}, ASUns32{60},
         ASBool{0}, ASUns32{6}, ASUns32{6}, "p", "n");
    EXPECT_FALSE(Procedures().AllCalled());
    const struct {
        std::uint64_t at;
        int calls, ofOnce;
    } rows[] = {{1000, 1, 0}, {1999, 1, 0}, {2000, 2, 1}};
    for (const auto& row : rows) {
        CallAt(row.at);
        EXPECT_EQ(caller.calls, row.calls) << row.at;
        EXPECT_EQ(once.calls, row.ofOnce) << row.at << ": waits its delay";
    }
    EXPECT_TRUE(Procedures().AllCalled());
    EXPECT_EQ(Procedures().Count(), 1u) << "the other one goes";
    caller.work = [&] { now += 5000; };
    CallAt(3000);
    EXPECT_EQ(Procedures().NextDue(), 9000u) << "a long call is followed by a whole period";
}

TEST_F(Events, AnIdleCallMayUnregisterItselfAndRegisterOthersAndIsNotEnteredAgain)
{
    Caller first, second;
    first.work = [&] {
        Procedures().CallDue();  // as when a dialog runs the loop
        Unregister(first);
        Register(second, 0);
    };
    Register(first, 0);
    CallAt(1000);
    CallAt(1001);
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 1);
    EXPECT_EQ(Procedures().Count(), 1u);
    const auto extension = reinterpret_cast<ASExtension>(this);
    {
        const CActiveExtensionScope active(extension);
        Register(first, 0);
    }
    Procedures().DropOwner(extension);
    EXPECT_EQ(Procedures().Count(), 1u) << "with its plug-in";
}

TEST_F(Events, WhatAnIdleProcedureRaisesOrThrowsIsSaidAndHarmsNobody)
{
    Caller raises, other;
    raises.work = [] { Raise(genErrGeneral, "deliberate"); };
    const auto throws = [](void*) { throw std::runtime_error("let out"); };
    HOST(AcroView, AVAppRegisterIdleProc, static_cast<AVIdleProc>(throws), static_cast<void*>(nullptr), ASUns32{0});
    Register(raises, 0);
    Register(other, 0);
    CallAt(1000);
    CallAt(1001);
    EXPECT_EQ(raises.calls, 2);
    EXPECT_EQ(other.calls, 2);
    other.work = [] { Part<AppWishes>().quit = true; };
    Register(raises, 0);
    CallAt(1002);
    EXPECT_EQ(other.calls, 3);
    EXPECT_EQ(raises.calls, 3) << "none is called after the wish to quit";
    for (const char* text : {"deliberate", "let out"}) EXPECT_NE(SaidAll().find(text), std::string::npos) << text;
    EXPECT_EQ(Part<CFrames>().Depth(), 0u);
}

TEST_F(Events, AListenerMayChangeTheListAndRaiseWithoutHarmToOthersAndIsTakenBackOnceAtATime)
{
    Caller first, taken, added, last, another;
    first.work = [&] {
        Unlisten(taken);
        if (first.calls == 1) Listen(added);
        Raise(genErrGeneral, "deliberate");
    };
    for (Caller* caller : {&first, &taken, &last, &last}) Listen(*caller);
    Listen(another, AVDocDidOpenNSEL);
    Send();
    EXPECT_EQ(taken.calls, 0);
    EXPECT_EQ(last.calls, 2) << "for each of its registrations";
    EXPECT_EQ(added.calls, 0) << "it came during the event";
    Unlisten(last);
    Send();
    EXPECT_EQ(added.calls, 1);
    EXPECT_EQ(last.calls, 3);
    EXPECT_EQ(another.calls, 0) << "another event";
    EXPECT_NE(SaidAll().find("deliberate"), std::string::npos);
}

TEST_F(Events, AlertsAreSaidOnOneLineAndNothingIsConfirmed)
{
    EXPECT_EQ(HOST(AcroView, AVAlertConfirm, "Delete\nall?"), 0);
    EXPECT_EQ(HOST(AcroView, AVAlert, 0, "Note", "OK", "Cancel", static_cast<const char*>(nullptr), ASBool{0}), 1);
    ASPathName path = nullptr;
    AVOpenSaveDialogParamsRec params = {};
    params.size = sizeof(params);
    EXPECT_EQ(HOST(AcroView, AVAppChooseFolderDialog, &params, static_cast<ASFileSys*>(nullptr), &path), 0);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(said, (std::vector<std::string>{"alert: Delete all?", "alert: Note"}));
}

namespace {

/// Answers as a user would who chooses these.
class CUser final : public CHostWindow {
public:
    std::vector<std::string> files;
    std::string folder, asked;

    void* Handle() const override { return nullptr; }
    void Work(unsigned) override {}
    std::optional<std::size_t> SelectedDocument() const override { return std::nullopt; }
    bool Alert(AlertKind, const std::string&) override { return true; }
    std::vector<std::string> ChooseFiles(const std::string& title, const std::string& patterns, bool several) override
    {
        asked = title + '|' + patterns + (several ? "|several" : "");
        return files;
    }
    std::string ChooseFolder(const std::string&) override { return folder; }
};

}  // namespace

TEST_F(Events, FilesAndFoldersAreChosenInTheWindow)
{
    CUser user;
    Part<WindowPlace>().window = &user;
    AVFileDescRec kinds[] = {{"pdf", 0, 0}, {"txt", 0, 0}};
    AVFileFilterRec filter = {nullptr, kinds, 2};
    AVFileFilterRec* filters[] = {&filter};
    AVOpenSaveDialogParamsRec params = {};
    params.size = sizeof(params);
    params.flags = kAVOpenSaveAllowMultiple;
    params.fileFilters = filters;
    params.numFileFilters = 1;
    ASFileSys fileSys = nullptr;
    ASPathName path = nullptr, *paths = nullptr;
    AVArraySize count = 0;
    AVFilterIndex chosen = 0;
    const auto open = [&] { return HOST(AcroView, AVAppOpenDialog, &params, &fileSys, &paths, &count, &chosen); };
    const auto folder = [&] { return HOST(AcroView, AVAppChooseFolderDialog, &params, &fileSys, &path); };
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(folder(), 0);
    EXPECT_EQ(fileSys, nullptr) << "a cancelled dialog answers nothing";
    user.files = {"/in/a.pdf", "/in/b.txt"};
    user.folder = "/out";
    EXPECT_EQ(open(), 1);
    EXPECT_EQ(user.asked, "Open|*.pdf;*.txt|several");
    ASSERT_EQ(count, 2);
    EXPECT_EQ(PathAt(paths[1]).Name(), "b.txt");
    EXPECT_EQ(folder(), 1);
    EXPECT_EQ(PathAt(path).Name(), "out");
    for (ASPathName each : {path, paths[0], paths[1]}) ReleasePath(each);
    HOST(AcroSupport, ASfree, static_cast<void*>(paths));
    Part<WindowPlace>().window = nullptr;
}

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

TEST_F(Menus, ItemsAndMenusLiveAsLongAsTheyAreHeldOrInPlace)
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

    const auto menus = Part<CMenus>().LiveMenus();
    const AVMenu menu = HOST(AcroView, AVMenuNew, "M", "T:M", ASExtension{});
    const AVMenu below = HOST(AcroView, AVMenuNew, "S", "T:S", ASExtension{});
    const AVMenuItem opens = New("I", "T:I", below);
    Add(menu, opens);
    HOST(AcroView, AVMenuItemRelease, opens);
    HOST(AcroView, AVMenuRelease, below);
    EXPECT_EQ(Part<CMenus>().LiveMenus(), menus + 2);
    HOST(AcroView, AVMenuRelease, menu);
    EXPECT_EQ(Part<CMenus>().LiveMenus(), menus) << "an unused menu takes its items and submenus with it";
    EXPECT_EQ(Part<CMenus>().LiveItems(), live);
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

namespace {

std::string g_events;
void HOSTCALL WillOpenFromDocument(PDDoc, void*) { g_events += "will-open "; }
void HOSTCALL DidOpen(AVDoc view, ASInt32 error, void*)
{
    g_events += error == 0 && HOST(AcroView, AVDocGetPDDoc, view) ? "did-open " : "? ";
}
void HOSTCALL WillClose(AVDoc view, void*) { g_events += HOST(AcroView, AVDocGetPDDoc, view) ? "will-close " : "? "; }
void HOSTCALL DidClose(AVDoc, void*) { g_events += "did-close "; }
void HOSTCALL DocumentDidClose(PDDoc, void*) { g_events += "document-did-close "; }

class ViewTests : public CHostFixture {
protected:
    ViewTests()
    {
        g_events.clear();
        Listen(AVDocWillOpenFromPDDocNSEL, reinterpret_cast<void*>(&WillOpenFromDocument));
        Listen(AVDocDidOpenNSEL, reinterpret_cast<void*>(&DidOpen));
        Listen(AVDocWillCloseNSEL, reinterpret_cast<void*>(&WillClose));
        Listen(AVDocDidCloseNSEL, reinterpret_cast<void*>(&DidClose));
        Listen(PDDocDidCloseNSEL, reinterpret_cast<void*>(&DocumentDidClose));
    }
    void Listen(NSelector selector, void* procedure)
    {
        HOST(AcroView, AVAppRegisterNotification, selector, ASExtension{}, procedure, static_cast<void*>(nullptr));
    }
    PDDoc Open() { return Part<CDocuments>().Open(path, true, {}); }
    AVDoc View(PDDoc document) { return HOST(AcroView, AVDocOpenFromPDDoc, document, ASText{}); }
    ASProgressMonitor Monitor()
    {
        void* data = nullptr;
        return HOST(AcroView, AVAppGetDocProgressMonitor, &data);
    }

    CTemporaryFolder folder;
    std::string path = folder.Write("a.pdf", SamplePdf(1));
};

}  // namespace

TEST_F(ViewTests, AViewClosesItsDocumentAndTellsOfIt)
{
    const PDDoc document = Open();
    EXPECT_EQ(HOST(AcroView, AVDocFromPDDoc, document), nullptr);
    EXPECT_EQ(Monitor(), nullptr) << "no monitor without a view";
    const AVDoc view = View(document);
    EXPECT_EQ(HOST(AcroView, AVDocFromPDDoc, document), view);
    EXPECT_EQ(View(document), view) << "one view for each document";
    EXPECT_NE(Monitor(), nullptr);
    EXPECT_EQ(HOST(AcroView, AVDocClose, view, ASBool{1}), 1);
    EXPECT_EQ(g_events, "will-open did-open will-close document-did-close did-close ");
    EXPECT_EQ(Part<CDocuments>().Live(), 0u);
    EXPECT_REFUSED(HOST(AcroView, AVDocGetPDDoc, view));
    EXPECT_REFUSED(View(document)) << "a closed document";
}

TEST_F(ViewTests, UnsavedChangesAndUsersOfTheDocumentKeepAViewOpen)
{
    const PDDoc document = Open();
    const AVDoc view = View(document);
    DocumentAt(document).pdf.SetInfo("Title", "changed");
    EXPECT_EQ(HOST(AcroView, AVDocClose, view, ASBool{0}), 0);
    EXPECT_EQ(HOST(AcroView, AVDocFromPDDoc, document), view);
    HOST(PDModel, PDDocAcquire, document);
    EXPECT_EQ(RaisedBy([&] { HOST(AcroView, AVDocClose, view, ASBool{1}); }), pdErrUnableToCloseDueToRefs);
    HOST(PDModel, PDDocRelease, document);
    EXPECT_EQ(HOST(AcroView, AVDocClose, view, ASBool{1}), 1);
}
