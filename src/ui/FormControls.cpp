#include "ui/FormControls.h"

namespace {

void Visit(const std::vector<FormControl>& controls, const std::function<void(const FormControl&)>& visit)
{
    for (const FormControl& control : controls) {
        visit(control);
        if (const auto* group = std::get_if<Group>(&control.what)) Visit(group->controls, visit);
        if (const auto* row = std::get_if<Row>(&control.what)) Visit(row->controls, visit);
    }
}

struct Label {
    std::string operator()(const StaticText& text) const { return text.current ? text.current() : text.text; }
    std::string operator()(const CheckBox& box) const { return box.label; }
    std::string operator()(const TextField& field) const { return field.label.empty() ? field.name : field.label; }
    std::string operator()(const Choice& choice) const { return choice.label.empty() ? choice.name : choice.label; }
    std::string operator()(const ListView& list) const { return list.name; }
    std::string operator()(const TreeView& tree) const { return tree.name; }
    std::string operator()(const GridView& grid) const { return grid.name; }
    std::string operator()(const Button& button) const { return button.label; }
    std::string operator()(const Group& group) const { return group.title; }
    std::string operator()(const Row&) const { return {}; }
};

}  // namespace

void ForEachControl(const DialogForm& form, const std::function<void(const FormControl&)>& visit)
{
    Visit(form.controls, visit);
    Visit(form.buttons, visit);
}

const FormControl* FindControl(const DialogForm& form, const std::string& id)
{
    const FormControl* found = nullptr;
    ForEachControl(form, [&](const FormControl& control) {
        const bool named = control.id == id && !id.empty();
        const bool isButton = std::holds_alternative<Button>(control.what) && LabelOf(control) == id;
        if (!found && (named || isButton)) found = &control;
    });
    return found;
}

// What texts say is not pressed, so an "&" in them is one.
std::string LabelOf(const FormControl& control)
{
    const std::string label = std::visit(Label{}, control.what);
    return std::holds_alternative<StaticText>(control.what) ? label : WithoutMnemonic(label);
}

std::string WithoutMnemonic(const std::string& label)
{
    std::string text;
    for (std::size_t place = 0; place < label.size(); ++place) {
        if (label[place] == '&' && place + 1 < label.size()) ++place;
        text += label[place];
    }
    return text;
}

bool IsEnabled(const FormControl& control) { return !control.enabled || control.enabled(); }

bool IsShown(const FormControl& control) { return !control.shown || control.shown(); }

FormAnswer CancelForm(const DialogForm& form)
{
    FormAnswer answer = FormAnswer::Cancel;
    ForEachControl(form, [&](const FormControl& control) {
        const auto* button = std::get_if<Button>(&control.what);
        if (button && button->role == ButtonRole::Cancel && button->press) answer = button->press();
    });
    return answer;
}
