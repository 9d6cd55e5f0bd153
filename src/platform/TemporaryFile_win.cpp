#include "platform/AtomicFile.h"
#include "platform/FileHandles_win.h"
#include "platform/FileSteps.h"
#include "platform/TemporaryFile.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

#include <aclapi.h>

namespace platform {
namespace {

// Attributes that belong to the document and not to what was written last.
constexpr DWORD kTakenOver = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

bool HasOwnEntries(const ACL& list)
{
    for (DWORD index = 0; index < list.AceCount; ++index) {
        void* entry = nullptr;
        if (!GetAce(const_cast<ACL*>(&list), index, &entry)) return false;
        if ((static_cast<const ACE_HEADER*>(entry)->AceFlags & INHERITED_ACE) == 0) return true;
    }
    return false;
}

/// What stands in a folder under one of our names. Fails with "exists" when all of them are taken.
template <class Create>
FileResult CreateUnderNewName(const std::string& target, Create create, std::string& path)
{
    constexpr int kAttempts = 1000;  // names of a dead process may be in the way
    const auto wide = WidePath(target);
    if (const auto allowed = CheckTargetName(wide); !allowed) return allowed;
    const auto folder = FolderPrefix(wide);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto name = folder + WideText(NextTemporaryName(GetCurrentProcessId()));
        const FileResult created = create(name);
        if (created) path = NarrowPath(name);
        if (ProblemOf(created) != FileProblem::Exists) return created;
    }
    return {ERROR_FILE_EXISTS};
}

}  // namespace

struct CFileRights::State {
    FILE_BASIC_INFO basic{};
    std::unique_ptr<void, FreeLocal> descriptor;
    ACL* list = nullptr;  // part of the descriptor; null when everything comes from the folder
    bool isProtected = false;
    bool forOwnerAlone = false;

    /// Gives the list to the file at `path`, as far as the system lets us: on many network shares nobody but an
    /// administrator may do this.
    void GiveListTo(const std::string& path) const
    {
        if (!list) return;
        const SECURITY_INFORMATION parts =
            DACL_SECURITY_INFORMATION |
            (isProtected ? PROTECTED_DACL_SECURITY_INFORMATION : UNPROTECTED_DACL_SECURITY_INFORMATION);
        auto wide = WidePath(path);
        SetNamedSecurityInfoW(wide.data(), SE_FILE_OBJECT, parts, nullptr, nullptr, list, nullptr);
    }
};

CFileRights::CFileRights() = default;
CFileRights::~CFileRights() = default;

FileResult CFileRights::ReadFrom(const std::string& path)
{
    const auto wide = WidePath(path);
    const CHandle file(CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.Valid()) return LastFailure();
    auto state = std::make_unique<State>();
    if (!GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &state->basic, sizeof state->basic))
        return LastFailure();
    m_state = std::move(state);

    // Who may not read the entries, or whose file system has none, does without.
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ACL* list = nullptr;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (GetNamedSecurityInfoW(wide.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                              nullptr, &descriptor) != ERROR_SUCCESS)
        return {};
    m_state->descriptor.reset(descriptor);
    if (!list || !GetSecurityDescriptorControl(descriptor, &control, &revision)) return {};
    m_state->isProtected = (control & SE_DACL_PROTECTED) != 0;
    if (m_state->isProtected || HasOwnEntries(*list)) m_state->list = list;
    return {};
}

// A new file has the rights that its folder hands on: that is where people set them on this system. What was set on
// the source itself goes along.
FileResult CFileRights::ReadLimit(const std::string& path)
{
    if (ReadFrom(path)) return {};
    m_state = std::make_unique<State>();
    m_state->forOwnerAlone = true;
    return {};
}

CTemporaryFile::~CTemporaryFile()
{
    m_file.Close();
    if (!m_path.empty()) (void)RemoveMoved(m_path);
}

