#include "openhost/script/ScriptValues.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include "base/Unicode.h"
#include "openhost/script/ScriptEngine.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

constexpr unsigned kTail = 0x80, kTailBits = 0x3F;

void AppendUnit(std::string& bytes, unsigned unit)
{
    if (unit < 0x80) {
        bytes += static_cast<char>(unit);
    } else if (unit < 0x800) {
        bytes += static_cast<char>(0xC0 | (unit >> 6));
        bytes += static_cast<char>(kTail | (unit & kTailBits));
    } else {
        bytes += static_cast<char>(0xE0 | (unit >> 12));
        bytes += static_cast<char>(kTail | ((unit >> 6) & kTailBits));
        bytes += static_cast<char>(kTail | (unit & kTailBits));
    }
}

std::u16string UnitsOf(std::string_view bytes)
{
    std::u16string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto head = static_cast<unsigned char>(bytes[at]);
        const std::size_t length = head < 0x80 ? 1 : head < 0xC0 ? 0 : head < 0xE0 ? 2 : head < 0xF0 ? 3 : 0;
        if (length == 0 || at + length > bytes.size()) {
            text += static_cast<char16_t>(kReplacementCharacter);
            ++at;
            continue;
        }
        unsigned unit = length == 1 ? head : head & (0xFFU >> (length + 1));
        for (std::size_t tail = 1; tail < length; ++tail)
            unit = (unit << 6) | (static_cast<unsigned char>(bytes[at + tail]) & kTailBits);
        text += static_cast<char16_t>(unit);
        at += length;
    }
    return text;
}

/// The setter of a property that has none; the engine tells it the name.
duk_ret_t RefuseSetting(CScriptRun&, duk_context* context)
{
    throw std::runtime_error(ScriptTextAt(context, 1) + " cannot be set");
}

}  // namespace

CScriptRun& RunOf(duk_context* context) { return *static_cast<CScriptRun*>(CScriptEngine::OwnerOf(context)); }

std::string ScriptBytes(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (const char16_t unit : text) AppendUnit(bytes, unit);
    return bytes;
}

void PushScriptText(duk_context* context, std::u16string_view text)
{
    const std::string bytes = ScriptBytes(text);
    duk_push_lstring(context, bytes.data(), bytes.size());
}

void PushScriptUtf8(duk_context* context, std::string_view utf8) { PushScriptText(context, Utf8ToUtf16(utf8)); }

std::u16string ScriptUtf16At(duk_context* context, duk_idx_t index)
{
    duk_size_t length = 0;
    const char* const bytes = duk_to_lstring(context, index, &length);
    return UnitsOf({bytes, length});
}

std::string ScriptTextAt(duk_context* context, duk_idx_t index) { return Utf16ToUtf8(ScriptUtf16At(context, index)); }

void ThrowInScript(duk_context* context, const std::string& utf8)
{
    duk_push_error_object(context, DUK_ERR_ERROR, "%s", ScriptBytes(Utf8ToUtf16(utf8)).c_str());
    duk_throw_raw(context);
    std::abort();  // it does not come back
}

void AddScriptProperties(duk_context* context, std::initializer_list<ScriptProperty> properties)
{
    for (const ScriptProperty& property : properties) {
        duk_push_string(context, property.name);
        duk_push_c_function(context, property.get, 1);
        duk_push_c_function(context, property.set ? property.set : &ScriptEntry<&RefuseSetting>, 2);
        duk_def_prop(context, -4,
                     DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_ENUMERABLE |
                         DUK_DEFPROP_CLEAR_CONFIGURABLE);
    }
}

void AddScriptMethods(duk_context* context, std::initializer_list<ScriptMethod> methods)
{
    for (const ScriptMethod& method : methods) {
        duk_push_c_function(context, method.function, DUK_VARARGS);
        duk_put_prop_string(context, -2, method.name);
    }
}

void FixScriptGlobal(duk_context* context, const char* name)
{
    duk_push_global_object(context);
    duk_push_string(context, name);
    duk_dup(context, -3);
    duk_def_prop(context, -3,
                 DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_CLEAR_WRITABLE | DUK_DEFPROP_CLEAR_ENUMERABLE |
                     DUK_DEFPROP_CLEAR_CONFIGURABLE);
    duk_pop_2(context);
}

void RunOwnScript(duk_context* context, const char* source)
{
    duk_push_string(context, "host");
    duk_compile_string_filename(context, DUK_COMPILE_EVAL, source);
    duk_call(context, 0);
}

void PushArgument(duk_context* context, duk_idx_t place, const char* name)
{
    const bool named = duk_get_top(context) > 0 && duk_is_object(context, 0) && !duk_is_array(context, 0) &&
                       !duk_is_function(context, 0);
    if (named)
        duk_get_prop_string(context, 0, name);
    else if (place < duk_get_top(context))
        duk_dup(context, place);
    else
        duk_push_undefined(context);
}

int WholeArgument(duk_context* context, duk_idx_t place, const char* name, int fallback)
{
    PushArgument(context, place, name);
    double number = fallback;
    if (!duk_is_null_or_undefined(context, -1)) number = duk_to_number(context, -1);
    duk_pop(context);
    if (number != std::floor(number) || std::abs(number) > std::numeric_limits<int>::max())
        throw std::runtime_error(std::string(name) + " must be a whole number");
    return static_cast<int>(number);
}

std::string TextArgument(duk_context* context, duk_idx_t place, const char* name, const std::string& fallback)
{
    PushArgument(context, place, name);
    const std::string text = duk_is_null_or_undefined(context, -1) ? fallback : ScriptTextAt(context, -1);
    duk_pop(context);
    return text;
}

}  // namespace openhost
