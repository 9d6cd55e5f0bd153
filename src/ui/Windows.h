#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/Progress.h"
#include "ui/Form.h"

/// What is asked of a user who is to choose files.
struct FileChoice {
    std::string title = {};   ///< empty: the system's own
    std::string filter = {};  ///< pairs of description and patterns, "Text (*.txt)|*.txt|All Files (*.*)|*.*||"
    /// Without dot; added when saving to names without one, unless the chosen kind of file has another one.
    std::string defaultExtension = {};
    std::string initial = {};  ///< a path or a name
};

enum class MessageKind {
    Note,      ///< OK
    Warning,   ///< OK
    Question,  ///< Yes and No
    Confirm    ///< OK and Cancel
};

/// The windows that the plug-in opens. All of them wait until the user has answered, and belong to the host's window.
/// Texts are UTF-8; paths are in the form of platform/.
class CWindows {
public:
    virtual ~CWindows() = default;
    /// True when a button confirmed; false when it was cancelled or closed.
    virtual bool Show(DialogForm& form) = 0;
    /// True for OK and Yes.
    virtual bool Message(MessageKind kind, const std::string& text) = 0;
    /// Existing files, in the order in which the system gives them; empty when cancelled.
    virtual std::vector<std::string> OpenFiles(const FileChoice& choice) = 0;
    /// One existing file; nothing when cancelled.
    virtual std::optional<std::string> OpenFile(const FileChoice& choice) = 0;
    /// A name to write to, after the system has asked whether an existing file may be replaced.
    virtual std::optional<std::string> SaveFile(const FileChoice& choice) = 0;
    virtual std::optional<std::string> ChooseFolder(const std::string& title, const std::string& initial) = 0;
    /// A window for the progress of something long, hidden at first. It must not outlive this object.
    virtual std::unique_ptr<CProgressWindow> MakeProgress() = 0;
};

/// What every dialog needs. Borrowed.
struct DialogServices {
    CWindows& windows;
    /// Shows a page of the help, "SecuritySettings.htm"; says itself when that fails.
    std::function<void(const std::string& topic)> showHelp;
};

/// Gives what dialogs of this process need, made when it is first asked for, or a sentence that says why there are no
/// windows.
using DialogSource = std::function<Expected<DialogServices>()>;
