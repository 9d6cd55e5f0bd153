#include "batchrun/StartupReader.h"

#include "support/MemoryLog.h"

#include <gtest/gtest.h>

namespace {

/// Notes the order of what the start-up reader asks for.
class CNotedActions final : public CStartupActions {
public:
    void HideHostWindow() override { noted += "hide "; }
    void KeepHostWindowOffScreen() override { noted += "keep "; }
    void ScheduleRunDriver(int periodTicks) override { noted += "run" + std::to_string(periodTicks); }
    std::string noted;
};

TEST(StartupReader, SchedulesARunWhenThereIsASequence)
{
    const struct {
        const char *sequence, *noProgress, *noted, *logged;
    } rows[] = {
        {"", "yes", "", "No sequence file specified"},
        {"/a.sequ", "", "keep run60", "Registering sequence file : /a.sequ"},
        {"/a.sequ", "YES", "hide keep run60", "Registering sequence file : /a.sequ"},
        {"/a.sequ", " yes", "keep run60", "Registering sequence file : /a.sequ"},
        {" \"/a.sequ\"", "no", "keep run60", "Registering sequence file :  \"/a.sequ\""},
        {" ", "", "keep run60", "Registering sequence file :  "},
    };
    for (const auto& row : rows) {
        CMemoryLog log;
        CNotedActions actions;
        const StartupDecision decision = ReadStartup(SequenceWork(row.sequence), row.noProgress, log, actions);
        EXPECT_EQ(actions.noted, row.noted) << row.sequence << '|' << row.noProgress;
        EXPECT_EQ(log.lines, std::vector<std::string>{row.logged});
        EXPECT_EQ(decision.runScheduled, *row.sequence != '\0');
        EXPECT_EQ(decision.hostWindowHidden, std::string(row.noted).starts_with("hide"));
    }
}

}  // namespace
