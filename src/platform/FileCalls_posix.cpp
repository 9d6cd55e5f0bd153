#include "platform/FileCalls_posix.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace platform::calls {
namespace {

/// Whether the call is to be made; otherwise errno says why it failed.
bool Passes(const char* call, const char* path)
{
    const BeforeFileCall hook = Hook();
    const int error = hook ? hook(call, path) : 0;
    if (error != 0) errno = error;
    return error == 0;
}

bool Passes(const char* call, const std::string& path) { return Passes(call, path.c_str()); }

bool Passes(const char* call, int descriptor)
{
    if (!Hook()) return true;
    char name[PATH_MAX] = "";
    (void)!readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), name, sizeof name - 1);
    return Passes(call, name);
}

}  // namespace

BeforeFileCall Hook()
{
    static const auto hook = reinterpret_cast<BeforeFileCall>(dlsym(RTLD_DEFAULT, "FerruleBeforeFileCall"));
    return hook;
}

int Open(const std::string& path, int flags, unsigned mode)
{
    return Passes("open", path) ? open(path.c_str(), flags, static_cast<mode_t>(mode)) : -1;
}

int Close(int descriptor)
{
    const bool passes = Passes("close", descriptor);
    const int error = errno;
    const int closed = close(descriptor);
    if (passes) return closed;
    errno = error;
    return -1;
}

ssize_t Read(int descriptor, void* bytes, std::size_t count)
{
    return Passes("read", descriptor) ? read(descriptor, bytes, count) : -1;
}

ssize_t ReadAt(int descriptor, void* bytes, std::size_t count, off_t position)
{
    return Passes("pread", descriptor) ? pread(descriptor, bytes, count, position) : -1;
}

ssize_t Write(int descriptor, const void* bytes, std::size_t count)
{
    return Passes("write", descriptor) ? write(descriptor, bytes, count) : -1;
}

ssize_t WriteAt(int descriptor, const void* bytes, std::size_t count, off_t position)
{
    return Passes("pwrite", descriptor) ? pwrite(descriptor, bytes, count, position) : -1;
}

ssize_t CopyRange(int from, int to, std::size_t count)
{
    return Passes("copy_file_range", to) ? copy_file_range(from, nullptr, to, nullptr, count, 0) : -1;
}

int CloneRange(int from, int to) { return Passes("clone", to) ? ioctl(to, FICLONE, from) : -1; }

int Flush(int descriptor) { return Passes("fsync", descriptor) ? fsync(descriptor) : -1; }

int FlushData(int descriptor) { return Passes("fdatasync", descriptor) ? fdatasync(descriptor) : -1; }

int Truncate(int descriptor, off_t length)
{
    return Passes("ftruncate", descriptor) ? ftruncate(descriptor, length) : -1;
}

int Lock(int descriptor, int operation) { return Passes("flock", descriptor) ? flock(descriptor, operation) : -1; }

int SetMode(int descriptor, mode_t mode) { return Passes("fchmod", descriptor) ? fchmod(descriptor, mode) : -1; }

int SetOwner(int descriptor, uid_t user, gid_t group)
{
    return Passes("fchown", descriptor) ? fchown(descriptor, user, group) : -1;
}

namespace {

/// Calls that tell the size when they are given no room; the value may grow in between.
template <class Get>
int GetAll(Get get, std::string& value)
{
    for (;;) {
        const ssize_t size = get(nullptr, 0);
        if (size < 0) return -1;
        value.resize(static_cast<std::size_t>(size));
        const ssize_t got = size == 0 ? 0 : get(value.data(), value.size());
        if (got < 0 && errno == ERANGE) continue;
        value.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
        return got < 0 ? -1 : 0;
    }
}

}  // namespace

int GetAttribute(const std::string& path, const char* name, std::string& value)
{
    if (!Passes("getxattr", path)) return -1;
    return GetAll([&](char* room, std::size_t size) { return getxattr(path.c_str(), name, room, size); }, value);
}

int GetAttribute(int descriptor, const char* name, std::string& value)
{
    if (!Passes("fgetxattr", descriptor)) return -1;
    return GetAll([&](char* room, std::size_t size) { return fgetxattr(descriptor, name, room, size); }, value);
}

int ListAttributes(const std::string& path, std::string& names)
{
    if (!Passes("listxattr", path)) return -1;
    return GetAll([&](char* room, std::size_t size) { return listxattr(path.c_str(), room, size); }, names);
}

