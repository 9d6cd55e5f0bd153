#include "tools/DlgAddMetadataFields.h"

#include <algorithm>
#include <iterator>

#include "base/Text.h"
#include "protocol/Metadata.h"

namespace {

/// Entries that many programs write.
constexpr struct {
    const char *key, *meaning;
} kCommonFields[] = {
    {"Creator", "Program that the document was written with"},
    {"Producer", "Program that made it a PDF file"},
    {"CreationDate", "When it was created, as D:20260131120000+01'00'"},
    {"ModDate", "When it was changed last"},
    {"Company", "Company or institution"},
    {"Manager", "Who is responsible for it"},
    {"Category", "Kind of document"},
    {"Comments", "Remarks"},
    {"Copyright", "Who holds the rights"},
    {"SourceModified", "When the file that it was made from was changed last"},
};

}  // namespace

bool CDlgAddMetadataFields::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

std::vector<std::string> CDlgAddMetadataFields::Fields() const
{
    std::vector<std::string> fields;
    const auto add = [&](const std::string& key) {
        if (!key.empty() && std::ranges::find(fields, key) == fields.end()) fields.push_back(key);
    };
    for (const std::size_t row : m_selected) add(kCommonFields[row].key);
    for (const std::string& line : Split(m_others, "\r\n")) add(Trim(line));
    return fields;
}

FormAnswer CDlgAddMetadataFields::Confirm()
{
    const std::vector<std::string> fields = Fields();
    std::string problem = fields.empty() ? "Please select or enter the fields that are to be added." : "";
    for (const std::string& field : fields)
        if (problem.empty()) problem = KeyProblem(field);
    if (problem.empty()) return FormAnswer::Confirm;
    m_services.windows.Message(MessageKind::Warning, problem);
    return FormAnswer::StayOpen;
}

DialogForm CDlgAddMetadataFields::Describe()
{
    ListView common{.name = "Common fields",
                    .columns = {{"Field", 20}, {"Meaning"}},
                    .count = [] { return std::size(kCommonFields); },
                    .text =
                        [](std::size_t row, std::size_t column) {
                            const auto& field = kCommonFields[row];
                            return std::string(column == 0 ? field.key : field.meaning);
                        },
                    .selected = &m_selected,
                    .several = true,
                    .activates = "ok",
                    .lines = 11,
                    .width = 80};
    return {
        .title = "Add Metadata Fields",
        .controls = {{.what =
                          StaticText{"Each field becomes a column that can be edited. Select fields from the list, "
                                     "or enter the names that they have in the document information."}},
                     {.what = std::move(common), .id = "common", .grows = true},
                     {.what = TextField{.label = "&Other fields, one on each line:", .value = &m_others, .lines = 4},
                      .id = "others"}},
        .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}, .id = "ok"},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "common"};
}
