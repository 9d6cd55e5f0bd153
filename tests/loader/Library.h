/* What differs from system to system. */
#ifndef FERRULE_TESTS_LOADER_LIBRARY_H
#define FERRULE_TESTS_LOADER_LIBRARY_H

#include <stdbool.h>

#include "Host.h"

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

#endif
