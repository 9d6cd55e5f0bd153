// What the tests of children start: does what its arguments say, one after the other.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "platform/ThisProcess.h"
#include "platform/Windows_win.h"

#include <shellapi.h>

namespace {

std::vector<std::wstring> arguments;  // as Windows takes the command line apart
std::size_t position = 0;

std::string Utf8(const std::wstring& text)
{
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                                              bytes.data(), static_cast<int>(bytes.size()), nullptr,
                                                              nullptr)));
    return bytes;
}

std::wstring Next() { return arguments.at(position++); }

void Write(DWORD stream, const std::string& bytes)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(stream), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

void Say(const std::string& text) { Write(STD_OUTPUT_HANDLE, text + '\n'); }

void Read()
{
    std::string line;
    DWORD count = 0;
    for (char letter = 0; letter != '\n' && ReadFile(GetStdHandle(STD_INPUT_HANDLE), &letter, 1, &count, nullptr);) {
        if (letter != '\n') line += letter;
    }
    Say(count == 1 ? "got " + line : "end");
}

void Count()
{
    std::vector<char> buffer(100'000);
    unsigned long long total = 0;
    DWORD count = 0;
    while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer.data(), 100'000, &count, nullptr)) total += count;
    Say(std::to_string(total));
}

void Flood()
{
    for (;;) {
        Say("noise");
        Write(STD_ERROR_HANDLE, "noise\n");
    }
}

// With the standard streams of this one.
void StartGrandchild()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    std::wstring line = L'"' + path + L"\" wait";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    const bool started =
        CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
    Say(started ? std::to_string(process.dwProcessId) : "not started");
}

void TellArguments(int counted)
{
    Say(std::to_string(counted));
    while (position < arguments.size()) Say('<' + Utf8(Next()) + '>');
}

void TellVariable()
{
    std::wstring value(1000, L'\0');
    const DWORD length = GetEnvironmentVariableW(Next().c_str(), value.data(), 1000);
    Say(length == 0 ? "none" : Utf8(value.substr(0, length)));
}

void Eat()
{
    const std::size_t bytes = std::stoull(Next()) << 20;
    Say(VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE) ? "eaten" : "refused");
}

void WriteToHandle()
{
    DWORD written = 0;
    const auto handle = reinterpret_cast<HANDLE>(std::stoll(Next()));
    Say(WriteFile(handle, "x", 1, &written, nullptr) ? "written" : "no such handle");
}

void CloseStreams()
{
    for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) CloseHandle(GetStdHandle(stream));
}

// What goes to the streams must not get into the file.
void UseStreams()
{
    std::FILE* const file = _wfopen(Next().c_str(), L"wb");
    if (!file) ExitProcess(1);
    if (std::getchar() != EOF) ExitProcess(2);
    std::puts("stray");
    std::fputs("stray", stderr);
    std::fflush(nullptr);
    Say("stray");
    Write(STD_ERROR_HANDLE, "stray");
    std::fputs("its own\n", file);
    std::fclose(file);
}

/// All arguments in a file that is complete as soon as it is there.
void Report(const std::wstring& path)
{
    const std::wstring part = path + L".part";
    const HANDLE file = CreateFileW(part.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    DWORD written = 0;
    for (const auto& argument : arguments) {
        const std::string line = '<' + Utf8(argument) + ">\n";
        WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    }
    CloseHandle(file);
    MoveFileW(part.c_str(), path.c_str());
}

}  // namespace

int main(int counted, char**)
{
    platform::PrepareProcess();
    int count = 0;
    wchar_t** const all = CommandLineToArgvW(GetCommandLineW(), &count);
    arguments.assign(all + 1, all + count);
    if (const wchar_t* const report = _wgetenv(L"FERRULE_TEST_REPORT")) {
        Report(report);
        return 0;
    }
    const std::map<std::wstring, void (*)()> deeds = {
        {L"say", [] { Say(Utf8(Next())); }},
        {L"part", [] { Write(STD_OUTPUT_HANDLE, Utf8(Next())); }},
        {L"error", [] { Write(STD_ERROR_HANDLE, Utf8(Next())); }},
        {L"exit", [] { ExitProcess(static_cast<UINT>(std::stoul(Next()))); }},
        {L"crash", [] { *const_cast<volatile int*>(static_cast<int*>(nullptr)) = 1; }},
        {L"abort", [] { std::abort(); }},
        {L"read", Read},
        {L"count", Count},
        {L"wait", [] { Sleep(INFINITE); }},
        {L"flood", Flood},
        {L"deaf", [] { CloseHandle(GetStdHandle(STD_INPUT_HANDLE)); }},
        {L"mute", CloseStreams},
        {L"grandchild", StartGrandchild},
        {L"streams", UseStreams},
        {L"print", [] { std::puts(Utf8(Next()).c_str()); }},
        {L"variable", TellVariable},
        {L"eat", Eat},
        {L"handle", WriteToHandle},
    };
    while (position < arguments.size()) {
        const auto what = Next();
        if (what == L"arguments")
            TellArguments(counted);
        else
            deeds.at(what)();
    }
    return 0;
}
