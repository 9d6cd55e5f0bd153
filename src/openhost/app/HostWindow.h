#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace openhost {

// The host's own window, for whoever wants one: menus, a list of the open documents, alerts and choosers. What shows
// it is a library of its own, so that a host without a window pays nothing for it. All texts are UTF-8, paths are as
// the system has them, everything happens in the host's thread.

struct WindowMenuItem {
    std::string title;  ///< "&" stands before the letter of the keyboard; "-" is a line between items
    std::vector<WindowMenuItem> items = {};  ///< of its submenu
    std::function<bool()> enabled = {}, marked = {};
    std::function<void()> choose = {};
};

struct WindowMenu {
    std::string title;
    std::vector<WindowMenuItem> items;
};

struct WindowDocument {
    std::string name, path, security;
    int pages = 0;
    bool operator==(const WindowDocument&) const = default;
};

/// What the window shows. No function throws, nor do those that it answers.
class CWindowContent {
public:
    virtual ~CWindowContent() = default;
    virtual std::string Title() const = 0;
    virtual std::vector<WindowMenu> Menus() const = 0;
    virtual std::vector<WindowDocument> Documents() const = 0;
    /// The user has closed the window.
    virtual void Closed() = 0;
};

enum class AlertKind { Note, OkCancel, YesNo };

class CHostWindow {
public:
    virtual ~CHostWindow() = default;
    /// For windows that are to belong to this one: an HWND on Windows, a GtkWindow elsewhere.
    virtual void* Handle() const = 0;
    /// Does what the user wants; waits at most so long for something to do.
    virtual void Work(unsigned milliseconds) = 0;
    /// The place in the list that the user has selected.
    virtual std::optional<std::size_t> SelectedDocument() const = 0;
    /// True for OK and Yes.
    virtual bool Alert(AlertKind kind, const std::string& text) = 0;
    /// `patterns` as "*.pdf;*.txt"; empty: all files. Nothing was chosen: empty.
    virtual std::vector<std::string> ChooseFiles(const std::string& title, const std::string& patterns,
                                                 bool several) = 0;
    virtual std::string ChooseFolder(const std::string& title) = 0;
};

/// The window of this host; null: it has none.
struct WindowPlace {
    CHostWindow* window = nullptr;  ///< borrowed
};

// The one function of the library.

struct HostWindowRequest {
    const char* version;      ///< has to be the library's own
    CWindowContent* content;  ///< borrowed; lives longer than the window
    char problem[512];        ///< the answer when there is no window: why
};
using MakeHostWindowProc = CHostWindow* (*)(HostWindowRequest* request);
inline constexpr char kMakeHostWindow[] = "FerruleMakeHostWindow";

/// Differs whenever program and library would not understand each other; `product` is the product's version.
inline std::string HostWindowVersion(const char* product)
{
    return std::string(product) + " built with " __VERSION__ "-" + std::to_string(sizeof(WindowMenuItem)) + "-" +
           std::to_string(sizeof(WindowDocument));
}

}  // namespace openhost