int SetAttribute(int descriptor, const char* name, const std::string& value)
{
    if (!Passes("fsetxattr", descriptor)) return -1;
    return fsetxattr(descriptor, name, value.data(), value.size(), 0);
}

int RemoveAttribute(int descriptor, const char* name)
{
    return Passes("fremovexattr", descriptor) ? fremovexattr(descriptor, name) : -1;
}

int SetTimes(int descriptor, const timespec (&times)[2])
{
    return Passes("futimens", descriptor) ? futimens(descriptor, times) : -1;
}

int Status(const std::string& path, struct stat& status)
{
    return Passes("stat", path) ? stat(path.c_str(), &status) : -1;
}

int LinkStatus(const std::string& path, struct stat& status)
{
    return Passes("lstat", path) ? lstat(path.c_str(), &status) : -1;
}

int StatusOf(int descriptor, struct stat& status)
{
    return Passes("fstat", descriptor) ? fstat(descriptor, &status) : -1;
}

int Access(const std::string& path, int mode)
{
    return Passes("faccessat", path) ? faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) : -1;
}

ssize_t ReadLink(const std::string& path, char* text, std::size_t size)
{
    return Passes("readlink", path) ? readlink(path.c_str(), text, size) : -1;
}

char* RealPath(const std::string& path)
{
    return Passes("realpath", path) ? realpath(path.c_str(), nullptr) : nullptr;
}

int Rename(const std::string& from, const std::string& to)
{
    return Passes("rename", from) ? rename(from.c_str(), to.c_str()) : -1;
}

int RenameNoReplace(const std::string& from, const std::string& to)
{
    if (!Passes("renameat2", from)) return -1;
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
}

int Link(const std::string& from, const std::string& to)
{
    return Passes("link", from) ? link(from.c_str(), to.c_str()) : -1;
}

int SymbolicLink(const std::string& text, const std::string& path)
{
    return Passes("symlink", path) ? symlink(text.c_str(), path.c_str()) : -1;
}

int Unlink(const std::string& path) { return Passes("unlink", path) ? unlink(path.c_str()) : -1; }

int MakeFolder(const std::string& path, mode_t mode)
{
    return Passes("mkdir", path) ? mkdir(path.c_str(), mode) : -1;
}

int RemoveFolder(const std::string& path) { return Passes("rmdir", path) ? rmdir(path.c_str()) : -1; }

DIR* OpenFolder(const std::string& path) { return Passes("opendir", path) ? opendir(path.c_str()) : nullptr; }

dirent* ReadFolder(DIR* folder)
{
    if (!Passes("readdir", dirfd(folder))) return nullptr;
    errno = 0;
    return readdir(folder);
}

namespace {

// A stream reads and writes on its own. Where a test stands in front of the calls, the stream makes them here.
int DescriptorOf(void* cookie) { return *static_cast<int*>(cookie); }

ssize_t ReadCookie(void* cookie, char* bytes, std::size_t count) { return Read(DescriptorOf(cookie), bytes, count); }

ssize_t WriteCookie(void* cookie, const char* bytes, std::size_t count)
{
    const ssize_t written = Write(DescriptorOf(cookie), bytes, count);
    return written < 0 ? 0 : written;  // what a stream takes for a failure
}

int SeekCookie(void* cookie, off64_t* position, int whence)
{
    *position = lseek(DescriptorOf(cookie), *position, whence);
    return *position < 0 ? -1 : 0;
}

int CloseCookie(void* cookie)
{
    const std::unique_ptr<int> descriptor(static_cast<int*>(cookie));
    return Close(*descriptor);
}

std::FILE* ObservedStream(std::FILE* plain, const std::string& mode)
{
    if (!plain) return nullptr;
    auto descriptor = std::make_unique<int>(fcntl(fileno(plain), F_DUPFD_CLOEXEC, 0));
    std::fclose(plain);
    if (*descriptor < 0) return nullptr;
    const cookie_io_functions_t functions{ReadCookie, WriteCookie, SeekCookie, CloseCookie};
    std::FILE* stream = fopencookie(descriptor.get(), mode.c_str(), functions);
    if (stream)
        static_cast<void>(descriptor.release());
    else
        close(*descriptor);
    return stream;
}

}  // namespace

std::FILE* OpenStream(const std::string& path, const std::string& mode)
{
    if (!Passes("open", path)) return nullptr;
    std::FILE* stream = std::fopen(path.c_str(), (mode + 'e').c_str());
    return Hook() ? ObservedStream(stream, mode) : stream;
}

}  // namespace platform::calls
