// Page expressions in documents of the open host, compared with what poppler and MuPDF say.
#include <algorithm>

#include <poppler-destination.h>
#include <poppler-document.h>
#include <poppler-page.h>

#include "base/Text.h"
#include "hostcalls/Documents.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/DocumentPages.h"
#include "unit/hostcalls/HostedCalls.h"
#include "unit/openhost_pdf/TestPdfs.h"
#include "unit/openhost_pdf/Tools.h"

namespace {

class PageNames : public CHostedCalls {};

std::string Corpus(const std::string& file) { return std::string(CORPUS) + "/" + file; }

/// The page from 1, or the sentence.
std::string Resolved(const CDocumentPages& pages, const std::string& expression)
{
    const ResolvedPage page = ResolvePageExpression(expression, pages);
    return page.ok ? std::to_string(page.page0 + 1) : page.error;
}

/// One sample with everything that is hard: catalogue entries behind the AcroForm, objects from 100.
std::string HardSample()
{
    std::string pdf = SamplePdf(
        12, {},
        "101 0 obj\n<</Fields[]>>\nendobj\n"
        // Labels: a branch that leads back, one that is nothing, an order of its own.
        "110 0 obj\n<</Kids[111 0 R 110 0 R 112 0 R 7]>>\nendobj\n"
        "111 0 obj\n<</Nums[0<</S/r>>2<</S/A/St 26>>4<</P(No. )/S/D/St 7>>]>>\nendobj\n"
        "112 0 obj\n<</Nums[6<</P<FEFF00DC>>>7<</S/R/St 2000000000>>9<</S/a/St 2000000000>>11 9]>>\nendobj\n"
        // Bookmarks: the last one leads back to the first, one has itself for a child.
        "120 0 obj\n<</First 121 0 R/Last 125 0 R>>\nendobj\n"
        "121 0 obj\n<</Title(Chapter 1 \\205 Intro)/Dest[1004 0 R/Fit]/First 121 0 R/Next 122 0 R>>\nendobj\n"
        "122 0 obj\n<</Title<FEFF0043003A00200078>/A<</S/GoTo/D(deep)>>/First 126 0 R/Next 123 0 R>>\nendobj\n"
        "123 0 obj\n<</Title(other file)/A<</S/GoToR/F(x.pdf)/D[3/Fit]>>/Next 124 0 R>>\nendobj\n"
        "124 0 obj\n<</Title(nowhere)/Dest[9 0 R/Fit]/Next 125 0 R>>\nendobj\n"
        "125 0 obj\n<</Title(old)/Dest/Old/Next 121 0 R>>\nendobj\n"
        "126 0 obj\n<</Title(below)/Dest[10/Fit]/Next(broken)>>\nendobj\n"
        // Destinations: limits that are wrong, a branch that leads back, a name in neither order.
        "130 0 obj\n<</Kids[131 0 R 132 0 R 130 0 R]>>\nendobj\n"
        "131 0 obj\n<</Limits[(z)(z)]/Names[(deep)<</D[1010 0 R/XYZ 1 2 3]>>(a b)[1012 0 R/Fit]]>>\nendobj\n"
        "132 0 obj\n<</Names[<FEFF00C400720067006500720>[1014 0 R/Fit](null)null(odd)]>>\nendobj\n"
        "133 0 obj\n<</Old[1016 0 R/Fit]/Other<</D[1018 0 R/Fit]>>>>\nendobj\n");
    const std::string catalogue = "/AcroForm 101 0 R";
    const std::string more = "/PageLabels 110 0 R/Outlines 120 0 R/Dests 133 0 R/Names<</Dests 130 0 R>>";
    return ReplaceAll(pdf, catalogue, more);
}

}  // namespace

