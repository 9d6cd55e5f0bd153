#include "openhost/values/CabKeys.h"

#include <algorithm>

#include "openhost/values/Cabinet.h"

namespace openhost {

namespace {

constexpr std::size_t kMaxStep = 1024;

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

std::string_view WithoutLeadingZeros(std::string_view digits)
{
    const auto first = digits.find_first_not_of('0');
    return first == std::string_view::npos ? digits.substr(digits.size() - 1) : digits.substr(first);
}

}  // namespace

bool IsKeyStep(std::string_view step)
{
    const auto fits = [](char character) { return character >= ' ' && character <= '~' && character != ':'; };
    return !step.empty() && step.size() <= kMaxStep && std::all_of(step.begin(), step.end(), fits);
}

bool IsNumberKey(std::string_view step) { return !step.empty() && std::all_of(step.begin(), step.end(), IsDigit); }

std::string NextNumberKey(std::string_view number)
{
    std::string next(WithoutLeadingZeros(number));
    for (std::size_t at = next.size(); at-- > 0;) {
        if (next[at] != '9') {
            ++next[at];
            return next;
        }
        next[at] = '0';
    }
    return "1" + next;
}

std::string_view CutStep(std::string_view& path, bool& last)
{
    const auto colon = path.find(':');
    last = colon == std::string_view::npos;
    const std::string_view step = path.substr(0, colon);
    path = last ? std::string_view() : path.substr(colon + 1);
    return step;
}

bool CabKeyOrder::operator()(std::string_view one, std::string_view other) const
{
    const bool oneNumber = IsNumberKey(one);
    const bool otherNumber = IsNumberKey(other);
    if (oneNumber != otherNumber) return oneNumber;
    if (oneNumber) {
        const auto first = WithoutLeadingZeros(one);
        const auto second = WithoutLeadingZeros(other);
        if (first.size() != second.size()) return first.size() < second.size();
        if (first != second) return first < second;
    }
    return one < other;
}

}  // namespace openhost
