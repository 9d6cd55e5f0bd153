#include "common/RegularExpression.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <utility>

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include "base/Text.h"
#include "base/Unicode.h"

namespace {

constexpr std::uint32_t kMostGroups = 100;  // the whole match included
constexpr std::size_t kLongestPattern = 100'000;

// The attempts are counted anew at each place where a match might begin, hence the time for the text as a whole. It
// is looked at between stretches of such places.
constexpr std::uint32_t kMostAttempts = 10'000'000;
constexpr std::chrono::seconds kLongestSearch{10};
constexpr std::size_t kFirstStretch = 64, kLongestStretch = 16'384;  // longer while stretches are done at once
constexpr std::chrono::milliseconds kAtOnce{1};

constexpr std::uint32_t kMostHeapKib = 64 * 1024;  // of searches without the just-in-time compiler
constexpr std::size_t kFirstStack = std::size_t{32} << 10, kMostStack = std::size_t{16} << 20;

struct PcreDeleter {
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
    void operator()(pcre2_compile_context* context) const { pcre2_compile_context_free(context); }
    void operator()(pcre2_jit_stack* stack) const { pcre2_jit_stack_free(stack); }
};
template <class T>
using PcrePointer = std::unique_ptr<T, PcreDeleter>;

PCRE2_SPTR PcreText(std::u16string_view text) { return reinterpret_cast<PCRE2_SPTR>(text.data()); }

const pcre2_code* PcreCode(const void* code) { return static_cast<const pcre2_code*>(code); }

std::string PcreMessage(int error)
{
    std::array<PCRE2_UCHAR, 256> message{};
    const int length = pcre2_get_error_message(error, message.data(), message.size());
    return length > 0 ? Utf16ToUtf8({reinterpret_cast<const char16_t*>(message.data()), static_cast<size_t>(length)})
                      : FormatText("error %d", error);
}

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

std::size_t CharacterStart(std::u16string_view text, std::size_t position)
{
    const bool inside = position > 0 && position < text.size() && IsLowSurrogate(text[position]);
    return inside ? position + 1 : position;
}

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

std::size_t Digit(char letter) { return static_cast<std::size_t>(letter - '0'); }

/// One search through one text: its resources, and the time it may take.
class CScan {
public:
    /// Borrows everything. Without code nothing is found. `inOneGo`: where the search begins matters to the
    /// expression.
    CScan(const void* code, const std::string& pattern, bool inOneGo, const CSearchedText& text)
        : m_code(PcreCode(code)), m_pattern(pattern), m_inOneGo(inOneGo), m_text(text.View())
    {
    }

    /// The next match, empty ones as the options say.
    Expected<std::optional<TextMatch>> Next(std::size_t start, std::uint32_t options)
    {
        if (!m_code || m_text.empty() || start > m_text.size()) return std::optional<TextMatch>();
        if (!Prepare()) return Failure(Trouble("there is not enough memory"));
        start = CharacterStart(m_text, start);
        for (;;) {
            const bool last = m_inOneGo || m_text.size() - start < m_stretch;
            pcre2_set_offset_limit(m_context.get(), last ? PCRE2_UNSET : start + m_stretch - 1);
            const int result = Match(start, options);
            if (result >= 0) return std::optional(Found(result));
            if (result != PCRE2_ERROR_NOMATCH) return Failure(Trouble(Reason(result)));
            if (last) return std::optional<TextMatch>();
            start = CharacterStart(m_text, start + m_stretch);
            const auto now = std::chrono::steady_clock::now();
            if (now - m_begun > kLongestSearch) return Failure(Trouble("it takes too much time"));
            m_stretch = now - m_stretchBegun < kAtOnce ? std::min(2 * m_stretch, kLongestStretch) : kFirstStretch;
            m_stretchBegun = now;
        }
    }

private:
    bool Prepare()
    {
        if (m_data) return true;
        m_data.reset(pcre2_match_data_create(kMostGroups, nullptr));
        m_context.reset(pcre2_match_context_create(nullptr));
        if (!m_data || !m_context) return false;
        pcre2_set_match_limit(m_context.get(), kMostAttempts);
        pcre2_set_heap_limit(m_context.get(), kMostHeapKib);
        m_begun = m_stretchBegun = std::chrono::steady_clock::now();
        return true;
    }

    int Match(std::size_t start, std::uint32_t options)
    {
        // The text was checked when it was made.
        const auto match = [&] {
            return pcre2_match(m_code, PcreText(m_text), m_text.size(), start, options | PCRE2_NO_UTF_CHECK,
                               m_data.get(), m_context.get());
        };
        const int result = match();
        if (result != PCRE2_ERROR_JIT_STACKLIMIT || m_stack) return result;
        m_stack.reset(pcre2_jit_stack_create(kFirstStack, kMostStack, nullptr));
        if (!m_stack) return result;
        pcre2_jit_stack_assign(m_context.get(), nullptr, m_stack.get());
        return match();
    }

