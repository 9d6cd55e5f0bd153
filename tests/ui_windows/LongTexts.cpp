#include "Shots.h"
#include "base/Unicode.h"

namespace {

void Lengthen(std::string& text)
{
    if (text.empty()) return;
    std::u32string half = Utf8ToUtf32(text);
    half.resize(half.size() / 2 + 1);
    std::erase(half, U'&');
    text += " " + Utf32ToUtf8(half);
}

struct Lengthener {
    void operator()(StaticText& text) const
    {
        Lengthen(text.text);
        if (!text.current) return;
        text.current = [before = text.current] {
            std::string now = before();
            Lengthen(now);
            return now;
        };
    }
    void operator()(CheckBox& box) const { Lengthen(box.label); }
    void operator()(TextField& field) const { Lengthen(field.label); }
    void operator()(Choice& choice) const
    {
        Lengthen(choice.label);
        for (std::string& row : choice.rows) Lengthen(row);
    }
    void operator()(ListView& list) const
    {
        for (ListColumn& column : list.columns) Lengthen(column.title);
    }
    void operator()(TreeView& tree) const
    {
        for (TreeNode& node : tree.nodes) Lengthen(node.label);
    }
    void operator()(GridView&) const {}  // its headings are names of fields, which are not translated
    void operator()(Button& button) const { Lengthen(button.label); }
    void operator()(Group& group) const
    {
        Lengthen(group.title);
        All(group.controls);
    }
    void operator()(Row& row) const { All(row.controls); }

    void All(std::vector<FormControl>& controls) const
    {
        for (FormControl& control : controls) std::visit(*this, control.what);
    }
};

}  // namespace

bool CLongTexts::Show(DialogForm& form)
{
    DialogForm longer = form;
    Lengthen(longer.title);
    Lengthener().All(longer.controls);
    Lengthener().All(longer.buttons);
    return m_windows.Show(longer);
}
