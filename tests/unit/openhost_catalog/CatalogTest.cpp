// Which texts of all scripts are found, and what the slots of the catalog answer.
#include <algorithm>

#include <gtest/gtest.h>

#include "openhost/catalog/Catalog.h"
#include "openhost/catalog/Query.h"
#include "openhost/catalog/Slots.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

TEST(IndexTexts, AreFoundWhateverTheirScriptAndForm)
{
    const struct {
        const char* page;
        std::vector<const char*> found, notFound;
    } rows[] = {
        {"Müller STRASSE naïve", {"muller", "straße", "NAÏVE", "Mu*"}, {"mull", "ller"}},
        {"ﬁle ＦＵＬＬ co\u00ADoperate x²", {"file", "full", "cooperate", "x2"}, {"co"}},
        {"e\u0301te\u0301 Ελλάδα Й", {"été", "ete", "ελλαδα", "и"}, {}},
        {"人人生而自由，在尊严", {"自由", "\"而自由\"", "自*", "生而"}, {"由在尊x", "而由"}},
        {"すべての人間は カタカナ ｶﾅ", {"人間", "べての", "カナ"}, {"間人"}},
        {"ประเทศไทย", {"ประเทศ", "ไทย"}, {"ทยไ"}},
        {"한국어 문서", {"한국어", "한국*", "\"한국어 문서\""}, {"국어"}},
        {"العَرَبِيَّة שָׁלוֹם", {"العربية", "שלום"}, {"عرب"}},
        {"it's 3,14 a_b", {"it's", "\"3.14\"", "a_b", "14"}, {"its"}},
    };
    const CTemporaryFolder folder;
    const std::string path = folder.Write("index", "");
    std::vector<std::string> pages;
    for (const auto& row : rows) pages.emplace_back(row.page);
    CIndexWriter writer(path);
    writer.Add({.path = "a.pdf"}, pages);
    writer.Finish();
    CIndexReader index(path);
    const auto finds = [&](const char* query, int page) {
        const auto parsed = CIndexQuery::Parse(query);
        if (!parsed) return false;
        const auto keys = parsed->Run(index, true);
        return std::count(keys.begin(), keys.end(), KeyOf(1, page)) == 1;
    };
    int page = 0;
    for (const auto& row : rows) {
        ++page;
        for (const char* query : row.found) EXPECT_TRUE(finds(query, page)) << row.page << ": " << query;
        for (const char* query : row.notFound) EXPECT_FALSE(finds(query, page)) << row.page << ": " << query;
    }
}

using CatalogTable = CHostFixture;

TEST_F(CatalogTable, AnswersInTheHostsStatusCodes)
{
    OfferCatalogSlots(Part<CTables>());
    const CTemporaryFolder folder;
    folder.Write("a.pdf", SamplePdf(1));
    std::string path = folder / "all.pdx", foreign = folder.Write("foreign.pdx", "%PDX");
    ASSERT_EQ(Part<CCatalog>().Create(path, {.folders = {folder.Path()}}).status, IndexLoadDone);
    EXPECT_EQ(HOST(Catalog, CatalogBuildIndex, path.data()), IndexBuildDone);
    EXPECT_EQ(HOST(Catalog, CatalogLoadIndex, path.data()), IndexLoadDone);
    EXPECT_EQ(HOST(Catalog, CatalogPurgeIndex, path.data()), IndexPurgeDone);
    EXPECT_EQ(HOST(Catalog, CatalogGiveStatus), CatalogIdle);
    for (char* const wrong : {static_cast<char*>(nullptr), foreign.data()}) {
        EXPECT_EQ(HOST(Catalog, CatalogBuildIndex, wrong), IndexInvalid);
        EXPECT_EQ(HOST(Catalog, CatalogLoadIndex, wrong), IndexInvalid);
        EXPECT_EQ(HOST(Catalog, CatalogPurgeIndex, wrong), IndexInvalid);
    }
    EXPECT_NE(SaidAll().find("ferrule index create"), std::string::npos) << SaidAll();
}

}  // namespace
