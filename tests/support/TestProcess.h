// What tests change in, and ask of, their own process.
#pragma once

#include <cstdlib>
#include <string>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

/// For this process and its children. An empty value removes the variable.
inline void SetVariable(const std::string& name, const std::string& value)
{
#ifdef _WIN32
    _putenv_s(name.c_str(), value.c_str());
#else
    if (value.empty())
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value.c_str(), 1);
#endif
}

inline int ProcessId()
{
#ifdef _WIN32
    return _getpid();
#else
    return static_cast<int>(getpid());
#endif
}
