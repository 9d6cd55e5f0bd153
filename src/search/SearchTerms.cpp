#include "search/SearchTerms.h"

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "common/TextFile.h"
#include "platform/AtomicFile.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kFirstLine[] = "Ferrule Search Terms:";
constexpr char kNothingToSave[] = "There are no search items to save. Please add at least one search item.";
constexpr char kCannotSave[] = "Cannot save search terms as a text file.";
constexpr char kCannotOpen[] = "Cannot open input file.";
constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";
constexpr char kTermsLineEnd[] = "\r\n";

bool IsCsv(const std::string& path) { return EqualsIgnoreCaseAscii(Extension(path), "csv"); }

/// A value between tabs, which has no quotes: an expression says its tabs and line ends by escapes, which match the
/// same.
std::string TabValue(std::string_view text, bool isExpression)
{
    std::string value = ReplaceAll(text, "\t", isExpression ? "\\t" : " ");
    value = ReplaceAll(value, "\r", isExpression ? "\\r" : " ");
    return ReplaceAll(value, "\n", isExpression ? "\\n" : " ");
}

std::string TermsText(const std::vector<SearchRule>& rules, bool csv)
{
    std::string text = std::string(kUtf8Mark) + kFirstLine + kTermsLineEnd;
    for (const SearchRule& rule : rules) {
        text +=
            csv ? CsvValue(rule.expression) + ',' + CsvValue(rule.description)
                // Kept: the last two characters belong to the form of a line.
                : TabValue(rule.expression, rule.useExpression) + '\t' + TabValue(rule.description, false) + "\t%t";
        text += kTermsLineEnd;
    }
    return text;
}

/// Takes lines apart, one character at a time.
class CSeparatedText {
public:
    CSeparatedText(std::string_view text, char separator) : m_text(text), m_separator(separator) {}

    Expected<std::vector<std::vector<std::string>>> Parse()
    {
        while (m_at < m_text.size()) {
            const char next = m_text[m_at++];
            if (m_separator == ',' && next == '"' && m_value.empty() && !m_wasQuoted) {
                if (!TakeQuoted()) return Failure(FormatText("Line %d: a quote is never closed.", LineNumber()));
            } else if (next == m_separator) {
                EndValue();
            } else if (next == '\n' || next == '\r') {
                if (next == '\r' && m_at < m_text.size() && m_text[m_at] == '\n') ++m_at;
                EndLine();
            } else {
                m_value += next;
            }
        }
        if (!m_value.empty() || !m_line.empty() || m_wasQuoted) EndLine();
        return std::move(m_lines);
    }

private:
    bool TakeQuoted()
    {
        m_wasQuoted = true;
        for (; m_at < m_text.size(); ++m_at) {
            if (m_text[m_at] != '"') {
                m_value += m_text[m_at];
            } else if (m_at + 1 < m_text.size() && m_text[m_at + 1] == '"') {
                m_value += m_text[m_at++];
            } else {
                ++m_at;
                return true;
            }
        }
        return false;
    }
    void EndValue()
    {
        m_line.push_back(std::move(m_value));
        m_value.clear();
        m_wasQuoted = false;
    }
    void EndLine()
    {
        EndValue();
        m_lines.push_back(std::move(m_line));
        m_line.clear();
    }
    int LineNumber() const { return static_cast<int>(m_lines.size()) + 1; }

    std::string_view m_text;
    char m_separator;
    std::size_t m_at = 0;
    std::string m_value;
    bool m_wasQuoted = false;
    std::vector<std::string> m_line;
    std::vector<std::vector<std::string>> m_lines;
};

/// The whole file as UTF-8 with LF at the end of each line.
std::string TextOfFile(CTextFileRead& file)
{
    std::string text;
    while (const auto line = file.ReadLine())
        text += (file.Encoding() == TextEncoding::Ansi ? platform::Utf8FromNarrow(*line) : *line) + '\n';
    return text;
}

}  // namespace

std::string CsvValue(std::string_view text)
{
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    return '"' + ReplaceAll(text, "\"", "\"\"") + '"';
}

Expected<std::vector<std::vector<std::string>>> ParseSeparated(std::string_view utf8, char separator)
{
    return CSeparatedText(utf8, separator).Parse();
}

std::string ExportSearchTerms(const std::string& path, const std::vector<SearchRule>& rules)
{
    if (rules.empty()) return kNothingToSave;
    const std::string text = TermsText(rules, IsCsv(path));
    const CUnwatched noDocument;
    platform::CAtomicFile file(path, platform::Existing::Replace);
    file.Write(text.data(), text.size());
    const platform::FileResult written = file.Commit();
    return written.Ok() ? std::string() : path + ": " + kCannotSave + ' ' + platform::ErrorText(written.errorNumber);
}

Expected<std::vector<SearchRule>> ImportSearchTerms(const std::string& path)
{
    std::string text;
    try {
        CTextFileRead file(path);
        if (!file.IsOpen()) return Failure(path + ": " + kCannotOpen + ' ' + platform::ErrorText(file.ErrorNumber()));
        text = TextOfFile(file);
    } catch (const CTextFileException& error) {
        return Failure(path + ": " + kCannotOpen + ' ' + error.what());
    }
    auto lines = ParseSeparated(text, IsCsv(path) ? ',' : '\t');
    if (!lines) return Failure(path + ": " + lines.Error());
    std::vector<SearchRule> rules;
    for (std::size_t i = 0; i < lines->size(); ++i) {
        auto& line = (*lines)[i];
        if (line.front().empty() || (i == 0 && line.front() == kFirstLine)) continue;
        SearchRule rule;
        rule.expression = std::move(line.front());
        if (line.size() > 1) rule.description = std::move(line[1]);
        rules.push_back(std::move(rule));
    }
    return rules;
}

std::string ImportedTermsText(std::size_t count)
{
    return FormatText("Total number of records loaded from file: %d", static_cast<int>(count));
}
