// Properties that documents have elsewhere and not here. Without this, setting one would look like something done.

#include <stdexcept>

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

constexpr const char* kProperties[] = {"baseURL",
                                       "bookmarkRoot",
                                       "calculate",
                                       "dataObjects",
                                       "delay",
                                       "docID",
                                       "dynamicXFAForm",
                                       "hidden",
                                       "hostContainer",
                                       "icons",
                                       "innerAppWindowRect",
                                       "innerDocWindowRect",
                                       "media",
                                       "metadata",
                                       "modDate",
                                       "creationDate",
                                       "mouseX",
                                       "mouseY",
                                       "noautocomplete",
                                       "nocache",
                                       "numFields",
                                       "numTemplates",
                                       "outerAppWindowRect",
                                       "outerDocWindowRect",
                                       "pageWindowRect",
                                       "permStatusReady",
                                       "requiresFullSave",
                                       "securityHandler",
                                       "selectedAnnots",
                                       "sounds",
                                       "spellDictionaryOrder",
                                       "spellLanguageOrder",
                                       "templates",
                                       "URL",
                                       "viewState",
                                       "xfa"};

/// The engine tells a getter the name as its first argument and a setter as its second.
duk_ret_t Refuse(CScriptRun&, duk_context* context)
{
    throw std::runtime_error("this host has no property " + ScriptTextAt(context, duk_get_top(context) - 1) +
                             " of documents");
}

}  // namespace

void AddUnsupportedMembers(duk_context* context)
{
    duk_push_global_object(context);
    for (const char* const name : kProperties)
        AddScriptProperties(context, {{name, &ScriptEntry<&Refuse>, &ScriptEntry<&Refuse>}});
    duk_pop(context);
}

}  // namespace openhost