    TextMatch Found(int result) const
    {
        const PCRE2_SIZE* ends = pcre2_get_ovector_pointer(m_data.get());
        const std::size_t captured = result == 0 ? kMostGroups : static_cast<std::size_t>(result);
        TextMatch match;
        for (std::size_t group = 0; group < captured; ++group) {
            const std::size_t from = ends[2 * group], to = ends[2 * group + 1];
            match.groups.push_back(from == PCRE2_UNSET
                                       ? std::nullopt
                                       : std::optional(TextRange{std::min(from, to), to - std::min(from, to)}));
        }
        return match;
    }

    static std::string Reason(int result)
    {
        switch (result) {
            case PCRE2_ERROR_MATCHLIMIT:
            case PCRE2_ERROR_DEPTHLIMIT:
                return "it needs too many attempts";
            case PCRE2_ERROR_JIT_STACKLIMIT:
            case PCRE2_ERROR_HEAPLIMIT:
            case PCRE2_ERROR_NOMEMORY:
                return "it needs too much memory";
            default:
                return PcreMessage(result);
        }
    }

    std::string Trouble(const std::string& reason) const
    {
        return "The expression \"" + m_pattern + "\" was given up on this text: " + reason +
               ". Please make it simpler, for example without one repetition inside another.";
    }

    const pcre2_code* m_code;
    const std::string& m_pattern;
    bool m_inOneGo;
    std::u16string_view m_text;
    PcrePointer<pcre2_jit_stack> m_stack;
    PcrePointer<pcre2_match_context> m_context;
    PcrePointer<pcre2_match_data> m_data;
    std::size_t m_stretch = kFirstStretch;
    std::chrono::steady_clock::time_point m_begun, m_stretchBegun;
};

}  // namespace

CSearchedText::CSearchedText(std::u16string utf16) : m_text(std::move(utf16))
{
    for (std::size_t i = 0; i < m_text.size(); ++i) {
        if (IsHighSurrogate(m_text[i]) && i + 1 < m_text.size() && IsLowSurrogate(m_text[i + 1]))
            ++i;
        else if (IsHighSurrogate(m_text[i]) || IsLowSurrogate(m_text[i]))
            m_text[i] = static_cast<char16_t>(kReplacementCharacter);
    }
}

CSearchedText CSearchedText::FromUtf8(std::string_view utf8) { return CSearchedText(Utf8ToUtf16(utf8)); }

std::string CSearchedText::Utf8(TextRange range) const
{
    return Utf16ToUtf8(View().substr(range.start, range.length));
}

void CRegularExpression::CodeDeleter::operator()(void* code) const
{
    pcre2_code_free(static_cast<pcre2_code*>(code));
}

CRegularExpression::CRegularExpression() = default;
CRegularExpression::CRegularExpression(CRegularExpression&&) noexcept = default;
CRegularExpression& CRegularExpression::operator=(CRegularExpression&&) noexcept = default;
CRegularExpression::~CRegularExpression() = default;

bool CRegularExpression::Compile(std::string_view pattern, LetterCase letterCase)
{
    m_code.reset();
    m_error.clear();
    m_groups = 0;
    m_negated = pattern.starts_with('!');
    if (m_negated) pattern.remove_prefix(1);
    m_pattern = pattern;
    if (m_negated && pattern.empty()) {
        m_error = "nothing follows the \"!\", which means \"does not match\"; the character itself is \"\\!\"";
        return false;
    }
    if (pattern.size() > kLongestPattern) {
        m_error = "it is longer than " + std::to_string(kLongestPattern) + " bytes";
        return false;
    }
    if (!IsValidUtf8(pattern)) {
        m_error = "it holds bytes that are no characters";
        return false;
    }

    // \C would match half a character.
    std::uint32_t options = PCRE2_UTF | PCRE2_MULTILINE | PCRE2_USE_OFFSET_LIMIT | PCRE2_NEVER_BACKSLASH_C;
    if (letterCase == LetterCase::Ignored) options |= PCRE2_CASELESS;
    const std::u16string utf16 = Utf8ToUtf16(pattern);
    int error = 0;
    PCRE2_SIZE offset = 0;
    m_code.reset(pcre2_compile(PcreText(utf16), utf16.size(), options, &error, &offset, nullptr));
    if (!m_code) {
        const auto before = static_cast<std::size_t>(std::ranges::count_if(
            std::u16string_view(utf16).substr(0, offset), [](char16_t unit) { return !IsLowSurrogate(unit); }));
        m_error = PcreMessage(error) + " (after character " + std::to_string(before + (m_negated ? 1 : 0)) + ")";
        return false;
    }
    // Where there is no compiler for this machine, or none is allowed, the expression is interpreted.
    pcre2_jit_compile(static_cast<pcre2_code*>(m_code.get()), PCRE2_JIT_COMPLETE);
    std::uint32_t groups = 0;
    pcre2_pattern_info(PcreCode(m_code.get()), PCRE2_INFO_CAPTURECOUNT, &groups);
    m_groups = groups;
    // \G asks where the search began, and verbs may end it.
    m_inOneGo = pattern.find("\\G") != pattern.npos || pattern.find("(*") != pattern.npos;
    return true;
}

