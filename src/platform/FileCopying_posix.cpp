#include <strings.h>
#include <sys/stat.h>

#include <cerrno>
#include <vector>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/Files.h"
#include "platform/Oversight.h"

namespace platform {
namespace {

constexpr mode_t kPermissionBits = 0777;

bool SameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

FileResult CopyBytes(int from, int to)
{
    constexpr std::size_t kAtOnce = 1U << 30;
    while (calls::CopyRange(from, to, kAtOnce) > 0) {
    }
    // Where the kernel cannot copy by itself, or stopped early, the rest is copied here; at the end nothing is left.
    std::vector<char> buffer(1U << 18);
    for (;;) {
        const ssize_t count = calls::Read(from, buffer.data(), buffer.size());
        if (count == 0) return {};
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {errno};
        const auto written = WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)});
        if (!written) return written;
    }
}

// File systems without owners and modes refuse these; the copy is good without them.
void CopyAttributes(const struct stat& source, int to)
{
    (void)calls::SetMode(to, source.st_mode & kPermissionBits);
    const timespec times[] = {source.st_atim, source.st_mtim};
    (void)calls::SetTimes(to, times);
}

/// Makes the copy beside its target. Fails: there is no copy.
FileResult MakeCopy(const std::string& from, const std::string& target, CTemporaryFile& copy)
{
    CDescriptor source;
    struct stat status;
    if (const auto opened = OpenRegular(from, source, status); !opened) return opened;
    if (const auto created = copy.CreateBeside(target, 0600); !created) return created;
    if (const auto copied = CopyBytes(source.Get(), copy.Descriptor()); !copied) return copied;
    CopyAttributes(status, copy.Descriptor());
    return copy.Complete();
}

// As far as it can be told without making the copy.
FileResult CheckCopying(const std::string& from, const std::string& target)
{
    const bool pretended = PretendedExistence(from) == true;
    if (const auto readable = pretended ? FileResult{} : CheckReadable(from); !readable) return readable;
    return CheckFolderOf(target);
}

FileResult CopyTo(const std::string& from, const std::string& target, Existing existing)
{
    CTemporaryFile copy;
    const auto made = Pretending() ? CheckCopying(from, target) : MakeCopy(from, target, copy);
    if (!made) return made;
    const auto answer = AskOverseer(COverseer::Act::Put, Pretending() ? from : copy.Path(), target);
    if (answer) return *answer;
    const auto put = copy.PutInPlace(target, existing);
    // The copy is in place by now; a folder that cannot be flushed is no failure.
    if (put) (void)FlushFolderOf(target);
    return put;
}

struct Target {
    bool isThere = false;
    struct stat status {};  // links followed
};

// What stands at the target and forbids to replace it. Devices and pipes are never replaced by a file.
FileResult CheckReplaceable(const std::string& to, Target& target)
{
    if (const auto asked = StatusIfThere(to, target.status, target.isThere); !asked) return asked;
    if (!target.isThere || S_ISREG(target.status.st_mode)) return {};
    return {S_ISDIR(target.status.st_mode) ? EISDIR : EINVAL};
}

FileResult CheckFree(const std::string& to)
{
    Target target;
    const auto replaceable = CheckReplaceable(to, target);
    if (!replaceable && replaceable.errorNumber != EINVAL) return replaceable;
    return {NameExists(to) ? EEXIST : 0};
}

std::string NameOf(const std::string& path) { return path.substr(FolderPrefix(path).size()); }

bool SameFolder(const std::string& a, const std::string& b)
{
    const auto statusOfFolder = [](const std::string& path, struct stat& status) {
        const std::string folder = FolderPrefix(path);
        return calls::Status(folder.empty() ? "." : folder, status) == 0;
    };
    struct stat statusA, statusB;
    return statusOfFolder(a, statusA) && statusOfFolder(b, statusB) && SameFile(statusA, statusB);
}

// The same name on another way, or in another letter case.
bool NamesAlike(const std::string& a, const std::string& b)
{
    return strcasecmp(NameOf(a).c_str(), NameOf(b).c_str()) == 0 && SameFolder(a, b);
}

void FlushFoldersOf(const std::string& from, const std::string& to)
{
    (void)FlushFolderOf(to);
    (void)FlushFolderOf(from);
}

FileResult MoveAcross(const std::string& from, const std::string& to, Existing existing)
{
    // Asked before the target is touched.
    if (const auto writable = CheckFolderOf(from); !writable) return writable;
    CTemporaryFile copy;
    if (const auto made = MakeCopy(from, to, copy); !made) return made;
    if (const auto put = copy.PutInPlace(to, existing); !put) return put;
    int error = FlushFolderOf(to).errorNumber;
    if (error == 0 && calls::Unlink(from) != 0) error = errno;
    if (error != 0 && existing == Existing::Fail) calls::Unlink(to);
    return {error};
}

