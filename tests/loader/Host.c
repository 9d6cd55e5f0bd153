#include "Host.h"

#include <setjmp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

Host host;
int hostFaults;

static void Fault(const char* what)
{
    printf("FAILED: %s\n", what);
    ++hostFaults;
}

/* ---- sixteen bits: the upper bits of results mean nothing, and this host fills them with rubbish */

static uintptr_t Result16(uint16_t value) { return (uintptr_t)0xDEADBEEF00000000u | 0x5A5A0000u | value; }

static uint16_t Argument16(uint32_t raw)
{
    if (raw >> 16 != 0) Fault("an atom or truth value has bits above its sixteen");
    return (uint16_t)raw;
}

/* ---- frames and raises */

typedef void (*RestoreProc)(void* environment);

enum { kMostFrames = 64 };
static struct {
    void* environment;
    RestoreProc restore;
} frames[kMostFrames];
static uint32_t lastError;

static void PushFrame(void* environment, RestoreProc restore)
{
    if (host.frameCount == kMostFrames) abort();
    frames[host.frameCount].environment = environment;
    frames[host.frameCount++].restore = restore;
}

static void PopFrame(void)
{
    if (host.frameCount-- == 0) abort();
}

static uint32_t LastError(void) { return lastError; }

static void Raise(uint32_t code)
{
    lastError = code;
    if (host.frameCount == 0) {
        Fault("an error is raised outside every frame");
        exit(1);
    }
    frames[host.frameCount - 1].restore(frames[host.frameCount - 1].environment);
    abort(); /* it must not come back */
}

static void ComeBack(void* environment) { longjmp(*(jmp_buf*)environment, 1); }

int Call(Code procedure, uintptr_t first, void* second)
{
    jmp_buf environment;
    const int depth = host.frameCount;
    volatile int answer = kRaised;
    PushFrame(&environment, &ComeBack);
    if (setjmp(environment) == 0) {
        answer = (Bool16)((uintptr_t(*)(uintptr_t, void*))procedure)(first, second);
        if (host.frameCount != depth + 1) Fault("exception frames are left behind");
    }
    host.frameCount = depth;
    return answer;
}

/* ---- callbacks: the wrapper is never the pointer itself */

typedef uintptr_t (*AnyProc)(uintptr_t, uintptr_t, uintptr_t, uintptr_t);
enum { kMostWrappers = 100 };
static AnyProc wrappedProcs[kMostWrappers];
static int wrapperCount;

#define WRAPPER(n)                                                                  \
    static uintptr_t Wrapper##n(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d) \
    {                                                                               \
        return wrappedProcs[n](a, b, c, d);                                         \
    }
#define TEN(X, t) X(t##0) X(t##1) X(t##2) X(t##3) X(t##4) X(t##5) X(t##6) X(t##7) X(t##8) X(t##9)
#define HUNDRED(X) TEN(X, ) TEN(X, 1) TEN(X, 2) TEN(X, 3) TEN(X, 4) TEN(X, 5) TEN(X, 6) TEN(X, 7) TEN(X, 8) TEN(X, 9)
HUNDRED(WRAPPER)
#define WRAPPER_NAME(n) &Wrapper##n,
static const AnyProc wrappers[kMostWrappers] = {HUNDRED(WRAPPER_NAME)};

static void* Wrap(void* extension, void* procedure)
{
    AnyProc code;
    void* wrapper;
    if (extension != Identity()) Fault("a callback is made for an unknown extension");
    if (procedure == NULL || wrapperCount == kMostWrappers) abort();
    memcpy(&code, &procedure, sizeof code);
    wrappedProcs[wrapperCount] = code;
    memcpy(&wrapper, &wrappers[wrapperCount], sizeof wrapper);
    ++wrapperCount;
    return wrapper;
}

bool IsWrapped(Code code)
{
    for (int at = 0; at < wrapperCount; ++at)
        if ((Code)wrappers[at] == code) return true;
    return false;
}

/* Of a procedure that the plug-in hands to the host; null where it may leave it out. */
static Code Taken(Code code)
{
    if (code != NULL && !IsWrapped(code)) Fault("a procedure is no callback that the host made");
    return code;
}

/* ---- atoms */

static char* atoms[512];
static int atomCount;

Atom AtomOf(const char* text)
{
    for (int at = 0; at < atomCount; ++at)
        if (strcmp(atoms[at], text) == 0) return (Atom)(at + 0x100);
    if (atomCount == (int)(sizeof atoms / sizeof *atoms)) abort();
    atoms[atomCount] = malloc(strlen(text) + 1);
    strcpy(atoms[atomCount], text);
    return (Atom)(0x100 + atomCount++);
}

const char* TextOf(Atom atom)
{
    if (atom == kNoAtom) return "";
    return atom >= 0x100 && atom < 0x100 + atomCount ? atoms[atom - 0x100] : NULL;
}

static uintptr_t AtomFromString(const char* text) { return Result16(AtomOf(text)); }
static const char* AtomGetString(uint32_t atom) { return TextOf(Argument16(atom)); }

/* ---- tables */

