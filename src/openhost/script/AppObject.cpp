// "app": what the host says of itself, and alerts.

#include "openhost/app/AppState.h"
#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

// The kinds of buttons that an alert may have, and the answers to it.
enum AlertButtons { kOk, kOkCancel, kYesNo, kYesNoCancel };
enum AlertAnswer { kAnswerOk = 1, kAnswerCancel = 2, kAnswerNo = 3 };

/// Nobody reads the question: a message is taken note of, what asks is not agreed to.
duk_ret_t Alert(CScriptRun& run, duk_context* context)
{
    const std::string message = TextArgument(context, 0, "cMsg", "");
    const int buttons = WholeArgument(context, 2, "nType", kOk);
    run.Say("alert", message);
    duk_push_int(context, buttons == kOk ? kAnswerOk : buttons == kYesNo ? kAnswerNo : kAnswerCancel);
    return 1;
}

duk_ret_t Beep(CScriptRun&, duk_context*) { return 0; }

duk_ret_t Version(CScriptRun&, duk_context* context)
{
    duk_push_int(context, Part<AppSettings>().majorVersion);
    return 1;
}

template <const char* Text>
duk_ret_t Said(CScriptRun&, duk_context* context)
{
    duk_push_string(context, Text);
    return 1;
}

constexpr char kType[] = "Exchange-Pro", kVariation[] = "Full", kLanguage[] = "ENU";
#ifdef _WIN32
constexpr char kPlatform[] = "WIN";
#else
constexpr char kPlatform[] = "UNIX";
#endif

}  // namespace

void AddApp(duk_context* context)
{
    duk_push_object(context);
    AddScriptProperties(context, {{"viewerVersion", &ScriptEntry<&Version>},
                                  {"formsVersion", &ScriptEntry<&Version>},
                                  {"viewerType", &ScriptEntry<&Said<kType>>},
                                  {"viewerVariation", &ScriptEntry<&Said<kVariation>>},
                                  {"platform", &ScriptEntry<&Said<kPlatform>>},
                                  {"language", &ScriptEntry<&Said<kLanguage>>}});
    AddScriptMethods(context, {{"alert", &ScriptEntry<&Alert>}, {"beep", &ScriptEntry<&Beep>}});
    FixScriptGlobal(context, "app");
}

}  // namespace openhost
