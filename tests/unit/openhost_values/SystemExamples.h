// What paths and texts look like on the system that the tests run on.
#pragma once

#include <string>
#include <vector>

struct MadePath {
    enum class From { Nothing, Base, RealFolder };
    const char* type;
    const char* spec;
    From from;
    std::string native;
};

struct DeviceIndependentPath {
    const char* path;
    const char* from;  // or null
    const char* text;
};

struct NamedPath {
    const char *native, *name, *folder, *top, *url;
};

/// An absolute path of a file, from which some of the others start.
extern const char* const kBasePath;
/// `here` is the current folder, `realFolder` one that exists.
std::vector<MadePath> MadePaths(const std::string& here, const std::string& realFolder);
std::vector<DeviceIndependentPath> DeviceIndependentPaths();
std::vector<NamedPath> NamedPaths();
/// What can be no name of a file in a folder.
std::vector<const char*> ImpossibleNames();

/// What the system's text files end their lines with.
extern const char* const kLineEnd;

/// Another name that leads to the same file.
std::string AnotherNameFor(const std::string& path);
