#define _XOPEN_SOURCE 700
#include "Library.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

void* LoadPlugIn(const char* path)
{
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) printf("%s\n", dlerror());
    return library;
}

Code ExportOf(void* library, const char* name)
{
    void* found = dlsym(library, name);
    Code code;
    memcpy(&code, &found, sizeof code);
    return code;
}

void UnloadPlugIn(void* library) { dlclose(library); }

void SetVariable(const char* name, const char* value) { setenv(name, value, 1); }

const char* UseSettingsFolder(const char* folder)
{
    static char absolute[PATH_MAX];
    mkdir(folder, 0777);
    if (realpath(folder, absolute) == NULL) return folder;
    SetVariable("XDG_CONFIG_HOME", absolute);
    return absolute;
}

void* MakeMainWindow(void) { return NULL; }

bool MainWindowWasClosed(void) { return false; }
