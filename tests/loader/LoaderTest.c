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
    SetupData data = NewSetupData();
    Code setup = SetupOf(kHandshake, &version);
    return setup != NULL && Call(setup, kHandshake, &data) == 1 ? data.handshake : NULL;
}

static HandshakeData NewHandshakeData(void)
{
    HandshakeData data = {kHandshake, AtomOf("Acrobat"), kNoAtom, NULL, NULL, NULL, NULL};
    return data;
}

static HandshakeData ShakeHands(void)
{
    HandshakeData data = NewHandshakeData();
    Code handshake = SetUp();
    if (!Expect(handshake != NULL && Call(handshake, kHandshake, &data) == 1, "the plug-in starts")) exit(1);
    return data;
}

static void RunStage(const char* name, Code stage)
{
    if (!Expect(Call(stage, 0, NULL) == 1, "%s", name)) exit(1);
}

static void MakeHostMenus(void)
{
    AddMenu("File", "&File");
    AddMenu("Extensions", "Plug-&Ins");
    AddMenu("AboutExtensions", "About &Plug-Ins");
    AddMenu("UsingExtensions", "Plug-In &Help");
    Item* quit = calloc(1, sizeof *quit);
    strcpy(quit->name, "Quit");
    host.menus[0]->items[host.menus[0]->itemCount++] = quit;
}

static HandshakeData StartUp(void)
{
    HandshakeData data = ShakeHands();
    MakeHostMenus();
    RunStage("its tables are exported", data.exportTables);
    RunStage("it imports and registers", data.importAndRegister);
    RunStage("it initialises", data.initialise);
    return data;
}

