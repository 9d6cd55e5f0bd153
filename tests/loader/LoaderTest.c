/* Loads the built plug-in into the host of Host.h and looks at each step of its life.
 *
 * usage: loader_test PLUGIN FOLDER CHECK
 *
 * FOLDER is for settings and log. A line is printed for everything that is looked at; one that begins with FAILED
 * ends the program with 1. */
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Host.h"
#include "Library.h"

static int failures;
static void* library;
static void* words[2]; /* of the platform: main window, library */

static bool Expect(bool holds, const char* what, ...)
{
    va_list arguments;
    va_start(arguments, what);
    printf(holds ? "ok: " : "FAILED: ");
    vprintf(what, arguments);
    printf("\n");
    va_end(arguments);
    failures += holds ? 0 : 1;
    return holds;
}

/* ---- the steps of a start */

static EntryProc Entry(void) { return (EntryProc)ExportOf(library, "PlugInMain"); }

static Code SetupOf(uint32_t hostVersion, uint32_t* version)
{
    Code setup = NULL;
    words[1] = library;
    return Entry()(hostVersion, version, &setup, words) ? setup : NULL;
}

static SetupData NewSetupData(void)
{
    SetupData data = {kHandshake, Identity(), TableNamed("Core")->entries, NULL};
    return data;
}

/* Answers the handshake procedure; null when setup declined or raised. */
static Code SetUp(void)
{
    uint32_t version = 0;
    Bool16 answer = 0;
    SetupData data = NewSetupData();
    Code setup = SetupOf(kHandshake, &version);
    const bool done = setup != NULL && CallStep(setup, kHandshake, &data, &answer);
    return done && answer == 1 ? data.handshake : NULL;
}

static HandshakeData NewHandshakeData(void)
{
    HandshakeData data = {kHandshake, AtomOf("Acrobat"), kNoAtom, NULL, NULL, NULL, NULL};
    return data;
}

static HandshakeData ShakeHands(void)
{
    Bool16 answer = 0;
    HandshakeData data = NewHandshakeData();
    Code handshake = SetUp();
    const bool done = handshake != NULL && CallStep(handshake, kHandshake, &data, &answer);
    if (!Expect(done && answer == 1, "the plug-in starts")) exit(1);
    return data;
}

static void RunStage(const char* name, Code stage)
{
    Bool16 answer = 0;
    const bool done = CallStage(stage, &answer);
    if (!Expect(done && answer == 1, "%s", name)) exit(1);
}

static void MakeHostMenus(void)
{
    AddMenu("File", "&File");
    AddMenu("Extensions", "Plug-&Ins");
    AddMenu("AboutExtensions", "About &Plug-Ins");
    AddMenu("UsingExtensions", "Plug-In &Help");
}

static Item* AddQuitItem(void)
{
    Item* quit = calloc(1, sizeof *quit);
    Menu* file = MenuNamed("File");
    strcpy(quit->name, "Quit");
    file->items[file->itemCount++] = quit;
    return quit;
}

static HandshakeData StartUp(void)
{
    HandshakeData data = ShakeHands();
    if (host.menuCount == 0) MakeHostMenus();
    RunStage("its tables are exported", data.exportTables);
    RunStage("it imports and registers", data.importAndRegister);
    RunStage("it initialises", data.initialise);
    return data;
}

static void Finish(const HandshakeData* data)
{
    Bool16 answer = 0;
    for (int at = 0; at < host.handlerCount; ++at) {
        Code terminate;
        memcpy(&terminate, &host.handlers[at].record[2], sizeof terminate);
        if (terminate != NULL) CallWithAtom(terminate, host.handlers[at].name);
    }
    const bool done = CallStage(data->unload, &answer);
    Expect(done && answer == 1, "it unloads");
    UnloadPlugIn(library);
    library = NULL;
    Expect(true, "the library is gone");
}

/* ---- step 1 */

static void CheckEntry(void)
{
    static const struct {
        uint32_t host, answer;
    } rows[] = {{0x00010000, 0x00010000}, {0x0001FFFF, 0x0001FFFF}, {0x00020000, 0x00020000},
                {0x00020001, 0x00020000}, {0x00030000, 0x00020000}, {0xFFFFFFFF, 0x00020000}};
    uint32_t version = 0;
    Code setup = NULL;
    for (size_t at = 0; at < sizeof rows / sizeof *rows; ++at) {
        version = 0;
        Code given = SetupOf(rows[at].host, &version);
        Expect(given != NULL && version == rows[at].answer, "a host of version %08X is answered %08X",
               (unsigned)rows[at].host, (unsigned)version);
    }
    Expect(Entry()(kHandshake, NULL, &setup, words) == 0, "declines without a place for its version");
    Expect(Entry()(kHandshake, &version, NULL, words) == 0, "declines without a place for its setup procedure");
    Expect(Entry()(kHandshake, &version, &setup, NULL) == 1, "does without the platform's words");
}

