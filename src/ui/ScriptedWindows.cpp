#include "ui/ScriptedWindows.h"

#include <algorithm>
#include <stdexcept>
#include <type_traits>

#include "base/Text.h"
#include "ui/FormControls.h"
#include "ui/GridRows.h"

namespace {

[[noreturn]] void Refuse(const std::string& what) { throw std::logic_error(what); }

template <class Control>
Control& As(const FormControl& control, const std::string& id)
{
    // The controls of a form are the script's to change: their fields are behind pointers.
    auto* found = std::get_if<std::remove_const_t<Control>>(&const_cast<FormControl&>(control).what);
    if (!found) Refuse("another kind of control: " + id);
    return *found;
}

void Changed(const FormControl& control)
{
    if (control.changed) control.changed();
}

class CScriptedProgress final : public CProgressWindow {
public:
    CScriptedProgress(std::vector<std::string>& texts, int& questions) : m_texts(texts), m_questions(questions) {}
    void Show() override { m_visible = true; }
    void Hide() override { m_visible = false; }
    bool IsVisible() const override { return m_visible && m_questions != 0; }
    void SetText(const std::string& text) override { m_texts.push_back(text); }
    void SetStatus(const std::string& text) override { m_texts.push_back(text); }
    void SetRange(int) override {}
    void SetPosition(int) override {}
    void PumpMessages(int) override
    {
        if (m_questions > 0) --m_questions;
    }

private:
    std::vector<std::string>& m_texts;
    int& m_questions;
    bool m_visible = false;
};

}  // namespace

const FormControl& CFormHand::Usable(const std::string& id) const
{
    const FormControl* const control = FindControl(m_form, id);
    if (!control) Refuse("no control " + id + " in " + m_form.title);
    if (Closed()) Refuse("the form is closed: " + m_form.title);
    if (!IsShown(*control) || !IsEnabled(*control)) Refuse("not to be used at present: " + id);
    return *control;
}

void CFormHand::Check(const std::string& id, bool value)
{
    const FormControl& control = Usable(id);
    *As<CheckBox>(control, id).value = value;
    Changed(control);
}

void CFormHand::Type(const std::string& id, const std::string& text)
{
    const FormControl& control = Usable(id);
    const auto& field = As<TextField>(control, id);
    if (field.readOnly) Refuse("read-only: " + id);
    *field.value = text;
    Changed(control);
}

void CFormHand::Choose(const std::string& id, int row)
{
    const FormControl& control = Usable(id);
    if (std::holds_alternative<TreeView>(control.what))
        *As<TreeView>(control, id).selected = row;
    else if (row < static_cast<int>(As<Choice>(control, id).rows.size()))
        *As<Choice>(control, id).row = row;
    else
        Refuse("no such row: " + id);
    Changed(control);
}

void CFormHand::Select(const std::string& id, std::vector<std::size_t> rows)
{
    const FormControl& control = Usable(id);
    const auto& list = As<ListView>(control, id);
    const bool fits = std::ranges::all_of(rows, [&](std::size_t row) { return row < list.count(); });
    if (!list.selected || !fits || (rows.size() > 1 && !list.several)) Refuse("not to be selected: " + id);
    *list.selected = std::move(rows);
    Changed(control);
}

void CFormHand::Edit(const std::string& id, std::size_t place, const std::string& column, const std::string& text)
{
    WorkOn(id, [&](CGridRows& rows) {
        const auto found = rows.Model().ColumnNamed(column);
        if (!found || place >= rows.Size() || !rows.Model().Column(*found).editable)
            Refuse("not to be edited: " + column + " in " + id);
        (void)rows.Edit(place, *found, text);
    });
}

void CFormHand::WorkOn(const std::string& id, const std::function<void(CGridRows&)>& work)
{
    const FormControl& control = Usable(id);
    work(*As<GridView>(control, id).rows);
    Changed(control);
}

bool CFormHand::Press(const std::string& button)
{
    const auto& pressed = As<Button>(Usable(button), button);
    m_answer = pressed.press ? pressed.press() : FormAnswer::StayOpen;
    return Closed();
}

bool CFormHand::Enabled(const std::string& id) const
{
    const FormControl* const control = FindControl(m_form, id);
    return control ? IsEnabled(*control) : (Refuse("no control " + id), false);
}

