// Values between the host and a script: texts, functions, properties. For the files of this folder.
#pragma once

#include <duktape.h>

#include <cstddef>
#include <exception>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace openhost {

class CScriptRun;

/// The run that a script belongs to.
CScriptRun& RunOf(duk_context* context);

// Texts. The engine has each unit of UTF-16 by itself, as if it were UTF-8.

void PushScriptText(duk_context* context, std::u16string_view text);
void PushScriptUtf8(duk_context* context, std::string_view utf8);
/// What the value at the index is as a text; it becomes that text.
std::u16string ScriptUtf16At(duk_context* context, duk_idx_t index);
std::string ScriptTextAt(duk_context* context, duk_idx_t index);  // UTF-8
/// For the compiler of the engine.
std::string ScriptBytes(std::u16string_view text);

// Functions. What they throw becomes an error of the script, which it may catch.

/// What a function of an object does: its arguments are on the stack, the answer goes on top. Answers how many values
/// it answers, 0 or 1.
using ScriptFunction = duk_ret_t (*)(CScriptRun& run, duk_context* context);

[[noreturn]] void ThrowInScript(duk_context* context, const std::string& utf8);

template <ScriptFunction Function>
duk_ret_t ScriptEntry(duk_context* context)
{
    std::string reason;
    try {
        return Function(RunOf(context), context);
    } catch (const std::exception& exception) {  // the engine's own are none of these and go on
        reason = exception.what();
    }
    ThrowInScript(context, reason);
}

struct ScriptProperty {
    const char* name;
    duk_c_function get;
    duk_c_function set = nullptr;  ///< null: setting it is an error
};
struct ScriptMethod {
    const char* name;
    duk_c_function function;
};

/// To the object on top of the stack. Properties cannot be replaced by the script, methods can.
void AddScriptProperties(duk_context* context, std::initializer_list<ScriptProperty> properties);
void AddScriptMethods(duk_context* context, std::initializer_list<ScriptMethod> methods);

/// Puts the value on top of the stack under `name` of the global object, where the script cannot replace it.
void FixScriptGlobal(duk_context* context, const char* name);

/// Leaves the value of a piece of our own script on the stack: what objects are made of that need nothing of the
/// host.
void RunOwnScript(duk_context* context, const char* source);

/// An argument that may be given by its place, or by its name in an object that is the only argument: leaves the
/// value on the stack, undefined when there is none.
void PushArgument(duk_context* context, duk_idx_t place, const char* name);
/// The same, as a whole number.
int WholeArgument(duk_context* context, duk_idx_t place, const char* name, int fallback);
std::string TextArgument(duk_context* context, duk_idx_t place, const char* name, const std::string& fallback);

/// The number of a page (from 0) when the document has it. Fails: std::runtime_error.
int CheckedPage(const CScriptRun& run, int page0);

}  // namespace openhost