/* ---- step 2 */

static void CheckSetup(void)
{
    static const struct {
        uint32_t said, inRecord;
        bool core;
        const char* what;
    } rows[] = {{0x00010000, kHandshake, true, "an older version"},
                {0x00030000, kHandshake, true, "a newer version"},
                {0, kHandshake, true, "no version"},
                {kHandshake, 0x00010000, true, "an older record"},
                {kHandshake, 0x00030000, true, "a newer record"},
                {kHandshake, 0, true, "an empty record"},
                {kHandshake, kHandshake, false, "a record without the first table"}};
    uint32_t version = 0;
    Bool16 answer = 1;
    Code setup = SetupOf(kHandshake, &version);
    for (size_t at = 0; at < sizeof rows / sizeof *rows; ++at) {
        SetupData data = NewSetupData();
        data.version = rows[at].inRecord;
        if (!rows[at].core) data.core = NULL;
        host.askedCount = 0;
        answer = 1;
        const bool done = CallStep(setup, rows[at].said, &data, &answer);
        Expect(done && answer == 0 && data.handshake == NULL && host.askedCount == 0, "setup declines %s",
               rows[at].what);
    }
    const bool done = CallStep(setup, kHandshake, NULL, &answer);
    Expect(done && answer == 0, "setup declines no record");
    Code handshake = SetUp();
    Expect(handshake != NULL, "and accepts the right one");
    Expect(IsWrapped(handshake), "its handshake procedure is a callback that the host made");
}

/* ---- tables */

static void ExpectAsked(int at, const char* name, uint32_t version)
{
    const bool right =
        at < host.askedCount && strcmp(host.asked[at].name, name) == 0 && host.asked[at].version == version;
    Expect(right, "request %d is for \"%s\" %08X (was \"%s\" %08X)", at + 1, name, (unsigned)version,
           at < host.askedCount ? host.asked[at].name : "none",
           at < host.askedCount ? (unsigned)host.asked[at].version : 0u);
}

static const struct {
    const char* name;
    uint32_t wanted;
} wantedTables[kTableCount] = {
    {"AcroSupport", 0x00080000}, {"Core", 0x00050000},           {"Cos", 0x00060000},
    {"PDModel", 0x00060000},     {"PDFEditWrite", 0x00060000},   {"PDFEditRead", 0x00060000},
    {"PDSysFont", 0x00040000},   {"PagePDEContent", 0x00060000}, {"AcroView", 0x00060000},
    {"PDSWrite", 0x00060000},    {"PDSRead", 0x00060000},        {"Win", 0x00050000},
    {"ASExtra", 0x00060000},     {"PDMetadata", 0x00060000}};

static void CheckTables(void)
{
    Expect(SetUp() != NULL, "a complete host is accepted");
    ExpectAsked(0, "AcroSupport", 0x00060000); /* directly, to learn what it can tell */
    for (int at = 0; at < kTableCount; ++at) ExpectAsked(at + 1, wantedTables[at].name, wantedTables[at].wanted);
    Expect(host.askedCount == kTableCount + 1, "and nothing else is asked for");
    for (int at = 0; at < kTableCount; ++at) {
        const char* name = wantedTables[at].name;
        ResetHost();
        TableNamed(name)->version = wantedTables[at].wanted;
        Expect(SetUp() != NULL, "\"%s\" at %08X is new enough", name, (unsigned)wantedTables[at].wanted);
        ResetHost();
        TableNamed(name)->version = wantedTables[at].wanted - 1;
        Expect(SetUp() == NULL, "\"%s\" at %08X is too old", name, (unsigned)wantedTables[at].wanted - 1);
        ResetHost();
        TableNamed(name)->version = 0;
        Expect(SetUp() == NULL, "the plug-in declines a host without \"%s\"", name);
        Expect(strcmp(host.asked[host.askedCount - 1].name, name) == 0, "and looks no further than \"%s\"", name);
    }
}

static int FirstRequestFor(const char* name)
{
    for (int at = 0; at < host.askedCount; ++at)
        if (strcmp(host.asked[at].name, name) == 0) return at;
    return host.askedCount;
}

