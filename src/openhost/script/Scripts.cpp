#include "openhost/script/Scripts.h"

#include "base/Unicode.h"
#include "openhost/script/EventObject.h"
#include "openhost/script/GlobalObject.h"
#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

void AddObjects(duk_hthread* context)
{
    // The engine's own object: calls that run when something is thrown or freed, and threads.
    duk_push_global_object(context);
    duk_del_prop_string(context, -1, "Duktape");
    duk_pop(context);
#define ADD_OBJECT(name) Add##name(context);
    SCRIPT_OBJECTS(ADD_OBJECT)
#undef ADD_OBJECT
}

std::string WithoutControls(std::string_view text)
{
    std::string line(text);
    for (char& character : line)
        if (static_cast<unsigned char>(character) < ' ' || character == '\x7F') character = ' ';
    return line;
}

}  // namespace

CScriptRun::CScriptRun(PDDoc document) : m_document(document), m_session(Part<ScriptSession>()), m_changes(Pdf()) {}

ScriptResult CScriptRun::Execute(std::u16string_view source)
{
    CScriptEngine engine(m_session.limits, this);
    ScriptResult result;
    engine.Run(&AddObjects);
    engine.Run([&](duk_hthread* context) {
        const std::string bytes = ScriptBytes(source);
        duk_push_string(context, kScriptFile);
        duk_compile_lstring_filename(context, 0, bytes.data(), bytes.size());
        duk_push_global_object(context);
        duk_call_method(context, 0);
    });
    engine.Run([&](duk_hthread* context) {
        result = ResultInEvent(context);
        m_globals = GlobalsAsJson(context, m_session.limits.globals);
    });
    return result;
}

bool CScriptRun::Apply()
{
    bool changed = m_changes.Apply();
    for (const auto& [key, text] : m_info) {
        const auto present = Pdf().Info(key);
        if (present ? Utf16FromPdText(*present) == text : text.empty()) continue;
        Pdf().SetInfo(key, PdTextFromUtf16(text));
        changed = true;
    }
    if (m_globals) m_session.globals = *m_globals;
    return changed;
}

std::optional<std::u16string> CScriptRun::Info(const std::string& key) const
{
    if (const auto found = m_info.find(key); found != m_info.end()) return found->second;
    const auto present = Pdf().Info(key);
    if (!present) return std::nullopt;
    return Utf16FromPdText(*present);
}

void CScriptRun::SetInfo(const std::string& key, std::u16string text)
{
    if (key.empty() || key.find('#') != key.npos || key.find('\0') != key.npos)
        throw std::runtime_error("the document information can have no entry named \"" + key + '"');
    if (!Pdf().Allows(PdfRight::Change)) throw std::runtime_error("the document must not be changed");
    m_infoBytes += key.size() + text.size() * sizeof(char16_t);
    if (m_infoBytes > m_session.limits.info)
        throw std::runtime_error("the script sets too much document information");
    m_info[key] = std::move(text);
}

const CPageWords& CScriptRun::WordsOfPage(int page0)
{
    if (m_wordsPage0 == page0) return m_words;
    if (!m_text) m_text.emplace(Pdf(), WordOptions{.fonts = false}, nullptr);
    m_wordsPage0.reset();
    m_words = m_text->Page(page0);
    m_wordsPage0 = page0;
    return m_words;
}

void CScriptRun::Say(const std::string& what, std::string_view utf8)
{
    if (m_lines++ > m_session.limits.lines) return;
    if (m_lines > m_session.limits.lines)
        Diagnose(Pdf().Description() + ": the script says more, which is left out");
    else
        Diagnose(Pdf().Description() + ": " + what + ": " +
                 ShortenedInMiddle(WithoutControls(utf8), m_session.limits.lineBytes));
}

ScriptResult RunScript(PDDoc document, std::u16string_view source)
{
    CScriptRun run(document);
    ScriptResult result = run.Execute(source);
    run.Apply();
    return result;
}

}  // namespace openhost