FileResult CTemporaryFile::CreateBeside(const std::string& target, Readers readers, const CFileRights* limit)
{
    COwnerOnly ownerOnly;
    if (readers == Readers::Owner || (limit && limit->m_state->forOwnerAlone)) {
        if (const auto made = ownerOnly.Make(); !made) return made;
    }
    // As long as it is written nobody else can open it.
    const auto create = [&](const std::wstring& name) -> FileResult {
        CHandle file(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, ownerOnly.Attributes(), CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.Valid()) return LastFailure();
        m_file = COpenFile(NumberOf(file.Release()));
        return {};
    };
    const auto created = CreateUnderNewName(target, create, m_path);
    if (created && limit) limit->m_state->GiveListTo(m_path);
    return created;
}

FileResult CTemporaryFile::Write(std::string_view bytes) { return WriteAll(HandleOf(m_file.Get()), bytes); }

FileResult CTemporaryFile::TakeOver(const CFileRights& rights, const CFileRights*)
{
    const auto& state = *rights.m_state;
    FILE_BASIC_INFO basic{};  // zeros leave a time as it is
    basic.CreationTime = state.basic.CreationTime;
    basic.FileAttributes = (state.basic.FileAttributes & kTakenOver) | FILE_ATTRIBUTE_ARCHIVE;
    (void)SetFileInformationByHandle(HandleOf(m_file.Get()), FileBasicInfo, &basic, sizeof basic);
    state.GiveListTo(m_path);
    return {};
}

FileResult CTemporaryFile::Complete()
{
    const auto flushed = ResultOf(FlushFileBuffers(HandleOf(m_file.Get())));
    m_file.Close();
    return flushed;
}

// Not ReplaceFile, which would keep more of the old file by itself: it renames twice, and who is killed in between
// leaves nothing under the name. This call is one step of the file system.
FileResult CTemporaryFile::PutInPlace(const std::string& target, Existing existing)
{
    const auto renamed =
        existing == Existing::Fail ? RenameExclusively(m_path, target) : RenameReplacing(m_path, target);
    if (renamed) m_path.clear();
    return renamed;
}

namespace {

// The copy may be marked as read-only, and then nobody can open it to have it flushed.
FileResult FlushCopy(const std::wstring& path)
{
    const DWORD attributes = AttributesOf(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return LastFailure();
    const bool marked = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (marked && !SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY}))
        return LastFailure();
    const CHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.Valid() || !FlushFileBuffers(file.Get())) return LastFailure();
    return ResultOf(!marked || SetFileAttributesW(path.c_str(), attributes));
}

}  // namespace

FileResult CTemporaryFile::CopyBeside(const std::string& from, const std::string& target, const CopyRights& rights)
{
    if (rights.clone) return {ERROR_NOT_SUPPORTED};
    if (const auto readable = CheckReadable(from); !readable) return readable;
    CFileRights own;
    if (const auto read = own.ReadFrom(from); !read) return read;
    // The system's own copying: on a network the server does it, and hidden parts of the file come along.
    const auto source = WidePath(from);
    const auto create = [&](const std::wstring& name) {
        const auto copied =
            ResultOf(CopyFileExW(source.c_str(), name.c_str(), nullptr, nullptr, nullptr, COPY_FILE_FAIL_IF_EXISTS));
        // Not every system removes what it could not finish.
        if (!copied && ProblemOf(copied) != FileProblem::Exists) (void)RemoveMoved(NarrowPath(name));
        return copied;
    };
    if (const auto copied = CreateUnderNewName(target, create, m_path); !copied) return copied;
    const auto copy = WidePath(m_path);
    const DWORD attributes = AttributesOf(copy);
    own.m_state->GiveListTo(m_path);
    // Wine keeps the mark of read-only files among the rights, so the list has taken it away.
    if (attributes != INVALID_FILE_ATTRIBUTES) (void)SetFileAttributesW(copy.c_str(), attributes);
    return FlushCopy(copy);
}

}  // namespace platform
