// The system's own header, without the macros that take away our names. Include this one only.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#undef CopyFile
#undef CreateFile
#undef CreateProcess
#undef CreateWindow
#undef DeleteFile
#undef ERROR
#undef FindWindow
#undef GetMessage
#undef GetObject
#undef MoveFile
#undef ReplaceFile
#undef SendMessage
#undef Yield
#undef far
#undef near