static void Finish(const HandshakeData* data)
{
    for (int at = 0; at < host.handlerCount; ++at) {
        Code terminate;
        memcpy(&terminate, &host.handlers[at].record[2], sizeof terminate);
        if (terminate != NULL) Call(terminate, host.handlers[at].name, NULL);
    }
    RunStage("it unloads", data->unload);
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
    Code setup = SetupOf(kHandshake, &version);
    for (size_t at = 0; at < sizeof rows / sizeof *rows; ++at) {
        SetupData data = NewSetupData();
        data.version = rows[at].inRecord;
        if (!rows[at].core) data.core = NULL;
        host.askedCount = 0;
        Expect(Call(setup, rows[at].said, &data) == 0 && data.handshake == NULL && host.askedCount == 0,
               "setup declines %s", rows[at].what);
    }
    Expect(Call(setup, kHandshake, NULL) == 0, "setup declines no record");
    Expect(IsWrapped(SetUp()), "it accepts the right one, and its handshake procedure is a callback of the host");
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

static void CheckTables(void)
{
    Expect(SetUp() != NULL, "a complete host is accepted");
    ExpectAsked(0, "AcroSupport", 0x00060000); /* directly, to learn what it can tell */
    for (int at = 0; at < kTableCount; ++at) ExpectAsked(at + 1, tableRows[at].name, tableRows[at].wanted);
    Expect(host.askedCount == kTableCount + 1, "and nothing else is asked for");
    for (int at = 0; at < kTableCount; ++at) {
        const char* name = tableRows[at].name;
        const uint32_t wanted = tableRows[at].wanted, versions[] = {wanted, wanted - 1, 0};
        for (int row = 0; row < 3; ++row) {
            ResetHost();
            TableNamed(name)->version = versions[row];
            Expect((SetUp() != NULL) == (row == 0), "\"%s\" at %08X is %s", name, (unsigned)versions[row],
                   row == 0 ? "new enough" : "declined");
        }
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

static void CheckHandshake(void)
{
    static const uint32_t others[] = {0x00010000, 0x00030000, 0};
    Code handshake = SetUp();
    if (!Expect(handshake != NULL, "the plug-in is set up")) return;
    for (size_t at = 0; at < sizeof others / sizeof *others; ++at) {
        HandshakeData data = NewHandshakeData();
        const HandshakeData before = data;
        Expect(Call(handshake, others[at], &data) == 0 && memcmp(&data, &before, sizeof data) == 0,
               "the handshake declines version %08X and leaves the record as it was", (unsigned)others[at]);
    }
    Expect(Call(handshake, kHandshake, NULL) == 0, "the handshake declines no record");

    const HandshakeData data = ShakeHands();
    Expect(data.version == kHandshake && data.appName == AtomOf("Acrobat"),
           "the name of the application stays the host's");
    Expect(TextOf(data.extensionName) != NULL && strcmp(TextOf(data.extensionName), "QLNX:Ferrule") == 0,
           "the name of the extension is \"QLNX:Ferrule\"");
    Expect(IsWrapped(data.exportTables) && IsWrapped(data.importAndRegister) && IsWrapped(data.initialise) &&
               IsWrapped(data.unload),
           "all four procedures are callbacks that the host made");
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
    Expect(host.notificationCount == 1 && host.notifications[0].selector == 0,
           "it wants to hear when the host has started");
    RunStage("it initialises", data.initialise);
    Expect(host.handlerCount == COMMANDS, "it registers its commands (%d)", host.handlerCount);
    Expect(host.idleCount == 0, "nothing is scheduled before the host has started");
    Call(host.notifications[0].procedure, (uintptr_t)host.notifications[0].data, NULL);
    Expect(host.idleCount == 0 && !host.quitWanted, "nor afterwards, when no sequence is named");
    Finish(&data);
}

/* Title, name, and whether it runs something, of each item. */
static const char* ItemsOf(const char* name)
{
    static char text[2048];
    const Menu* menu = MenuNamed(name);
    text[0] = '\0';
    for (int at = 0; menu != NULL && at < menu->itemCount; ++at) {
        const Item* item = menu->items[at];
        snprintf(text + strlen(text), sizeof text - strlen(text), "%s = %s%s\n", item->title, item->name,
                 item->execute != NULL ? "()" : "");
    }
    return text;
}

static void CheckMenus(void)
{
    static const struct {
        const char *menu, *items;
    } rows[] = {{"Extensions",
                 "&Create Batch File... = QLNX:Ferrule()\n"
                 "Ferrule Tools = QLNX:FerruleTools\n"},
                {"QLNX:FerruleToolsMenu",
                 "&Password Protect Multiple Documents... = QLNX:FerrulePasswordProtect()\n"
                 "&Edit Metadata For Multiple Documents... = QLNX:FerruleEditMetadata()\n"
                 "E&xport Metadata and Document Properties For Multiple Documents... = QLNX:FerruleExportMetadata()\n"
                 "&Rename PDF Files... = QLNX:FerruleAutoRename()\n"
                 "- = QLNX:FerruleSepHelpDest\n"
                 "&Help... = QLNX:FerruleHelp2()\n"},
                {"AboutExtensions", "Ferrule... = QLNX:AboutFerrule()\n"},
                {"UsingExtensions", "Ferrule... = QLNX:FerruleHelp()\n"}};
    HandshakeData data = StartUp();
    for (size_t at = 0; at < sizeof rows / sizeof *rows; ++at)
        Expect(strcmp(ItemsOf(rows[at].menu), rows[at].items) == 0, "menu \"%s\" holds\n%s", rows[at].menu,
               ItemsOf(rows[at].menu));
    Finish(&data);
}

/* ---- runs */

static char logPath[1024];

static bool IsLogged(const char* line)
{
    static char text[8192];
    FILE* file = fopen(logPath, "rb");
    const size_t length = file != NULL ? fread(text, 1, sizeof text - 1, file) : 0;
    text[length] = '\0';
    if (file != NULL) fclose(file);
    return strstr(text, line) != NULL;
}

/* A run of a sequence that does not exist: it ends at once, and by closing the host. */
static HandshakeData StartRun(void)
{
    SetVariable("FERRULESEQU", "no such sequence.sequ");
    HandshakeData data = StartUp();
    Call(host.notifications[0].procedure, (uintptr_t)host.notifications[0].data, NULL);
    Expect(host.idleCount == 1, "the run is scheduled as an idle procedure");
    Expect(!host.quitWanted, "and does not begin before it is called");
    return data;
}

static void CallIdle(void)
{
    const Registration* idle = &host.idles[0];
    Expect(host.idleCount > 0 && Call(idle->procedure, (uintptr_t)idle->data, NULL) != kRaised,
           "the idle procedure returns");
}

static void CheckRun(void)
{
    HandshakeData data = StartRun();
    CallIdle();
    Expect(host.yielded == 2.0, "the host may yield for two seconds");
    Expect(host.quitWanted, "then its item \"Quit\" is executed");
    host.quitWanted = false;
    CallIdle();
    Expect(!host.quitWanted, "a run is done once, however often the idle procedure is called");
    Finish(&data);
    Expect(IsLogged("Adobe Acrobat has been closed.") && IsLogged("LOG STOPPED: "), "the log tells so");
}

static void CheckOldHost(void)
{
    words[0] = MakeMainWindow();
    host.majorVersion = 5;
    HandshakeData data = StartRun();
    CallIdle();
    Expect(!host.quitWanted, "a host of version 5 is not closed through its menu");
    Expect(MainWindowWasClosed() == (words[0] != NULL), "but by a message to its window, where it has one");
    Finish(&data);
    Expect(IsLogged("Adobe Acrobat has been closed.") == (words[0] != NULL), "and the log tells whether");
}

/* A raise in the middle of the plug-in's own work comes back as a refusal, with all frames in order. */
static void CheckRaises(void)
{
    HandshakeData data = ShakeHands();
    MakeHostMenus();
    RunStage("its tables are exported", data.exportTables);
    RunStage("it imports and registers", data.importAndRegister);
    host.menubarRaises = true;
    for (int round = 0; round < 3; ++round)
        Expect(Call(data.initialise, 0, NULL) == 0 && host.frameCount == 0,
               "it declines when the host raises while it initialises, and leaves no frame open");
    Finish(&data);
}

/* ---- */

static const struct {
    const char* name;
    void (*run)(void);
} checks[] = {{"entry", CheckEntry},         {"setup", CheckSetup},
              {"tables", CheckTables},       {"probing", CheckProbing},
              {"handshake", CheckHandshake}, {"registrations", CheckRegistrations},
              {"menus", CheckMenus},         {"run", CheckRun},
              {"old_host", CheckOldHost},    {"raises", CheckRaises}};

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
    Expect(host.frameCount == 0, "no frame of the plug-in is left");
    Expect(AllReleased(), "all references to menus and items are given back");
    return failures == 0 ? 0 : 1;
}
