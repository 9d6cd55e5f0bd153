#include "tools/rename/DlgEnterCustomText.h"

#include "tools/rename/NamePartKinds.h"

namespace {

struct TagRow {
    const char* what;
    std::vector<const char*> tags;
};

/// As they stand in the dialog.
const TagRow kTagRows[] = {
    {"Document:", {"<title>", "<subject>", "<author>", "<pagecount>"}},
    {"Bates numbers:", {"<bates_start>", "<bates_end>"}},
    {"Date:", {"<year>", "<month>", "<day>"}},
    {"Time:", {"<hour>", "<minute>", "<second>"}},
    {"Surroundings:", {"<user>", "<computer>"}},
};

}  // namespace

bool CDlgEnterCustomText::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

/// One button for each tag, which adds it to the text.
Group CDlgEnterCustomText::TagGroup()
{
    Group group{.title = "Tags", .controls = {}};
    group.controls.push_back(
        {.what = StaticText{"A tag is replaced by what it stands for in each document. Press one "
                            "to add it to the text."}});
    for (const TagRow& row : kTagRows) {
        Row buttons{{{.what = StaticText{row.what}}}};
        for (const char* const tag : row.tags)
            buttons.controls.push_back({.what = Button{tag, [this, tag] {
                                                           m_part.customText += tag;
                                                           return FormAnswer::StayOpen;
                                                       }}});
        group.controls.push_back({.what = std::move(buttons)});
    }
    return group;
}

DialogForm CDlgEnterCustomText::Describe()
{
    return {.title = "Enter Custom Text",
            .controls = {{.what = TextField{.label = "Custom &text:", .value = &m_part.customText, .width = 60},
                          .id = "text"},
                         {.what = TagGroup()},
                         NamePartOptions(m_part)},
            .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                        {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
            .focus = "text"};
}

FormAnswer CDlgEnterCustomText::Confirm()
{
    if (!m_part.customText.empty()) return FormAnswer::Confirm;
    m_services.windows.Message(MessageKind::Warning, "Please enter a text.");
    return FormAnswer::StayOpen;
}