FileResult Rename(const std::string& from, const std::string& to, Existing existing)
{
    if (existing == Existing::Fail) return RenameExclusively(from, to);
    return {calls::Rename(from, to) == 0 ? 0 : errno};
}

/// After all checks: asks, and does it.
FileResult MoveNow(const std::string& from, const std::string& to, Existing existing)
{
    if (Pretending()) {
        for (const auto* path : {&from, &to}) {
            if (const auto writable = CheckFolderOf(*path); !writable) return writable;
        }
    }
    if (const auto answer = AskOverseer(COverseer::Act::Move, from, to)) return *answer;
    auto moved = Rename(from, to, existing);
    if (moved.errorNumber == EXDEV) moved = MoveAcross(from, to, existing);
    if (moved) FlushFoldersOf(from, to);
    return moved;
}

// Two names of one file. Renaming would succeed and leave both, so the old name is removed here; but only when it is
// certainly another name.
FileResult MoveOntoOtherName(const std::string& from, const std::string& to, const struct stat& source)
{
    if (NamesAlike(from, to)) return Rename(from, to, Existing::Replace);
    if (source.st_nlink < 2) return {};
    if (const auto answer = AskOverseer(COverseer::Act::Move, from, to)) return *answer;
    if (calls::Unlink(from) != 0) return {errno};
    FlushFoldersOf(from, to);
    return {};
}

// A link moved onto the file that it leads to would replace the only content by a link to itself.
FileResult CheckNotBehindLink(const std::string& from, const struct stat& source, const Target& target)
{
    if (!S_ISLNK(source.st_mode) || !target.isThere) return {};
    struct stat content;
    bool isThere = false;
    if (const auto asked = StatusIfThere(from, content, isThere); !asked) return asked;
    return {isThere && SameFile(content, target.status) ? EINVAL : 0};
}

FileResult MoveReplacing(const std::string& from, const std::string& to, const struct stat& source)
{
    Target target;
    if (const auto replaceable = CheckReplaceable(to, target); !replaceable) return replaceable;
    if (target.isThere) {
        struct stat name;
        if (calls::LinkStatus(to, name) != 0) return {errno};
        if (SameFile(source, name)) return MoveOntoOtherName(from, to, source);
    }
    if (const auto allowed = CheckNotBehindLink(from, source, target); !allowed) return allowed;
    return MoveNow(from, to, Existing::Replace);
}

}  // namespace

FileResult CopyFile(const std::string& from, const std::string& to, Existing existing)
{
    if (existing == Existing::Fail) {
        const auto free = CheckFree(to);
        return free ? CopyTo(from, to, existing) : free;
    }
    struct stat source;
    const bool onDisk = PretendedExistence(from) != true;
    if (onDisk && calls::Status(from, source) != 0) return {errno};
    Target target;
    if (const auto replaceable = CheckReplaceable(to, target); !replaceable) return replaceable;
    if (onDisk && target.isThere && SameFile(source, target.status)) return {EINVAL};
    std::string end;
    if (const auto followed = FollowLinks(to, end); !followed) return followed;
    return CopyTo(from, end, existing);
}

FileResult MoveFile(const std::string& from, const std::string& to, Existing existing)
{
    const auto pretended = PretendedExistence(from);
    struct stat source {};
    if (pretended == false) return {ENOENT};
    if (calls::LinkStatus(from, source) != 0 && pretended != true) return {errno};
    if (S_ISDIR(source.st_mode)) return {EISDIR};
    if (existing == Existing::Replace) return MoveReplacing(from, to, source);
    const auto free = CheckFree(to);
    return free ? MoveNow(from, to, existing) : free;
}

FileResult DeleteFile(const std::string& path)
{
    const auto pretended = PretendedExistence(path);
    struct stat status {};
    if (pretended == false) return {ENOENT};
    if (calls::LinkStatus(path, status) != 0 && pretended != true) return {errno};
    if (S_ISDIR(status.st_mode)) return {EISDIR};
    if (Pretending()) {
        if (const auto writable = CheckFolderOf(path); !writable) return writable;
    }
    if (const auto answer = AskOverseer(COverseer::Act::Delete, path, {})) return *answer;
    if (calls::Unlink(path) != 0) return {errno};
    (void)FlushFolderOf(path);
    return {};
}

}  // namespace platform
