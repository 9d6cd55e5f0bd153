#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/Windows.h"

/// A window that is to be looked at: opens it and comes back when it is closed.
struct Shot {
    std::string name;  ///< of the picture's file
    std::function<void(CWindows& windows)> open;
};

/// Every kind of control.
std::vector<Shot> ControlShots();
/// The dialogs of the plug-in; the pages of the help show these pictures.
std::vector<Shot> DialogShots();

/// Shows the forms of others with every text half as long again, as translations are.
class CLongTexts final : public CWindows {
public:
    explicit CLongTexts(CWindows& windows) : m_windows(windows) {}
    bool Show(DialogForm& form) override;
    bool Message(MessageKind kind, const std::string& text) override { return m_windows.Message(kind, text); }
    std::vector<std::string> OpenFiles(const FileChoice& choice) override { return m_windows.OpenFiles(choice); }
    std::optional<std::string> OpenFile(const FileChoice& choice) override { return m_windows.OpenFile(choice); }
    std::optional<std::string> SaveFile(const FileChoice& choice) override { return m_windows.SaveFile(choice); }
    std::optional<std::string> ChooseFolder(const std::string& title, const std::string& initial) override
    {
        return m_windows.ChooseFolder(title, initial);
    }
    std::unique_ptr<CProgressWindow> MakeProgress() override { return m_windows.MakeProgress(); }

private:
    CWindows& m_windows;
};
