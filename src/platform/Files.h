// Files and folders: what stands where, reading, copying, moving, removing, and the failures that callers tell apart.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Paths and names are bytes of the narrow code page and are never converted or normalised, so a name that is not
// valid text still finds its file.
namespace platform {

/// Outcome of a file operation: 0 or the system's error number.
struct [[nodiscard]] FileResult {
    int errorNumber = 0;
    bool Ok() const { return errorNumber == 0; }
    explicit operator bool() const { return Ok(); }
};

/// The system's sentence for an error number.
std::string ErrorText(int errorNumber);

// The failures of file operations that callers tell apart. Systems have numbers of their own, and often several, for
// each; nothing outside this folder knows them.

enum class FileProblem {
    None,
    Missing,          ///< no such file, or no such folder on the way to it
    Exists,           ///< the name is taken
    NotARegularFile,  ///< "invalid argument": a device, a pipe, a file onto itself
    IsAFolder,
    NoAccess,   ///< rights, or a file system that is read-only
    InUse,      ///< another process holds it: "would block"
    Cancelled,  ///< the overseer refused
    DiskFull,   ///< or a quota
    TooLarge,   ///< for a limit of ours or of the system
    OutOfMemory,
    NobodyReads,  ///< the reader of a pipe is gone
    Other
};

FileProblem ProblemOf(FileResult result);
/// The result that stands for this problem; for Other an error of input and output.
FileResult Failure(FileProblem problem);
/// What the last call of a C stream in this thread failed with. Never success.
FileResult StreamFailure();

// What each system's error numbers mean; not for callers outside this folder.

struct ErrorRow {
    int number;
    FileProblem problem;
};

/// Numbers without a row mean Other. The first row of a problem has the number that stands for it.
std::span<const ErrorRow> ErrorRows();

/// What to do with a file that already stands at the target path.
enum class Existing { Fail, Replace };

/// True for anything but a folder; links are followed, so a dangling link does not exist.
bool FileExists(const std::string& path);
bool FolderExists(const std::string& path);
/// True for anything of that name, dangling links and folders included.
bool NameExists(const std::string& path);
/// The same, and what is not there is told (Missing) from what cannot be seen, for those who act on its absence.
FileResult LookUpName(const std::string& path);
/// True for a symbolic link itself, whatever it leads to.
bool NameIsLink(const std::string& path);
/// Whether a new file can be created in the folder; the file made for the test is removed.
bool IsFolderWritable(const std::string& folder);
/// Size in bytes of a regular file.
std::optional<std::uint64_t> FileSize(const std::string& path);
/// What tells one state of a file from another, and one file from another; links are followed.
struct FileStamp {
    std::uint64_t size = 0;                ///< bytes
    std::int64_t modifiedNanoseconds = 0;  ///< since 1970
    std::int64_t changedNanoseconds = 0;   ///< likewise, of content, names or rights
    std::uint64_t device = 0, inode = 0;
    std::uint64_t links = 0;  ///< names of the file
    bool regular = false;     ///< no folder, pipe or device

