#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/Windows.h"

class CFormDialog;
class wxWindow;

/// The windows on wxWidgets. One object at a time; everything in the host's thread for windows.
class CWxWindows final : public CWindows {
public:
    /// Starts the toolkit unless the process has it already. Nothing and a sentence in `problem` when it cannot
    /// start: there is no display.
    static std::unique_ptr<CWxWindows> Make(std::function<void*()> owner, std::string& problem);
    ~CWxWindows() override;

    bool Show(DialogForm& form) override;
    bool Message(MessageKind kind, const std::string& text) override;
    std::vector<std::string> OpenFiles(const FileChoice& choice) override;
    std::optional<std::string> OpenFile(const FileChoice& choice) override;
    std::optional<std::string> SaveFile(const FileChoice& choice) override;
    std::optional<std::string> ChooseFolder(const std::string& title, const std::string& initial) override;
    std::unique_ptr<CProgressWindow> MakeProgress() override;

    /// The dialog that is open, the innermost of several; for tests. Null: none.
    [[nodiscard]] CFormDialog* OpenDialog() const;

private:
    CWxWindows(std::function<void*()> owner, bool started) : m_owner(std::move(owner)), m_started(started) {}
    /// Calls with the window that the next one belongs to; a failure is `otherwise`.
    template <class Answer, class Work>
    Answer WithParent(Answer otherwise, Work work);

    std::function<void*()> m_owner;
    bool m_started;
    std::vector<CFormDialog*> m_open;
};
