#include "naming/NameText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"

namespace {

constexpr int kMostDigits = 40;
constexpr int kLetters = 26;

bool MayStandInName(char32_t character)
{
    constexpr char32_t kFirstPrintable = 0x20, kDelete = 0x7F, kAfterControls = 0xA0;
    if (character < kFirstPrintable || (character >= kDelete && character < kAfterControls)) return false;
    if (character == U'\\' || character == U'\u2028' || character == U'\u2029') return false;
    return character > kDelete ||
           InvalidNameCharacters().find(static_cast<char>(character)) == std::string_view::npos;
}

std::string WithoutForbidden(std::string_view utf8)
{
    std::string allowed;
    for (std::size_t position = 0; position < utf8.size();) {
        const char32_t character = NextUtf8(utf8, position);
        if (MayStandInName(character)) AppendUtf8(allowed, character);
    }
    return allowed;
}

struct NameSize {
    std::size_t characters, bytes;
};

NameSize SizeOf(std::string_view utf8) { return {Utf8ToUtf32(utf8).size(), utf8.size()}; }

/// As many whole user-perceived characters from the beginning as fit.
std::string_view CutTo(std::string_view utf8, NameSize most)
{
    NameSize used{0, 0};
    while (used.bytes < utf8.size()) {
        const NameSize next = SizeOf(utf8.substr(used.bytes, GraphemeLength(utf8.substr(used.bytes))));
        if (used.characters + next.characters > most.characters || used.bytes + next.bytes > most.bytes) break;
        used = {used.characters + next.characters, used.bytes + next.bytes};
    }
    return utf8.substr(0, used.bytes);
}

std::string_view WithoutEnds(std::string_view name)
{
    const std::size_t start = name.find_first_not_of(' ');
    if (start == std::string_view::npos) return {};
    const std::size_t end = name.find_last_not_of(" .");
    return end == std::string_view::npos ? std::string_view{} : name.substr(start, end + 1 - start);
}

/// Whatever stands behind the first dot, Windows takes the name for the device.
bool NamesDevice(std::string_view name)
{
    constexpr std::array kDevices{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    constexpr std::array kPorts{"COM", "LPT"};
    constexpr std::array kPortNumbers{"1", "2", "3", "4", "5", "6", "7", "8", "9", "\u00B9", "\u00B2", "\u00B3"};
    const std::string stem = Trim(name.substr(0, name.find('.')));
    const auto is = [&](const std::string& device) { return EqualsIgnoreCaseAscii(stem, device); };
    if (std::ranges::any_of(kDevices, is)) return true;
    return std::ranges::any_of(kPorts, [&](const std::string& port) {
        return std::ranges::any_of(kPortNumbers, [&](const char* number) { return is(port + number); });
    });
}

std::string WithoutDevice(std::string name)
{
    if (NamesDevice(name)) name.insert(std::min(name.find('.'), name.size()), "_");
    return name;
}

}  // namespace

std::string NumberText(const CFileNamePart& part, int index)
{
    const long long value = static_cast<long long>(index) * part.increment + part.startingNumber;
    return FormatText("%0*lld", std::clamp(part.padWithZeroes, 1, kMostDigits) + (value < 0 ? 1 : 0), value);
}

std::string LetterText(int index)
{
    const auto letters = static_cast<std::size_t>(index / kLetters) + 1;
    return std::string(std::min(letters, kLongestNameBytes), static_cast<char>('A' + index % kLetters));
}

std::string PageRangeText(int pageCount) { return pageCount == 1 ? "1" : "1-" + std::to_string(pageCount); }

Expected<CNameRules> CNameRules::From(const std::vector<CFileRenameRule>& rules)
{
    CNameRules compiled;
    for (const CFileRenameRule& rule : rules) {
        Rule made{.rule = rule, .expression = std::nullopt};
        if (rule.useExpression && !made.expression.emplace().Compile(rule.search, LetterCase::Matters))
            return Failure("The renaming rule \"" + rule.Description() + "\" cannot be used. " +
                           made.expression->Error());
        compiled.m_rules.push_back(std::move(made));
    }
    return compiled;
}

Expected<std::string> CNameRules::Apply(std::string text) const
{
    for (const Rule& rule : m_rules) {
        if (!rule.expression) {
            text = ReplaceAll(text, rule.rule.search, rule.rule.replace);
            continue;
        }
        auto replaced = rule.expression->ReplaceAll(CSearchedText::FromUtf8(text), rule.rule.replace);
        if (!replaced) return replaced;
        text = std::move(*replaced);
    }
    return text;
}

std::string InCase(const std::string& text, NameCase textCase)
{
    switch (textCase) {
        case NameCase::Lower:
            return LowerCasedName(text);
        case NameCase::Upper:
            return UpperCasedName(text);
        case NameCase::Original:
            break;
    }
    return text;
}

std::string ValidFileName(std::string_view utf8, std::string_view extension, std::size_t most)
{
    const std::string text = SanitizeUtf8(utf8);
    const std::string ending = extension.empty() ? std::string() : '.' + std::string(extension);
    constexpr std::size_t kRoomForUnderscore = 1;
    if (ending.size() + kRoomForUnderscore >= kLongestNameBytes) return {};
    const std::size_t bytes = kLongestNameBytes - ending.size() - kRoomForUnderscore;
    const std::string_view cut = CutTo(text, {std::min(most, kLongestNameCharacters), text.size()});
    const std::string allowed = WithoutForbidden(cut);
    const std::string name = WithoutDevice(std::string(WithoutEnds(CutTo(allowed, {allowed.size(), bytes}))));
    return name.empty() ? name : name + ending;
}
