#include <algorithm>
#include <cwchar>
#include <memory>
#include <vector>

#include "platform/ChildState_win.h"
#include "platform/Files.h"
#include "platform/WideText_win.h"

namespace platform {
namespace {

constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
constexpr std::wstring_view kLongSharePrefix = L"\\\\?\\UNC\\";

// A program that is started by the extended form of its path finds itself under that, so it gets the usual one where
// that is short enough.
std::wstring ProgramPath(const std::string& program)
{
    const std::wstring path = WidePath(program);
    std::wstring usual = path;
    if (path.starts_with(kLongSharePrefix))
        usual = L"\\\\" + path.substr(kLongSharePrefix.size());
    else if (path.starts_with(kLongPrefix))
        usual = path.substr(kLongPrefix.size());
    return usual.size() < MAX_PATH ? usual : path;
}

// The way in which programs take their command line apart: backslashes are doubled where a quotation mark follows.
void AppendArgument(std::wstring& line, std::wstring_view argument)
{
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t letter : argument) {
        if (letter == L'"') line.append(backslashes + 1, L'\\');
        backslashes = letter == L'\\' ? backslashes + 1 : 0;
        line += letter;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

std::wstring CommandLine(const ChildOptions& options)
{
    // Of the program's own name nothing is doubled: it is what stands between the quotation marks.
    std::wstring line = L'"' + WideText(options.program) + L'"';
    for (const auto& argument : options.arguments) {
        line += L' ';
        AppendArgument(line, WideText(argument));
    }
    return line;
}

// "NAME=value" and "NAME" name the same variable; names that begin with "=" are the system's own.
std::wstring_view NameOf(std::wstring_view entry) { return entry.substr(0, entry.find(L'=', 1)); }

int CompareNames(std::wstring_view left, std::wstring_view right)
{
    const auto a = NameOf(left), b = NameOf(right);
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE);
}

std::vector<std::wstring> OwnEnvironment()
{
    std::vector<std::wstring> entries;
    wchar_t* const block = GetEnvironmentStringsW();
    for (const wchar_t* entry = block; entry && *entry; entry += std::wcslen(entry) + 1) entries.emplace_back(entry);
    if (block) FreeEnvironmentStringsW(block);
    return entries;
}

// Ordered by name, as the system wants it.
std::wstring Environment(const ChildOptions& options)
{
    auto entries = OwnEnvironment();
    for (const auto& change : options.environment) {
        const auto wide = WideText(change);
        std::erase_if(entries, [&](const auto& entry) { return CompareNames(entry, wide) == CSTR_EQUAL; });
        if (wide.find(L'=', 1) != std::wstring::npos) entries.push_back(wide);
    }
    std::ranges::stable_sort(entries,
                             [](const auto& a, const auto& b) { return CompareNames(a, b) == CSTR_LESS_THAN; });
    std::wstring block;
    for (const auto& entry : entries) block += entry + L'\0';
    return block + L'\0';
}

/// The child ends with this process, and what it has started ends with the child.
FileResult MakeFamily(const ChildOptions& options, CHandle& family)
{
    family = CHandle(CreateJobObjectW(nullptr, nullptr));
    if (!family.Valid()) return LastFailure();
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    auto& flags = limits.BasicLimitInformation.LimitFlags;
    flags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    // What the shell starts cannot be let out singly.
    if (options.openedProgramsGoOn) flags |= JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
    if (options.addressSpaceBytes != 0) {
        flags |= JOB_OBJECT_LIMIT_PROCESS_MEMORY;
        limits.ProcessMemoryLimit = static_cast<SIZE_T>(options.addressSpaceBytes);
    }
    return ResultOf(SetInformationJobObject(family.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits));
}

/// Handles that may be inherited while it lives.
class CInheritance {
public:
    explicit CInheritance(std::vector<HANDLE> handles) : m_handles(std::move(handles))
    {
        for (const HANDLE handle : m_handles) {
            DWORD flags = 0;
            if (!GetHandleInformation(handle, &flags) || (flags & HANDLE_FLAG_INHERIT)) continue;
            if (SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT)) m_changed.push_back(handle);
        }
    }
    CInheritance(const CInheritance&) = delete;
    CInheritance& operator=(const CInheritance&) = delete;
    ~CInheritance()
    {
        for (const HANDLE handle : m_changed) SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    }
    std::vector<HANDLE>& Handles() { return m_handles; }

private:
    std::vector<HANDLE> m_handles, m_changed;
};

/// What the child inherits and the family it is born into, in the form in which starting takes them. Both arguments
/// outlive the list.
class CAttributes {
public:
    CAttributes(std::vector<HANDLE>& inherited, HANDLE& family)
    {
        constexpr DWORD kCount = 2;
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, kCount, 0, &size);
        m_memory = std::make_unique<char[]>(size);
        m_valid = InitializeProcThreadAttributeList(List(), kCount, 0, &size) &&
                  UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, inherited.data(),
                                            inherited.size() * sizeof(HANDLE), nullptr, nullptr) &&
                  UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_JOB_LIST, &family, sizeof family,
                                            nullptr, nullptr);
    }
    CAttributes(const CAttributes&) = delete;
    CAttributes& operator=(const CAttributes&) = delete;
    ~CAttributes() { DeleteProcThreadAttributeList(List()); }
    bool Valid() const { return m_valid; }
    LPPROC_THREAD_ATTRIBUTE_LIST List() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.get()); }

