// "console": its lines go to the diagnostics; there is no window to show or clear.

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

duk_ret_t PrintLine(CScriptRun& run, duk_context* context)
{
    run.Say("script", duk_get_top(context) > 0 ? ScriptTextAt(context, 0) : std::string());
    return 0;
}

duk_ret_t DoNothing(CScriptRun&, duk_context*) { return 0; }

}  // namespace

void AddConsole(duk_context* context)
{
    duk_push_object(context);
    AddScriptMethods(context, {{"println", &ScriptEntry<&PrintLine>},
                               {"show", &ScriptEntry<&DoNothing>},
                               {"hide", &ScriptEntry<&DoNothing>},
                               {"clear", &ScriptEntry<&DoNothing>}});
    FixScriptGlobal(context, "console");
}

}  // namespace openhost