static void CheckProbing(void)
{
    static const uint32_t probed[] = {0x00050001, 0x00050000, 0x00040005, 0x00040000,
                                      0x00020003, 0x00020002, 0x00020001};
    static const struct {
        const char* name;
        uint32_t wanted, is;
        int probes; /* until one is met, or the wanted version is passed; 0: declined at once */
        bool starts;
    } rows[] = {{"Core", 0x00050000, 0x00050000, 2, true},       {"Win", 0x00050000, 0x00090000, 1, true},
                {"PDSysFont", 0x00040000, 0x00040000, 4, true},  {"PDSysFont", 0x00040000, 0x00040005, 3, true},
                {"PDSysFont", 0x00040000, 0x00020003, 4, false}, {"Cos", 0x00060000, 0x00090000, 0, false}};
    for (size_t row = 0; row < sizeof rows / sizeof *rows; ++row) {
        ResetHost();
        TableNamed(rows[row].name)->version = rows[row].is;
        TableNamed(rows[row].name)->hidesVersion = true;
        Expect((SetUp() != NULL) == rows[row].starts, "\"%s\" %08X that does not tell its version is %s",
               rows[row].name, (unsigned)rows[row].is, rows[row].starts ? "found by probing" : "not taken");
        const int first = FirstRequestFor(rows[row].name);
        ExpectAsked(first, rows[row].name, rows[row].wanted);
        for (int at = 0; at < rows[row].probes; ++at) ExpectAsked(first + 1 + at, rows[row].name, probed[at]);
        const int next = first + 1 + rows[row].probes;
        Expect(next >= host.askedCount || strcmp(host.asked[next].name, rows[row].name) != 0, "and no further");
    }
    ResetHost();
    TableNamed("AcroSupport")->hidesVersion = true;
    Expect(SetUp() == NULL, "a support table of unknown version cannot be new enough");
    ResetHost();
    TableNamed("AcroSupport")->version = 0x00050001;
    Expect(SetUp() == NULL, "nor can one that cannot tell versions");
}

/* ---- step 3 */

static void ExpectDeclined(Code handshake, uint32_t version, const char* what)
{
    Bool16 answer = 1;
    HandshakeData data = NewHandshakeData();
    const HandshakeData before = data;
    const bool done = CallStep(handshake, version, &data, &answer);
    Expect(done && answer == 0, "the handshake declines %s", what);
    Expect(memcmp(&data, &before, sizeof data) == 0, "and leaves the record as it was");
}

static void CheckHandshake(void)
{
    Bool16 answer = 1;
    Code handshake = SetUp();
    if (!Expect(handshake != NULL, "the plug-in is set up")) return;
    ExpectDeclined(handshake, 0x00010000, "an older version");
    ExpectDeclined(handshake, 0x00030000, "a newer version");
    ExpectDeclined(handshake, 0, "no version");
    Expect(CallStep(handshake, kHandshake, NULL, &answer) && answer == 0, "the handshake declines no record");

    const HandshakeData data = ShakeHands();
    Expect(data.version == kHandshake && data.appName == AtomOf("Acrobat"),
           "the name of the application stays the host's");
    Expect(TextOf(data.extensionName) != NULL && strcmp(TextOf(data.extensionName), "QLNX:Ferrule") == 0,
           "the name of the extension is \"QLNX:Ferrule\"");
    Expect(IsWrapped(data.exportTables) && IsWrapped(data.importAndRegister) && IsWrapped(data.initialise) &&
               IsWrapped(data.unload),
           "all four procedures are callbacks that the host made");
}

static void CheckReader(void)
{
    static const char* const others[] = {"Exchange-Pro", "Exchange-Std", "Reader Extended", ""};
    Code handshake = SetUp();
    if (!Expect(handshake != NULL, "the plug-in is set up")) return;
    host.product = "Reader";
    ExpectDeclined(handshake, kHandshake, "a Reader");
    for (size_t at = 0; at < sizeof others / sizeof *others; ++at) {
        host.product = others[at];
        ShakeHands();
    }
    host.product = NULL;
    ShakeHands(); /* a host that does not say what it is */
}

/* ---- what is registered, and menus */

