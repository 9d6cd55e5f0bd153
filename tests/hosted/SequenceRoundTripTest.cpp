// Sequences in both forms through the real host: what the XML says survives the host's own form.
#include <gtest/gtest.h>

#include <filesystem>

#include "common/SettingsRecord.h"
#include "engine/WorkflowToCab.h"
#include "engine/WorkflowXml.h"
#include "hostcalls/CabFile.h"
#include "hostcalls/CabRecord.h"
#include "hostcalls/HostTables.h"
#include "openhost/program/OpenHost.h"
#include "support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

TEST(SequenceForms, EveryRealSequenceIsTheSameAfterBeingWrittenInTheHostsForm)
{
    if (!fs::is_directory(FERRULE_SEQUENCES)) GTEST_SKIP() << "the folder of real sequences is not here";
    openhost::COpenHost host({});
    host.StartUp();
    ASSERT_TRUE(HostTables().Import(host.Tables().Get(openhost::Table::Core)));
    const CTemporaryFolder folder;
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(FERRULE_SEQUENCES)) {
        if (entry.path().extension() != ".sequ") continue;
        const auto workflow = ReadWorkflowFile(entry.path().string());
        if (entry.path().filename() == "not-a-workflow-root.sequ") {
            EXPECT_FALSE(workflow) << "the impostor was taken for a sequence";
            continue;
        }
        ASSERT_TRUE(workflow) << entry.path() << ": " << workflow.Error();
        const CCab made = CabFromWorkflow(*workflow);
        const std::string file = folder / "host form.sequ";
        ASSERT_TRUE(WriteCabFile(file, made.View())) << entry.path();
        const auto read = ReadCabFile(file);
        ASSERT_TRUE(read) << entry.path() << ": " << read.Error();
        EXPECT_TRUE(RecordFromCab(read->View()) == RecordFromCab(made.View())) << entry.path();
        EXPECT_FALSE(ReadCabFile(entry.path())) << "XML was taken for the host's own form";
        ++compared;
    }
    EXPECT_GE(compared, 19);
}

}  // namespace