Table* TableNamed(const char* name)
{
    for (int at = 0; at < kTableCount; ++at)
        if (strcmp(host.tables[at].name, name) == 0) return &host.tables[at];
    return NULL;
}

static void* GetTable(uint32_t atom, uint32_t version)
{
    const char* name = TextOf(Argument16(atom));
    Table* table = name != NULL ? TableNamed(name) : NULL;
    if (host.askedCount == (int)(sizeof host.asked / sizeof *host.asked)) abort();
    snprintf(host.asked[host.askedCount].name, sizeof host.asked->name, "%s", name != NULL ? name : "?");
    host.asked[host.askedCount++].version = version;
    return table != NULL && table->version != 0 && table->version >= version ? (void*)table->entries : NULL;
}

static uint32_t TableVersion(void* entries)
{
    for (int at = 0; at < kTableCount; ++at)
        if ((void*)host.tables[at].entries == entries)
            return host.tables[at].hidesVersion ? (uint32_t)kUnknownVersion : host.tables[at].version;
    return (uint32_t)kUnknownVersion;
}

static const void* Configuration(uint32_t key)
{
    const char* name = TextOf(Argument16(key));
    if (name != NULL && strcmp(name, "Product") == 0) return "Exchange-Pro";
    if (name != NULL && strcmp(name, "CanEdit") == 0) return (const void*)(uintptr_t)1;
    return (const void*)~(uintptr_t)0;
}

void* Identity(void) { return &host.mainWindow; }

/* ---- memory and errors */

static void* Allocate(size_t count) { return malloc(count); }
static void Free(void* block) { free(block); }

static const char* ErrorString(uint32_t code, char* buffer, int32_t length)
{
    if (code == kBadParameter) snprintf(buffer, (size_t)length, "A parameter is bad.");
    return buffer;
}

/* ---- application */

static void AppVersion(int16_t* major, int16_t* minor)
{
    *major = (int16_t)host.majorVersion;
    *minor = 0x0107; /* 1 and 7 */
}

static void AppLanguage(char* buffer) { memcpy(buffer, "ENU", 4); }
static uintptr_t AppName(void) { return Result16(AtomOf("Acrobat")); }
static void YieldToOthers(double seconds) { host.yielded = seconds; }

static void RegisterIdle(Code procedure, void* data, uint32_t period)
{
    (void)period;
    if (host.idleCount == 8) abort();
    host.idles[host.idleCount++] = (Registration){Taken(procedure), data, 0};
}

static void RegisterNotification(int32_t selector, void* owner, Code procedure, void* data)
{
    if (host.notificationCount == 8) abort();
    if (owner != Identity()) Fault("a notification has no known owner");
    host.notifications[host.notificationCount++] = (Registration){Taken(procedure), data, selector};
}

static void RegisterHandler(uint32_t name, const uint64_t* record)
{
    if (host.handlerCount == 8) abort();
    if (record[0] != 144 || record[17] != 0) Fault("a handler's record has another size or fills its reserved place");
    for (int at = 1; at < 17; ++at) {
        Code code;
        memcpy(&code, &record[at], sizeof code);
        Taken(code);
    }
    host.handlers[host.handlerCount++] = (Handler){Argument16(name), record};
}

/* ---- menus */

static char menubar;

Menu* AddMenu(const char* name, const char* title)
{
    Menu* menu = calloc(1, sizeof *menu);
    if (host.menuCount == 16) abort();
    snprintf(menu->name, sizeof menu->name, "%s", name);
    snprintf(menu->title, sizeof menu->title, "%s", title);
    return host.menus[host.menuCount++] = menu;
}

Menu* MenuNamed(const char* name)
{
    for (int at = 0; at < host.menuCount; ++at)
        if (strcmp(host.menus[at]->name, name) == 0) return host.menus[at];
    return NULL;
}

Item* ItemNamed(const char* name)
{
    for (int menu = 0; menu < host.menuCount; ++menu)
        for (int at = 0; at < host.menus[menu]->itemCount; ++at)
            if (strcmp(host.menus[menu]->items[at]->name, name) == 0) return host.menus[menu]->items[at];
    return NULL;
}

bool AllReleased(void)
{
    int held = 0;
    for (int menu = 0; menu < host.menuCount; ++menu) {
        held += host.menus[menu]->references != 0;
        for (int at = 0; at < host.menus[menu]->itemCount; ++at) held += host.menus[menu]->items[at]->references != 0;
    }
    return held == 0;
}

static void* Menubar(void)
{
    if (host.menubarRaises) Raise(kBadParameter);
    return &menubar;
}

static Menu* AcquireMenu(void* bar, const char* name)
{
    Menu* menu = bar == &menubar ? MenuNamed(name) : NULL;
    if (menu != NULL) ++menu->references;
    return menu;
}

static Item* AcquireItem(void* bar, const char* name)
{
    Item* item = bar == &menubar ? ItemNamed(name) : NULL;
    if (item != NULL) ++item->references;
    return item;
}

