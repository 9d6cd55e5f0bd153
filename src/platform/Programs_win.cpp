#include <objbase.h>

#include "platform/FileSteps.h"
#include "platform/Files.h"
#include "platform/Programs.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

#include <shellapi.h>

namespace platform {
namespace {

constexpr INT_PTR kLargestFailure = 32;

/// What the shell may hand the program over to needs it.
class CShellCalls {
public:
    CShellCalls() : m_begun(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}
    CShellCalls(const CShellCalls&) = delete;
    CShellCalls& operator=(const CShellCalls&) = delete;
    ~CShellCalls()
    {
        if (m_begun) CoUninitialize();
    }

private:
    bool m_begun;
};

std::string WithoutQuotes(const std::string& program)
{
    const bool quoted = program.size() > 2 && program.front() == '"' && program.back() == '"';
    return quoted ? program.substr(1, program.size() - 2) : program;
}

// Without a folder the shell looks in places of its own.
bool MayBeThere(const std::string& program)
{
    return !program.empty() && (program.find('\\') == std::string::npos || NameExists(program));
}

}  // namespace

bool ProgramMayExist(const std::string& program) { return MayBeThere(WithoutQuotes(program)); }

bool OpenWithShell(const std::string& program, const std::string& argument, ShellArgument passed)
{
    const std::string bare = WithoutQuotes(program);
    if (!MayBeThere(bare)) return false;
    if (const auto answer = AskOverseer(COverseer::Act::Start, argument, bare)) return answer->Ok();
    const std::string parameters = passed == ShellArgument::Quoted ? '"' + argument + '"' : argument;
    const CShellCalls calls;
    const auto result =
        reinterpret_cast<INT_PTR>(ShellExecuteA(nullptr, "open", program.c_str(), parameters.c_str(), "", SW_SHOW));
    return result > kLargestFailure;
}

bool OpenDocument(const std::string& pathOrAddress)
{
    const CShellCalls calls;
    const auto answer = ShellExecuteW(nullptr, L"open", WideText(pathOrAddress).c_str(), nullptr, nullptr, SW_SHOW);
    return reinterpret_cast<INT_PTR>(answer) > kLargestFailure;
}

}  // namespace platform
