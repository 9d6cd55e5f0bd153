#include "tools/rename/DlgEnterCustomText.h"

#include <string_view>

#include "naming/DocumentName.h"
#include "tools/rename/NamePartKinds.h"

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
    const char* rowOf = nullptr;
    for (const NameTag& known : NameTags()) {
        if (!rowOf || std::string_view(rowOf) != known.group) {
            rowOf = known.group;
            group.controls.push_back({.what = Row{{{.what = StaticText{std::string(rowOf) + ':'}}}}});
        }
        const auto add = [this, tag = known.tag] {
            m_part.customText += tag;
            return FormAnswer::StayOpen;
        };
        std::get<Row>(group.controls.back().what).controls.push_back({.what = Button{known.tag, add}});
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