    bool IsSameFile(const FileStamp& other) const { return device == other.device && inode == other.inode; }
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};
std::optional<FileStamp> StampOf(const std::string& path);
/// Tells besides whether the name is a link, which costs nothing for one that is none.
std::optional<FileStamp> StampOf(const std::string& path, bool& isLink);

/// Whether the rights of the file let others than its owner read it; on Windows: groups that nearly everybody is in.
/// False for a file whose rights cannot be read.
bool OthersMayRead(const std::string& path);
/// The command by which people change that.
std::string HowToKeepFromOthers();

/// Tells whether a regular file can be opened for reading. Never blocks: pipes and devices are refused unopened.
FileResult CheckReadable(const std::string& path);

/// Whether another process has the file open, as far as the system tells: on Windows. Elsewhere, and for a file that
/// cannot be looked at, false.
bool IsInUse(const std::string& path);

/// Copies bytes, mode bits and time stamps of a regular file.
/// Fail: the target is created exclusively. Replace: a temporary file beside the target takes its place when
/// complete; a symbolic link there is replaced itself, and what it leads to stays as it is. Fails: source and target
/// as they were; copying a file onto itself is an error, and a folder is never a target.
FileResult CopyFile(const std::string& from, const std::string& to, Existing existing);

/// Moves a file, across file systems too. Fail: never replaces, not even a file that appears meanwhile.
/// Fails: the source stays, and the target is what it was. Moving a file onto itself keeps it: with Replace that is
/// a success, with Fail an error. A folder is neither moved nor replaced.
/// When the source of a Replace across file systems cannot be removed, that is the error, and both files stand.
FileResult MoveFile(const std::string& from, const std::string& to, Existing existing);

/// Deletes a file or link; never a folder.
FileResult DeleteFile(const std::string& path);

/// Creates a folder and the folders above it; success when it is there already.
FileResult CreateFolders(const std::string& path);

/// Creates an empty file that must not exist yet, and closes it.
FileResult CreateNewFile(const std::string& path);

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;
/// A C stream, not handed on to started programs; `mode` as for fopen. Fails: null, with the reason in `result`.
Stream OpenStream(const std::string& path, const char* mode, FileResult* result = nullptr);

/// A regular file for reading, as OpenStream gives it; never waits, whatever the path names.
/// Fails: null, with the reason in `result`.
Stream OpenRegularStream(const std::string& path, FileResult& result);

struct FolderEntry {
    std::string name;
    bool isFolder = false;  ///< links to folders count as folders
    bool isHidden = false;
};

/// The entries of a folder without "." and "..", ordered by upper-cased name, then by bytes.
/// Fails: an empty list, and the reason in `result` when given.
std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result = nullptr);

/// Absolute path with all links resolved; equal for two names of one folder. Empty when it does not exist.
std::string CanonicalPath(const std::string& path);
/// The same; the path as it is when it does not exist.
inline std::string ResolvedPath(const std::string& path)
{
    std::string canonical = CanonicalPath(path);
    return canonical.empty() ? path : canonical;
}

/// Hands the bytes of a regular file to `take`, piece by piece, until their end or until it answers false.
FileResult ReadPieces(const std::string& path, const std::function<bool(std::string_view bytes)>& take);

/// The bytes of a regular file. Fails: unreadable, or larger than `maxBytes` (error "file too large").
std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t maxBytes,
                                         FileResult* result = nullptr);

/// Who may read and write a new file.
enum class Readers {
    AsUsual,     ///< those whom the folder, or what the user masks, lets
    Owner,       ///< the owner alone, besides those who keep the system running; needs a file system that knows of it
    OwnerForNow  ///< nobody else until it takes over the rights of another file
};

/// Writes a complete file or leaves the old one: temporary file in the same folder, flushed, renamed, folder flushed.
/// A symbolic link of that name is replaced; what it leads to stays as it is.
/// Fail: a name that is taken stays as it is, also when it was taken meanwhile.
FileResult WriteFileAtomically(const std::string& path, std::string_view bytes, Readers readers,
                               Existing existing = Existing::Replace);

/// Owns an open file of the system, by its descriptor or handle, or none.
class COpenFile {
public:
    static constexpr long long kNone = -1;

    explicit COpenFile(long long adopted = kNone) noexcept : m_file(adopted) {}
    COpenFile(COpenFile&& other) noexcept : m_file(std::exchange(other.m_file, kNone)) {}
    COpenFile& operator=(COpenFile&& other) noexcept
    {
        std::swap(m_file, other.m_file);
        return *this;
    }
    COpenFile(const COpenFile&) = delete;
    COpenFile& operator=(const COpenFile&) = delete;
    ~COpenFile() { Close(); }

    long long Get() const { return m_file; }
    bool IsOpen() const { return m_file != kNone; }
    long long Release() noexcept { return std::exchange(m_file, kNone); }
    void Close() noexcept;

private:
    long long m_file;
};

/// Makes a folder that only this user may look into, list or change, besides those who keep the system running.
/// Fails: "exists" when the name is taken, by whomever.
FileResult CreatePrivateFolder(const std::string& path);
/// Takes the rights of all others from a folder that is there.
FileResult MakeFolderPrivate(const std::string& path);
/// Whether the name itself, no link, is a folder that belongs to the user of this process.
bool IsOwnFolder(const std::string& path);

}  // namespace platform
