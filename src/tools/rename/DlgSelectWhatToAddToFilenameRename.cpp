#include "tools/rename/DlgSelectWhatToAddToFilenameRename.h"

#include "tools/rename/NamePartKinds.h"

// The kind that holds components is the last one.
CDlgSelectWhatToAddToFilenameRename::CDlgSelectWhatToAddToFilenameRename(DialogServices services, bool lookups)
    : m_services(std::move(services)), m_count(NamePartKinds().size() - (lookups ? 0 : 1)), m_selected{0}
{
}

bool CDlgSelectWhatToAddToFilenameRename::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

NamePartKind CDlgSelectWhatToAddToFilenameRename::Kind() const { return NamePartKinds()[m_selected.front()].kind; }

DialogForm CDlgSelectWhatToAddToFilenameRename::Describe()
{
    ListView kinds{.name = "Kinds of components",
                   .columns = {{"Component", 30}, {"What it adds"}},
                   .count = [this] { return m_count; },
                   .text =
                       [](std::size_t row, std::size_t column) {
                           const NamePartKindRow& kind = NamePartKinds()[row];
                           return std::string(column == 0 ? kind.name : kind.meaning);
                       },
                   .selected = &m_selected,
                   .activates = "ok",
                   .lines = 10,
                   .width = 90};
    return {.title = "Select What To Add To Filename",
            .controls = {{.what = std::move(kinds), .id = "kinds", .grows = true}},
            .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}, .id = "ok"},
                        {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
            .focus = "kinds"};
}

FormAnswer CDlgSelectWhatToAddToFilenameRename::Confirm()
{
    if (!m_selected.empty()) return FormAnswer::Confirm;
    m_services.windows.Message(MessageKind::Warning, "Please select what to add.");
    return FormAnswer::StayOpen;
}
