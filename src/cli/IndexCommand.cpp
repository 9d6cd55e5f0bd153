#include "cli/IndexCommand.h"

#include <map>

#include "base/Text.h"
#include "cli/RunArguments.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

/// One order for the index, and what the host reports of it.
class CIndexOrder {
public:
    CIndexOrder(const CArguments& arguments, const Screen& screen, const char* what)
        : m_arguments(arguments), m_screen(screen), m_status(screen)
    {
        m_job = {{"kind", "index"},
                 {"do", what},
                 {"path", TextFromBytes(platform::AbsolutePath(arguments.Operands().front()))}};
    }

    Json& Job() { return m_job; }

    /// True when it is done; otherwise the reason was said.
    bool Run(const EngineOptions& engine, const std::function<void(const Json&)>& take)
    {
        CRemarks remarks(m_status);
        m_result = RunJob(engine, LineOf(m_job), remarks, [&](const std::string& line) {
            const auto report = ParseObject(line);
            if (!report) return;
            if (report->contains("progress"))
                Show(ObjectAt(*report, "progress"));
            else
                take(*report);
        });
        m_status.Clear();
        if (m_result.exit == ExitClass::Fine) return true;
        if (m_result.diedEarly)
            for (const std::string& line : m_result.errorLines) *m_screen.messages << Printable(line) << '\n';
        const std::string message = m_result.message.empty() ? "the host answered nothing" : m_result.message;
        *m_screen.messages << "ferrule: " << PrintableLines(message) << '\n';
        return false;
    }
    /// When it is not done.
    int Exit(int otherwise) const { return m_result.exit == ExitClass::Stopped ? kExitStopped : otherwise; }

private:
    class CRemarks final : public CRunObserver {
    public:
        explicit CRemarks(CStatusLine& status) : m_status(status) {}
        void Remark(const std::string& text) override { m_status.Message("ferrule: " + Printable(text)); }
        void Warning(const std::string& text) override { Remark("warning: " + text); }

    private:
        CStatusLine& m_status;
    };

    void Show(const Json& progress)
    {
        if (m_arguments.Has("--quiet")) return;
        std::string text = std::to_string(CountAt(progress, "done")) + " of " +
                           std::to_string(CountAt(progress, "total")) + " documents read";
        m_status.Show([&](std::size_t) { return text; }, [&] { return text; });
    }

    const CArguments& m_arguments;
    const Screen& m_screen;
    CStatusLine m_status;
    Json m_job;
    JobResult m_result;
};

/// "1 page", "2 pages"
std::string NumberOf(int number, const std::string& what)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

/// The documents that the index does not have, or not all of: named, and counted by what is the matter with them.
class CIndexProblems {
public:
    /// `quiet`: names those alone with which something went wrong.
    CIndexProblems(const Screen& screen, bool quiet) : m_screen(screen), m_quiet(quiet) {}

    void Take(const Json& document)
    {
        const std::string state = TextAt(document, "state");
        const bool wrong = state == "failed" || state == "unreadable" || state == "incomplete";
        ++m_counts[state];
        m_wentWrong = m_wentWrong || wrong;
        if (m_quiet && !wrong) return;
        *m_screen.messages << "ferrule: " << ShownPath(BytesAt(document, "path")) << ": "
                           << PrintableLines(TextAt(document, "message")) << '\n';
    }
    bool WentWrong() const { return m_wentWrong; }
    /// "without text: 3, failed: 1"
    std::string Sentence() const
    {
        static constexpr std::pair<const char*, const char*> kWords[] = {{"no-text", "without text"},
                                                                         {"encrypted", "encrypted and left out"},
                                                                         {"needs-password", "without password"},
                                                                         {"not-permitted", "forbidden"},
                                                                         {"failed", "failed"},
                                                                         {"unreadable", "unreadable"},
                                                                         {"incomplete", "incomplete"}};
        std::string text;
        for (const auto& [state, words] : kWords)
            if (const auto found = m_counts.find(state); found != m_counts.end())
                text += (text.empty() ? "" : ", ") + std::string(words) + ": " + std::to_string(found->second);
        return text;
    }
    Json AsJson() const
    {
        Json object = Json::object();
        for (const auto& [state, count] : m_counts) object[state] = count;
        return object;
    }

private:
    const Screen& m_screen;
    bool m_quiet;
    bool m_wentWrong = false;
    std::map<std::string, int> m_counts;
};

}  // namespace

int IndexCreateCommand(const CArguments& arguments, const Screen& screen)
{
    CIndexOrder order(arguments, screen, "create");
    std::vector<std::string> folders;
    for (std::size_t i = 1; i < arguments.Operands().size(); ++i) {
        folders.push_back(ExistingPath(arguments.Operands()[i]));
        if (!platform::FolderExists(folders.back())) FailUsage(folders.back() + " is no folder");
    }
    if (folders.empty()) FailUsage("name the folders to index; a single \".\" is the current folder");
    if (!ToLowerAscii(arguments.Operands().front()).ends_with(".pdx"))
        FailUsage("the description of an index has a name that ends with \".pdx\"");
    order.Job()["folders"] = TextsOf(folders);
    order.Job()["includeEncrypted"] = arguments.Has("--include-encrypted");
    return order.Run(ReadEngine(arguments), [](const Json&) {}) ? kExitFine : order.Exit(kExitBroken);
}

