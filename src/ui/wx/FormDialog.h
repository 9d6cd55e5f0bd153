#pragma once

#include <wx/dialog.h>

#include <memory>
#include <vector>

#include "ui/wx/View.h"

/// A form as a dialog that waits for its answer.
class CFormDialog final : public wxDialog, private CFormEvents {
public:
    /// The form lives longer than the dialog. `owner` may be null.
    CFormDialog(wxWindow* owner, const DialogForm& form);
    ~CFormDialog() override;

    /// True when a button confirmed.
    bool Run();

    [[nodiscard]] const std::vector<CView*>& Views() const { return m_all; }

private:
    void Changed(const FormControl& control) override;
    void Press(const Button& button) override;
    void Activate(const std::string& button) override;

    void Build();
    wxSizer* ButtonRow();
    void FocusFirst();
    template <class Action>
    void Act(Action action);
    void Cancel();
    void ShowFields();
    bool UpdateStates();
    void TakeRoom();
    wxSize Least() const;
    void End(FormAnswer answer);

    const DialogForm& m_form;
    std::vector<std::unique_ptr<CView>> m_controls;
    std::vector<std::unique_ptr<CView>> m_buttons;
    std::vector<CView*> m_all;
    FormAnswer m_answer = FormAnswer::StayOpen;
    bool m_acting = false;
};
