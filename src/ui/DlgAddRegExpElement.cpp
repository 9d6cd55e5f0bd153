#include "ui/DlgAddRegExpElement.h"

#include "common/PatternElements.h"

bool CDlgAddRegExpElement::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

std::string CDlgAddRegExpElement::Pattern() const
{
    int row = 0;
    for (const PatternCategory& category : PatternCatalogue()) {
        if (row++ == m_selected) return category.self.pattern;
        for (const PatternElement& element : category.elements)
            if (row++ == m_selected) return element.pattern;
    }
    return {};
}

DialogForm CDlgAddRegExpElement::Describe()
{
    TreeView tree{.name = "Elements", .nodes = {}, .selected = &m_selected, .activates = "ok"};
    for (const PatternCategory& category : PatternCatalogue()) {
        TreeNode node{category.self.label, {}};
        for (const PatternElement& element : category.elements) node.leaves.emplace_back(element.label);
        tree.nodes.push_back(std::move(node));
    }
    return {
        .title = "Add Element",
        .controls = {{.what = StaticText{"Use this dialog to add an item/element to a search expression. The dialog "
                                         "will automatically add a regular expression element based on your "
                                         "selection. "}},
                     {.what = std::move(tree), .id = "elements", .grows = true}},
        .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}, .id = "ok"},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "elements"};
}

FormAnswer CDlgAddRegExpElement::Confirm()
{
    if (!Pattern().empty()) return FormAnswer::Confirm;
    m_services.windows.Message(MessageKind::Warning, "Please select an item from the list.");
    return FormAnswer::StayOpen;
}
