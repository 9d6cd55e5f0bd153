#include "tools/RenameScript.h"

#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/NarrowText.h"
#include "platform/ThisProcess.h"

namespace {

constexpr std::uint64_t kMillisecondsEachSecond = 1000;
/// How long what was ended may take to be gone.
constexpr std::uint64_t kMillisecondsToEnd = 10'000;
constexpr std::size_t kLongestComplaint = 200;

platform::FileResult MakePrivate(const std::string& folder)
{
    const auto made = platform::CreatePrivateFolder(folder);
    return !made && platform::IsOwnFolder(folder) ? platform::MakeFolderPrivate(folder) : made;
}

std::string EndOf(const platform::ChildEnding& ending, const std::string& complaint)
{
    if (ending.signal == 0 && ending.exitCode == 0) return {};
    std::string told =
        "The script ended with " + (ending.signal != 0 ? "signal " + std::to_string(ending.signal)
                                                       : "the code " + std::to_string(ending.exitCode));
    if (!complaint.empty()) told += " (" + complaint + ')';
    return told + '.';
}

}  // namespace

std::string BatchScriptText(const std::string& path, const std::string& script, const std::string& input,
                            const std::string& output)
{
    const auto value = [](const std::string& text) { return '"' + ReplaceAll(text, "%", "%%") + '"'; };
    // The last line is read as a whole before the file is gone. EXIT keeps the code that the script left.
    return "SET OUTPUTDOCUMENT=" + value(output) + "\nSET INPUTDOCUMENT=" + value(input) + '\n' + script + "\nDEL " +
           value(path) + " & EXIT /B\n";
}

CRenameScript::CRenameScript(std::string script, std::string folder, int seconds)
    : m_script(std::move(script)), m_folder(std::move(folder)), m_seconds(seconds)
{
}

CRenameScript::~CRenameScript()
{
    std::error_code ignored;
    std::filesystem::remove(platform::StandardPath(m_folder), ignored);  // when it is empty
}

std::string CRenameScript::Run(const std::string& input, const std::string& output) const
{
    const CUnwatched nobodysDocument;
    const ScriptFile file = MakeScriptFile(m_folder, m_script, input, output);
    auto written = MakePrivate(m_folder);
    if (written) written = platform::WriteFileAtomically(file.path, file.content, platform::Readers::Owner);
    if (!written)
        return "The script cannot be written to " + file.path + " (" + platform::ErrorText(written.errorNumber) +
               ").";
    std::string problem = WaitFor(file);
    (void)platform::DeleteFile(file.path);
    return problem;
}

std::string CRenameScript::WaitFor(const ScriptFile& file) const
{
    platform::FileResult started;
    auto child = platform::CChildProcess::Start(file.start, &started);
    if (!child) return "The script cannot be started (" + platform::ErrorText(started.errorNumber) + ").";
    child->CloseInput();
    const int interruptsBefore = platform::Interrupts();
    std::uint64_t deadline =
        platform::MonotonicMilliseconds() + static_cast<std::uint64_t>(m_seconds) * kMillisecondsEachSecond;
    std::string complaint, ended;
    platform::CChildWatch watch;
    for (;;) {
        const std::uint64_t now = platform::MonotonicMilliseconds();
        if (ended.empty() && (now >= deadline || platform::Interrupts() != interruptsBefore)) {
            ended = now >= deadline ? "The script took longer than " + std::to_string(m_seconds) + " s and was ended."
                                    : "The script was ended, because this process was to stop.";
            child->Kill();
            deadline = now + kMillisecondsToEnd;
        }
        if (now >= deadline) return ended;
        const auto news = watch.Wait({&*child}, static_cast<int>(deadline - now));
        if (news && news->event == platform::ChildEvent::Error && !Trim(news->text).empty())
            complaint = Trim(news->text).substr(0, kLongestComplaint);
        if (news && news->event == platform::ChildEvent::Ended)
            return ended.empty() ? EndOf(child->Ending(), complaint) : ended;
    }
}
