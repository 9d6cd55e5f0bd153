#include <stdexcept>

#include <gtest/gtest.h>

#include "batchrun/RunDriver.h"
#include "support/MemoryLog.h"
#include "support/TemporaryFolder.h"

namespace {

using Lines = std::vector<std::string>;

/// Notes what a run reports and when it closes the host.
class CNotes final : public CRunEvents, public CHostCloser {
public:
    void RunStarts(int inputs) override { noted += "starts " + std::to_string(inputs) + "|"; }
    void FileDone(const ProcessedFile& file) override { noted += "file " + file.path + "|"; }
    void RunEnds(RunEnd end, const std::string& message) override
    {
        noted += end == RunEnd::Finished ? "finished" : end == RunEnd::NotStarted ? "not started" : "broken";
        noted += message.empty() ? "|" : ": " + message + "|";
    }
    void CloseHost() override
    {
        noted += "close|";
        if (closeFails) throw std::runtime_error("no way out");
        if (onClose) onClose();
    }

    std::string noted;
    bool closeFails = false;
    std::function<void()> onClose;
};

const std::string kEnd(86, '-');

class RunDriver : public testing::Test {
protected:
    CRunDriver MakeDriver()
    {
        return CRunDriver(
            {.settings = [this] { return DescribedSettings({.work = SequenceWork(m_sequence)}, false, m_log); },
             .log = m_log,
             .events = m_notes,
             .host = m_notes});
    }
    /// The log behind the nine settings.
    Lines Logged() const { return {m_log.lines.begin() + 9, m_log.lines.end()}; }

    CTemporaryFolder m_folder;
    std::string m_sequence = m_folder / "missing.sequ";
    CMemoryLog m_log;
    CNotes m_notes;
};

TEST_F(RunDriver, ASequenceThatIsAFolderClosesTheHostAndEndsTheRunOnce)
{
    m_sequence = m_folder.Path();
    CRunDriver driver = MakeDriver();
    m_notes.onClose = [&] { driver.Idle(); };  // the host's idle loop goes on while the run does
    driver.Idle();
    driver.Idle();
    EXPECT_EQ(m_notes.noted, "close|not started: There is no sequence file at " + m_sequence + ".|");
    EXPECT_EQ(Logged(), (Lines{"Sequence file does not existing at specified location : " + m_sequence,
                               "Error reading sequence file : " + m_sequence, kEnd}));
}

TEST_F(RunDriver, AnyExceptionIsLoggedAndStillEndsTheRun)
{
    m_notes.closeFails = true;
    CRunDriver driver = MakeDriver();
    driver.Idle();
    EXPECT_EQ(m_notes.noted, "close|broken: no way out|");
    ASSERT_EQ(Logged().size(), 4u);
    EXPECT_EQ(Logged()[2], "\tUnexpected application exception occured during Ferrule execution : no way out");
    EXPECT_EQ(Logged()[3], kEnd);
}

}  // namespace
