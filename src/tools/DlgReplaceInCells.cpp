#include "tools/DlgReplaceInCells.h"

#include <set>

#include "base/Text.h"

void CDlgReplaceInCells::Show()
{
    DialogForm form = Describe();
    (void)m_services.windows.Show(form);
}

CellSearch CDlgReplaceInCells::Search() const
{
    CellSearch search = m_search;
    std::set<std::size_t> columns;
    for (const GridBlock& block : m_rows.Selection())
        for (std::size_t column = block.left; column <= block.right; ++column) columns.insert(column);
    if (m_scope == 1) search.columns.assign(columns.begin(), columns.end());
    return search;
}

FormAnswer CDlgReplaceInCells::Tell(const std::string& problem)
{
    m_services.windows.Message(MessageKind::Warning, problem);
    return FormAnswer::StayOpen;
}

FormAnswer CDlgReplaceInCells::FindNext()
{
    const auto finder = CCellFinder::Make(Search());
    if (!finder) return Tell(finder.Error());
    const auto found = finder->Next(m_rows, m_rows.Cursor());
    if (!found) return Tell(found.Error());
    if (!*found) return Tell("The text was not found.");
    m_rows.MoveTo(**found);
    return FormAnswer::Confirm;
}

FormAnswer CDlgReplaceInCells::ReplaceAll()
{
    const auto finder = CCellFinder::Make(Search());
    if (!finder) return Tell(finder.Error());
    auto changes = finder->Replacements(m_rows);
    if (!changes) return Tell(changes.Error());
    const std::size_t changed = m_rows.Model().Change(*std::move(changes));
    m_services.windows.Message(MessageKind::Note,
                               FormatText("%d metadata record(s) have been modified.", static_cast<int>(changed)));
    return FormAnswer::Confirm;
}

DialogForm CDlgReplaceInCells::Describe()
{
    return {
        .title = "Replace Text in Cells",
        .controls = {{.what = TextField{.label = "&Find what:", .value = &m_search.text, .width = 50}, .id = "find"},
                     {.what = TextField{.label = "Replace &with:", .value = &m_search.replacement, .width = 50},
                      .id = "with"},
                     {.what = Choice{"&In:", {"All columns", "Selected columns"}, &m_scope}, .id = "in"},
                     {.what = CheckBox{"&Match case", &m_search.matchCase}, .id = "case"},
                     {.what = CheckBox{"Match the w&hole cell", &m_search.wholeCell}, .id = "whole"},
                     {.what = CheckBox{"Use a regular e&xpression; \\1 in the replacement is its first group",
                                       &m_search.expression},
                      .id = "expression"},
                     {.what =
                          StaticText{"Rows that are not shown and columns that cannot be edited stay as they are."}}},
        .buttons = {{.what = Button{"Find &Next", [this] { return FindNext(); }, ButtonRole::Default}},
                    {.what = Button{"Replace &All", [this] { return ReplaceAll(); }}},
                    {.what = Button{"Close", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "find"};
}
