// The typed calls over the real open host: values, files, documents and views.
#pragma once

#include <sstream>

#include <gtest/gtest.h>

#include "hostcalls/HostTables.h"
#include "openhost/app/Slots.h"
#include "openhost/core/Memory.h"
#include "openhost/documents/Documents.h"
#include "openhost/documents/Slots.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/files/Slots.h"
#include "openhost/files/Streams.h"
#include "openhost/values/Cabinet.h"
#include "openhost/values/Slots.h"
#include "openhost/values/Text.h"
#include "support/TemporaryFolder.h"

/// A host with its tables imported and a folder for files. At the end of each test nothing may be open or left.
class CHostedCalls : public testing::Test {
protected:
    CHostedCalls()
    {
        auto& offered = openhost::Part<openhost::CTables>();
        openhost::OfferCoreSlots(offered);
        openhost::OfferValuesSlots(offered);
        openhost::OfferFilesSlots(offered);
        openhost::OfferDocumentsSlots(offered);
        openhost::OfferAppSlots(offered);
        EXPECT_TRUE(HostTables().Import(offered.Get(openhost::Table::Core)));
    }
    ~CHostedCalls() override
    {
        EXPECT_EQ(Leftovers(), "");
        HostTables() = CHostTables{};
    }

    /// What is open or not given back, in words; empty when nothing is.
    static std::string Leftovers()
    {
        const std::pair<const char*, std::size_t> counts[] = {
            {"documents", openhost::Part<openhost::CDocuments>().Live()},
            {"cabs", openhost::LiveCabs()},
            {"texts", openhost::LiveTexts()},
            {"paths", openhost::LivePaths()},
            {"files", openhost::LiveFiles()},
            {"streams", openhost::LiveStreams()},
            {"blocks", openhost::LiveSharedBlocks()},
            {"frames", openhost::Part<openhost::CFrames>().Depth()},
        };
        std::ostringstream text;
        for (const auto& [what, count] : counts)
            if (count != 0) text << count << ' ' << what << "; ";
        return text.str();
    }

private:
    openhost::CHost m_host;

protected:
    CTemporaryFolder m_folder;
};
