#include "commands/PagePassword.h"

#include <algorithm>

#include "base/Unicode.h"
#include "commands/SecuritySettings.h"
#include "pdflib/DocumentPages.h"
#include "pdflib/PageText.h"
#include "pdflib/TextSearch.h"
#include "platform/NarrowText.h"

namespace {

TextRule RuleOf(const SecuritySettings& settings)
{
    TextRule rule{.item = {.text = platform::Utf8FromNarrow(settings.searchRegex)},
                  .format = platform::Utf8FromNarrow(settings.searchRegexFormat),
                  .stopOnMatch = true};
    rule.pages.selection = static_cast<int>(PageSelection::FromTo);
    rule.pages.firstPage0 = settings.firstPageToSearch;
    rule.pages.lastPage0 = settings.lastPageToSearch;
    return rule;
}

/// Every run of white space is one blank.
std::string OnOneLine(const std::string& utf8)
{
    std::string line;
    bool blank = false;
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t character = NextUtf8(utf8, at);
        if (IsWhiteSpace(character)) {
            blank = true;
            continue;
        }
        if (blank && !line.empty()) line += ' ';
        blank = false;
        AppendUtf8(line, character);
    }
    return line;
}

Expected<std::string> Matching(PDDoc document, const SecuritySettings& settings)
{
    const CDocumentPages pages(document);
    const SearchFindings findings = CTextSearch({RuleOf(settings)}).Search(document, pages, {});
    const RuleFindings& rule = findings.rules.front();
    if (!rule.problem.empty()) return Failure(rule.problem);
    return rule.found.empty() ? std::string() : OnOneLine(rule.found.front().text);
}

Expected<std::string> InArea(PDDoc document, const SecuritySettings& settings)
{
    const int page0 = settings.firstPageToSearch;
    const SettingsRectangle& area = settings.extractionArea;
    if (page0 < 0 || page0 >= CDocumentPages(document).PageCount())
        return Failure("There is no page " + std::to_string(page0 + 1) + " to take the password from.");
    const PageRect rect{std::min(area.left, area.right), std::min(area.bottom, area.top),
                        std::max(area.left, area.right), std::max(area.bottom, area.top)};
    CDocumentText text(document);
    const CPageText inside = text.Page(page0).Inside(rect);
    const CSearchedText& searched = inside.Text(LineEnds::Blanks);
    return OnOneLine(searched.Utf8({0, searched.View().size()}));
}

/// A password with a character that the code page lacks would be another one.
Expected<std::string> Narrow(const std::string& utf8)
{
    std::string narrow = platform::NarrowFromUtf8(utf8);
    if (platform::Utf8FromNarrow(narrow) == utf8) return narrow;
    return Failure("The text on the page that is to be the password has characters that passwords cannot have here.");
}

}  // namespace

bool WantsPagePassword(const SecuritySettings& settings)
{
    return settings.searchForPassword || settings.extractPasswordFromPage;
}

std::string PagePasswordProblem(const SecuritySettings& settings)
{
    if (!settings.searchForPassword) return {};
    if (settings.searchRegex.empty()) return "There is no expression to find the password with.";
    return CTextSearch({RuleOf(settings)}).Problem();
}

Expected<std::string> PagePassword(PDDoc document, const SecuritySettings& settings)
{
    if (std::string problem = PagePasswordProblem(settings); !problem.empty()) return Failure(std::move(problem));
    Expected<std::string> found = std::string();
    if (settings.searchForPassword) found = Matching(document, settings);
    if (found && found->empty() && settings.extractPasswordFromPage) found = InArea(document, settings);
    if (!found) return found;
    if (found->empty()) return Failure("No password was found in the text of the pages.");
    return Narrow(*found);
}
