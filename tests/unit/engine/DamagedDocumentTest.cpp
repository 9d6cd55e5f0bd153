// Runs over a document of which the host says that something is lost, or of which somebody saves a new version.
#include <fstream>
#include <map>

#include <gtest/gtest.h>

#include "base/Overseer.h"
#include "batchrun/RunDriver.h"
#include "hostapi/HostInterface.h"
#include "hostapi/JobsTable.h"
#include "hostcalls/HostTables.h"
#include "support/MemoryLog.h"
#include "support/PlugInHost.h"

namespace {

constexpr char kLost[] = "Two of three pages are lost.";

const char* g_told;  // what the host's jobs table answers
bool g_repaired;
PDDocGetFlagsSlotProc g_realFlags;

const char* HOSTCALL TellLoss(PDDoc) { return g_told; }
ASInt32 HOSTCALL TellFlags(PDDoc document) { return g_realFlags(document) | (g_repaired ? PDDocWasRepaired : 0); }

/// Puts both answers into the host's tables.
void AnswerFromHere()
{
    HFTEntry* const jobs = HostTables().Table(HostTable::FerruleJobs);
    HFTEntry* const model = HostTables().Table(HostTable::PDModel);
    jobs[kSlotJobsDocumentLoss] = reinterpret_cast<HFTEntry>(&TellLoss);
    g_realFlags = reinterpret_cast<PDDocGetFlagsSlotProc>(model[kSlotPDDocGetFlags]);
    model[kSlotPDDocGetFlags] = reinterpret_cast<HFTEntry>(&TellFlags);
}

class CLastFile final : public CRunEvents, public CHostCloser {
public:
    void RunStarts(int) override {}
    void FileDone(const ProcessedFile& done) override { file = done; }
    void RunEnds(RunEnd, const std::string&) override {}
    void CloseHost() override {}

    ProcessedFile file;
};

enum class SaveKind { InFolder, StepInPlace };

ProcessedFile RunOver(const CTemporaryFolder& folder, SaveKind save, int finalAction, bool acceptDamaged)
{
    const std::string items =
        save == SaveKind::StepInPlace ? "" : "<Items><Item name='DocSaveDestType' type='string' value='x'/></Items>";
    const std::string sequence =
        folder.Write("x.sequ", "<Workflow><Group label='g'><Command name='WorkflowPlaybackSaveFiles'>" + items +
                                   "</Command></Group></Workflow>");
    const std::map<std::string, std::string> environment = {
        {"FERRULESEQU", sequence},
        {"FERRULEALTPATH", folder / "in"},
        {"FERRULEALTOUTPUTPATH", folder / "out"},
        {"FERRULEFINAL", std::to_string(finalAction)},
        {"FERRULEDEST", finalAction == 4 ? "renamed.pdf" : folder / "done"}};
    CLastFile events;
    CMemoryLog log;
    const auto settings = [&] {
        RunSettings read = ReadRunSettings(
            [&](const char* name) {
                const auto value = environment.find(name);
                return value == environment.end() ? std::string() : value->second;
            },
            log);
        read.execution.acceptDamaged = acceptDamaged;
        return read;
    };
    CRunDriver driver({.settings = settings, .log = log, .events = events, .host = events});
    driver.Idle();
    return events.file;
}

}  // namespace

TEST(DamagedDocument, NeverCostsItsOriginal)
{
    using enum SaveKind;
    const struct {
        const char* what;
        const char* told;
        bool repaired;
        bool accepts;
        SaveKind save;
        int finalAction;
        FileOutcome outcome;
        bool inputStays;  // as it was
        bool output;
        bool copied = false;
    } rows[] = {
        {"sound", "", false, false, InFolder, 3, FileOutcome::Saved, false, true},
        {"a new table and nothing lost", "", true, false, InFolder, 3, FileOutcome::Saved, false, true},
        {"lost and moved", kLost, true, false, InFolder, 2, FileOutcome::Incomplete, true, true},
        {"lost and deleted", kLost, true, false, InFolder, 3, FileOutcome::Incomplete, true, true},
        {"lost and renamed", kLost, true, false, InFolder, 4, FileOutcome::Incomplete, true, true},
        {"lost and replacing", kLost, true, false, InFolder, 6, FileOutcome::Incomplete, true, true},
        {"lost and numbered", kLost, true, false, InFolder, 7, FileOutcome::Incomplete, true, true},
        {"lost and copied", kLost, true, false, InFolder, 8, FileOutcome::Incomplete, true, true, true},
        {"lost without a flag", kLost, false, false, InFolder, 3, FileOutcome::Incomplete, true, true},
        {"lost and saved in place", kLost, true, false, StepInPlace, 0, FileOutcome::Incomplete, true, false},
        {"a host that does not tell", nullptr, true, false, InFolder, 3, FileOutcome::Incomplete, true, true},
        {"accepted", kLost, true, true, InFolder, 3, FileOutcome::Saved, false, true},
        {"accepted in place", kLost, true, true, StepInPlace, 0, FileOutcome::Saved, false, false},
    };
    for (const auto& row : rows) {
        const CPlugInHost host;
        ASSERT_TRUE(host.Started());
        AnswerFromHere();
        g_told = row.told;
        g_repaired = row.repaired;
        const CTemporaryFolder folder;
        for (const char* name : {"in", "out", "done"}) folder.MakeFolder(name);
        folder.Write("in/a.pdf", kPdf);
        const ProcessedFile file = RunOver(folder, row.save, row.finalAction, row.accepts);
        EXPECT_EQ(file.outcome, row.outcome) << row.what << ": " << file.message;
        EXPECT_EQ(FileBytes(folder / "in/a.pdf") == kPdf, row.inputStays) << row.what;
        EXPECT_EQ(FileBytes(folder / "out/a.pdf") != "<missing>", row.output) << row.what;
        EXPECT_EQ(FileBytes(folder / "done/a.pdf") == kPdf, row.copied) << row.what;
        if (row.told) {
            EXPECT_TRUE(file.message.starts_with(row.told)) << row.what << ": " << file.message;
        } else {
            EXPECT_NE(file.message, "") << row.what;
        }
    }
}

namespace {

/// Lets everything happen; while it is asked about the deletion of a file, somebody saves a new version of it.
class CSlowOverseer final : public COverseer {
public:
    CSlowOverseer() : m_former(InstallOverseer(this)) {}
    ~CSlowOverseer() override { InstallOverseer(m_former); }
    Answer Ask(Act act, const std::string& file, const std::string&) override
    {
        if (act == Act::Delete) std::ofstream(file) << "another version";
        return Answer::Go;
    }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    COverseer* m_former;
};

}  // namespace

TEST(FinalAction, SparesANewVersionThatComesWhileItIsAskedAbout)
{
    const CPlugInHost host;
    ASSERT_TRUE(host.Started());
    const CTemporaryFolder folder;
    for (const char* name : {"in", "out"}) folder.MakeFolder(name);
    folder.Write("in/a.pdf", kPdf);
    const CSlowOverseer overseer;
    EXPECT_EQ(RunOver(folder, SaveKind::InFolder, 3, false).outcome, FileOutcome::Incomplete);
    EXPECT_EQ(FileBytes(folder / "in/a.pdf"), "another version");
}
