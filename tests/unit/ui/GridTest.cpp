#include <gtest/gtest.h>

#include "ui/GridSearch.h"

namespace {

using Texts = std::vector<std::string>;

/// Three rows of a name, which is fixed, and two columns to edit.
class GridTest : public testing::Test {
protected:
    GridTest()
    {
        m_model.AddRow({"b.pdf", "Two", "10"});
        m_model.AddRow({"a.pdf", "one", "9"});
        m_model.AddRow({"c.pdf", "", "x"});
        m_rows.Refresh();
    }
    Texts Column(std::size_t column) const
    {
        Texts texts;
        for (std::size_t place = 0; place < m_rows.Size(); ++place) texts.push_back(m_rows.Text(place, column));
        return texts;
    }

    CGridModel m_model{{{"File"}, {"Title", true}, {"Number", true}}};
    CGridRows m_rows{m_model};
};

TEST_F(GridTest, EveryStepComesBackAndChangedCellsKnowTheirOriginals)
{
    EXPECT_EQ(m_model.Change({{{0, 0}, "no"}, {{9, 1}, "no"}, {{0, 1}, "Two"}}), 0u)
        << "read-only, missing, the same";
    EXPECT_FALSE(m_model.CanUndo());
    EXPECT_EQ(m_model.Change({{{0, 1}, "x"}, {{2, 1}, "y"}, {{0, 1}, "z"}}), 3u);
    EXPECT_EQ(m_model.Original({0, 1}), "Two");
    EXPECT_EQ(m_model.ChangedRows(), (std::vector<std::size_t>{0, 2}));
    EXPECT_TRUE(m_rows.Edit(0, 1, "Two"));
    EXPECT_FALSE(m_model.IsChanged({0, 1})) << "as it was is not changed";
    m_model.AddColumn({"More", true}, {"p"});
    EXPECT_EQ(m_model.Cell({1, 3}), "");
    EXPECT_EQ(m_model.Undo().size(), 1u);
    EXPECT_EQ(m_model.Cell({0, 1}), "z");
    EXPECT_EQ(m_model.Undo().size(), 3u);
    EXPECT_EQ(Column(1), (Texts{"Two", "one", ""}));
    EXPECT_EQ(m_model.ChangedCells(), 0u);
    EXPECT_TRUE(m_rows.Redo());
    EXPECT_EQ(Column(1), (Texts{"z", "one", "y"}));
    m_model.Accept(0);
    EXPECT_EQ(m_model.ChangedRows(), (std::vector<std::size_t>{2}));
    EXPECT_TRUE(m_rows.Undo());
    EXPECT_EQ(m_model.Original({0, 1}), "z") << "what was written is the original now";
    EXPECT_EQ(m_model.ChangedRows(), (std::vector<std::size_t>{0}));
    EXPECT_TRUE(m_rows.Edit(1, 2, "new"));
    EXPECT_FALSE(m_model.CanRedo());
}

TEST_F(GridTest, RowsInAnyOrder)
{
    for (const char* number : {"2.5", "-3", "", "10", "Y"}) m_model.AddRow({"", "", number});
    const struct {
        std::size_t column;
        SortOrder order;
        Texts numbers;
    } rows[] = {
        {2, SortOrder::Ascending, {"-3", "2.5", "9", "10", "10", "x", "Y", ""}},
        {2, SortOrder::Descending, {"Y", "x", "10", "10", "9", "2.5", "-3", ""}},
        {2, SortOrder::Original, {"10", "9", "x", "2.5", "-3", "", "10", "Y"}},
        {1, SortOrder::Ascending, {"9", "10", "x", "2.5", "-3", "", "10", "Y"}},
    };
    for (const auto& row : rows) {
        m_rows.SortBy(row.column, row.order);
        EXPECT_EQ(Column(2), row.numbers) << row.column << ' ' << static_cast<int>(row.order);
    }
    m_rows.SortBy(2, SortOrder::Ascending);
    EXPECT_EQ(m_rows.Row(3), 0u) << "equal rows keep their order";
    m_rows.MoveTo({3, 2});
    EXPECT_TRUE(m_rows.Edit(3, 2, "-100"));
    EXPECT_EQ(m_rows.Text(3, 2), "-100") << "rows do not run away while somebody works";
    m_rows.Refresh();
    EXPECT_EQ(m_rows.Cursor(), (GridCell{0, 2})) << "the cursor stays with its row";
}

TEST_F(GridTest, RowsThatPassTheFilter)
{
    EXPECT_TRUE(m_rows.Edit(2, 1, "ÄRA"));
    const struct {
        GridFilter filter;
        Texts files;
    } rows[] = {{{}, {"b.pdf", "a.pdf", "c.pdf"}},
                {{.text = "O"}, {"b.pdf", "a.pdf"}},
                {{.text = "ära"}, {"c.pdf"}},
                {{.text = "9", .column = 1}, {}},
                {{.text = "pdf", .column = 0, .changedOnly = true}, {"c.pdf"}}};
    for (const auto& row : rows) {
        m_rows.Filter(row.filter);
        EXPECT_EQ(Column(0), row.files) << row.filter.text;
    }
    m_rows.Filter({.text = "none"});
    EXPECT_EQ(m_rows.Copy(), "");
    EXPECT_EQ(m_rows.Paste("x").changed + m_rows.Clear(), 0u);
    EXPECT_EQ(m_rows.Selection().size(), 0u);
}

TEST_F(GridTest, BlocksGoOutAndIn)
{
    m_rows.SortBy(0, SortOrder::Ascending);
    EXPECT_TRUE(m_rows.Edit(0, 1, "two\nlines"));
    m_rows.Select({{1, 2, 0, 1}});
    EXPECT_EQ(m_rows.Copy(), "\"two\nlines\"\t9\r\nTwo\t10");
    m_rows.Select({{0, 0, 0, 0}, {1, 1, 1, 1}});
    EXPECT_EQ(m_rows.Copy(), "a.pdf\t\r\n\tTwo");
    EXPECT_EQ(m_rows.SelectedRows(), (std::vector<std::size_t>{1, 0}));
    const struct {
        std::vector<GridBlock> selection;
        const char* text;
        std::size_t changed, refused;
        Texts titles, numbers;
    } rows[] = {
        {{{0, 1, 0, 1}}, "p\tq\r\n\"r\n\"\"s\"\t10\r\n", 3, 0, {"p", "r\n\"s", ""}, {"q", "10", "x"}},
        {{{1, 0, 1, 0}}, "f\tt\tn\tz\r\nf\r\nf\r\n", 2, 4, {"two\nlines", "t", ""}, {"9", "n", "x"}},
        {{{0, 0, 2, 1}}, "all", 3, 3, {"all", "all", "all"}, {"9", "10", "x"}},
        {{{2, 1, 2, 1}}, "a \"quote\tx", 1, 0, {"two\nlines", "Two", "a \"quote"}, {"9", "10", "x"}},
        {{{2, 1, 2, 1}}, "\"open\tx", 1, 0, {"two\nlines", "Two", "\"open"}, {"9", "10", "x"}},
    };
    for (const auto& row : rows) {
        m_rows.Select(row.selection);
        const PasteResult result = m_rows.Paste(row.text);
        EXPECT_EQ(result.changed, row.changed) << row.text;
        EXPECT_EQ(result.refused, row.refused) << row.text;
        EXPECT_EQ(Column(1), row.titles) << row.text;
        EXPECT_EQ(Column(2), row.numbers) << row.text;
        EXPECT_TRUE(m_rows.Undo());
    }
    m_rows.Select({{0, 0, 2, 2}});
    EXPECT_EQ(m_rows.Clear(), 5u);
    EXPECT_TRUE(m_rows.Undo());
    EXPECT_EQ(Column(1), (Texts{"two\nlines", "Two", ""}));
}

TEST_F(GridTest, TextsAreFoundAndReplaced)
{
    const struct {
        CellSearch search;
        Texts titles, numbers;  // afterwards
    } rows[] = {
        {{.text = "O", .replacement = "\\0!"}, {"Tw\\0!", "\\0!ne", ""}, {"10", "9", "x"}},
        {{.text = "O", .matchCase = true}, {"Two", "one", ""}, {"10", "9", "x"}},
        {{.text = "1", .replacement = "2", .wholeCell = true}, {"Two", "one", ""}, {"10", "9", "x"}},
        {{.text = "", .replacement = "new", .wholeCell = true}, {"Two", "one", "new"}, {"10", "9", "x"}},
        {{.text = "(\\w)(\\w)", .replacement = "\\2\\1", .expression = true}, {"wTo", "noe", ""}, {"01", "9", "x"}},
        {{.text = "..|one", .replacement = "<\\0>", .expression = true, .wholeCell = true},
         {"Two", "<one>", ""},
         {"<10>", "9", "x"}},
        {{.text = ".", .replacement = "-", .columns = {0, 2}}, {"Two", "one", ""}, {"10", "9", "x"}},
        {{.text = ".+", .replacement = "-", .expression = true, .columns = {0, 2}},
         {"Two", "one", ""},
         {"-", "-", "-"}},
    };
    for (const auto& row : rows) {
        const auto finder = CCellFinder::Make(row.search);
        ASSERT_TRUE(finder) << finder.Error();
        const auto changes = finder->Replacements(m_rows);
        ASSERT_TRUE(changes);
        const std::size_t changed = m_model.Change(*changes);
        EXPECT_EQ(Column(1), row.titles) << row.search.text;
        EXPECT_EQ(Column(2), row.numbers) << row.search.text;
        EXPECT_EQ(m_rows.Undo(), changed > 0) << row.search.text;
    }
    const auto finder = CCellFinder::Make({.text = "\\Eo|\\Q", .columns = {1}});
    EXPECT_FALSE(finder->Next(m_rows, {0, 0})->has_value()) << "plain text is no expression";
    const auto o = CCellFinder::Make({.text = "o", .columns = {1}});
    EXPECT_EQ(**o->Next(m_rows, {0, 0}), (GridCell{0, 1}));
    EXPECT_EQ(**o->Next(m_rows, {0, 1}), (GridCell{1, 1}));
    EXPECT_EQ(**o->Next(m_rows, {1, 1}), (GridCell{0, 1})) << "from the start again";
    EXPECT_NE(CCellFinder::Make({.text = "(", .expression = true}).Error().find("\"(\" is no regular"),
              std::string::npos);
    EXPECT_FALSE(CCellFinder::Make({}));
    EXPECT_FALSE(CCellFinder::Make({.text = "!x", .expression = true})->Replacements(m_rows));
}

}  // namespace
