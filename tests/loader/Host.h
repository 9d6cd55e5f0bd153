/* A host in plain C, as far as starting, scheduling and ending a plug-in need one. It is written from the published
 * description of the interface and shares no header with the plug-in or with the open host, so that a mistake in
 * their common header shows here.
 *
 * Everything is one thread and one plug-in. What the host sees is recorded in `host`. */
#ifndef FERRULE_TESTS_LOADER_HOST_H
#define FERRULE_TESTS_LOADER_HOST_H

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
typedef Bool16 (*StepProc)(uint32_t version, void* data); /* setup and handshake */
typedef Bool16 (*StageProc)(void);

/* ---- what the host has and what it sees */

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
    uint32_t number; /* selector of a notification, period of an idle procedure */
    void* owner;
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
    Table tables[kTableCount]; /* in the order in which a plug-in of this kind asks for them */
    const char* product;       /* null: the host does not know the key */
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
    char note[256];  /* of the last alert */
    double yielded;  /* seconds of the last yield, -1 when there was none */
    bool quitWanted; /* the item "Quit" was executed */
    int frameDepth;  /* exception frames that the plug-in has open */
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

/* Whether the host made this wrapper, and what is behind it. */
bool IsWrapped(Code code);
bool HasUnwrapped(const uint64_t* codes, int count);

Menu* AddMenu(const char* name, const char* title);
Menu* MenuNamed(const char* name);
Item* ItemNamed(const char* name);
/* As the user would; nothing for an item that is disabled or has no procedure. */
void ExecuteItem(Item* item);

/* Runs a procedure of the plug-in inside a frame of the host's own. False when it raised; its answer is in `answer`.
 */
bool CallStage(Code procedure, Bool16* answer);
bool CallStep(Code procedure, uint32_t version, void* data, Bool16* answer);
bool CallWithData(Code procedure, void* data);
bool CallWithAtom(Code procedure, Atom name);

#endif
