#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/PageList.h"
#include "common/PageRange.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Ten pages.
class CTenPages final : public CPageReferences {
public:
    int PageCount() const override { return 10; }
    std::optional<int> PageOfBookmark(const std::string& title) const override
    {
        return title == "Intro: \xC3\x9C" ? std::optional(3) : std::nullopt;
    }
    std::optional<int> PageOfDestination(const std::string& name) const override
    {
        return name == "gone" ? std::optional(10) : std::nullopt;
    }
    std::optional<int> PageOfLabel(const std::string& label) const override
    {
        return label == "A-1" ? std::optional(7) : std::nullopt;
    }
};

}  // namespace

TEST(Pages, AnExpressionNamesAPageOrSaysWhyNot)
{
    const struct {
        const char* expression;
        int page0;
        const char* error;
    } rows[] = {
        {"1", 0, ""},
        {"-1", 9, ""},
        {"-10", 0, ""},
        {"LaSt", 9, ""},
        {"B:Intro: \xC3\x9C", 3, ""},
        {"l:A-1", 7, ""},
        {"-11", 0, "Page number resolves to a negative page index: -1."},
        {"12", 9, "Page number 11 is greater than a total number of pages (10)."},
        {"99999999999", 9, "Page number 2147483646 is greater than a total number of pages (10)."},
        {"0", 0, "Invalid page number. Page numbering start with 1."},
        {"5a", 0, "Invalid page number specified."},
        {"1\n2", 0, "Invalid page number specified."},
        {"b: Intro", 0, "Keyword does not resolve to a valid page: b: Intro"},
        {"x:1", 0, "Unrecognized page reference keyword: x:1"},
        {"l:a-1", 0, "Keyword does not resolve to a valid page: l:a-1"},
        {"d:gone", 0, "Keyword does not resolve to a valid page: d:gone"},
        {"lastly", 0, "Keyword does not resolve to a valid page: lastly"},
    };
    for (const auto& row : rows) {
        const ResolvedPage page = ResolvePageExpression(row.expression, CTenPages());
        EXPECT_EQ(page.page0, row.page0) << row.expression;
        EXPECT_EQ(page.error, row.error) << row.expression;
        EXPECT_EQ(page.ok, *row.error == 0) << row.expression;
    }
    EXPECT_FALSE(ResolvePageExpression("", CTenPages()).ok);
}

TEST(Pages, ARangeIsStoredDescribedAndApplied)
{
    const struct {
        PageRange range;
        const char* line;
        std::vector<int> pages;
    } rows[] = {
        {{.firstPage0 = 4, .subset = 2}, "Process All Pages (Even Pages Only)", {1, 3, 5, 7, 9}},
        {{.selection = 1}, "Process Only Current Page", {2}},
        {{.firstPage0 = 7, .selection = 2}, "Process Pages: 8 to Last Page", {7, 8, 9}},
        {{.firstPage0 = 8, .lastPage0 = 99, .selection = 2, .subset = 1},
         "Process Pages: 9 to 100 (Odd Pages Only)",
         {8}},
        {{.firstPage0 = 12, .selection = 2}, "Process Pages: 13 to Last Page", {}},
        {{.selection = 2, .firstExpression = "l:A-1"}, "Process Pages: l:A-1 to Last Page", {7, 8, 9}},
        {{.selection = 2, .lastExpression = "-9"}, "Process Pages: 1 to -9", {0, 1}},
        {{.selection = 7, .firstExpression = "x"}, "Process All Pages", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
    };
    for (const auto& row : rows) {
        CSettingsRecord record;
        row.range.Write(record);
        const PageRange range = PageRange::Read(record);
        EXPECT_EQ(range.Describe(), row.line);
        const auto pages = range.Pages(CTenPages(), 2);
        ASSERT_TRUE(pages) << row.line;
        EXPECT_EQ(*pages, row.pages) << row.line;
    }
    EXPECT_EQ(PageRange::Read({}).Describe(), "Process All Pages");
    EXPECT_THAT((PageRange{.firstPage0 = 3, .lastPage0 = 2, .selection = 2}.Pages(CTenPages()).Error()),
                HasSubstr("is greater than ending"));
    EXPECT_THAT((PageRange{.selection = 2, .firstExpression = "0"}.Pages(CTenPages()).Error()),
                HasSubstr("Invalid page"));
}

TEST(Pages, AListHasNumbersAndConditions)
{
    const struct {
        const char* item;
        std::vector<int> pages;
    } rows[] = {
        {"3", {2}},
        {"10-3", {9, 8, 7, 6, 5, 4, 3, 2}},
        {" 2 - 8 e ", {1, 3, 5, 7}},
        {"1-4D", {0, 2}},
        {"1-2L", {9, 8}},
        {"9-12", {8, 9}},
        {"1-2147483647", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {"99L", {}},
    };
    for (const auto& row : rows) {
        const auto element = ParsePageListItem(row.item);
        ASSERT_TRUE(element) << row.item << element.Error();
        EXPECT_EQ(PagesOfElement(*element, 10), row.pages) << row.item;
    }
    EXPECT_EQ(ParsePageListItem("10-3")->start0, 2);
    EXPECT_EQ(ParsePageListItem("10-3")->flags, 7U);

    const auto list = ParsePageList("1-3, \"a,b.\",'x',Regex=^c,\\d{1,2}");
    ASSERT_TRUE(list) << list.Error();
    ASSERT_EQ(list->size(), 4U);
    EXPECT_EQ((*list)[1].condition->Pattern(), "a,b\\.");
    EXPECT_EQ((*list)[3].condition->Pattern(), "^c,\\d{1,2}");
    EXPECT_TRUE(*(*list)[1].condition->IsSatisfiedBy(CSearchedText(u"xA,B.")));

    const struct {
        const char* list;
        const char* where;
        const char* why;
    } wrong[] = {
        {"", "item number 1 ().", "Empty page range description string."},
        {"1,", "item number 2 ().", "Empty page range"},
        {"1, 2x", "item number 2 (2x).", "Invalid character encountered in the page range description."},
        {"10-", "item number 1 (10-).", "Invalid page number specified."},
        {"-5", "item number 1 (-5).", "Invalid page number specified."},
        {"99999999999", "item number 1", "Invalid page number specified."},
        {"0-4", "item number 1", "Page numbering start with 1."},
        {"Regex=", "item number 1", "no text to look for"},
        {"1,Regex=a(,2", "item number 2 (Regex=a(,2).", "missing closing parenthesis"},
        {"\"abc, 5", "item number 1", "Invalid character"},
    };
    for (const auto& row : wrong) {
        const auto refused = ParsePageList(row.list);
        ASSERT_FALSE(refused) << row.list;
        EXPECT_THAT(refused.Error(), testing::AllOf(HasSubstr(row.where), HasSubstr(row.why))) << row.list;
    }
}

TEST(Pages, TypedNumbersAreChecked)
{
    const struct {
        int first, last;
        const char* problem;
    } rows[] = {
        {0, 5, "Starting page number is less"},
        {1, 0, "Ending page number is less"},
        {3, 2, "Starting page number is greater"},
        {11, 11, "Page number (11) is greater than number of pages in the current document (10)."},
        {1, 11, "Ending page number (11) is greater than number of pages in the document (10)."},
    };
    for (const auto& row : rows)
        EXPECT_THAT(PageNumbersProblem(row.first, row.last, 10), testing::StartsWith(row.problem));
    EXPECT_EQ(PageNumbersProblem(10, 10, 10) + PageNumbersProblem(3, 99, std::nullopt), "");
}
