#include "tools/rename/DlgEditLookupTable.h"

#include "base/Text.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kImportFilter[] =
    "Comma-delimited Text File (*.csv)|*.csv|Text File (*.txt)|*.txt|All Files (*.*)|*.*||";

/// Line ends are LF in a field.
std::string FieldText(const LookupTable& table) { return ReplaceAll(LookupTableText(table), "\r\n", "\n"); }

/// What is written but is no entry would be lost; the first such line, from 1. 0: there is none.
int UselessLine(std::string_view text)
{
    for (int line = 1; !text.empty(); ++line) {
        const std::size_t end = text.find('\n');
        const std::string_view content = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!Trim(content).empty() && LookupTableFromText(content).empty()) return line;
    }
    return 0;
}

}  // namespace

CDlgEditLookupTable::CDlgEditLookupTable(DialogServices services, const LookupTable& table)
    : m_services(std::move(services)), m_table(table), m_text(FieldText(table))
{
}

bool CDlgEditLookupTable::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

DialogForm CDlgEditLookupTable::Describe()
{
    return {.title = "Edit Lookup Table",
            .controls = {{.what = StaticText{"Type a text and what replaces it on each line, separated by a comma. A "
                                             "text that holds a comma stands in double quotes. For example:"}},
                         {.what = StaticText{"4711, Miller and Sons\n\"Smith, John\", JS"}},
                         {.what = TextField{.label = "&Lookup table:", .value = &m_text, .lines = 14, .width = 60},
                          .id = "table",
                          .grows = true}},
            .buttons = {{.what = Button{"&Import...",
                                        [this] {
                                            Import();
                                            return FormAnswer::StayOpen;
                                        }}},
                        {.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                        {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
            .focus = "table"};
}

/// The entries of a file come to those that are here; of two with one key that of the file counts. What the user has
/// typed stays as it is when there is nothing to come.
void CDlgEditLookupTable::Import()
{
    const auto path = m_services.windows.OpenFile({.filter = kImportFilter, .defaultExtension = "csv"});
    if (!path) return;
    const auto imported = ImportLookupTable(*path);
    if (!imported) {
        m_services.windows.Message(MessageKind::Warning, platform::Utf8FromNarrow(imported.Error()));
        return;
    }
    if (!imported->entries.empty()) {
        if (!m_text.empty() && !m_text.ends_with('\n')) m_text += '\n';
        m_text += FieldText(imported->entries);
    }
    m_services.windows.Message(MessageKind::Note, imported->Message());
}

FormAnswer CDlgEditLookupTable::Confirm()
{
    if (const int line = UselessLine(m_text); line > 0) {
        m_services.windows.Message(
            MessageKind::Warning,
            FormatText("Line %d of the lookup table has no comma between a text and its replacement.", line));
        return FormAnswer::StayOpen;
    }
    m_table = LookupTableFromText(m_text);
    return FormAnswer::Confirm;
}
