#pragma once

#include <wx/window.h>

#include <functional>
#include <memory>
#include <string>

// What the toolkit leaves to us and each system does in its own way.

/// Before the toolkit is started in a process that is somebody else's.
void PrepareStart();

/// Gives a control the name that screen readers say, and lets the letter of the label lead to it. `label`: the text
/// in front of it, may be null.
void NameForReaders(wxWindow& control, const std::string& name, wxWindow* label);
/// What a screen reader would say of the control, the text in front of it included; for tests.
[[nodiscard]] std::string ReadersName(wxWindow& control);

/// Takes at most so many waiting events. The request to quit stays for the loop of the host.
void TakeEvents(int atMost);
/// Called when a dialog's loop ended although nobody closed the dialog: somebody asked the thread to quit.
void PassOnQuit();

/// The host's window as the parent of ours; deletes what stands for it, never the window. Null for none.
class COwner {
public:
    explicit COwner(void* hostWindow);
    COwner(const COwner&) = delete;
    COwner& operator=(const COwner&) = delete;
    ~COwner();
    [[nodiscard]] wxWindow* Window() const { return m_window; }

private:
    wxWindow* m_window = nullptr;
};

/// While it lives, controls are made in the look of today, whatever the host's own is.
class CLook {
public:
    CLook();
    CLook(const CLook&) = delete;
    CLook& operator=(const CLook&) = delete;
    ~CLook();

private:
    void* m_cookie = nullptr;
};
