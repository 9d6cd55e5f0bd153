#include "common/ReportHtml.h"

#include <cstdint>
#include <cstdio>

#include "base/Text.h"
#include "base/Unicode.h"
#include "base/Xml.h"

namespace {

/// Rows that are unfolded by a link, without a script.
constexpr char kFoldingStyle[] =
    "<style type=\"text/css\">\n.row { vertical-align: top; height:auto !important; }\n.list {display:none; }\n"
    ".show {display: none; }\n .hide:target + .show {display: inline; }\n.hide:target {display: none; }\n"
    ".hide:target ~ .list {display:inline; }\n@media print { .hide, .show { display: none; } }\n </style>";

constexpr char kStyle[] =
    "<style TYPE=\"text/css\">\n"
    "div.section { font: bold 14pt arial; background-color: Gainsboro; padding: 10px; }\n"
    "div.error { font: 10pt arial; color: red; }\n"
    "div.message { font: 10pt arial; color: blue; }\n"
    "tr:nth-child(even) td { background-color: #F1F1F1; }\n"
    "tr:nth-child(odd) td { background-color: #FEFEFE; }\n"
    "table.nolines { border: none; border-collapse: collapse; margin-top: 15px; margin-bottom: 15px; }\n"
    "table.gridtable { border: 1px solid gray; border-collapse: collapse; margin: 15px; }\n"
    "table, th, td { border: 1px solid gray; }\n"
    "table.nolines, table.nolines th, table.nolines td { border: none; }\n"
    "td.center { text-align: center; }\n"
    "body { font: 10pt arial; }\n"
    "th { font: 10pt arial; color: white; background-color: DarkSlateGray; padding: 5px; }\n"
    "td.a { background-color: LightYellow; }\n"
    "td { font: 10pt arial; padding: 5px; }\n"
    "h2 { font: bold 11pt arial; }\n"
    "</style>\n";

constexpr std::string_view kPlainInText = "?,!+-[]. \"'():";
constexpr std::string_view kPlainInTarget = "\\/?,!+-[].\"'():";

bool IsLetterOrDigit(char32_t character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z');
}

bool IsPlain(char32_t character, std::string_view marks)
{
    return IsLetterOrDigit(character) || (character < 0x80 && marks.find(static_cast<char>(character)) != marks.npos);
}

std::string Element(std::string_view name, std::string_view content)
{
    return '<' + std::string(name) + '>' + std::string(content) + "</" + std::string(name) + '>';
}

std::string Division(std::string_view divisionClass, const std::string& content)
{
    return "<div class=\"" + std::string(divisionClass) + "\">" + content + "</div>";
}

}  // namespace

std::string HtmlText(std::string_view utf8)
{
    std::string text;
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t character = NextUtf8(utf8, at);
        if (!IsXmlCharacter(character)) continue;
        if (IsPlain(character, kPlainInText))
            text += static_cast<char>(character);
        else
            text += "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ';';
    }
    return text;
}

std::string LinkTarget(std::string_view utf8)
{
    std::string target;
    for (const char byte : utf8) {
        const auto code = static_cast<unsigned char>(byte);
        if (IsPlain(code, kPlainInTarget))
            target += byte == '"' ? "&#34;" : std::string(1, byte);  // it would end the attribute
        else
            target += FormatText("%%%02x", code);
    }
    return target;
}

std::string HtmlHead(std::string_view title, const std::vector<std::pair<std::string, std::string>>& facts)
{
    std::string head = std::string("<html>\n<head>\n") + kFoldingStyle + Element("title", HtmlText(title)) + '\n' +
                       kStyle + "</head><body>\n" + Element("h1", HtmlText(title)) + "\n<ul>";
    for (const auto& [name, value] : facts) head += HtmlFact(name, value);
    return head + "</ul>";
}

std::string HtmlTail() { return "\n</body>\n</html>\n"; }

std::string HtmlTable(std::string_view tableClass)
{
    return tableClass.empty() ? "<table>\n" : "<table class=\"" + std::string(tableClass) + "\">";
}

std::string HtmlTableEnd() { return "</table>\n"; }

std::string HtmlHeadings(const std::vector<std::string>& names, std::string_view cellClass)
{
    const std::string start = cellClass.empty() ? "<th>" : "<th class=\"" + std::string(cellClass) + "\">";
    std::string row = "<tr>\n";
    for (const std::string& name : names) row += start + HtmlText(name) + "</th>";
    return row + "</tr>\n";
}

std::string HtmlRow(const std::vector<std::string>& cells)
{
    std::string row = "<tr>\n";
    for (const std::string& cell : cells) row += Element("td", HtmlText(cell));
    return row + "</tr>\n";
}

std::string HtmlRule() { return "<hr />\n"; }
std::string HtmlError(std::string_view text) { return Division("error", "ERROR: " + HtmlText(text)); }
std::string HtmlMessage(std::string_view text) { return Division("message", HtmlText(text)); }
std::string HtmlParagraph(std::string_view text) { return Element("p", HtmlText(text)) + '\n'; }
std::string HtmlSection(std::string_view text) { return Division("section", HtmlText(text)) + '\n'; }

std::string HtmlLink(std::string_view target, std::string_view text, LinkWindow window)
{
    return "<a href=\"" + LinkTarget(target) + (window == LinkWindow::New ? "\" target=\"_blank\">" : "\">") +
           HtmlText(text) + "</a>";
}

std::string HtmlList(ListKind kind, const std::vector<std::string>& items)
{
    const std::string name = kind == ListKind::Numbered ? "ol" : "ul";
    std::string list = '<' + name + ">\n";
    for (const std::string& item : items) list += Element("li", HtmlText(item)) + '\n';
    return list + "</" + name + ">\n";
}

std::string HtmlFact(std::string_view name, std::string_view value)
{
    return Element("li", HtmlText(name) + " : " + HtmlText(value)) + '\n';
}
