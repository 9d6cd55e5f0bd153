#include "common/PatternElements.h"

namespace {

constexpr PatternElement kNumbers[] = {
    {"Single Digit", "\\d"},
    {"Two Digits", "\\d{2}"},
    {"Three Digits", "\\d{3}"},
    {"Ten Digits", "\\d{10}"},
    {"One to Three Digits", "\\d{1,3}"},
    {"One or More Digits", "\\d+"},
    {"Zero or One Digit", "\\d?"},
    {"Dollar Amount With Cents: XXXX.XX", "\\d+\\.\\d{2}"},
    {"US Phone Number With Area Code: (XXX)-XXX-XXXX", "\\(\\d{3}\\)-\\d{3}-\\d{4}"},
    {"US SSN Number: XXX-XX-XXXX", "\\d{3}-\\d{2}-\\d{4}"},
    {"US ZIP+4 Code: XXXXX-XXXX", "\\d{5}-\\d{4}"},
};

constexpr PatternElement kLetters[] = {
    {"Single Letter", "[a-zA-Z]"},
    {"One or More Letters", "[a-zA-Z]+"},
    {"Single Letter, Digit or Underscore", "\\w"},
    {"One or More Letters, Digits or Underscores", "\\w+"},
    {"Single Word (No Digits Allowed)", "\\b[a-zA-Z]+\\b"},
    {"Single Word (Digits and Underscores Allowed)", "\\b\\w+\\b"},
};

constexpr PatternElement kWhitespace[] = {
    {"Single Whitespace", "\\s"},
    {"One or More Whitespaces", "\\s+"},
    {"Zero or One Whitespace", "\\s?"},
};

constexpr PatternElement kPunctuation[] = {
    {"Period Character - .", "\\."},       {"Question Mark - ?", "\\?"},
    {"Exclamation Mark - !", "\\!"},       {"* Character", "\\*"},
    {"Left Round Parenthesis - (", "\\("}, {"Right Round Parenthesis - )", "\\)"},
    {"Left Square Bracket - [", "\\("},   // sic
    {"Right Square Bracket - ]", "\\)"},  // sic
    {"Left Curly Bracket - {", "\\{"},     {"Right Curly Bracket - }", "\\}"},
};

constexpr PatternElement kSpecial[] = {
    {"Single Non-Digit Character", "\\D"},        {"One or More Non-Digit Character", "\\D+"},
    {"Single Non-Letter/Digit Character", "\\W"}, {"One or More Non-Letter/Digit Character", "\\W+"},
    {"Single Non-Space Character", "\\S"},        {"One or More Non-Space Character", "\\S+"},
};

constexpr PatternCategory kCatalogue[] = {
    {{"Numbers", "\\d+"}, kNumbers},        {{"Letters", "\\w+"}, kLetters},
    {{"Whitespace", "\\s+"}, kWhitespace},  {{"Punctuation", ""}, kPunctuation},
    {{"Special Categories", ""}, kSpecial},
};

}  // namespace

std::span<const PatternCategory> PatternCatalogue() { return kCatalogue; }
