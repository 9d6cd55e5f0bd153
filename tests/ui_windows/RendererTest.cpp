// What a form does in the hands of somebody at the screen.
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/grid.h>
#include <wx/listctrl.h>
#include <wx/textctrl.h>
#include <wx/tglbtn.h>
#include <wx/timer.h>
#include <wx/treectrl.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Keys.h"
#include "ui/FormControls.h"
#include "ui/GridRows.h"
#include "ui/wx/FileQuestions.h"
#include "ui/wx/FormDialog.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"
#include "ui/wx/WxWindows.h"

namespace {

using Hand = std::function<void(CFormDialog&)>;

class Renderer : public testing::Test {
public:
    static void SetUpTestSuite()
    {
        std::string problem;
        windows = CWxWindows::Make({}, problem);
        if (!windows) throw std::runtime_error(problem);
    }
    static void TearDownTestSuite() { windows.reset(); }

    static std::unique_ptr<CWxWindows> windows;
};

std::unique_ptr<CWxWindows> Renderer::windows;

/// Shows the form and lets the hands do one thing after the other. A dialog that stays open behind the last is
/// closed, at once or when it was waited for.
class CPlay final : public wxTimer {
public:
    bool Show(DialogForm& form, std::vector<Hand> hands, bool closesItself = true)
    {
        m_hands = std::move(hands);
        m_patience = closesItself ? kPatience : 0;
        Start(50);
        return Renderer::windows->Show(form);
    }
    /// Keys take their time: waits until it is so.
    void Await(bool isSo, const std::string& what)
    {
        if (isSo) return;
        --m_next;
        if (++m_waited < kPatience) return;
        ADD_FAILURE() << what;
        m_next = m_hands.size();
        m_patience = 0;
    }
    int closedByForce = 0;

private:
    static constexpr int kPatience = 100;

    void Notify() override
    {
        CFormDialog* const dialog = Renderer::windows->OpenDialog();
        if (!dialog || !dialog->IsShown()) return;
        if (m_next < m_hands.size()) return m_hands[m_next++](*dialog);
        if (m_patience-- > 0) return;
        Stop();
        ++closedByForce;
        dialog->Close();
    }

