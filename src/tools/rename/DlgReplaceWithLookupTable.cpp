#include "tools/rename/DlgReplaceWithLookupTable.h"

#include "base/Text.h"
#include "common/RegularExpression.h"
#include "tools/rename/DlgEditLookupTable.h"
#include "tools/rename/NamePartKinds.h"

CDlgReplaceWithLookupTable::CDlgReplaceWithLookupTable(DialogServices services, const CFileNamePart& part, int depth)
    : m_services(std::move(services)), m_part(part), m_children(m_services, m_part.children, depth + 1)
{
}

bool CDlgReplaceWithLookupTable::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

Group CDlgReplaceWithLookupTable::KeyGroup()
{
    const auto replaces = [this] { return m_part.replaceBeforeLookup; };
    return {.title = "",
            .controls = {{.what = CheckBox{"Search and &replace in the text before it is looked up:",
                                           &m_part.replaceBeforeLookup},
                          .id = "before"},
                         {.what = TextField{.label = "Regular e&xpression:", .value = &m_part.searchBeforeLookup},
                          .id = "search",
                          .enabled = replaces},
                         {.what = TextField{.label = "Replace wit&h:", .value = &m_part.replacementBeforeLookup},
                          .id = "replacement",
                          .enabled = replaces}}};
}

Row CDlgReplaceWithLookupTable::TableRow()
{
    const auto entries = [this] {
        return FormatText("The lookup table has %d entries.", static_cast<int>(m_part.lookupTable.size()));
    };
    return {{{.what = StaticText{.text = "", .current = entries}, .id = "entries"},
             {.what = Button{"Edit Lookup &Table...", [this] {
                                 EditTable();
                                 return FormAnswer::StayOpen;
                             }}}}};
}

DialogForm CDlgReplaceWithLookupTable::Describe()
{
    return {
        .title = "Replace With Lookup Table",
        .controls = {{.what = StaticText{"The texts of these components are joined and looked up in the table; what "
                                         "the table holds for them becomes part of the name."}},
                     {.what = m_children.Describe("Text to look up", 4), .grows = true},
                     {.what = KeyGroup()},
                     {.what = TableRow()},
                     NamePartOptions(m_part)},
        .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "parts"};
}

void CDlgReplaceWithLookupTable::EditTable()
{
    CDlgEditLookupTable dialog(m_services, m_part.lookupTable);
    if (dialog.Show()) m_part.lookupTable = dialog.Table();
}

std::string CDlgReplaceWithLookupTable::Problem() const
{
    if (m_part.children.empty()) return "Please add at least one component whose text is to be looked up.";
    if (m_part.lookupTable.empty()) return "Please edit the lookup table; it has no entries.";
    CRegularExpression expression;
    if (m_part.replaceBeforeLookup && !expression.Compile(m_part.searchBeforeLookup, LetterCase::Matters))
        return expression.Error();
    return {};
}

FormAnswer CDlgReplaceWithLookupTable::Confirm()
{
    const std::string problem = Problem();
    if (problem.empty()) return FormAnswer::Confirm;
    m_services.windows.Message(MessageKind::Warning, problem);
    return FormAnswer::StayOpen;
}
