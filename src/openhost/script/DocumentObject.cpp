// What "this" says of the document as a file, and what is the same as an entry of "info".

#include <algorithm>
#include <cctype>

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

/// "/C/folder/a.pdf": the form without drives and backslashes.
std::string PortablePath(std::string path)
{
    if (path.starts_with('/')) return path;
    std::ranges::replace(path, '\\', '/');
    if (path.starts_with("//")) return path.substr(1);
    if (path.size() > 1 && path[1] == ':') return std::string("/") + path[0] + path.substr(2);
    return path;
}

std::string PathOf(const CScriptRun& run) { return PortablePath(platform::Utf8FromNarrow(RealFileOf(run.Held()))); }

duk_ret_t NumPages(CScriptRun& run, duk_context* context)
{
    duk_push_int(context, run.Pdf().PageCount());
    return 1;
}

duk_ret_t Path(CScriptRun& run, duk_context* context)
{
    PushScriptUtf8(context, PathOf(run));
    return 1;
}

duk_ret_t FileName(CScriptRun& run, duk_context* context)
{
    const std::string path = PathOf(run);
    PushScriptUtf8(context, path.substr(path.rfind('/') + 1));
    return 1;
}

duk_ret_t FileBytes(CScriptRun& run, duk_context* context)
{
    duk_push_number(context, static_cast<double>(platform::FileSize(RealFileOf(run.Held())).value_or(0)));
    return 1;
}

/// Nobody has turned to another page where there is no window.
duk_ret_t PageNumber(CScriptRun&, duk_context* context)
{
    duk_push_int(context, 0);
    return 1;
}

duk_ret_t Modified(CScriptRun& run, duk_context* context)
{
    duk_push_boolean(context, run.Pdf().IsModified() || !run.ChangedInfo().empty() || !run.Changes().IsEmpty());
    return 1;
}

/// "this.title" is the entry "Title"; the engine tells the name of the property.
std::string EntryNamed(std::string property)
{
    property[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(property[0])));
    return property;
}

duk_ret_t InfoEntry(CScriptRun& run, duk_context* context)
{
    PushScriptText(context, run.Info(EntryNamed(ScriptTextAt(context, 0))).value_or(u""));
    return 1;
}

duk_ret_t SetInfoEntry(CScriptRun& run, duk_context* context)
{
    run.SetInfo(EntryNamed(ScriptTextAt(context, 1)), ScriptUtf16At(context, 0));
    return 0;
}

}  // namespace

void AddDocument(duk_context* context)
{
    duk_push_global_object(context);
    AddScriptProperties(context, {{"numPages", &ScriptEntry<&NumPages>},
                                  {"path", &ScriptEntry<&Path>},
                                  {"documentFileName", &ScriptEntry<&FileName>},
                                  {"filesize", &ScriptEntry<&FileBytes>},
                                  {"pageNum", &ScriptEntry<&PageNumber>},
                                  {"dirty", &ScriptEntry<&Modified>},
                                  {"title", &ScriptEntry<&InfoEntry>, &ScriptEntry<&SetInfoEntry>},
                                  {"author", &ScriptEntry<&InfoEntry>, &ScriptEntry<&SetInfoEntry>},
                                  {"subject", &ScriptEntry<&InfoEntry>, &ScriptEntry<&SetInfoEntry>},
                                  {"keywords", &ScriptEntry<&InfoEntry>, &ScriptEntry<&SetInfoEntry>},
                                  {"creator", &ScriptEntry<&InfoEntry>},
                                  {"producer", &ScriptEntry<&InfoEntry>}});
    duk_pop(context);
}

}  // namespace openhost