    std::vector<Hand> m_hands;
    std::size_t m_next = 0;
    int m_patience = 0;
    int m_waited = 0;
};

wxWindow* Find(CFormDialog& dialog, const std::string& name)
{
    for (const CView* const view : dialog.Views())
        if (view->Control().id == name || LabelOf(view->Control()) == name) return view->FocusWindow();
    throw std::logic_error("no control " + name);
}

template <class Control>
Control& As(CFormDialog& dialog, const std::string& name)
{
    return dynamic_cast<Control&>(*Find(dialog, name));
}

void Click(wxWindow& control, wxEventType type)
{
    wxCommandEvent event(type, control.GetId());
    event.SetEventObject(&control);
    control.ProcessWindowEvent(event);
}

void Press(CFormDialog& dialog, const std::string& name) { Click(*Find(dialog, name), wxEVT_BUTTON); }

TEST_F(Renderer, WhatIsTypedIsInTheFieldsBeforeAnActionAndWhatAnActionChangesIsShownAfterIt)
{
    bool check = false;
    std::string text = "before", note = "one\ntwo", seen;
    int row = 0, changes = 0;
    DialogForm form{.title = "Flow"};
    form.controls = {
        {.what = CheckBox{"&Box", &check}},
        {.what = TextField{"&Text:", &text}, .enabled = [&] { return check; }, .changed = [&] { ++changes; }},
        {.what = TextField{.label = "&Note:", .value = &note, .lines = 3}},
        {.what = Choice{"&Choice:", {"first", "second"}, &row}, .shown = [&] { return text == "typed"; }}};
    form.buttons = {{.what = Button{"Swap",
                                    [&] {
                                        seen = text + "/" + note;
                                        text = "changed by the action";
                                        return FormAnswer::StayOpen;
                                    }}},
                    {.what = Button{"OK", [] { return FormAnswer::Confirm; }, ButtonRole::Default}}};
    CPlay play;
    EXPECT_TRUE(play.Show(form, {[&](CFormDialog& dialog) {
                                     EXPECT_FALSE(Find(dialog, "Text:")->IsEnabled());
                                     EXPECT_FALSE(Find(dialog, "Choice:")->IsShown());
                                     As<wxCheckBox>(dialog, "Box").SetValue(true);
                                     Click(*Find(dialog, "Box"), wxEVT_CHECKBOX);
                                     EXPECT_TRUE(Find(dialog, "Text:")->IsEnabled());
                                 },
                                 [&](CFormDialog& dialog) {
                                     As<wxTextCtrl>(dialog, "Text:").SetValue("typed");
                                     EXPECT_EQ(changes, 1);
                                     EXPECT_TRUE(Find(dialog, "Choice:")->IsShown());
                                     As<wxChoice>(dialog, "Choice:").SetSelection(1);
                                     As<wxTextCtrl>(dialog, "Note:").SetValue(wxString::FromUTF8("drei\nWörter"));
                                     Press(dialog, "Swap");
                                     EXPECT_EQ(As<wxTextCtrl>(dialog, "Text:").GetValue(), "changed by the action");
                                 },
                                 [](CFormDialog& dialog) { Press(dialog, "OK"); }}));
    EXPECT_EQ(seen, "typed/drei\nWörter");
    EXPECT_EQ(row, 1);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(play.closedByForce, 0);
}

TEST_F(Renderer, APasswordIsMaskedUntilItIsLookedAt)
{
    std::string password = "Leinen los!";
    DialogForm form{.title = "Password", .focus = "p"};
    form.controls = {{.what = TextField{.label = "&Password:", .value = &password, .secret = true}, .id = "p"}};
    CPlay play;
    EXPECT_FALSE(play.Show(form, {[&](CFormDialog& dialog) {
                               auto& masked = As<wxTextCtrl>(dialog, "p");
                               EXPECT_TRUE(masked.HasFlag(wxTE_PASSWORD));
                               masked.SetValue("Anker auf!");
                               for (wxWindow* const child : dialog.GetChildren())
                                   if (auto* const look = dynamic_cast<wxToggleButton*>(child)) {
                                       EXPECT_EQ(ReadersName(*look), "Show Password:");
                                       look->SetValue(true);
                                       Click(*look, wxEVT_TOGGLEBUTTON);
                                   }
                               auto& open = As<wxTextCtrl>(dialog, "p");
                               EXPECT_FALSE(open.HasFlag(wxTE_PASSWORD));
                               EXPECT_TRUE(open.IsShown());
                               EXPECT_FALSE(masked.IsShown());
                               EXPECT_EQ(open.GetValue(), "Anker auf!");
                               open.SetValue("Segel!");
                           }},
                           false));
    EXPECT_EQ(password, "Segel!");
    EXPECT_EQ(play.closedByForce, 1);
}

TEST_F(Renderer, AListAsksForWhatIsInSightAndKeepsWhatIsSelected)
{
    std::size_t count = 100'000;
    std::size_t highest = 0;
    std::vector<std::size_t> selected = {7};
    int changes = 0;
    DialogForm form{.title = "List"};
    ListView list{.name = "Rows",
                  .columns = {{"Name"}, {"Number", 10}},
                  .count = [&] { return count; },
                  .text =
                      [&](std::size_t row, std::size_t) {
                          highest = std::max(highest, row);
                          return std::to_string(row);
                      },
                  .selected = &selected,
                  .several = true,
                  .activates = "Remove"};
    form.controls = {{.what = list, .changed = [&] { ++changes; }, .grows = true},
                     {.what = Button{"&Remove", [&] {
                                         count -= selected.size();
                                         selected = {1, 2};
                                         return FormAnswer::StayOpen;
                                     }}}};
    CPlay play;
    EXPECT_FALSE(play.Show(form,
                           {[&](CFormDialog& dialog) {
                                auto& rows = As<wxListCtrl>(dialog, "Rows");
                                EXPECT_EQ(rows.GetItemCount(), 100'000);
                                EXPECT_EQ(rows.GetItemState(7, wxLIST_STATE_SELECTED), wxLIST_STATE_SELECTED);
                                for (long row = 8; row < 1000; ++row)
                                    rows.SetItemState(row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
                            },
                            [&](CFormDialog& dialog) {
                                EXPECT_EQ(changes, 1) << "a range is one change";
                                EXPECT_EQ(selected.size(), 993u);
                                wxListEvent enter(wxEVT_LIST_ITEM_ACTIVATED, Find(dialog, "Rows")->GetId());
                                Find(dialog, "Rows")->ProcessWindowEvent(enter);
                                auto& rows = As<wxListCtrl>(dialog, "Rows");
                                EXPECT_EQ(rows.GetItemCount(), 100'000 - 993);
                                EXPECT_EQ(rows.GetSelectedItemCount(), 2);
                            }},
                           false));
    EXPECT_LT(highest, 2000u);
}

TEST_F(Renderer, TheKeyboardIsEnough)
{
    if (!CanPressKeys()) GTEST_SKIP() << "no keys can be pressed here";
    bool box = false;
    std::string text, more;
    int cancelled = 0;
    const auto make = [&] {
        DialogForm form{.title = "Keys", .focus = "box"};
        form.controls = {
            {.what = CheckBox{"&Box", &box}, .id = "box"},
            {.what = Group{"Group",
                           {{.what = TextField{"&Text:", &text}, .id = "text"},
                            {.what = TextField{.label = "&More:", .value = &more, .lines = 3}, .id = "more"}}}}};
        form.buttons = {
            {.what = Button{"OK", [] { return FormAnswer::Confirm; }, ButtonRole::Default}, .id = "ok"},
            {.what = Button{"Cancel", [&] { return ++cancelled, FormAnswer::Cancel; }, ButtonRole::Cancel}}};
        return form;
    };
    CPlay play, again;
    const auto has = [&](const char* id) {
        return [&, id](CFormDialog& dialog) { play.Await(HasKeyboard(*Find(dialog, id)), id); };
    };
    const auto key = [](int code, int modifiers = 0) {
        return [=](CFormDialog& dialog) { PressKey(dialog, code, modifiers); };
    };
    DialogForm first = make();
    EXPECT_TRUE(play.Show(
        first,
        {key(0),       has("box"),          key(WXK_SPACE), key(WXK_TAB),        has("text"), key('x'),
         key(WXK_TAB), has("more"),         key('y'),       key(WXK_RETURN),     key('z'),    key(WXK_TAB),
         has("ok"),    key('m', wxMOD_ALT), has("more"),    key('b', wxMOD_ALT), has("box"),  key('t', wxMOD_ALT),
         has("text"),  key(WXK_RETURN)}));
    EXPECT_FALSE(box) << "pressed twice: by the space bar and by its letter";
    EXPECT_EQ(text, "x");
    EXPECT_EQ(more, "y\nz");
    EXPECT_EQ(cancelled, 0);
    DialogForm second = make();
    EXPECT_FALSE(again.Show(second, {key(0), key(WXK_ESCAPE)}));
    EXPECT_EQ(cancelled, 1);
    EXPECT_EQ(play.closedByForce + again.closedByForce, 0);
}

/// A grid of a fixed column and one to edit.
class GridRenderer : public Renderer {
protected:
    GridRenderer()
    {
        for (int row = 0; row < 10'000; ++row) m_model.AddRow({std::to_string(row) + ".pdf", "title"});
        m_rows.Refresh();
        m_rows.MoveTo({0, 1});
        m_form.controls = {
            {.what = GridView{.name = "Cells", .rows = &m_rows, .finds = "find"}, .id = "cells", .grows = true}};
        m_form.buttons = {
            {.what = Button{"Find", [this] { return ++m_found, FormAnswer::StayOpen; }}, .id = "find"},
            {.what = Button{"Cancel", [this] { return ++m_cancelled, FormAnswer::Cancel; }, ButtonRole::Cancel}}};
    }
    static wxGrid& Grid(CFormDialog& dialog) { return dynamic_cast<wxGrid&>(*Find(dialog, "cells")->GetParent()); }

    CGridModel m_model{{{"File"}, {"Title", true}}};
    CGridRows m_rows{m_model};
    DialogForm m_form{.title = "Grid", .focus = "cells"};
    int m_found = 0, m_cancelled = 0;
};

TEST_F(GridRenderer, ShowsTenThousandRowsAtOnceAndFollowsTheModel)
{
    (void)m_rows.Edit(1, 1, "two\r\nlines \x01");
    CPlay play;
    const wxLongLong start = wxGetUTCTimeMillis();
    EXPECT_FALSE(
        play.Show(m_form,
                  {[&](CFormDialog& dialog) {
                       EXPECT_LT(wxGetUTCTimeMillis() - start, 1000);
                       wxGrid& grid = Grid(dialog);
                       EXPECT_EQ(grid.GetNumberRows(), 10'000);
                       EXPECT_EQ(Typed(grid.GetCellValue(1, 1)), "two⏎lines ␁");
                       EXPECT_TRUE(grid.IsReadOnly(0, 0));
                       EXPECT_FALSE(grid.IsReadOnly(0, 1));
                       grid.GetTable()->SetValue(1, 1, grid.GetCellValue(1, 1));
                       EXPECT_EQ(m_rows.Text(1, 1), "two\r\nlines \x01") << "what nobody changed stays as it is";
                       grid.GetTable()->SetValue(2, 1, wxString::FromUTF8("a⏎b"));
                       EXPECT_EQ(m_rows.Text(2, 1), "a\nb");
                       grid.SelectBlock(5, 0, 6, 1);
                       m_rows.Filter({.text = "99"});
                       Press(dialog, "Find");
                       EXPECT_EQ(grid.GetNumberRows(), static_cast<int>(m_rows.Size()));
                       m_rows.Filter({});
                       m_model.AddColumn({"More", true}, {});
                   },
                   [&](CFormDialog& dialog) {
                       Press(dialog, "Find");
                       EXPECT_EQ(Grid(dialog).GetNumberRows(), 10'000);
                       EXPECT_EQ(Grid(dialog).GetNumberCols(), 3);
                       Grid(dialog).GoToCell(9'999, 2);
                       Grid(dialog).EnableCellEditControl();
                       for (wxWindow* const child : Grid(dialog).GetGridWindow()->GetChildren())
                           if (auto* const field = dynamic_cast<wxTextCtrl*>(child); field && field->IsShown())
                               field->SetValue("under way");
                       Press(dialog, "Find");
                       EXPECT_EQ(m_model.Cell({9'999, 2}), "under way") << "what is being edited counts";
                   }},
                  false));
    EXPECT_EQ(m_rows.Cursor(), (GridCell{9'999, 2}));
}

TEST_F(GridRenderer, TheKeysOfSpreadsheets)
{
    if (!CanPressKeys()) GTEST_SKIP() << "no keys can be pressed here";
    CPlay play;
    const auto key = [](int code, int modifiers = 0) {
        return [=](CFormDialog& dialog) { PressKey(dialog, code, modifiers); };
    };
    const auto cell = [&](std::size_t row, const char* text) {
        return [&, row, text](CFormDialog&) { play.Await(m_model.Cell({row, 1}) == text, text); };
    };
    const auto has = [&](CFormDialog& dialog) { play.Await(HasKeyboard(*Find(dialog, "cells")), "the grid"); };
    const auto editing = [&](bool on) {
        return [&, on](CFormDialog& dialog) { play.Await(Grid(dialog).IsCellEditControlShown() == on, "editing"); };
    };
    EXPECT_FALSE(play.Show(
        m_form, {key(0), has, key(WXK_F2), editing(true), key('x'), key(WXK_RETURN), cell(0, "x"),
                 // Escape leaves the cell, not the dialog
                 key(WXK_F2), editing(true), key('y'), key(WXK_ESCAPE), editing(false), cell(1, "title"), key(WXK_UP),
                 key('c', wxMOD_CONTROL), key(WXK_DOWN), key(WXK_DOWN), key('v', wxMOD_CONTROL), cell(2, "x"),
                 key(WXK_DELETE), cell(2, ""), key('z', wxMOD_CONTROL), cell(2, "x"), key('x', wxMOD_CONTROL),
                 cell(2, ""), key('z', wxMOD_CONTROL), key('z', wxMOD_CONTROL), cell(2, "title"),
                 key('y', wxMOD_CONTROL), cell(2, "x"), key(WXK_DOWN, wxMOD_ALT),
                 [&](CFormDialog&) { play.Await(m_rows.Sorting() == SortOrder::Ascending, "sorted"); },
                 key('f', wxMOD_CONTROL), [&](CFormDialog&) { play.Await(m_found == 1, "find"); }, key(WXK_ESCAPE)}));
    EXPECT_EQ(m_cancelled, 1);
    EXPECT_EQ(play.closedByForce, 0);
    EXPECT_EQ(m_model.ChangedRows(), (std::vector<std::size_t>{0, 2}));
}

TEST_F(Renderer, FiltersAndExtensions)
{
    EXPECT_EQ(WithExtension("/a.b/report", "txt"), "/a.b/report.txt");
    EXPECT_EQ(WithExtension("/a/report.", "txt"), "/a/report.txt");
    EXPECT_EQ(WithExtension("/a/report.log", "txt"), "/a/report.log");
    EXPECT_EQ(WithExtension("/a/.hidden", "txt"), "/a/.hidden.txt");
    EXPECT_EQ(WithExtension("/a/report", ""), "/a/report");
#ifndef _WIN32
    EXPECT_EQ(ToolkitFilter("Text (*.txt)|*.txt; *.txt|All Files (*.*)|*.*||"),
              "Text (*.txt)|*.txt;*.TXT|All Files (*.*)|*");
#endif
    EXPECT_EQ(ToolkitFilter(""), "");
}

}  // namespace