Expected<std::optional<TextMatch>> CRegularExpression::Find(const CSearchedText& text, std::size_t start,
                                                            EmptyMatch empty) const
{
    CScan scan(m_code.get(), m_pattern, m_inOneGo, text);
    auto match = scan.Next(start, empty == EmptyMatch::Skipped ? PCRE2_NOTEMPTY : 0);
    if (match && *match && (*match)->Range().length == 0) return std::optional<TextMatch>();
    return match;
}

Expected<std::optional<NamedMatch>> CRegularExpression::FindNamed(const CSearchedText& text,
                                                                  const std::vector<std::string>& names,
                                                                  std::size_t start) const
{
    const auto match = Find(text, start);
    if (!match) return Failure(match.Error());
    if (!*match) return std::optional<NamedMatch>();
    NamedMatch found{(*match)->Range(), text.Utf8((*match)->Range()), {}};
    for (const std::string& name : names) {
        const auto range = NamedGroup(**match, name);
        if (range && range->length > 0) found.named[name] = text.Utf8(*range);
    }
    return std::optional(std::move(found));
}

Expected<std::optional<std::string>> CRegularExpression::Extract(const CSearchedText& text, std::size_t group,
                                                                 std::size_t start) const
{
    CScan scan(m_code.get(), m_pattern, m_inOneGo, text);
    const auto match = scan.Next(start, 0);
    if (!match) return Failure(match.Error());
    if (!*match) return std::optional<std::string>();
    const auto& groups = (*match)->groups;
    const bool captured = group < groups.size() && groups[group];
    return std::optional(captured ? text.Utf8(*groups[group]) : std::string());
}

Expected<std::size_t> CRegularExpression::ForEachMatch(const CSearchedText& text,
                                                       const std::function<bool(const TextMatch&)>& visit) const
{
    CScan scan(m_code.get(), m_pattern, m_inOneGo, text);
    std::size_t count = 0, position = 0;
    for (;;) {
        // Without empty matches every match ends behind the one before.
        const auto match = scan.Next(position, PCRE2_NOTEMPTY);
        if (!match) return Failure(match.Error());
        if (!*match) return count;
        ++count;
        if (!visit(**match)) return count;
        position = std::max((*match)->Range().End(), position + 1);
    }
}

Expected<bool> CRegularExpression::IsSatisfiedBy(const CSearchedText& text) const
{
    if (!IsCompiled()) return false;
    const auto match = Find(text, 0, EmptyMatch::Skipped);
    if (!match) return Failure(match.Error());
    return match->has_value() != m_negated;
}

Expected<std::string> CRegularExpression::ReplaceAll(const CSearchedText& text, std::string_view replacement) const
{
    std::string replaced;
    std::size_t copied = 0;
    const auto count = ForEachMatch(text, [&](const TextMatch& match) {
        replaced += text.Utf8({copied, match.Range().start - copied}) + Expand(text, match, replacement);
        copied = match.Range().End();
        return true;
    });
    if (!count) return Failure(count.Error());
    return replaced + text.Utf8({copied, text.View().size() - copied});
}

std::string CRegularExpression::Expand(const CSearchedText& text, const TextMatch& match, std::string_view form) const
{
    std::string expanded;
    const auto append = [&](const std::optional<TextRange>& range) {
        if (range) expanded += text.Utf8(*range);
    };
    while (!form.empty()) {
        const std::size_t plain = std::min(form.find('\\'), form.size());
        expanded += form.substr(0, plain);
        form.remove_prefix(plain);
        std::size_t used = 1;
        const std::size_t nameEnd = form.starts_with("\\g<") ? form.find('>') : form.npos;
        if (form.size() > 1 && IsDigit(form[1])) {
            std::size_t group = Digit(form[1]);
            const bool two = form.size() > 2 && IsDigit(form[2]);
            const std::size_t both = two ? group * 10 + Digit(form[2]) : group;
            const bool asTwo = two && (both <= m_groups || group > m_groups);
            if (asTwo) group = both;
            append(group < match.groups.size() ? match.groups[group] : std::nullopt);
            used = asTwo ? 3 : 2;
        } else if (nameEnd != form.npos) {
            append(NamedGroup(match, std::string(form.substr(3, nameEnd - 3))));
            used = nameEnd + 1;
        } else {
            expanded += form.substr(0, 1);
        }
        form.remove_prefix(std::min(used, form.size()));
    }
    return expanded;
}

std::optional<TextRange> CRegularExpression::NamedGroup(const TextMatch& match, const std::string& name) const
{
    if (!m_code || name.empty()) return std::nullopt;
    const std::u16string utf16 = Utf8ToUtf16(name);
    PCRE2_SPTR first = nullptr, last = nullptr;
    const int width = pcre2_substring_nametable_scan(PcreCode(m_code.get()), PcreText(utf16 + u'\0'), &first, &last);
    if (width <= 0) return std::nullopt;
    // A name may stand for several groups.
    for (PCRE2_SPTR entry = first; entry <= last; entry += width) {
        const std::size_t group = *entry;
        if (group < match.groups.size() && match.groups[group]) return match.groups[group];
    }
    return std::nullopt;
}
