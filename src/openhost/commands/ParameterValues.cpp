#include "openhost/commands/ParameterValues.h"

#include <algorithm>
#include <cmath>

#include "base/Text.h"
#include "openhost/commands/LocalNumbers.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/ShortText.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

constexpr std::size_t kShownBytes = 40;

/// A number without zeros at its end.
std::string NumberText(double number)
{
    if (std::abs(number) < 1e15 && number == std::floor(number)) return FormatText("%.0f", number);
    return FormatText("%g", number);
}

std::optional<double> NumberIn(const CabValue& given)
{
    return std::visit(
        [](const auto& value) -> std::optional<double> {
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>)
                return static_cast<double>(value);
            else
                return std::nullopt;
        },
        given);
}

std::optional<std::string> TextIn(const CabValue& given)
{
    if (const auto* text = std::get_if<CHostText*>(&given)) return (*text)->Utf8();
    if (const auto* string = std::get_if<CabString>(&given))
        return platform::Utf8FromNarrow(std::string(string->block.View()));
    if (const auto* atom = std::get_if<CabAtom>(&given)) return AtomText(atom->atom);
    return std::nullopt;
}

std::optional<double> ClearNumber(const CabValue& given)
{
    if (const auto number = NumberIn(given)) return number;
    const auto text = TextIn(given);
    return text ? ReadClearNumber(*text) : std::nullopt;
}

std::optional<ParameterValue> ToBoolean(const CabValue& given)
{
    if (const auto* const value = std::get_if<bool>(&given)) return *value;
    const std::string text = TextIn(given).value_or("");
    if (EqualsIgnoreCaseAscii(text, "true")) return true;
    if (EqualsIgnoreCaseAscii(text, "false")) return false;
    const auto number = ClearNumber(given);
    if (number == 0 || number == 1) return *number == 1;
    return std::nullopt;
}

std::optional<ParameterValue> ToInteger(const StepParameter& parameter, const CabValue& given)
{
    const auto number = ClearNumber(given);
    constexpr double most = std::numeric_limits<int>::max();
    if (!number || *number != std::floor(*number) || std::abs(*number) > most) return std::nullopt;
    const int value = static_cast<int>(*number);
    if (!parameter.oneOf.empty() && std::ranges::find(parameter.oneOf, value) == parameter.oneOf.end())
        return std::nullopt;
    if (value < parameter.least || value > parameter.most) return std::nullopt;
    return value;
}

std::optional<ParameterValue> ToNumber(const StepParameter& parameter, const CabValue& given)
{
    const auto number = ClearNumber(given);
    if (!number || !std::isfinite(*number) || *number < parameter.least || *number > parameter.most)
        return std::nullopt;
    return *number;
}

std::optional<ParameterValue> ToText(const CabValue& given)
{
    if (auto text = TextIn(given)) return std::move(*text);
    if (const auto number = NumberIn(given)) return NumberText(*number);
    return std::nullopt;
}

}  // namespace

std::optional<ParameterValue> ConvertedParameter(const StepParameter& parameter, const CabValue& given)
{
    switch (parameter.kind) {
        case ParameterKind::Boolean:
            return ToBoolean(given);
        case ParameterKind::Integer:
            return ToInteger(parameter, given);
        case ParameterKind::Number:
            return ToNumber(parameter, given);
        case ParameterKind::Text:
            return ToText(given);
        case ParameterKind::Ignored:
            break;
    }
    return ParameterValue();
}

std::string ShownValue(const CabValue& given)
{
    if (const auto text = TextIn(given)) return '"' + ShortenedInMiddle(*text, kShownBytes) + '"';
    if (const auto number = NumberIn(given)) return NumberText(*number);
    if (const auto* const flag = std::get_if<bool>(&given)) return *flag ? "true" : "false";
    return std::holds_alternative<CCabinet*>(given) ? "a set of items" : "a value of another type";
}

std::string ExpectedOf(const StepParameter& parameter)
{
    if (!parameter.oneOf.empty()) {
        std::string list;
        for (std::size_t at = 0; at < parameter.oneOf.size(); ++at)
            list += (at == 0                            ? ""
                     : at + 1 == parameter.oneOf.size() ? " or "
                                                        : ", ") +
                    std::to_string(parameter.oneOf[at]);
        return list;
    }
    if (parameter.kind == ParameterKind::Boolean) return "true or false";
    if (parameter.kind == ParameterKind::Text) return "a text";
    std::string wanted = parameter.kind == ParameterKind::Integer ? "a whole number" : "a number";
    if (parameter.least > std::numeric_limits<double>::lowest()) wanted += " from " + NumberText(parameter.least);
    if (parameter.most < std::numeric_limits<double>::max()) wanted += " up to " + NumberText(parameter.most);
    return wanted;
}

}  // namespace openhost