int IndexBuildCommand(const CArguments& arguments, const Screen& screen)
{
    CIndexOrder order(arguments, screen, "build");
    EngineOptions engine = ReadEngine(arguments);
    engine.textCacheFolder = ReadTextCache(arguments);
    order.Job()["jobs"] = engine.jobs;
    order.Job()["timeout"] = static_cast<int>(arguments.Number("--timeout"));
    order.Job()["memory"] = std::to_string(arguments.Size("--memory"));
    CIndexProblems problems(screen, arguments.Has("--quiet"));
    Json summary;
    const bool done = order.Run(engine, [&](const Json& report) {
        if (report.contains("document")) problems.Take(ObjectAt(report, "document"));
        if (report.contains("summary")) summary = ObjectAt(report, "summary");
    });
    if (!done) return order.Exit(kExitBroken);
    if (arguments.Has("--json")) {
        summary["problems"] = problems.AsJson();
        *screen.data << LineOf(summary) << '\n';
    } else if (!arguments.Has("--quiet")) {
        *screen.messages << "The index holds " << NumberOf(CountAt(summary, "documents"), "document") << " with "
                         << NumberOf(CountAt(summary, "pages"), "page") << ". Read: " << CountAt(summary, "read")
                         << ", unchanged: " << CountAt(summary, "unchanged")
                         << ", vanished: " << CountAt(summary, "removed") << ".\n";
        if (const std::string missing = problems.Sentence(); !missing.empty())
            *screen.messages << "Not in the index, or not whole: " << missing << ".\n";
    }
    return problems.WentWrong() ? kExitNotAllFine : kExitFine;
}

int IndexPurgeCommand(const CArguments& arguments, const Screen& screen)
{
    CIndexOrder order(arguments, screen, "purge");
    return order.Run(ReadEngine(arguments), [](const Json&) {}) ? kExitFine : order.Exit(kExitBroken);
}

int IndexStatusCommand(const CArguments& arguments, const Screen& screen)
{
    CIndexOrder order(arguments, screen, "status");
    CIndexProblems problems(screen, false);
    Json contents;
    const bool done = order.Run(ReadEngine(arguments), [&](const Json& report) {
        if (report.contains("document")) problems.Take(ObjectAt(report, "document"));
        if (report.contains("contents")) contents = ObjectAt(report, "contents");
    });
    if (!done) return order.Exit(kExitBroken);
    if (arguments.Has("--json")) {
        contents["problems"] = problems.AsJson();
        *screen.data << LineOf(contents) << '\n';
    } else if (!FlagAt(contents, "built")) {
        *screen.data << "The index is not built, or was purged.\n";
    } else {
        *screen.data << "Built " << TextAt(contents, "builtAt") << ", " << UnsignedAt(contents, "bytes") / 1024
                     << " KiB: " << NumberOf(CountAt(contents, "documents"), "document") << " with "
                     << NumberOf(CountAt(contents, "pages"), "page") << ".\n";
        if (const std::string missing = problems.Sentence(); !missing.empty())
            *screen.data << "Not in the index, or not whole: " << missing << ".\n";
    }
    return kExitFine;
}

int IndexSearchCommand(const CArguments& arguments, const Screen& screen)
{
    CIndexOrder order(arguments, screen, "search");
    const bool count = arguments.Has("--count"), names = arguments.Has("--files-with-matches");
    const bool json = arguments.Has("--json");
    order.Job()["query"] = TextFromBytes(arguments.Operands().at(1));
    order.Job()["onOnePage"] = arguments.Has("--same-page");
    order.Job()["snippets"] = !count && !names;
    if (arguments.Has("--limit")) order.Job()["most"] = arguments.Number("--limit");
    std::string last;
    int pages = 0, hits = 0;
    std::ostream& data = *screen.data;
    const auto endFile = [&] {
        if (pages > 0 && count) data << ShownPath(last) << ':' << pages << '\n';
        pages = 0;
    };
    const bool done = order.Run(ReadEngine(arguments), [&](const Json& report) {
        if (!report.contains("hit")) return;
        const Json& hit = ObjectAt(report, "hit");
        const std::string path = BytesAt(hit, "path");
        if (path != last) {
            endFile();
            last = path;
            if (names) data << ShownPath(path) << '\n';
        }
        ++pages;
        ++hits;
        if (count || names) return;
        if (json)
            data << LineOf(hit) << '\n';
        else
            data << ShownPath(path) << ':' << CountAt(hit, "page") << ": " << Printable(TextAt(hit, "text")) << '\n';
    });
    endFile();
    if (!done) return order.Exit(kTrouble);
    return hits > 0 ? kFound : kNothingFound;
}

}  // namespace cli
