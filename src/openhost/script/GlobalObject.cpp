// "global": what scripts leave for those after them while the host runs, copied as JSON.

#include "openhost/script/GlobalObject.h"

#include <stdexcept>

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

/// Nothing outlives the host.
duk_ret_t SetPersistent(CScriptRun&, duk_context*) { return 0; }

}  // namespace

void AddGlobal(duk_context* context)
{
    const std::string& json = Part<ScriptSession>().globals;
    duk_push_lstring(context, json.data(), json.size());
    duk_json_decode(context, -1);
    duk_push_string(context, "setPersistent");
    duk_push_c_function(context, &ScriptEntry<&SetPersistent>, DUK_VARARGS);
    duk_def_prop(context, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_CLEAR_WEC);
    FixScriptGlobal(context, "global");
}

std::string GlobalsAsJson(duk_context* context, std::size_t mostBytes)
{
    duk_get_global_string(context, "global");
    duk_json_encode(context, -1);
    duk_size_t length = 0;
    const char* const bytes = duk_get_lstring(context, -1, &length);
    std::string json = bytes && *bytes == '{' ? std::string(bytes, length) : std::string("{}");
    duk_pop(context);
    if (json.size() > mostBytes)
        throw std::runtime_error("\"global\" holds more than the " + std::to_string(mostBytes) +
                                 " bytes that it may");
    return json;
}

}  // namespace openhost
