#define _XOPEN_SOURCE 700
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Host.h"

#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

static int closings;

void* LoadPlugIn(const char* path)
{
    HMODULE library = LoadLibraryA(path);
    if (library == NULL) printf("error %lu\n", GetLastError());
    return library;
}

Code ExportOf(void* library, const char* name) { return (Code)GetProcAddress(library, name); }

void UnloadPlugIn(void* library) { FreeLibrary(library); }

void SetVariable(const char* name, const char* value) { SetEnvironmentVariableA(name, value); }

const char* UseSettingsFolder(const char* folder)
{
    static char absolute[MAX_PATH];
    CreateDirectoryA(folder, NULL);
    if (GetFullPathNameA(folder, sizeof absolute, absolute, NULL) == 0) return folder;
    SetVariable("APPDATA", absolute);
    return absolute;
}

static LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM first, LPARAM second)
{
    if (message != WM_CLOSE) return DefWindowProcA(window, message, first, second);
    if (first == 0 && second == 0) ++closings;
    return 0;
}

/* A window for messages needs no screen. */
void* MakeMainWindow(void)
{
    WNDCLASSA kind = {.lpfnWndProc = Handle, .lpszClassName = "LoaderTestHost"};
    RegisterClassA(&kind);
    return CreateWindowExA(0, kind.lpszClassName, "", 0, 0, 0, 1, 1, HWND_MESSAGE, NULL, NULL, NULL);
}

bool MainWindowWasClosed(void)
{
    MSG message;
    while (PeekMessageA(&message, NULL, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    return closings == 1;
}

#else

#include <dlfcn.h>
#include <limits.h>
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

#endif