static void CheckRegistrations(void)
{
    HandshakeData data = ShakeHands();
    MakeHostMenus();
    RunStage("its tables are exported", data.exportTables);
    Expect(host.notificationCount == 0 && host.handlerCount == 0, "nothing is registered yet");
    host.askedCount = 0;
    RunStage("it imports and registers", data.importAndRegister);
    ExpectAsked(FirstRequestFor("Forms"), "Forms", 0x00010002);
    ExpectAsked(FirstRequestFor("Catalog"), "Catalog", 0);
    Expect(
        host.notificationCount == 1 && host.notifications[0].number == 0 && host.notifications[0].owner == Identity(),
        "it wants to hear when the host has started");
    Expect(IsWrapped(host.notifications[0].procedure), "by a callback that the host made");
    RunStage("it initialises", data.initialise);
    Expect(host.handlerCount == 4, "it registers four commands (%d)", host.handlerCount);
    for (int at = 0; at < host.handlerCount; ++at) {
        const uint64_t* record = host.handlers[at].record;
        Expect(record[0] == 144, "the record of \"%s\" says its size", TextOf(host.handlers[at].name));
        Expect(!HasUnwrapped(record + 1, 17), "and holds callbacks that the host made");
        Expect(record[17] == 0, "and nothing in its reserved place");
    }
    Expect(host.idleCount == 0, "nothing is scheduled before the host has started");
    CallWithData(host.notifications[0].procedure, host.notifications[0].data);
    Expect(host.idleCount == 0 && !host.quitWanted, "nor afterwards, when no sequence is named");
    Finish(&data);
}

static void ExpectMenu(const char* menu, int count, const char* const (*items)[2])
{
    const Menu* found = MenuNamed(menu);
    if (!Expect(found != NULL && found->itemCount == count, "menu \"%s\" has %d items", menu, count)) return;
    for (int at = 0; at < count; ++at) {
        const Item* item = found->items[at];
        Expect(strcmp(item->title, items[at][0]) == 0 && strcmp(item->name, items[at][1]) == 0, "\"%s\", \"%s\"",
               items[at][0], items[at][1]);
        Expect(item->references == 0, "and all references to it are given back");
        const bool separates = strcmp(item->title, "-") == 0 || item->submenu != NULL;
        Expect(separates == (item->execute == NULL), "and it %s", separates ? "runs nothing" : "runs something");
        Expect(item->execute == NULL || IsWrapped(item->execute), "by a callback that the host made");
        Expect(item->isEnabled == NULL || IsWrapped(item->isEnabled), "and so is what tells whether it can be used");
    }
    Expect(found->references == 0, "all references to menu \"%s\" are given back", menu);
}

static void CheckMenus(void)
{
    static const char* const extensions[][2] = {{"&Create Batch File...", "QLNX:Ferrule"},
                                                {"Ferrule Tools", "QLNX:FerruleTools"}};
    static const char* const tools[][2] = {
        {"&Password Protect Multiple Documents...", "QLNX:FerrulePasswordProtect"},
        {"&Edit Metadata For Multiple Documents...", "QLNX:FerruleEditMetadata"},
        {"E&xport Metadata and Document Properties For Multiple Documents...", "QLNX:FerruleExportMetadata"},
        {"&Rename PDF Files...", "QLNX:FerruleAutoRename"},
        {"-", "QLNX:FerruleSepHelpDest"},
        {"&Help...", "QLNX:FerruleHelp2"}};
    static const char* const about[][2] = {{"Ferrule...", "QLNX:AboutFerrule"}};
    static const char* const using[][2] = {{"Ferrule...", "QLNX:FerruleHelp"}};
    HandshakeData data = StartUp();
    ExpectMenu("Extensions", 2, extensions);
    ExpectMenu("QLNX:FerruleToolsMenu", 6, tools);
    ExpectMenu("AboutExtensions", 1, about);
    ExpectMenu("UsingExtensions", 1, using);
    host.majorVersion = 8;
    for (int at = 0; at < 4; ++at) {
        host.note[0] = '\0';
        ExecuteItem(ItemNamed(tools[at][1]));
        Expect(strcmp(host.note, "Can't execute in the Acrobat version prior 9.0.") == 0, "\"%s\" asks for version 9",
               tools[at][1]);
    }
    Finish(&data);
}

/* ---- runs */

static char logPath[1024];

static char* ReadLog(void)
{
    static char text[8192];
    FILE* file = fopen(logPath, "rb");
    const size_t length = file != NULL ? fread(text, 1, sizeof text - 1, file) : 0;
    text[length] = '\0';
    if (file != NULL) fclose(file);
    return text;
}

static void ExpectLogged(const char* line, bool logged)
{
    Expect((strstr(ReadLog(), line) != NULL) == logged, "the log has %s \"%s\"", logged ? "a line" : "no line", line);
}

