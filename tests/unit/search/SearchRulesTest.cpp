#include <gtest/gtest.h>

#include "common/SettingsFile.h"
#include "search/SearchRules.h"
#include "search/SearchTerms.h"
#include "support/TemporaryFolder.h"

namespace {

SearchRule FullRule()
{
    SearchRule rule;
    rule.matchCase = rule.wholeWords = rule.countLineEnds = rule.useArea = rule.executeCode = rule.stopOnMatch =
        rule.copyFile = true;
    rule.useExpression = false;
    rule.pages.selection = 2;
    rule.pages.firstExpression = "b:Chapter 1";
    rule.expression =
        "Stra\xC3\x9F"
        "e\t\xE6\x97\xA5";
    rule.format = "\\1";
    rule.userData = -7;
    rule.description = "streets";
    rule.fontFilter = CSettingsRecord::Value(std::string("Courier"));
    rule.area = {1, 2.5, 3, 4};
    rule.actionCode = "one();\vtwo();";
    rule.copyFolder = "/copies";
    rule.suffix = "_B";
    rule.prefix = "A_";
    rule.customFields.emplace().PutInt("x", 1);
    return rule;
}

class SearchFiles : public testing::Test {
protected:
    CTemporaryFolder m_folder;
};

}  // namespace

TEST(SearchRule, HasItsDefaultsAndComesBackAsItWasWritten)
{
    const SearchRule plain = SearchRule::Read({});
    EXPECT_TRUE(plain.useExpression);
    EXPECT_EQ(plain, SearchRule());
    EXPECT_FALSE(SearchRule().Write().Known("CustomFields"));
    const CSettingsRecord written = FullRule().Write();
    EXPECT_EQ(written.String("ActionCode"), "one(); two();");
    EXPECT_EQ(SearchRule::Read(written).Write(), written);
    EXPECT_EQ(written.Record("CustomFields")->Int("x", 0), 1);
    EXPECT_EQ(written.Entries().size(), 20u);
    CSettingsRecord wide;
    wide.PutWide("RegExp", "\xC3\x9F");
    EXPECT_EQ(SearchRule::Read(wide).expression, "\xC3\x9F");
}

TEST(SearchSettings, SayWhichRuleIsMissingOrUseless)
{
    CSettingsRecord record = SearchSettings{.rules = {FullRule(), FullRule()}}.Write();
    record.PutInt("NumItems", 3);
    EXPECT_NE(SearchSettings::Read(record).Error().find("number 3 is missing"), std::string::npos);
    EXPECT_TRUE(SearchSettings::Read({})->createReport);

    SearchRule bad = FullRule();
    bad.useExpression = true;
    bad.expression = "(";
    bad.copyFolder.clear();
    const auto review = Review({.rules = {FullRule(), bad, SearchRule()}, .reportFile = "x.CSV"});
    ASSERT_EQ(review.mistakes.size(), 3u);
    EXPECT_TRUE(review.mistakes[0].starts_with("Rule 2: Invalid search expression specified."));
    EXPECT_TRUE(review.mistakes[1].starts_with("Rule 3: there is nothing"));
    EXPECT_NE(review.mistakes[2].find("x.CSV"), std::string::npos);
    EXPECT_EQ(review.remarks.size(), 2u);  // no folder; a report for each document
}

TEST_F(SearchFiles, KeepThousandsOfRulesAndAreRefusedWhenDamagedOrForeign)
{
    const SearchSettings many{.rules = std::vector<SearchRule>(3000, FullRule()), .reportFile = "/r.txt"};
    const std::string path = m_folder / "many.pdfsearch";
    ASSERT_EQ(WriteSearchSettings(path, many), "");
    const auto read = ReadSearchSettings(path);
    ASSERT_TRUE(read) << read.Error();
    EXPECT_EQ(read->Write(), many.Write());

    const std::string bytes = FileBytes(path);
    CSettingsRecord others;
    others.PutString("OutputFolder", "x");
    for (const std::string& file :
         {m_folder / "missing", m_folder.Write("cut.pdfsearch", bytes.substr(0, bytes.size() / 2)),
          m_folder.Write("pdf.pdfsearch", "%PDF-1.4"), m_folder.Write("other.pdfsearch", FormatSettings(others))}) {
        const auto refused = ReadSearchSettings(file);
        ASSERT_FALSE(refused) << file;
        EXPECT_TRUE(refused.Error().starts_with(file + ": An error occured while trying to read")) << refused.Error();
    }
    EXPECT_NE(WriteSearchSettings(m_folder / "no" + "/folder", many).find("Error saving file to disk."),
              std::string::npos);
}

TEST_F(SearchFiles, OfTermsGoOutAndIn)
{
    SearchRule odd;
    odd.expression = "a,\"b\"\tc";
    odd.description = "two\nlines";
    const std::vector<SearchRule> rules{odd, FullRule()};
    const std::string tabs = m_folder / "terms.txt", commas = m_folder / "terms.CSV";
    ASSERT_EQ(ExportSearchTerms(tabs, rules), "");
    EXPECT_EQ(FileBytes(tabs),
              "\xEF\xBB\xBF"
              "Ferrule Search Terms:\r\na,\"b\"\\tc\ttwo lines\t%t\r\n"
              "Stra\xC3\x9F"
              "e \xE6\x97\xA5\tstreets\t%t\r\n");
    ASSERT_EQ(ExportSearchTerms(commas, rules), "");
    for (const std::string& path : {tabs, commas}) {
        const auto back = ImportSearchTerms(path);
        ASSERT_TRUE(back) << back.Error();
        ASSERT_EQ(back->size(), 2u) << path;
        EXPECT_EQ((*back)[0].description, path == tabs ? "two lines" : odd.description);
        EXPECT_EQ((*back)[0].expression, path == tabs ? "a,\"b\"\\tc" : odd.expression);
    }
    EXPECT_EQ(ExportSearchTerms(tabs, {}), "There are no search items to save. Please add at least one search item.");

    const struct {
        const char* name;
        std::string bytes;
        std::vector<std::string> expressions;
    } rows[] = {
        {"u16.txt",
         std::string("\xFF\xFE"
                     "a\0\t\0b\0\r\0\n\0\n\0c\0",
                     16),
         {"a", "c"}},
        {"more.csv", "\"x\"\"y\",d,e,f\r\n\r\n,only\r\nFerrule Search Terms:", {"x\"y", "Ferrule Search Terms:"}},
        {"quote.txt", "\"one\ttwo", {"\"one"}},
        {"empty.csv", "", {}}};
    for (const auto& row : rows) {
        const auto read = ImportSearchTerms(m_folder.Write(row.name, row.bytes));
        ASSERT_TRUE(read) << row.name << read.Error();
        std::vector<std::string> expressions;
        for (const SearchRule& rule : *read) expressions.push_back(rule.expression);
        EXPECT_EQ(expressions, row.expressions) << row.name;
    }
    EXPECT_NE(ImportSearchTerms(m_folder.Write("open.csv", "a\n\"b")).Error().find("Line 2"), std::string::npos);
    EXPECT_NE(ImportSearchTerms(m_folder / "none").Error().find("Cannot open input file."), std::string::npos);
}
