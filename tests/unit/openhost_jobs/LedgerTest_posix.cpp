#include <gtest/gtest.h>

#include <filesystem>

#include "openhost/jobs/Ledger.h"
#include "support/TemporaryFolder.h"

using namespace openhost;

TEST(LedgerOfLinks, TheInputIsTheFileThatTheLinkLedTo)
{
    struct CRecordingSource final : CJobSource {
        bool WantsRecords() const override { return true; }
    } source;
    const CTemporaryFolder folder;
    CLedger ledger(source, [] { return std::uint64_t{0}; });
    const std::string in = folder.Write("in", "new content"), part = folder.Write(".t", "newer");
    std::filesystem::create_symlink(in, folder / "link");
    ledger.Ask(COverseer::Act::Put, part, in);
    std::filesystem::rename(part, in);
    EXPECT_EQ(ledger.FileDone(folder / "link", FileOutcome::Saved, "").size, 11u);
}
