#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "ui/Windows.h"

/// A form in the hands of a script. A control is named by its id, a button also by its label without "&". What a user
/// could not do (no such control, disabled, hidden) throws std::logic_error with the name.
class CFormHand {
public:
    explicit CFormHand(DialogForm& form) : m_form(form) {}

    void Check(const std::string& id, bool value);
    void Type(const std::string& id, const std::string& text);
    void Choose(const std::string& id, int row);  ///< of a choice or tree
    void Select(const std::string& id, std::vector<std::size_t> rows);
    /// In a grid; the row by its place.
    void Edit(const std::string& id, std::size_t place, const std::string& column, const std::string& text);
    /// What somebody does in a grid with keys and mouse.
    void WorkOn(const std::string& id, const std::function<void(CGridRows&)>& work);
    /// True when the form closed by it.
    bool Press(const std::string& button);

    [[nodiscard]] bool Enabled(const std::string& id) const;
    [[nodiscard]] bool Shown(const std::string& id) const;
    /// What a text or field says, the label of a check box or button, the chosen row of a choice.
    [[nodiscard]] std::string Text(const std::string& id) const;
    [[nodiscard]] bool Checked(const std::string& id) const;
    /// The cells of a list or grid, separated by tabs.
    [[nodiscard]] std::vector<std::string> Rows(const std::string& id) const;
    /// Everything that is said in the form and shown at present, in its order.
    [[nodiscard]] std::vector<std::string> Texts() const;

    [[nodiscard]] const DialogForm& Shape() const { return m_form; }
    [[nodiscard]] bool Closed() const { return m_answer != FormAnswer::StayOpen; }
    [[nodiscard]] bool Confirmed() const { return m_answer == FormAnswer::Confirm; }

private:
    const FormControl& Usable(const std::string& id) const;

    DialogForm& m_form;
    FormAnswer m_answer = FormAnswer::StayOpen;
};

/// Windows that nobody sees, answered by a script that was written before. Each window has to be the next one that
/// the script expects; else std::logic_error says what came instead.
class CScriptedWindows final : public CWindows {
public:
    /// A form that is not closed by `play` is cancelled then.
    void Expect(const std::string& title, std::function<void(CFormHand&)> play);
    void ExpectMessage(const std::string& text, bool answer = true);
    /// The answer to a question for files or a folder with this title; empty: cancelled.
    void ExpectFiles(const std::string& title, std::vector<std::string> answer);
    /// After so many questions the progress window is cancelled; negative: never.
    void CancelProgressAfter(int questions) { m_progressQuestions = questions; }

    /// What was expected and did not come, one line each.
    [[nodiscard]] std::vector<std::string> Missing() const;
    /// What was asked last in the way of files.
    [[nodiscard]] const FileChoice& LastChoice() const { return m_lastChoice; }
    /// What the progress windows said, one line for each change of a text.
    [[nodiscard]] const std::vector<std::string>& ProgressTexts() const { return m_progressTexts; }

    bool Show(DialogForm& form) override;
    bool Message(MessageKind kind, const std::string& text) override;
    std::vector<std::string> OpenFiles(const FileChoice& choice) override;
    std::optional<std::string> OpenFile(const FileChoice& choice) override;
    std::optional<std::string> SaveFile(const FileChoice& choice) override;
    std::optional<std::string> ChooseFolder(const std::string& title, const std::string& initial) override;
    std::unique_ptr<CProgressWindow> MakeProgress() override;

private:
    enum class Kind { Form, Message, Files };
    struct Awaited {
        Kind kind;
        std::string text;
        std::function<void(CFormHand&)> play;
        bool answer;
        std::vector<std::string> files;
    };
    Awaited Next(Kind kind, const std::string& text);

    std::deque<Awaited> m_script;
    FileChoice m_lastChoice;
    int m_progressQuestions = -1;
    std::vector<std::string> m_progressTexts;
};
