#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "base/Names.h"
#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "platform/Files.h"

namespace platform {

std::span<const ErrorRow> ErrorRows()
{
    static constexpr ErrorRow kRows[] = {
        {ENOENT, FileProblem::Missing},
        {ENOTDIR, FileProblem::Missing},
        {ENAMETOOLONG, FileProblem::Missing},
        {EEXIST, FileProblem::Exists},
        {EINVAL, FileProblem::NotARegularFile},
        {EISDIR, FileProblem::IsAFolder},
        {EACCES, FileProblem::NoAccess},
        {EPERM, FileProblem::NoAccess},
        {EROFS, FileProblem::NoAccess},
        {EWOULDBLOCK, FileProblem::InUse},
        {ECANCELED, FileProblem::Cancelled},
        {ENOSPC, FileProblem::DiskFull},
        {EDQUOT, FileProblem::DiskFull},
        {EFBIG, FileProblem::TooLarge},
        {ENOMEM, FileProblem::OutOfMemory},
        {EPIPE, FileProblem::NobodyReads},
        {EIO, FileProblem::Other},
    };
    return kRows;
}

FileResult StreamFailure() { return {errno != 0 ? errno : EIO}; }

std::string ErrorText(int errorNumber) { return std::generic_category().message(errorNumber); }

bool FileExists(const std::string& path)
{
    if (const auto pretended = PretendedExistence(path)) return *pretended;
    struct stat status;
    return calls::Status(path, status) == 0 && !S_ISDIR(status.st_mode);
}

bool FolderExists(const std::string& path)
{
    struct stat status;
    return calls::Status(path, status) == 0 && S_ISDIR(status.st_mode);
}

FileResult LookUpName(const std::string& path)
{
    if (const auto pretended = PretendedExistence(path)) return *pretended ? FileResult{} : FileResult{ENOENT};
    struct stat status;
    return {calls::LinkStatus(path, status) == 0 ? 0 : errno};
}

std::optional<std::uint64_t> FileSize(const std::string& path)
{
    struct stat status;
    if (calls::Status(path, status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

namespace {

FileStamp StampFrom(const struct stat& status)
{
    const auto nanoseconds = [](const timespec& time) {
        return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
    };
    return FileStamp{.size = static_cast<std::uint64_t>(status.st_size),
                     .modifiedNanoseconds = nanoseconds(status.st_mtim),
                     .changedNanoseconds = nanoseconds(status.st_ctim),
                     .device = status.st_dev,
                     .inode = status.st_ino,
                     .links = status.st_nlink,
                     .regular = S_ISREG(status.st_mode)};
}

}  // namespace

std::optional<FileStamp> StampOf(const std::string& path)
{
    struct stat status;
    if (calls::Status(path, status) != 0) return std::nullopt;
    return StampFrom(status);
}

std::optional<FileStamp> StampOf(const std::string& path, bool& isLink)
{
    struct stat status;
    const bool exists = calls::LinkStatus(path, status) == 0;
    isLink = exists && S_ISLNK(status.st_mode);
    if (isLink) return StampOf(path);
    return exists ? std::optional(StampFrom(status)) : std::nullopt;
}

bool OthersMayRead(const std::string& path)
{
    struct stat status;
    return calls::Status(path, status) == 0 && (status.st_mode & (S_IRGRP | S_IROTH)) != 0;
}

std::string HowToKeepFromOthers() { return "chmod 600 FILE"; }

bool IsInUse(const std::string&) { return false; }

FileResult CheckReadable(const std::string& path)
{
    CDescriptor file;
    struct stat status;
    return OpenRegular(path, file, status);
}

namespace {

FileResult CreateFolder(const std::string& path)
{
    if (calls::MakeFolder(path) == 0) return {};
    const int error = errno;
    if (FolderExists(path)) return {};
    return {error == EEXIST ? ENOTDIR : error};
}

}  // namespace

FileResult CreateFolders(const std::string& path)
{
    if (path.empty()) return {ENOENT};
    if (FolderExists(path)) return {};
    for (auto end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        const std::string above = path.substr(0, end);
        if (FolderExists(above)) continue;
        if (const auto created = CreateFolder(above); !created) return created;
    }
    return CreateFolder(path);
}

FileResult CreateNewFile(const std::string& path)
{
    const CDescriptor file(calls::Open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    return {file.Valid() ? 0 : errno};
}

Stream OpenStream(const std::string& path, const char* mode, FileResult* result)
{
    Stream stream(calls::OpenStream(path, mode));
    if (result) *result = {stream ? 0 : errno};
    return stream;
}

Stream OpenRegularStream(const std::string& path, FileResult& result)
{
    CDescriptor file;
    struct stat status;
    result = OpenRegular(path, file, status);
    if (!result) return {};
    Stream stream(fdopen(file.Get(), "rb"));
    if (stream)
        (void)file.Release();
    else
        result = StreamFailure();
    return stream;
}

std::string CanonicalPath(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(calls::RealPath(path), &std::free);
    return resolved ? resolved.get() : std::string();
}

namespace {

FileResult ReadPiecesOf(int descriptor, const std::function<bool(std::string_view)>& take)
{
    std::vector<char> buffer(std::size_t{1} << 18);
    for (;;) {
        const ssize_t count = calls::Read(descriptor, buffer.data(), buffer.size());
        if (count == 0) return {};
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {errno};
        if (!take({buffer.data(), static_cast<std::size_t>(count)})) return {};
    }
}

}  // namespace

FileResult ReadPieces(const std::string& path, const std::function<bool(std::string_view bytes)>& take)
{
    CDescriptor file;
    struct stat status;
    if (const auto opened = OpenRegular(path, file, status); !opened) return opened;
    return ReadPiecesOf(file.Get(), take);
}

void COpenFile::Close() noexcept
{
    if (IsOpen()) calls::Close(static_cast<int>(std::exchange(m_file, kNone)));
}

namespace {

constexpr mode_t kOwnersMode = 0700;

}  // namespace

FileResult CreatePrivateFolder(const std::string& path)
{
    return {calls::MakeFolder(path, kOwnersMode) == 0 ? 0 : errno};
}

FileResult MakeFolderPrivate(const std::string& path)
{
    const CDescriptor folder(calls::Open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return {folder.Valid() && calls::SetMode(folder.Get(), kOwnersMode) == 0 ? 0 : errno};
}

bool IsOwnFolder(const std::string& path)
{
    struct stat status;
    return calls::LinkStatus(path, status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

namespace {

bool IsFolder(const std::string& prefix, const dirent& found)
{
    if (found.d_type == DT_DIR) return true;
    if (found.d_type != DT_LNK && found.d_type != DT_UNKNOWN) return false;
    return FolderExists(prefix + found.d_name);
}

FileResult ReadEntries(DIR* folder, const std::string& prefix, std::vector<FolderEntry>& listed)
{
    for (;;) {
        const dirent* found = calls::ReadFolder(folder);
        if (!found) return {errno};
        std::string name = found->d_name;
        if (name == "." || name == "..") continue;
        const bool hidden = name[0] == '.';
        listed.push_back({std::move(name), IsFolder(prefix, *found), hidden});
    }
}

FileResult List(const std::string& path, std::vector<FolderEntry>& listed)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(calls::OpenFolder(path),
                                                     [](DIR* open) { return closedir(open); });
    if (!folder) return {errno};
    return ReadEntries(folder.get(), path.ends_with('/') ? path : path + '/', listed);
}

}  // namespace

std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result)
{
    std::vector<FolderEntry> listed;
    const auto outcome = List(path, listed);
    if (result) *result = outcome;
    if (!outcome) return {};
    std::ranges::sort(listed, NameComesBefore, &FolderEntry::name);
    return listed;
}

}  // namespace platform
