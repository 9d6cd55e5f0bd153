#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "TestPdfs.h"

using namespace openhost;

namespace {

std::string CorpusFolder()
{
    const char* named = std::getenv("FERRULE_CORPUS");
    return named && *named ? named : FERRULE_CORPUS_DIR;
}

std::vector<std::string> Columns(const std::string& line)
{
    std::vector<std::string> columns;
    std::istringstream stream(line);
    for (std::string column; std::getline(stream, column, '\t');) columns.push_back(column);
    return columns;
}

/// A column of the manifest that holds a JSON string; nothing when it is blank or "(empty)".
std::string Unquoted(const std::string& text)
{
    if (text.size() < 2 || text.front() != '"') return {};
    std::string result;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == '\\') ++i;
        result += text[i];
    }
    return result;
}

/// What ends this process instead of failing; such files are for a process of their own.
const std::map<std::string, const char*> kKillers = {
    {"damaged/GHOSTSCRIPT-691770-0.pdf", "the library does not come back"},
    {"damaged/xref-compressed-in-compressed.pdf", "the library overflows the stack"}};

using ManifestRow = std::map<std::string, std::string>;

/// The documents of the manifest, without those that kill.
std::vector<ManifestRow> Manifest()
{
    std::ifstream file(CorpusFolder() + "/MANIFEST.tsv");
    std::string line;
    std::getline(file, line);
    const auto names = Columns(line);
    std::vector<ManifestRow> rows;
    while (std::getline(file, line)) {
        ManifestRow row;
        const auto columns = Columns(line);
        for (std::size_t i = 0; i < columns.size() && i < names.size(); ++i) row[names[i]] = columns[i];
        const bool document = row["path"] != "-" && row["theme"] != "nonpdf";
        if (document && !kKillers.contains(row["path"])) rows.push_back(row);
    }
    return rows;
}

class Corpus : public testing::Test {
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(CorpusFolder() + "/MANIFEST.tsv")) GTEST_SKIP() << "no corpus here";
    }
};

}  // namespace

TEST_F(Corpus, FilesEndAsTheManifestLetsExpect)
{
    // Damaged beyond repair, although another reader counts a page: its encryption or its only page is not there.
    const std::map<std::string, PdfProblem> known = {
        {"damaged/PDFBOX-4352-0.pdf", PdfProblem::Damaged},
        {"damaged/T02-03_006_page-object-missing.pdf", PdfProblem::NoPages}};
    // Other readers show no page of these.
    const std::map<std::string, int> onlyHere = {{"damaged/T02-01_001_document-catalog-No-document-catalog.pdf", 1},
                                                 {"damaged/broken-objstream1.pdf", 1},
                                                 {"damaged/poppler-67295-0.pdf", 1},
                                                 {"odd/page_tree_empty_node.pdf", 2}};
    // Here the number that the file claims is wrong.
    const std::map<std::string, int> pages = {{"damaged/T02-02_007_page-tree-wrong-count.pdf", 1},
                                              {"damaged/circular-page-tree.pdf", 1}};
    int opened = 0;
    for (ManifestRow& row : Manifest()) {
        const std::string path = row["path"], expected = row["expected"];
        std::optional<int> found;
        const auto problem = ProblemOf([&] { found = CPdfDocument::Open(CorpusFolder() + '/' + path).PageCount(); });
        if (expected == "needs password") {
            const bool foreign = row["encryption"] == "public key";
            EXPECT_EQ(problem, foreign ? PdfProblem::UnsupportedSecurity : PdfProblem::NeedsPassword) << path;
        } else if (onlyHere.contains(path)) {
            EXPECT_EQ(found, onlyHere.at(path)) << path;
        } else if (expected == "not a usable PDF") {
            EXPECT_TRUE(problem) << path;
        } else if (known.contains(path)) {
            EXPECT_EQ(problem, known.at(path)) << path;
        } else {
            EXPECT_EQ(problem, std::nullopt) << path;
            EXPECT_EQ(found, pages.contains(path) ? pages.at(path) : std::stoi(row["pages"])) << path;
            ++opened;
        }
    }
    EXPECT_GT(opened, 150);
}

TEST_F(Corpus, EveryKnownPasswordOpensItsFileOrRaisesItToOwnerRights)
{
    int tried = 0, raised = 0;
    for (ManifestRow& row : Manifest()) {
        const std::string path = CorpusFolder() + '/' + row["path"];
        for (const char* column : {"user_password", "owner_password"}) {
            const std::string password = Unquoted(row[column]);
            if (password.empty() || row["expected"] != "needs password") continue;
            ++tried;
            EXPECT_EQ(ProblemOf([&] {
                          CPdfDocument document =
                              CPdfDocument::Open(path, WithPassword(password, WantedRights::Owner));
                          EXPECT_EQ(document.PageCount(), std::stoi(row["pages"])) << path;
                          const bool owner = column[0] == 'o' || row["owner_password"] == row["user_password"];
                          EXPECT_TRUE(!owner || document.OpenedBy() == OpenedWith::Owner) << path << ' ' << password;
                      }),
                      std::nullopt)
                << path << ' ' << password;
        }
        if (row["theme"] != "restricted" || Unquoted(row["owner_password"]).empty()) continue;
        ++raised;
        CPdfDocument document = CPdfDocument::Open(path);
        EXPECT_FALSE(document.Allows(PdfRight::ChangeSecurity)) << path;
        EXPECT_TRUE(document.Authorize(Unquoted(row["owner_password"]), WantedRights::Owner)) << path;
        EXPECT_TRUE(document.Allows(PdfRight::ChangeSecurity)) << path;
    }
    EXPECT_GT(tried, 35);
    EXPECT_GT(raised, 4);
    const auto typed = WithPassword("S\u00aaSL\u00adprep");
    EXPECT_EQ(CPdfDocument::Open(CorpusFolder() + "/encrypted/saslprep-r6.pdf", typed).PageCount(), 1);
}
