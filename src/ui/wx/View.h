#pragma once

#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/window.h>

#include <memory>
#include <string>
#include <vector>

#include "ui/Form.h"

/// What a control tells the dialog that it is in.
class CFormEvents {
public:
    virtual ~CFormEvents() = default;
    virtual void Changed(const FormControl& control) = 0;
    virtual void Press(const Button& button) = 0;
    /// A row of a list was double-clicked, or Enter was pressed on it.
    virtual void Activate(const std::string& button) = 0;
};

/// One control on the screen, with what is needed to put it into its place.
class CView {
public:
    explicit CView(const FormControl& control) : m_control(control) {}
    CView(const CView&) = delete;
    CView& operator=(const CView&) = delete;
    virtual ~CView() = default;

    virtual void Load() {}   ///< shows the field
    virtual void Store() {}  ///< puts what is shown into the field
    /// Asks what is enabled and shown; true when the room that is needed changed. What holds the control has its say.
    bool Update(bool enabled, bool shown);
    /// Texts that may have several lines get the width that they have now.
    virtual void Wrap() {}
    /// Does with the room for so many characters, where the screen has not more.
    virtual void Narrow(int) {}

    [[nodiscard]] const FormControl& Control() const { return m_control; }
    [[nodiscard]] wxStaticText* Label() const { return m_label; }
    /// Exactly one of the two: what stands behind the label.
    [[nodiscard]] wxWindow* Window() const { return m_window; }
    [[nodiscard]] wxSizer* Sizer() const { return m_sizer; }
    [[nodiscard]] wxWindow* FocusWindow() const { return m_focus ? m_focus : m_window; }
    [[nodiscard]] bool Widens() const { return m_widens; }  ///< uses all the width that there is
    [[nodiscard]] bool Tall() const { return m_tall; }      ///< more than a line

protected:
    /// Called when they changed. The default enables and shows label and window.
    virtual void Apply(bool enabled, bool shown);
    virtual bool UpdateParts(bool, bool) { return false; }

    const FormControl& m_control;
    wxStaticText* m_label = nullptr;
    wxWindow* m_window = nullptr;
    wxSizer* m_sizer = nullptr;
    wxWindow* m_focus = nullptr;
    bool m_widens = false;
    bool m_tall = false;

private:
    bool m_enabled = true;
    bool m_shown = true;
};

/// The control and those inside of it, as children of `parent`. `all` gets each view, those inside behind.
[[nodiscard]] std::unique_ptr<CView> MakeView(const FormControl& control, wxWindow* parent, CFormEvents& events,
                                              std::vector<CView*>& all);

/// Controls one below the other, what is in front of fields in one column. The views are kept by the caller.
[[nodiscard]] wxSizer* StackViews(const std::vector<std::unique_ptr<CView>>& views, wxSizer* into);
[[nodiscard]] std::vector<std::unique_ptr<CView>> MakeViews(const std::vector<FormControl>& controls,
                                                            wxWindow* parent, CFormEvents& events,
                                                            std::vector<CView*>& all);

/// Whether it or something inside of it takes the room that a larger dialog has.
[[nodiscard]] bool Grows(const FormControl& control);

// The kinds of controls, each in the file of its topic.

[[nodiscard]] std::unique_ptr<CView> MakeTextView(const FormControl& control, wxWindow* parent);
[[nodiscard]] std::unique_ptr<CView> MakeFieldView(const FormControl& control, wxWindow* parent, CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeSecretView(const FormControl& control, wxWindow* parent,
                                                    CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeCheckView(const FormControl& control, wxWindow* parent, CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeChoiceView(const FormControl& control, wxWindow* parent,
                                                    CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeRadioView(const FormControl& control, wxWindow* parent, CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeButtonView(const FormControl& control, wxWindow* parent,
                                                    CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeListView(const FormControl& control, wxWindow* parent, CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeTreeView(const FormControl& control, wxWindow* parent, CFormEvents& events);
[[nodiscard]] std::unique_ptr<CView> MakeGridView(const FormControl& control, wxWindow* parent, CFormEvents& events);

// What they share.

/// The text in front of a field, made before the field so that the tab order and the letters of labels are right;
/// null without a text.
[[nodiscard]] wxStaticText* MakeLabel(wxWindow* parent, const std::string& label);
/// The width of so many characters in the control's font.
[[nodiscard]] int TextWidth(const wxWindow& window, int characters);
/// The distance between neighbours.
[[nodiscard]] int Gap(const wxWindow* window);
