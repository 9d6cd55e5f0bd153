#include "base/PdfDate.h"

#include <chrono>
#include <vector>

#include "base/Text.h"

namespace {

/// Takes numbers and marks from the front of a text.
class CDateReader {
public:
    explicit CDateReader(std::string_view text) : m_text(text) {}

    bool AtEnd() const { return m_text.empty(); }
    char Peek() const { return m_text.empty() ? '\0' : m_text.front(); }
    bool Take(char mark)
    {
        if (Peek() != mark) return false;
        m_text.remove_prefix(1);
        return true;
    }
    /// Exactly so many digits.
    std::optional<int> Number(std::size_t digits)
    {
        if (m_text.size() < digits) return std::nullopt;
        int number = 0;
        for (std::size_t at = 0; at < digits; ++at) {
            if (m_text[at] < '0' || m_text[at] > '9') return std::nullopt;
            number = number * 10 + (m_text[at] - '0');
        }
        m_text.remove_prefix(digits);
        return number;
    }

private:
    std::string_view m_text;
};

struct Part {
    char separator;  // in ISO 8601
    int lowest, highest;
};
constexpr Part kParts[] = {{'-', 1, 12}, {'-', 1, 31}, {'T', 0, 23}, {':', 0, 59}, {':', 0, 59}};

bool IsZoneMark(char mark) { return mark == 'Z' || mark == '+' || mark == '-'; }

/// Month, day, hour, minute and second, as far as they are there.
std::optional<std::vector<int>> TakeParts(CDateReader& reader, bool iso)
{
    std::vector<int> parts;
    for (const Part& part : kParts) {
        // A date in ISO 8601 has no zone before its time, and "-" separates.
        if (reader.AtEnd() || (IsZoneMark(reader.Peek()) && (!iso || parts.size() > 2))) break;
        if (iso && !reader.Take(part.separator) && !(part.separator == 'T' && reader.Take(' '))) return std::nullopt;
        const auto number = reader.Number(2);
        if (!number || *number < part.lowest || *number > part.highest) return std::nullopt;
        parts.push_back(*number);
    }
    return parts;
}

/// As PDF has it; empty when there is none.
std::optional<std::string> TakeZone(CDateReader& reader)
{
    if (reader.AtEnd()) return std::string();
    const char mark = reader.Peek();
    if (!IsZoneMark(mark)) return std::nullopt;
    reader.Take(mark);
    if (mark == 'Z' && reader.AtEnd()) return "Z";
    const auto hours = reader.Number(2);
    const bool separated = reader.Take('\'') || reader.Take(':');
    const auto minutes = separated && reader.AtEnd() ? std::optional(0) : reader.Number(2);
    reader.Take('\'');
    if (!hours || !minutes || *hours > 23 || *minutes > 59 || !reader.AtEnd()) return std::nullopt;
    return FormatText("%c%02d'%02d'", mark == 'Z' ? '+' : mark, *hours, *minutes);
}

}  // namespace

std::optional<std::string> PdfDateFrom(std::string_view text)
{
    const bool marked = text.starts_with("D:");
    CDateReader reader(marked ? text.substr(2) : text);
    const auto year = reader.Number(4);
    if (!year) return std::nullopt;
    const bool iso = !marked && reader.Peek() == '-';
    const auto parts = TakeParts(reader, iso);
    if (!parts) return std::nullopt;
    const auto zone = TakeZone(reader);
    if (!zone || (!zone->empty() && parts->size() < 3)) return std::nullopt;
    using namespace std::chrono;
    if (parts->size() >= 2 && !year_month_day(std::chrono::year(*year), month(static_cast<unsigned>((*parts)[0])),
                                              day(static_cast<unsigned>((*parts)[1])))
                                   .ok())
        return std::nullopt;
    std::string date = FormatText("D:%04d", *year);
    for (const int part : *parts) date += FormatText("%02d", part);
    return date + *zone;
}