TEST_F(PageNames, OfADocumentWithDamagedTrees)
{
    const std::string path = m_folder.Write("hard.pdf", HardSample());
    CHostDocument document = CHostDocument::Open(path);
    const CDocumentPages pages(document.Get());
    const std::pair<const char*, const char*> rows[] = {
        {"l:ii", "2"},
        {"l:Z", "3"},
        {"l:AA", "4"},
        {"l:No. 8", "6"},
        {"l:\xC3\x9C", "7"},
        {"l:2000000001", "9"},
        {"l:2000000000", "8"},
        {"l:12", "12"},
        {"l:13", "Keyword does not resolve to a valid page: l:13"},
        {"b:Chapter 1 \xE2\x80\x93 Intro", "3"},
        {"b:C: x", "6"},
        {"b:below", "11"},
        {"b:old", "9"},
        {"B:other file", "Keyword does not resolve to a valid page: B:other file"},
        {"b:nowhere", "Keyword does not resolve to a valid page: b:nowhere"},
        {"b:Chapter 1", "Keyword does not resolve to a valid page: b:Chapter 1"},
        {"d:deep", "6"},
        {"d:a b", "7"},
        {"d:Old", "9"},
        {"d:Other", "10"},
        {"d:odd", "Keyword does not resolve to a valid page: d:odd"},
        {"d:null", "Keyword does not resolve to a valid page: d:null"},
        {"Last", "12"},
    };
    for (const auto& [expression, expected] : rows) EXPECT_EQ(Resolved(pages, expression), expected) << expression;
    SaveDocument(document.Get(), PDSaveFull, m_folder / "saved.pdf");
    EXPECT_EQ(Resolved(CDocumentPages(document.Get()), "d:deep"), "6");
}

TEST_F(PageNames, OfRealDocumentsAreThoseOfPoppler)
{
    if (!std::filesystem::exists(CORPUS)) GTEST_SKIP() << "no corpus";
    int labels = 0, destinations = 0;
    for (const char* file : {"labels/11-pages-with-labels.pdf", "labels/GeoTopo-komprimiert.pdf",
                             "labels/PageLabelsTest.pdf", "labels/badpagelabels.pdf", "labels/bad-PageLabels.pdf",
                             "labels/page_labels.pdf", "labels/test_pagelabels.pdf", "navigation/named_dests.pdf",
                             "navigation/pdflatex-outline.pdf", "navigation/webCapture.pdf", "text/pdflatex.pdf",
                             "large/pdfreference1.2.pdf", "business/ca7_3.pdf", "restricted/pdfloverview.pdf"}) {
        SCOPED_TRACE(file);
        CHostDocument document = CHostDocument::Open(Corpus(file));
        const CDocumentPages pages(document.Get());
        const std::unique_ptr<poppler::document> other(poppler::document::load_from_file(Corpus(file)));
        ASSERT_TRUE(other);
        ASSERT_EQ(pages.PageCount(), other->pages());
        std::map<std::string, int> firstPages;
        for (int page = 0; page < other->pages(); ++page) {
            const std::unique_ptr<poppler::page> known(other->create_page(page));
            const auto label = known->label().to_utf8();
            const std::string text =
                label.empty() ? std::to_string(page + 1) : std::string(label.begin(), label.end());
            if (firstPages.try_emplace(text, page).second) {
                EXPECT_EQ(pages.PageOfLabel(text), page) << text;
                labels += label.empty() ? 0 : 1;
            }
        }
        for (const auto& [name, destination] : other->create_destination_map()) {
            if (destination.page_number() < 1 || destination.page_number() > other->pages()) continue;
            EXPECT_EQ(pages.PageOfDestination(name), destination.page_number() - 1) << name;
            ++destinations;
        }
    }
    EXPECT_GT(labels, 100);
    EXPECT_GT(destinations, 100);
}

