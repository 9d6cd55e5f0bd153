// Scripts that run in a document.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "openhost/documents/Documents.h"
#include "openhost/pdf/DocumentWords.h"
#include "openhost/script/ScriptChanges.h"
#include "openhost/script/ScriptEngine.h"

namespace openhost {

/// What scripts share while the host runs.
struct ScriptSession {
    ScriptLimits limits;
    std::string globals = "{}";  ///< what the object "global" holds, as JSON
};

struct ScriptResult {
    bool rc = true;                            ///< event.rc
    std::optional<std::u16string> value = {};  ///< event.value; nothing when it is null or undefined
};

/// One run of a script in a document. What the script changes is kept here until somebody applies it, so that a
/// script that fails has changed nothing.
class CScriptRun {
public:
    /// The document is borrowed.
    explicit CScriptRun(PDDoc document);

    /// Fails: CScriptError, with the line in which the script failed.
    ScriptResult Execute(std::u16string_view source);
    /// Does to the document, and for later scripts, what the script did; answers whether the document changed. Fails:
    /// CPdfError.
    bool Apply();

    // For the objects.

    CHostDocument& Held() const { return DocumentAt(m_document); }
    CPdfDocument& Pdf() const { return Held().pdf; }
    /// An entry of the document information as the script sees it.
    std::optional<std::u16string> Info(const std::string& key) const;
    /// Fails: std::runtime_error when the document cannot have it or must not be changed.
    void SetInfo(const std::string& key, std::u16string text);
    const std::map<std::string, std::u16string>& ChangedInfo() const { return m_info; }
    /// Pages and view of the document with what the script has set.
    CScriptChanges& Changes() { return m_changes; }
    /// The words of a page (from 0) that exists; they live until those of another page are asked for. Fails:
    /// CPdfError when text must not be taken out.
    const CPageWords& WordsOfPage(int page0);
    /// A line for the person who reads the diagnostics; a script that says too much is cut short.
    void Say(const std::string& what, std::string_view utf8);

private:
    PDDoc m_document;
    ScriptSession& m_session;
    CScriptChanges m_changes;
    std::size_t m_infoBytes = 0;
    std::map<std::string, std::u16string> m_info;  // entries that the script has set
    std::optional<CDocumentWords> m_text;          // when a script has asked for words
    CPageWords m_words;
    std::optional<int> m_wordsPage0;
    std::optional<std::string> m_globals;  // as the script has left them
    std::size_t m_lines = 0;
};

/// Runs a script in a document and applies it. Fails: CScriptError, CPdfError.
ScriptResult RunScript(PDDoc document, std::u16string_view source);

}  // namespace openhost