/* A run of a sequence that does not exist: it ends at once, and by closing the host. */
static HandshakeData StartRun(void)
{
    SetVariable("FERRULESEQU", "no such sequence.sequ");
    HandshakeData data = StartUp();
    CallWithData(host.notifications[0].procedure, host.notifications[0].data);
    Expect(host.idleCount == 1 && IsWrapped(host.idles[0].procedure), "the run is scheduled as an idle procedure");
    Expect(!host.quitWanted, "and does not begin before it is called");
    return data;
}

static void CallIdle(void)
{
    const bool done = host.idleCount > 0 && CallWithData(host.idles[0].procedure, host.idles[0].data);
    Expect(done, "the idle procedure returns");
}

static void CheckRun(void)
{
    MakeHostMenus();
    AddQuitItem();
    HandshakeData data = StartRun();
    CallIdle();
    Expect(host.yielded == 2.0, "the host may yield for two seconds");
    Expect(host.quitWanted, "then its item \"Quit\" is executed");
    Expect(ItemNamed("Quit")->references == 0, "and the reference to it given back");
    host.quitWanted = false;
    CallIdle();
    Expect(!host.quitWanted, "a run is done once, however often the idle procedure is called");
    Finish(&data);
    ExpectLogged("Adobe Acrobat has been closed.", true);
    ExpectLogged("LOG STOPPED: ", true);
}

static void CheckNoQuit(void)
{
    HandshakeData data = StartRun();
    CallIdle();
    Expect(!host.quitWanted && host.yielded < 0, "a host without the item \"Quit\" stays open");
    Finish(&data);
    ExpectLogged("Quit command is not available. Cannot close Adobe Acrobat.", true);
    ExpectLogged("Adobe Acrobat has been closed.", false);
}

static void CheckOldHost(void)
{
    words[0] = MakeMainWindow();
    host.majorVersion = 5;
    MakeHostMenus();
    AddQuitItem();
    HandshakeData data = StartRun();
    CallIdle();
    Expect(!host.quitWanted, "a host of version 5 is not closed through its menu");
    Expect(MainWindowWasClosed() == (words[0] != NULL), "but by a message to its window, where it has one");
    Finish(&data);
    ExpectLogged("Adobe Acrobat has been closed.", words[0] != NULL);
}

/* A raise in the middle of the plug-in's own work comes back as a refusal, with all frames in order. */
static void CheckRaises(void)
{
    Bool16 answer = 1;
    HandshakeData data = ShakeHands();
    MakeHostMenus();
    RunStage("its tables are exported", data.exportTables);
    RunStage("it imports and registers", data.importAndRegister);
    host.menubarRaises = true;
    for (int round = 0; round < 3; ++round) {
        const bool done = CallStage(data.initialise, &answer);
        Expect(done && answer == 0, "it declines when the host raises while it initialises");
        Expect(host.frameDepth == 0, "and leaves no frame open");
    }
    Finish(&data);
}

/* ---- */

static const struct {
    const char* name;
    void (*run)(void);
} checks[] = {{"entry", CheckEntry},
              {"setup", CheckSetup},
              {"tables", CheckTables},
              {"probing", CheckProbing},
              {"handshake", CheckHandshake},
              {"reader", CheckReader},
              {"registrations", CheckRegistrations},
              {"menus", CheckMenus},
              {"run", CheckRun},
              {"no_quit_item", CheckNoQuit},
              {"old_host", CheckOldHost},
              {"raises", CheckRaises}};

int main(int count, char** arguments)
{
    bool known = false;
    if (count != 4) {
        printf("usage: loader_test PLUGIN FOLDER CHECK\n");
        return 2;
    }
    setvbuf(stdout, NULL, _IONBF, 0); /* nothing is lost when a check crashes */
    snprintf(logPath, sizeof logPath, "%s/Quillon/Ferrule/FerruleLog.txt", UseSettingsFolder(arguments[2]));
    remove(logPath);
    ResetHost();
    library = LoadPlugIn(arguments[1]);
    if (!Expect(library != NULL && Entry() != NULL, "the library loads and exports its entry")) return 1;
    for (size_t at = 0; at < sizeof checks / sizeof *checks; ++at) {
        if (strcmp(checks[at].name, arguments[3]) != 0) continue;
        known = true;
        checks[at].run();
    }
    Expect(known, "there is a check of this name");
    Expect(hostFaults == 0, "nothing was done that no plug-in may do");
    Expect(host.frameDepth == 0, "no frame of the plug-in is left");
    return failures == 0 ? 0 : 1;
}
