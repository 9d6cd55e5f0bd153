#pragma once

#ifdef _WIN32
#include "platform/ChildState_win.h"
#else
#include "platform/ChildState_posix.h"
#endif
