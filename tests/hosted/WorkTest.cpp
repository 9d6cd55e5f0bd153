// Runs of work that is no sequence, with the programs as they are and a plug-in that knows one more kind.
#include <filesystem>
#include <sstream>

#include <gmock/gmock.h>

#include "platform/Paths.h"
#include "protocol/Json.h"
#include "supervisor/Supervisor.h"
#include "support/PlugInHost.h"

namespace {

using testing::HasSubstr;
using testing::Not;

/// A folder with three documents and the request to count their pages.
class Work : public testing::Test {
protected:
    Work()
    {
        SetVariable(platform::kApplicationDataVariable, m_folder.MakeFolder("settings"));
        m_folder.MakeFolder("in");
        for (const char* name : {"in/a.pdf", "in/b.pdf", "in/c.pdf"}) m_folder.Write(name, kPdf);
        m_options.engine = {.hostProgram = FERRULE_HOST_PROGRAM, .plugIns = {PAGE_COUNT_PLUG_IN}};
        m_options.request = {.work = {.kind = "page count"}, .inputs = {m_folder / "in"}};
        m_options.recordPath = m_folder / "record.jsonl";
        m_options.logPath = m_folder / "log.txt";
    }

    RunResult Run(bool resume = false)
    {
        m_options.resume = resume;
        CRunObserver silence;
        return RunPlanned(m_options, silence);
    }
    /// The outcomes in the record, a letter each.
    std::string Recorded() const
    {
        std::istringstream lines(FileBytes(m_options.recordPath));
        std::string outcomes;
        for (std::string line; std::getline(lines, line);) outcomes += TextAt(*ParseObject(line), "outcome")[0];
        return outcomes;
    }

    CTemporaryFolder m_folder;
    RunOptions m_options;
};

TEST_F(Work, NeedsNoSequence)
{
    const std::string obstacle = m_folder.Write("in/b.pdf.not yet", "");
    const RunResult stopped = Run();
    EXPECT_EQ(stopped.exit, ExitClass::Broken);
    EXPECT_THAT(stopped.message, HasSubstr("Not yet."));
    ASSERT_TRUE(std::filesystem::remove(obstacle));

    // The same kind with other settings is another run, and does not touch the first one.
    m_options.request.work.settings = R"({"atLeast":2})";
    EXPECT_EQ(Run().exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(Recorded(), "fff");
    m_options.request.work.settings.clear();
    const RunResult resumed = Run(true);
    EXPECT_EQ(resumed.exit, ExitClass::Fine) << resumed.message;
    EXPECT_EQ(resumed.plan.alreadyDone, 1);
    EXPECT_EQ(Recorded(), "sss");
    const std::string log = FileBytes(m_options.logPath);
    EXPECT_THAT(log, HasSubstr("Work : page count"));
    EXPECT_THAT(log, HasSubstr("Pages : 1"));
    EXPECT_THAT(log, Not(HasSubstr("equence")));

    m_options.request.finalAction = FinalAction::Delete;
    EXPECT_THAT(Run().message, HasSubstr("The page count saves nothing"));
}

TEST_F(Work, OfAnUnknownKindIsRefused)
{
    m_options.engine.plugIns = {FERRULE_PLUG_IN};
    EXPECT_THAT(Run().message, HasSubstr("no work of the kind \"page count\""));
}

}  // namespace
