#include "cli/LogCommand.h"

#include <chrono>
#include <thread>

#include "cli/RunArguments.h"
#include "common/ProductPaths.h"
#include "platform/HeldFiles.h"
#include "platform/Paths.h"

namespace cli {

namespace {

constexpr std::size_t kPiece = 64 * 1024;

bool SameFile(const platform::FileStamp& one, const platform::FileStamp& other)
{
    return one.device == other.device && one.inode == other.inode;
}

}  // namespace

std::string CLogTail::ReadOpen()
{
    if (!m_stream) return {};
    std::string bytes(kPiece, '\0');
    // Not every library goes on reading behind an end that it has seen, unless it is positioned anew.
    std::fseek(m_stream.get(), 0, SEEK_CUR);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), m_stream.get()));
    if (std::ferror(m_stream.get())) m_result = platform::StreamFailure();
    m_position += bytes.size();
    return bytes;
}

bool CLogTail::Reopen()
{
    const auto stamp = platform::StampOf(m_path);
    if (!stamp) return false;
    const bool same = m_stream && SameFile(*stamp, m_stamp);
    if (same && stamp->size >= m_position) return false;
    m_stream = platform::OpenStream(m_path, "rb", &m_result);
    if (!m_stream) return false;
    m_stamp = *stamp;
    m_position = 0;
    return true;
}

std::string CLogTail::Poll()
{
    // The old file first: what was added before it was set aside must not be lost.
    std::string bytes = ReadOpen();
    if (bytes.empty() && Reopen()) bytes = ReadOpen();
    return bytes;
}

}  // namespace cli

namespace cli {

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(250);

std::string LogPath(const CArguments& arguments)
{
    if (arguments.Has("--log")) return platform::AbsolutePath(arguments.Text("--log"));
    const std::string applicationData = platform::ApplicationDataFolder();
    if (applicationData.empty()) FailStart("your folder for settings is neither there nor can it be made");
    return MakeProductPaths(applicationData).logFile;
}

/// The log as it is; on a terminal, which names and messages of others must not steer, in printable characters.
class CLogPrinter {
public:
    CLogPrinter(const std::string& path, const Screen& screen) : m_tail(path), m_screen(screen) {}

    /// False when standard output cannot be written any more.
    bool PrintNews()
    {
        for (std::string bytes = m_tail.Poll(); !bytes.empty(); bytes = m_tail.Poll())
            *m_screen.data << (m_screen.dataTerminal ? m_text.Next(bytes) : bytes);
        return static_cast<bool>(m_screen.data->flush());
    }
    void PrintRest() { *m_screen.data << m_text.Rest(); }

    [[nodiscard]] platform::FileResult Result() const { return m_tail.Result(); }

private:
    CLogTail m_tail;
    CPrintableText m_text;
    const Screen& m_screen;
};

int Show(const std::string& path, const Screen& screen)
{
    if (!platform::FileExists(path)) FailStart(path + ": there is no log yet");
    CLogPrinter printer(path, screen);
    printer.PrintNews();
    printer.PrintRest();
    if (!printer.Result()) FailStart(path + ": " + platform::ErrorText(printer.Result().errorNumber));
    return kExitFine;
}

int Follow(const std::string& path, const Screen& screen)
{
    CLogPrinter printer(path, screen);
    while (printer.PrintNews()) std::this_thread::sleep_for(kPollInterval);
    return kExitBroken;
}

int Clear(const std::string& path)
{
    if (!platform::FileExists(path)) return kExitFine;
    platform::CLogFile log;
    const auto opened = log.Open(path, false);
    if (platform::ProblemOf(opened) == platform::FileProblem::InUse)
        FailStart(path + ": a run is writing this log; clear it when the run is over");
    if (!opened) FailStart(path + ": " + platform::ErrorText(opened.errorNumber));
    return kExitFine;
}

}  // namespace

int LogCommand(const CArguments& arguments, const Screen& screen)
{
    const int actions = arguments.Has("--follow") + arguments.Has("--clear") + arguments.Has("--path");
    if (actions > 1) FailUsage("--follow, --clear and --path exclude each other");
    const std::string path = LogPath(arguments);
    if (arguments.Has("--path")) {
        *screen.data << path << '\n';
        return kExitFine;
    }
    if (arguments.Has("--clear")) return Clear(path);
    return arguments.Has("--follow") ? Follow(path, screen) : Show(path, screen);
}

}  // namespace cli
