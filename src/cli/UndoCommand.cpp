#include "cli/UndoCommand.h"

#include "cli/Console.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "supervisor/undo/Undo.h"

namespace cli {

namespace {

using Kind = UndoStep::Kind;

constexpr int kMostProblems = 20;

/// What a person reads about a step; empty when nothing is done.
std::string StepText(Kind kind, bool dryRun)
{
    switch (kind) {
        case Kind::Remove:
            return dryRun ? "would be removed" : "removed";
        case Kind::PutBack:
            return dryRun ? "would be put back" : "put back";
        case Kind::MoveBack:
            return dryRun ? "would be moved back" : "moved back";
        case Kind::Nothing:
        case Kind::Leave:
            break;
    }
    return {};
}

class CUndoPrinter final : public CUndoObserver {
public:
    CUndoPrinter(const Screen& screen, const CArguments& arguments)
        : m_screen(screen), m_status(screen), m_dryRun(arguments.Has("--dry-run")), m_quiet(arguments.Has("--quiet"))
    {
    }

    void Begins(const std::string& run, std::size_t acts) override
    {
        if (!m_quiet) Say("Run " + run + ": " + Counted(acts, "act", "acts"));
    }
    void Problem(const std::string& sentence) override
    {
        if (++m_problems == 1) Say("This cannot be taken back:");
        if (m_problems <= kMostProblems) Say("  " + Printable(sentence));
    }
    void Remark(const std::string& sentence) override
    {
        if (++m_remarks <= kMostProblems && !m_quiet) Say(Printable(sentence));
    }
    void Progress(std::string_view what, std::size_t done, std::size_t all) override
    {
        if (m_quiet) return;
        const auto sentence = [&] { return Grouped(done) + " of " + Grouped(all) + " acts " + std::string(what); };
        m_status.Show([&](std::size_t width) { return sentence().substr(0, width); }, sentence);
    }
    void Step(Kind kind, const std::string& path) override
    {
        if (const std::string text = StepText(kind, true); m_dryRun && !m_quiet && !text.empty()) {
            m_status.Clear();
            *m_screen.data << Printable(path) << ": " << text << '\n';
        }
    }
    void Finish()
    {
        m_status.Clear();
        if (m_remarks > kMostProblems && !m_quiet)
            Say(Counted(static_cast<std::uint64_t>(m_remarks - kMostProblems), "more result is", "more results are") +
                " no longer there.");
        if (m_problems > kMostProblems)
            Say("  and " + Counted(static_cast<std::uint64_t>(m_problems - kMostProblems), "thing", "things") +
                " more");
    }

private:
    void Say(const std::string& text) { m_status.Message(text); }

    const Screen& m_screen;
    CStatusLine m_status;
    bool m_dryRun, m_quiet;
    int m_problems = 0, m_remarks = 0;
};

std::string SummaryLine(const UndoResult& result, bool dryRun)
{
    std::string line;
    for (const Kind kind : {Kind::Remove, Kind::PutBack, Kind::MoveBack})
        if (result.Count(kind) != 0)
            line += (line.empty() ? "" : ", ") +
                    Counted(static_cast<std::uint64_t>(result.Count(kind)), "file ", "files ") +
                    StepText(kind, dryRun);
    if (!line.empty()) return line + '.';
    return result.problems == 0 ? "Nothing is left to take back." : "Nothing else is left to take back.";
}

Json SummaryObject(const UndoResult& result)
{
    return {{"run", result.run},
            {"removed", result.Count(Kind::Remove)},
            {"putBack", result.Count(Kind::PutBack)},
            {"movedBack", result.Count(Kind::MoveBack)},
            {"asBefore", result.Count(Kind::Nothing)},
            {"problems", result.problems},
            {"message", result.message}};
}

}  // namespace

int UndoCommand(const CArguments& arguments, const Screen& screen)
{
    UndoOptions options{.dryRun = arguments.Has("--dry-run"), .partly = arguments.Has("--partly")};
    if (!arguments.Operands().empty()) options.path = platform::AbsolutePath(arguments.Operands().front());
    CUndoPrinter printer(screen, arguments);
    const UndoResult result = UndoRun(options, printer);
    printer.Finish();
    const bool done = result.exit == ExitClass::Fine || result.exit == ExitClass::SomeNotSaved;
    if (!result.message.empty())
        *screen.messages << "ferrule: " << PrintableLines(result.message) << '\n';
    else if (done && !arguments.Has("--quiet"))
        *screen.messages << SummaryLine(result, options.dryRun) << '\n';
    if (!result.leftOver.empty())
        *screen.messages
            << "Originals are left over in " << Printable(result.leftOver)
            << ". Other parts of the run may need them; when there are none, the folder can be deleted.\n";
    if (arguments.Has("--json")) *screen.data << LineOf(SummaryObject(result)) << '\n';
    return static_cast<int>(result.exit);
}

}  // namespace cli
