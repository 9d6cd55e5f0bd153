#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include "platform/AccessRights_posix.h"
#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileKeeper.h"
#include "platform/FileSteps.h"

namespace platform {
namespace {

constexpr mode_t kPermissions = 0777;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec; }

timespec TimeOf(std::int64_t nanoseconds)
{
    std::int64_t seconds = nanoseconds / kNanosecondsPerSecond, rest = nanoseconds % kNanosecondsPerSecond;
    if (rest < 0) {
        rest += kNanosecondsPerSecond;
        --seconds;
    }
    return {seconds, rest};
}

}  // namespace

std::optional<FileTraits> TraitsOf(const std::string& path, FileResult* result)
{
    struct stat status;
    const FileResult asked{calls::LinkStatus(path, status) == 0 ? 0 : errno};
    if (result) *result = asked;
    if (!asked) return std::nullopt;
    FileTraits traits{.mode = status.st_mode & kPermissions,
                      .owner = status.st_uid,
                      .group = status.st_gid,
                      .modifiedNanoseconds = Nanoseconds(status.st_mtim),
                      .accessedNanoseconds = Nanoseconds(status.st_atim)};
    if (S_ISLNK(status.st_mode)) return traits;
    CExtendedAttributes attributes;
    attributes.ReadFrom(path);
    traits.attributes = attributes.Values();
    std::sort(traits.attributes.begin(), traits.attributes.end());
    return traits;
}

bool GiveTraits(const std::string& path, const FileTraits& traits)
{
    CDescriptor file;
    struct stat status;
    if (!OpenRegular(path, file, status)) return false;
    for (const auto& [name, value] : traits.attributes) (void)calls::SetAttribute(file.Get(), name.c_str(), value);
    if (status.st_uid != traits.owner || status.st_gid != traits.group)
        (void)calls::SetOwner(file.Get(), traits.owner, traits.group);
    if ((status.st_mode & kPermissions) != traits.mode) (void)calls::SetMode(file.Get(), traits.mode & kPermissions);
    const timespec times[] = {TimeOf(traits.accessedNanoseconds), TimeOf(traits.modifiedNanoseconds)};
    (void)calls::SetTimes(file.Get(), times);
    const auto given = TraitsOf(path);
    return given && given->Fulfil(traits);
}

std::string LinkText(const std::string& path)
{
    std::array<char, PATH_MAX> text;
    const ssize_t length = calls::ReadLink(path, text.data(), text.size());
    return length < 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(length));
}

FileResult LinkFile(const std::string& from, const std::string& to)
{
    if (calls::Link(from, to) != 0) return {errno};
    if (NameIsLink(to)) return {};
    // Who wrote the file may not have seen to it that it is on the disk.
    CDescriptor file;
    struct stat status;
    FileResult flushed = OpenRegular(to, file, status);
    if (flushed) flushed = FlushDescriptor(file.Get());
    if (!flushed) (void)RemoveName(to);
    return flushed;
}

FileResult CopyLink(const std::string& from, const std::string& to)
{
    const std::string text = LinkText(from);
    return {!text.empty() && calls::SymbolicLink(text, to) == 0 ? 0 : errno};
}

}  // namespace platform
