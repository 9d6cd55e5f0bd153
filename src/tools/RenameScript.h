// The script that somebody wants run for each file that got a new name.
#pragma once

#include <string>

#include "platform/ChildProcess.h"

/// The script as a file, and how it is started. The file's content and the start together tell the script both paths.
struct ScriptFile {
    std::string path;
    std::string content;
    platform::ChildOptions start;
};

/// In the system's own form: on Linux for /bin/sh, with the paths in the variables OUTPUTDOCUMENT and INPUTDOCUMENT
/// and nowhere as text; on Windows a batch file.
[[nodiscard]] ScriptFile MakeScriptFile(const std::string& folder, const std::string& script,
                                        const std::string& input, const std::string& output);

/// The batch file at `path`. It sets the two variables itself, removes itself in the end, and ends with the code of
/// the script. "%" in paths is doubled, so that it begins no variable.
[[nodiscard]] std::string BatchScriptText(const std::string& path, const std::string& script,
                                          const std::string& input, const std::string& output);

class CRenameScript {
public:
    /// `folder` is made, for the user alone, with the first file; `seconds` is what the script may take for a file.
    CRenameScript(std::string script, std::string folder, int seconds);
    CRenameScript(const CRenameScript&) = delete;
    CRenameScript& operator=(const CRenameScript&) = delete;
    ~CRenameScript();

    /// Waits until the script has come to its end; after its time, or when this process is to stop, it is ended with
    /// all that it has started. Answers what went wrong, a sentence; empty when nothing did.
    [[nodiscard]] std::string Run(const std::string& input, const std::string& output) const;

private:
    [[nodiscard]] std::string WaitFor(const ScriptFile& file) const;

    std::string m_script, m_folder;
    int m_seconds;
};
