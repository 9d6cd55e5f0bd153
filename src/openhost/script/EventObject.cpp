// "event": what the script was started for, and what it answers.

#include "openhost/script/EventObject.h"

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"

namespace openhost {

void AddEvent(duk_context* context)
{
    duk_push_object(context);
    duk_push_string(context, "Exec");
    duk_put_prop_string(context, -2, "name");
    duk_push_string(context, "Batch");
    duk_put_prop_string(context, -2, "type");
    duk_push_global_object(context);
    duk_put_prop_string(context, -2, "target");
    duk_push_true(context);
    duk_put_prop_string(context, -2, "rc");
    duk_push_undefined(context);
    duk_put_prop_string(context, -2, "value");
    FixScriptGlobal(context, "event");
}

ScriptResult ResultInEvent(duk_context* context)
{
    ScriptResult result;
    duk_get_global_string(context, "event");
    duk_get_prop_string(context, -1, "rc");
    result.rc = duk_to_boolean(context, -1) != 0;
    duk_pop(context);
    duk_get_prop_string(context, -1, "value");
    if (!duk_is_null_or_undefined(context, -1)) result.value = ScriptUtf16At(context, -1);
    duk_pop_2(context);
    return result;
}

}  // namespace openhost