bool CFormHand::Shown(const std::string& id) const
{
    const FormControl* const control = FindControl(m_form, id);
    return control ? IsShown(*control) : (Refuse("no control " + id), false);
}

std::string CFormHand::Text(const std::string& id) const
{
    const FormControl* const control = FindControl(m_form, id);
    if (!control) Refuse("no control " + id);
    if (const auto* field = std::get_if<TextField>(&control->what)) return *field->value;
    if (const auto* choice = std::get_if<Choice>(&control->what))
        return *choice->row < 0 ? "" : choice->rows.at(static_cast<std::size_t>(*choice->row));
    return LabelOf(*control);
}

bool CFormHand::Checked(const std::string& id) const
{
    const FormControl* const control = FindControl(m_form, id);
    return control ? *As<CheckBox>(*control, id).value : (Refuse("no control " + id), false);
}

std::vector<std::string> CFormHand::Rows(const std::string& id) const
{
    const FormControl* const control = FindControl(m_form, id);
    if (!control) Refuse("no control " + id);
    std::vector<std::string> rows;
    if (const auto* grid = std::get_if<GridView>(&control->what)) {
        for (std::size_t place = 0; place < grid->rows->Size(); ++place) {
            std::string cells;
            for (std::size_t column = 0; column < grid->rows->Model().Columns(); ++column)
                cells += (column > 0 ? "\t" : "") + grid->rows->Text(place, column);
            rows.push_back(std::move(cells));
        }
        return rows;
    }
    const auto& list = As<ListView>(*control, id);
    for (std::size_t row = 0; row < list.count(); ++row) {
        std::string cells;
        for (std::size_t column = 0; column < list.columns.size(); ++column)
            cells += (column > 0 ? "\t" : "") + list.text(row, column);
        rows.push_back(std::move(cells));
    }
    return rows;
}

std::vector<std::string> CFormHand::Texts() const
{
    std::vector<std::string> texts;
    ForEachControl(m_form, [&](const FormControl& control) {
        if (const std::string label = LabelOf(control); !label.empty() && IsShown(control)) texts.push_back(label);
    });
    return texts;
}

void CScriptedWindows::Expect(const std::string& title, std::function<void(CFormHand&)> play)
{
    m_script.push_back({Kind::Form, title, std::move(play), true, {}});
}

void CScriptedWindows::ExpectMessage(const std::string& text, bool answer)
{
    m_script.push_back({Kind::Message, text, {}, answer, {}});
}

void CScriptedWindows::ExpectFiles(const std::string& title, std::vector<std::string> answer)
{
    m_script.push_back({Kind::Files, title, {}, true, std::move(answer)});
}

std::vector<std::string> CScriptedWindows::Missing() const
{
    std::vector<std::string> texts;
    for (const Awaited& expected : m_script) texts.push_back(expected.text);
    return texts;
}

CScriptedWindows::Awaited CScriptedWindows::Next(Kind kind, const std::string& text)
{
    if (m_script.empty()) Refuse("not expected: " + text);
    if (m_script.front().kind != kind || m_script.front().text != text)
        Refuse("not expected: " + text + ", but: " + m_script.front().text);
    Awaited next = std::move(m_script.front());
    m_script.pop_front();
    return next;
}

bool CScriptedWindows::Show(DialogForm& form)
{
    const Awaited next = Next(Kind::Form, form.title);
    CFormHand hand(form);
    next.play(hand);
    return hand.Confirmed();
}

bool CScriptedWindows::Message(MessageKind, const std::string& text) { return Next(Kind::Message, text).answer; }

std::vector<std::string> CScriptedWindows::OpenFiles(const FileChoice& choice)
{
    m_lastChoice = choice;
    return Next(Kind::Files, choice.title).files;
}

std::optional<std::string> CScriptedWindows::OpenFile(const FileChoice& choice)
{
    const auto files = OpenFiles(choice);
    return files.empty() ? std::nullopt : std::optional(files.front());
}

std::optional<std::string> CScriptedWindows::SaveFile(const FileChoice& choice) { return OpenFile(choice); }

std::optional<std::string> CScriptedWindows::ChooseFolder(const std::string& title, const std::string& initial)
{
    return OpenFile({.title = title, .initial = initial});
}

std::unique_ptr<CProgressWindow> CScriptedWindows::MakeProgress()
{
    return std::make_unique<CScriptedProgress>(m_progressTexts, m_progressQuestions);
}
