#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/FileHandles_posix.h"

namespace platform {

std::string ErrorText(int errorNumber) { return std::generic_category().message(errorNumber); }

bool FileExists(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool FolderExists(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool NameExists(const std::string& path)
{
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

std::optional<std::uint64_t> FileSize(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<FileStamp> StampOf(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    constexpr std::int64_t kNanosecondsOfSecond = 1'000'000'000;
    return FileStamp{.size = static_cast<std::uint64_t>(status.st_size),
                     .modifiedNanoseconds = status.st_mtim.tv_sec * kNanosecondsOfSecond + status.st_mtim.tv_nsec,
                     .device = status.st_dev,
                     .inode = status.st_ino,
                     .links = status.st_nlink};
}

FileResult CheckReadable(const std::string& path)
{
    CDescriptor file;
    struct stat status;
    return OpenRegular(path, file, status);
}

FileResult DeleteFile(const std::string& path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return {errno};
    if (S_ISDIR(status.st_mode)) return {EISDIR};
    return {unlink(path.c_str()) == 0 ? 0 : errno};
}

FileResult CreateFolders(const std::string& path)
{
    if (path.empty()) return {ENOENT};
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (FolderExists(path)) return {};
    return {error ? error.value() : ENOTDIR};
}

FileResult CreateNewFile(const std::string& path)
{
    const CDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    return {file.Valid() ? 0 : errno};
}

Stream OpenStream(const std::string& path, const char* mode, FileResult* result)
{
    Stream stream(std::fopen(path.c_str(), (std::string(mode) + 'e').c_str()));
    if (result) *result = {stream ? 0 : errno};
    return stream;
}

std::string CanonicalPath(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : std::string();
}

namespace {

// The size is only a hint: files grow while they are read, and some systems report 0.
FileResult ReadAtMost(int descriptor, std::uint64_t maxBytes, std::string& bytes)
{
    char buffer[1U << 14];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count == 0) return {};
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {errno};
        if (bytes.size() + static_cast<std::size_t>(count) > maxBytes) return {EFBIG};
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
}

FileResult ReadInto(const std::string& path, std::uint64_t maxBytes, std::string& bytes)
{
    CDescriptor file;
    struct stat status;
    if (const auto opened = OpenRegular(path, file, status); !opened) return opened;
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (size > maxBytes) return {EFBIG};
    bytes.reserve(static_cast<std::size_t>(size));
    return ReadAtMost(file.Get(), maxBytes, bytes);
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t maxBytes, FileResult* result)
{
    std::string bytes;
    const auto outcome = ReadInto(path, maxBytes, bytes);
    if (result) *result = outcome;
    if (!outcome) return std::nullopt;
    return bytes;
}

FileResult WriteFileAtomically(const std::string& path, std::string_view bytes, unsigned mode)
{
    struct stat status;
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return {S_ISDIR(status.st_mode) ? EISDIR : EINVAL};
    }
    const std::string target = ThroughLinks(path);
    CTemporaryFile file;
    if (const auto created = file.CreateBeside(target, mode); !created) return created;
    if (const auto written = WriteAll(file.Descriptor(), bytes); !written) return written;
    if (const auto published = file.Publish(target, Existing::Replace); !published) return published;
    return FlushFolderOf(target);
}

}  // namespace platform