private:
    std::unique_ptr<char[]> m_memory;
    bool m_valid = false;
};

/// Starts the process as one of the family from its first moment on: one that is put there afterwards is left behind
/// when this process is killed in between.
FileResult Start(const ChildOptions& options, HANDLE family, HANDLE input, HANDLE output, HANDLE errors,
                 ChildState& state)
{
    std::vector<HANDLE> handles{input, output, errors};
    for (const long long handle : options.inheritedDescriptors) handles.push_back(reinterpret_cast<HANDLE>(handle));
    CInheritance inheritance(std::move(handles));
    CAttributes attributes(inheritance.Handles(), family);
    if (!attributes.Valid()) return LastFailure();
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = input;
    startup.StartupInfo.hStdOutput = output;
    startup.StartupInfo.hStdError = errors;
    startup.lpAttributeList = attributes.List();
    const auto program = ProgramPath(options.program);
    auto commandLine = CommandLine(options);
    auto environment = Environment(options);
    PROCESS_INFORMATION process{};
    // Without any console it gets no Ctrl-C. A console of its own, shown or not, would be one more process, and a
    // group of its own would teach the programs that it opens to overhear Ctrl-C.
    constexpr DWORD kFlags = DETACHED_PROCESS | CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT;
    if (!CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, kFlags, environment.data(),
                        nullptr, &startup.StartupInfo, &process))
        return LastFailure();
    const CHandle thread(process.hThread);
    state.process = CHandle(process.hProcess);
    state.processId = static_cast<int>(process.dwProcessId);
    return {};
}

}  // namespace

FileResult StartChild(const ChildOptions& options, ChildState& state)
{
    if (!FileExists(options.program)) {
        return Failure(FolderExists(options.program) ? FileProblem::IsAFolder : FileProblem::Missing);
    }
    PipeEnds input, output, errors;
    if (const auto made = MakePipe(input, OurEnd::Writer); !made) return made;
    for (PipeEnds* read : {&output, &errors}) {
        if (const auto made = MakePipe(*read, OurEnd::Reader); !made) return made;
    }
    if (const auto made = MakeFamily(options, state.family); !made) return made;
    if (const auto started =
            Start(options, state.family.Get(), input.reader.Get(), output.writer.Get(), errors.writer.Get(), state);
        !started)
        return started;
    state.input.Open(std::move(input.writer));
    state.output.pipe.Open(std::move(output.reader));
    state.errors.pipe.Open(std::move(errors.reader));
    return {};
}

bool MayStartLater(FileResult failed)
{
    constexpr int kPassing[] = {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY,       ERROR_NO_SYSTEM_RESOURCES,
                                ERROR_COMMITMENT_LIMIT,  ERROR_SHARING_VIOLATION,  // a scanner holds the program
                                ERROR_INTERNAL_ERROR};
    return std::ranges::find(kPassing, failed.errorNumber) != std::end(kPassing);
}

}  // namespace platform
