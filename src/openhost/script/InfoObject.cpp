// "this.info": the entries of the document information, whatever the case of their names.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

#include "base/Text.h"
#include "base/Unicode.h"
#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

constexpr const char* kTexts[] = {"Title", "Author", "Subject", "Keywords", "Creator", "Producer"};
constexpr const char* kDates[] = {"CreationDate", "ModDate"};

bool IsOneOf(const std::string& key, const auto& names)
{
    return std::ranges::any_of(names, [&](const char* name) { return key == name; });
}

std::vector<std::string> KeysOf(CScriptRun& run)
{
    std::vector<std::string> keys = run.Pdf().InfoKeys();
    for (const auto& [key, text] : run.ChangedInfo())
        if (std::ranges::find(keys, key) == keys.end()) keys.push_back(key);
    return keys;
}

/// The name as the document has it.
std::string KnownKey(CScriptRun& run, const std::string& key)
{
    const auto same = [&](const std::string& name) { return EqualsIgnoreCaseAscii(name, key); };
    const std::vector<std::string> keys = KeysOf(run);
    if (std::ranges::find(keys, key) != keys.end()) return key;
    for (const char* const name : kTexts)
        if (same(name)) return name;
    for (const char* const name : kDates)
        if (same(name)) return name;
    const auto found = std::ranges::find_if(keys, same);
    return found == keys.end() ? key : *found;
}

// ---- dates: "D:20250131235959+01'00'", in which everything behind the year may be missing

/// Reads as many digits as there have to be; the smallest value when the text has ended.
std::optional<int> Digits(const std::string& text, std::size_t& at, std::size_t count, int missing)
{
    if (at >= text.size() || text[at] < '0' || text[at] > '9') return missing;
    int number = 0;
    for (std::size_t end = at + count; at < end; ++at) {
        if (at >= text.size() || text[at] < '0' || text[at] > '9') return std::nullopt;
        number = number * 10 + (text[at] - '0');
    }
    return number;
}

std::optional<double> MillisecondsOf(const std::string& date)
{
    using namespace std::chrono;
    std::size_t at = date.starts_with("D:") ? 2 : 0;
    if (at >= date.size() || date[at] < '0' || date[at] > '9') return std::nullopt;
    const auto yearRead = Digits(date, at, 4, 0), monthRead = Digits(date, at, 2, 1),
               dayRead = Digits(date, at, 2, 1);
    const auto hour = Digits(date, at, 2, 0), minute = Digits(date, at, 2, 0), second = Digits(date, at, 2, 0);
    if (!yearRead || !monthRead || !dayRead || !hour || !minute || !second) return std::nullopt;
    const year_month_day day{year{*yearRead}, month{static_cast<unsigned>(*monthRead)},
                             std::chrono::day{static_cast<unsigned>(*dayRead)}};
    if (!day.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
    int offset = 0;
    if (at < date.size() && (date[at] == '+' || date[at] == '-')) {
        const int sign = date[at++] == '-' ? -1 : 1;
        const auto hours = Digits(date, at, 2, 0);
        if (at < date.size() && date[at] == '\'') ++at;
        const auto minutes = Digits(date, at, 2, 0);
        if (!hours || !minutes) return std::nullopt;
        offset = sign * (*hours * 60 + *minutes);
    }
    const auto time = sys_days(day) + hours(*hour) + minutes(*minute - offset) + seconds(*second);
    return static_cast<double>(duration_cast<milliseconds>(time.time_since_epoch()).count());
}

std::string DateOf(double milliseconds)
{
    using namespace std::chrono;
    constexpr double most = 8.64e15;
    if (!std::isfinite(milliseconds) || std::abs(milliseconds) > most) throw std::runtime_error("this is no date");
    const sys_seconds time{seconds(static_cast<long long>(std::floor(milliseconds / 1000)))};
    const auto days = floor<std::chrono::days>(time);
    const year_month_day day{days};
    if (static_cast<int>(day.year()) < 0 || static_cast<int>(day.year()) > 9999)
        throw std::runtime_error("the year of the date has no four digits");
    const hh_mm_ss clock{time - days};
    return FormatText("D:%04d%02u%02u%02d%02d%02dZ", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                      static_cast<unsigned>(day.day()), static_cast<int>(clock.hours().count()),
                      static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
}

bool PushDate(duk_context* context, const std::string& date)
{
    const auto milliseconds = MillisecondsOf(date);
    if (!milliseconds) return false;
    duk_get_global_string(context, "Date");
    duk_push_number(context, *milliseconds);
    duk_new(context, 1);
    return true;
}

// ---- the traps of the object: (target, key), (target, key, value)

void PushEntry(CScriptRun& run, duk_context* context, const std::string& key)
{
    const auto text = run.Info(key);
    if (text && IsOneOf(key, kDates) && PushDate(context, Utf16ToUtf8(*text))) return;
    if (text || IsOneOf(key, kTexts))
        PushScriptText(context, text.value_or(u""));
    else
        duk_push_undefined(context);
}

duk_ret_t GetTrap(CScriptRun& run, duk_context* context)
{
    if (!duk_is_string(context, 1)) return 0;
    const std::string key = KnownKey(run, ScriptTextAt(context, 1));
    PushEntry(run, context, key);
    if (duk_is_undefined(context, -1)) {
        duk_dup(context, 1);
        duk_get_prop(context, 0);  // what every object has
    }
    return 1;
}

std::u16string GivenEntry(duk_context* context, const std::string& key)
{
    if (duk_is_null_or_undefined(context, 2)) return {};
    if (!IsOneOf(key, kDates)) return ScriptUtf16At(context, 2);
    if (duk_is_object(context, 2)) return Utf8ToUtf16(DateOf(duk_to_number(context, 2)));
    if (!MillisecondsOf(ScriptTextAt(context, 2))) throw std::runtime_error(key + " takes a date");
    return ScriptUtf16At(context, 2);
}

duk_ret_t SetTrap(CScriptRun& run, duk_context* context)
{
    const std::string key = KnownKey(run, ScriptTextAt(context, 1));
    run.SetInfo(key, GivenEntry(context, key));
    duk_push_true(context);
    return 1;
}

duk_ret_t HasTrap(CScriptRun& run, duk_context* context)
{
    const std::string key = KnownKey(run, ScriptTextAt(context, 1));
    duk_push_boolean(context, run.Info(key).has_value());
    return 1;
}

/// The engine lists those names that the target has as well.
duk_ret_t KeysTrap(CScriptRun& run, duk_context* context)
{
    duk_push_array(context);
    duk_uarridx_t at = 0;
    for (const std::string& key : KeysOf(run)) {
        if (!run.Info(key)) continue;
        PushScriptUtf8(context, key);
        duk_dup_top(context);
        duk_push_true(context);
        duk_put_prop(context, 0);
        duk_put_prop_index(context, -2, at++);
    }
    return 1;
}

duk_ret_t DeleteTrap(CScriptRun&, duk_context*)
{
    throw std::runtime_error("entries of the document information cannot be deleted, only emptied");
}

}  // namespace

void AddInfo(duk_context* context)
{
    duk_push_object(context);
    duk_push_object(context);
    AddScriptMethods(context, {{"get", &ScriptEntry<&GetTrap>},
                               {"set", &ScriptEntry<&SetTrap>},
                               {"has", &ScriptEntry<&HasTrap>},
                               {"ownKeys", &ScriptEntry<&KeysTrap>},
                               {"deleteProperty", &ScriptEntry<&DeleteTrap>}});
    duk_push_proxy(context, 0);
    FixScriptGlobal(context, "info");
}

}  // namespace openhost