TEST_F(PageNames, OfListsAreThoseWhoseTextSaysSo)
{
    if (!std::filesystem::exists(CORPUS) || !HaveTool("pdftotext")) GTEST_SKIP() << "no corpus, or no pdftotext";
    const struct {
        const char *file, *list;
        std::vector<std::string> words;  // in lower case; one of them
        std::vector<int> before;         // pages of items in front of the condition
    } rows[] = {
        {"text/pdflatex.pdf", "'EXAMPLE'", {"example"}, {}},
        {"text/us_constitution.pdf", "2-1, \"congress\"", {"congress"}, {1, 0}},
        {"text/us_constitution.pdf", "1L,Regex=Senator|Treaty", {"senator", "treaty"}, {-1}},
        {"labels/GeoTopo-komprimiert.pdf", "'Metrischer RAUM'", {"metrischer raum"}, {}},
        {"pages/rotated.pdf", "'no such text'", {"no such text"}, {}},
    };
    std::size_t found = 0;
    for (const auto& row : rows) {
        if (!std::filesystem::exists(Corpus(row.file))) ADD_FAILURE() << row.file;
        SCOPED_TRACE(row.list);
        CHostDocument document = CHostDocument::Open(Corpus(row.file));
        const int pageCount = PageCount(document.Get());
        std::vector<int> expected = row.before;
        for (int& page0 : expected) page0 = page0 < 0 ? pageCount + page0 : page0;
        const auto texts = Split(RunTool({"pdftotext", Corpus(row.file), "-"}).output, "\f");
        for (int page0 = 0; page0 < pageCount; ++page0) {
            const std::string text = ToLowerAscii(ReplaceAll(texts.at(static_cast<std::size_t>(page0)), "\n", " "));
            const bool says =
                std::ranges::any_of(row.words, [&](const auto& word) { return text.find(word) != text.npos; });
            if (says) expected.push_back(page0);
        }
        const auto pages = PagesOfList(document.Get(), *ParsePageList(row.list));
        ASSERT_TRUE(pages) << pages.Error();
        EXPECT_EQ(*pages, expected);
        found += expected.size();
    }
    EXPECT_GT(found, 30U);
    CHostDocument document = CHostDocument::Open(Corpus("text/us_constitution.pdf"));
    EXPECT_FALSE(PagesOfList(document.Get(), *ParsePageList("Regex=(?:\\w+[ ,.;]*)+[#~]")));
}

TEST_F(PageNames, OfBookmarksAreThoseOfMuPdf)
{
    if (!std::filesystem::exists(CORPUS) || !HaveTool("mutool")) GTEST_SKIP() << "no corpus, or no mutool";
    int bookmarks = 0;
    for (const char* file :
         {"labels/GeoTopo-komprimiert.pdf", "labels/toc_viewmodes.pdf", "navigation/nested_outline.pdf",
          "navigation/outlines-with-actions.pdf", "navigation/pdflatex-outline.pdf",
          "navigation/bookmarks-with-accented-characters.pdf", "large/pdfreference1.2.pdf"}) {
        SCOPED_TRACE(file);
        CHostDocument document = CHostDocument::Open(Corpus(file));
        const CDocumentPages pages(document.Get());
        std::map<std::string, std::optional<int>> firstPages;
        for (const std::string& line : Split(RunTool({"mutool", "show", Corpus(file), "outline"}).output, "\n")) {
            const auto start = line.find('"'), end = line.rfind("\"\t"), page = line.rfind("#page=");
            if (start == std::string::npos || end == std::string::npos || end <= start) continue;
            const std::string title = line.substr(start + 1, end - start - 1);
            if (title.find('\\') != std::string::npos) continue;  // the tool's own escapes
            firstPages.try_emplace(
                title, page == std::string::npos ? std::nullopt : std::optional(ParseDecimal(line.substr(page + 6))));
        }
        for (const auto& [title, page] : firstPages) {
            if (!page) continue;
            EXPECT_EQ(pages.PageOfBookmark(title), *page - 1) << title;
            ++bookmarks;
        }
    }
    EXPECT_GT(bookmarks, 100);
    for (const char* file : {"navigation/outlines-with-loop.pdf", "navigation/toc_circular.pdf"}) {
        CHostDocument document = CHostDocument::Open(Corpus(file));
        EXPECT_EQ(CDocumentPages(document.Get()).PageOfBookmark("not there"), std::nullopt) << file;
    }
}
