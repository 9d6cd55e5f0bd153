/* A host in plain C, as far as starting, scheduling and ending a plug-in need one. It is written from the published
 * description of the interface and shares no header with the plug-in or with the open host, so that a mistake in
 * their common header shows here.
 *
 * Everything is one thread and one plug-in. What the host sees is recorded in `host`. */
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

typedef uint16_t Bool16;
typedef uint16_t Atom;
typedef void (*Code)(void); /* any code pointer */

enum {
    kNoAtom = 0xFFFF,
    kHandshake = 0x00020000,
    kUnknownVersion = -1,
    kBadParameter = 0x40000003,
    kNotImplemented = 0x40000009,
    kMostSlots = 660,
    kTableCount = 14
};

/* ---- records of the start */

typedef struct {
    uint32_t version;
    void* extension;
    void* core;
    Code handshake;
} SetupData;

typedef struct {
    uint32_t version;
    Atom appName;
    Atom extensionName;
    Code exportTables;
    Code importAndRegister;
    Code initialise;
    Code unload;
} HandshakeData;

_Static_assert(sizeof(SetupData) == 32 && offsetof(SetupData, extension) == 8 && offsetof(SetupData, core) == 16 &&
                   offsetof(SetupData, handshake) == 24,
               "published layout");
_Static_assert(sizeof(HandshakeData) == 40 && offsetof(HandshakeData, appName) == 4 &&
                   offsetof(HandshakeData, extensionName) == 6 && offsetof(HandshakeData, exportTables) == 8 &&
                   offsetof(HandshakeData, unload) == 32,
               "published layout");

typedef Bool16 (*EntryProc)(uint32_t hostVersion, uint32_t* version, Code* setup, void* platformWords);

/* ---- what the host has and what it sees */

/* The tables in the order in which a plug-in of this kind asks for them, and the versions of a present host. */
extern const struct TableRow {
    const char* name;
    uint32_t wanted, present;
} tableRows[kTableCount];

typedef struct {
    const char* name;
    uint32_t version;  /* 0: there is no such table */
    bool hidesVersion; /* its version is answered as unknown */
    Code entries[kMostSlots + 1];
} Table;

typedef struct Menu Menu;

typedef struct {
    char name[64], title[128];
    Menu* submenu;
    int references;
    bool added;
    Code execute, isEnabled;
    void *executeData, *enabledData;
} Item;

struct Menu {
    char name[64], title[128];
    int references;
    Item* items[32];
    int itemCount;
};

typedef struct {
    Code procedure;
    void* data;
    int32_t selector; /* of a notification */
} Registration;

typedef struct {
    Atom name;
    const uint64_t* record; /* size, then code pointers */
} Handler;

typedef struct {
    char name[32];
    uint32_t version;
} Asked;

typedef struct {
    Table tables[kTableCount];
    int majorVersion;
    bool menubarRaises;

    Asked asked[256]; /* tables asked for by name */
    int askedCount;
    Menu* menus[16];
    int menuCount;
    Registration notifications[8], idles[8];
    int notificationCount, idleCount;
    Handler handlers[8];
    int handlerCount;
    double yielded;  /* seconds of the last yield, -1 when there was none */
    bool quitWanted; /* the item "Quit" was executed */
    int frameCount;  /* open exception frames */
    char mainWindow; /* its address is the plug-in's identity */
} Host;

extern Host host;
/* What the plug-in did to the host that no plug-in may do; each was printed. Not undone by ResetHost. */
extern int hostFaults;

/* Everything as in a new, complete host. */
void ResetHost(void);
Table* TableNamed(const char* name);
/* The extension identity that the host gives to the plug-in. */
void* Identity(void);

Atom AtomOf(const char* text);
const char* TextOf(Atom atom);

/* Whether the host made this wrapper. Every procedure that the plug-in hands out has to be one. */
bool IsWrapped(Code code);

Menu* AddMenu(const char* name, const char* title);
Menu* MenuNamed(const char* name);
Item* ItemNamed(const char* name);
/* Whether the plug-in has given back all references to menus and items. */
bool AllReleased(void);

/* Runs a procedure of the plug-in inside a frame of the host's own; it takes none, one or both arguments. Answers its
 * truth value, or kRaised. */
enum { kRaised = -1 };
int Call(Code procedure, uintptr_t first, void* second);

/* ---- Library.c: what differs from system to system */

/* Null when the library cannot be loaded; the reason is printed. */
void* LoadPlugIn(const char* path);
Code ExportOf(void* library, const char* name);
void UnloadPlugIn(void* library);

/* For the plug-in to be loaded. */
void SetVariable(const char* name, const char* value);
/* Where programs keep the user's settings; the folder is made. Answers its absolute path. */
const char* UseSettingsFolder(const char* folder);

/* Null on systems without windows. */
void* MakeMainWindow(void);
/* Whether it was asked to close; lets pending messages through. */
bool MainWindowWasClosed(void);
