#include "Library.h"

#define WIN32_LEAN_AND_MEAN
#include <stdio.h>
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
