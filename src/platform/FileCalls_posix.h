#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <string>

/// Every call of the system that works on files passes through here. Not for callers outside this folder, except the
/// open host's own files for plug-ins.
///
/// A test can stand in front of each call: when the process offers the C function
///     int FerruleBeforeFileCall(const char* call, const char* path)
/// it is asked before every call and answers 0, or the error number that the call fails with instead of being made.
/// It may end the process. For calls on a descriptor `path` is the file's present name. Programs do not offer it; a
/// test preloads a library that does.
namespace platform::calls {

using BeforeFileCall = int (*)(const char* call, const char* path);
/// Null in any process but those of tests.
BeforeFileCall Hook();

// The calls below answer what the system's do, with errno.

int Open(const std::string& path, int flags, unsigned mode = 0);
int Close(int descriptor);  ///< closes even when it is made to fail
ssize_t Read(int descriptor, void* bytes, std::size_t count);
ssize_t ReadAt(int descriptor, void* bytes, std::size_t count, off_t position);
ssize_t Write(int descriptor, const void* bytes, std::size_t count);
ssize_t WriteAt(int descriptor, const void* bytes, std::size_t count, off_t position);
ssize_t CopyRange(int from, int to, std::size_t count);
int CloneRange(int from, int to);  ///< the whole file, by sharing its blocks
int Flush(int descriptor);
int FlushData(int descriptor);
int Truncate(int descriptor, off_t length);
int Lock(int descriptor, int operation);
int SetMode(int descriptor, mode_t mode);
int SetOwner(int descriptor, uid_t user, gid_t group);
/// Extended attributes. For the value and the names: 0 or -1. Names are each ended by a zero byte.
int GetAttribute(const std::string& path, const char* name, std::string& value);
int GetAttribute(int descriptor, const char* name, std::string& value);
int ListAttributes(const std::string& path, std::string& names);
int SetAttribute(int descriptor, const char* name, const std::string& value);
int RemoveAttribute(int descriptor, const char* name);
int SetTimes(int descriptor, const timespec (&times)[2]);

int Status(const std::string& path, struct stat& status);
int LinkStatus(const std::string& path, struct stat& status);  ///< of a symbolic link itself
int StatusOf(int descriptor, struct stat& status);
/// Of the user that the other calls act for.
int Access(const std::string& path, int mode);
ssize_t ReadLink(const std::string& path, char* text, std::size_t size);
char* RealPath(const std::string& path);  ///< freed by the caller

int Rename(const std::string& from, const std::string& to);
int RenameNoReplace(const std::string& from, const std::string& to);
int Link(const std::string& from, const std::string& to);
int SymbolicLink(const std::string& text, const std::string& path);
int Unlink(const std::string& path);
int MakeFolder(const std::string& path, mode_t mode = 0777);
int RemoveFolder(const std::string& path);

DIR* OpenFolder(const std::string& path);
/// Null at the end with errno 0.
dirent* ReadFolder(DIR* folder);
/// `mode` as for fopen; the descriptor is not handed on to started programs.
std::FILE* OpenStream(const std::string& path, const std::string& mode);

}  // namespace platform::calls