static Menu* NewMenu(const char* title, const char* name, void* owner)
{
    Menu* menu = AddMenu(name, title);
    if (owner != Identity()) Fault("a menu has no known owner");
    menu->references = 1;
    return menu;
}

static void ReleaseMenu(Menu* menu) { --menu->references; }

static Item* NewItem(const char* title, const char* name, Menu* submenu, uint32_t longOnly, uint32_t shortcut,
                     uint32_t flags, void* icon, void* owner)
{
    Item* item = calloc(1, sizeof *item);
    (void)shortcut, (void)icon;
    if (owner != Identity()) Fault("a menu item has no known owner");
    Argument16(longOnly), Argument16(flags);
    snprintf(item->name, sizeof item->name, "%s", name);
    snprintf(item->title, sizeof item->title, "%s", title);
    item->submenu = submenu;
    item->references = 1;
    return item;
}

static void ReleaseItem(Item* item) { --item->references; }

static void AddItem(Menu* menu, Item* item, int32_t index)
{
    if (index != 9999 || menu->itemCount == 32 || item->added) Raise(kBadParameter);
    item->added = true;
    menu->items[menu->itemCount++] = item;
}

static void SetExecute(Item* item, Code procedure, void* data)
{
    item->execute = Taken(procedure);
    item->executeData = data;
}

static void SetEnabled(Item* item, Code procedure, void* data)
{
    item->isEnabled = Taken(procedure);
    item->enabledData = data;
}

static void ExecuteItem(Item* item)
{
    const bool enabled = item->isEnabled == NULL || ((Bool16(*)(void*))item->isEnabled)(item->enabledData) != 0;
    if (strcmp(item->name, "Quit") == 0) host.quitWanted = true;
    if (enabled && item->submenu == NULL && item->execute != NULL)
        ((void (*)(void*))item->execute)(item->executeData);
}

/* ---- the tables' content */

static void NotOffered(void)
{
    Fault("an entry of a table is called that this host does not offer");
    Raise(kNotImplemented);
}

static const Code coreEntries[] = {[1] = (Code)Raise,     [2] = (Code)PushFrame,      [3] = (Code)PopFrame,
                                   [4] = (Code)LastError, [5] = (Code)AtomFromString, [7] = (Code)AtomGetString,
                                   [8] = (Code)Wrap,      [10] = (Code)GetTable,      [11] = (Code)Configuration};
static const Code supportEntries[] = {
    [1] = (Code)Allocate, [3] = (Code)Free, [4] = (Code)ErrorString, [103] = (Code)TableVersion};
static const Code viewEntries[] = {
    [7] = (Code)AppVersion,    [8] = (Code)AppLanguage,       [9] = (Code)AppName,
    [16] = (Code)Menubar,      [39] = (Code)RegisterIdle,     [41] = (Code)RegisterNotification,
    [71] = (Code)AcquireMenu,  [74] = (Code)AcquireItem,      [78] = (Code)NewMenu,
    [80] = (Code)ReleaseMenu,  [89] = (Code)AddItem,          [90] = (Code)NewItem,
    [92] = (Code)ReleaseItem,  [99] = (Code)SetExecute,       [100] = (Code)SetEnabled,
    [105] = (Code)ExecuteItem, [326] = (Code)RegisterHandler, [391] = (Code)YieldToOthers};

static void Fill(const char* table, const Code* entries, size_t count)
{
    for (size_t slot = 1; slot < count; ++slot)
        if (entries[slot] != NULL) TableNamed(table)->entries[slot] = entries[slot];
}

const struct TableRow tableRows[kTableCount] = {
    {"AcroSupport", 0x00080000, 0x000A0000},  {"Core", 0x00050000, 0x00050000},
    {"Cos", 0x00060000, 0x00090000},          {"PDModel", 0x00060000, 0x000C0000},
    {"PDFEditWrite", 0x00060000, 0x000A0000}, {"PDFEditRead", 0x00060000, 0x000A0000},
    {"PDSysFont", 0x00040000, 0x00040000},    {"PagePDEContent", 0x00060000, 0x00060000},
    {"AcroView", 0x00060000, 0x000C0003},     {"PDSWrite", 0x00060000, 0x00080000},
    {"PDSRead", 0x00060000, 0x00080000},      {"Win", 0x00050000, 0x00090000},
    {"ASExtra", 0x00060000, 0x00090000},      {"PDMetadata", 0x00060000, 0x00080000}};

void ResetHost(void)
{
    memset(&host, 0, sizeof host);
    host.majorVersion = 21;
    host.yielded = -1;
    for (int at = 0; at < kTableCount; ++at) {
        host.tables[at].name = tableRows[at].name;
        host.tables[at].version = tableRows[at].present;
        for (int slot = 1; slot <= kMostSlots; ++slot) host.tables[at].entries[slot] = &NotOffered;
    }
    Fill("Core", coreEntries, sizeof coreEntries / sizeof *coreEntries);
    Fill("AcroSupport", supportEntries, sizeof supportEntries / sizeof *supportEntries);
    Fill("AcroView", viewEntries, sizeof viewEntries / sizeof *viewEntries);
}
