#include "pdflib/DocumentSearch.h"

#include <algorithm>
#include <utility>

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "hostcalls/Application.h"
#include "hostcalls/Jobs.h"
#include "hostcalls/Scripts.h"
#include "pdflib/AcrobatDoc.h"
#include "pdflib/DocumentPages.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace {

/// Where the filter says nothing that is understood, all fonts count.
FontFilter FontsOf(const SearchRule& rule)
{
    if (!rule.fontFilter) return {};
    if (const std::string* const name = TextIn(*rule.fontFilter)) return {.name = *name};
    return {};
}

std::vector<TextRule> TextRules(const SearchSettings& settings)
{
    std::vector<TextRule> rules;
    for (const SearchRule& rule : settings.rules) rules.push_back(TextRuleOf(rule));
    return rules;
}

std::string NameWithoutExtension(const std::string& path) { return SplitPath(path).base; }

/// A text as a script writes it between single quotes.
std::string Quoted(const std::string& text)
{
    std::string quoted = ReplaceAll(ReplaceAll(text, "\\", "\\\\"), "'", "\\'");
    return ReplaceAll(ReplaceAll(quoted, "\n", "\\n"), "\r", "\\r");
}

bool NameIsTaken(const std::string& path)
{
    if (const COverseer* const overseer = Overseer())
        if (const auto exists = overseer->Exists(path)) return *exists;
    return platform::NameExists(path);
}

void RunAction(PDDoc document, const SearchRule& rule, int number, const std::string& path, const TellTrouble& tell)
{
    const std::string name = Quoted(platform::Utf8FromNarrow(NameWithoutExtension(path)));
    const std::string script = "var originalFileName = '" + name + "'; " + rule.actionCode;
    if (const auto run = RunScript(document, script); !run)
        tell(FormatText("Error occured while executed JavaScript code for rule %d, document: %s", number,
                        path.c_str()),
             run.Error());
}

void MakeCopy(const SearchRule& rule, int number, const std::string& path, const TellTrouble& tell)
{
    const std::string problem = CopyFound(path, rule.copyFolder, platform::NarrowFromUtf8(rule.prefix),
                                          platform::NarrowFromUtf8(rule.suffix));
    if (!problem.empty())
        tell(FormatText("Error occured while copying file for rule %d, document: %s", number, path.c_str()), problem);
}

}  // namespace

TextRule TextRuleOf(const SearchRule& rule)
{
    TextRule made{.item = rule.Item(),
                  .pages = rule.pages,
                  .countLineEnds = rule.countLineEnds,
                  .format = rule.format,
                  .fonts = FontsOf(rule),
                  .stopOnMatch = rule.stopOnMatch};
    const SettingsRectangle& area = rule.area;
    if (rule.useArea && area != SettingsRectangle{})
        made.area = PageRect{std::min(area.left, area.right), std::min(area.bottom, area.top),
                             std::max(area.left, area.right), std::max(area.bottom, area.top)};
    return made;
}

CDocumentSearch::CDocumentSearch(SearchSettings settings)
    : m_settings(std::move(settings)), m_search(TextRules(m_settings))
{
}

SearchedDocument CDocumentSearch::Search(PDDoc document, const TellTrouble& tell) const
{
    SearchedDocument searched{.path = CAcrobatDoc(document).CurrentFile(), .found = {}, .entry = {}};
    const CDocumentPages pages(document);
    searched.found = m_search.Search(document, pages, {});
    std::vector<ReportedRule> reported;
    int number = 0;
    for (const RuleFindings& findings : searched.found.rules) {
        const SearchRule& rule = m_settings.rules[static_cast<std::size_t>(number++)];
        if (!findings.problem.empty()) tell(FormatText("Rule %d", number), findings.problem);
        const bool found = !findings.found.empty();
        if (found && rule.executeCode) RunAction(document, rule, number, searched.path, tell);
        if (found && rule.copyFile && !rule.copyFolder.empty()) MakeCopy(rule, number, searched.path, tell);
        ReportedRule& entry = reported.emplace_back(ReportedRule{rule.expression, {}});
        for (const FoundText& text : findings.found) entry.matches.push_back({text.page0, text.text});
    }
    searched.entry = MakeReportEntry(platform::Utf8FromNarrow(searched.path), reported);
    return searched;
}

std::string CDocumentSearch::ReportEventOf(const SearchedDocument& searched) const
{
    return ReportEventLine({m_settings, searched.entry, FactsOfThisHost()});
}

HostFacts FactsOfThisHost()
{
    const HostVersion version = GetHostVersion();
    return {.applicationName = {},
            .language = {},
            .majorVersion = version.major,
            .minorVersion = version.minor,
            .buildDate = __DATE__};
}

std::string CopyFound(const std::string& file, const std::string& folder, const std::string& before,
                      const std::string& after)
{
    if (file.empty()) return "the document is in no file yet";
    const std::string name = before + NameWithoutExtension(file) + after + ".pdf";
    if (name.find_first_of(kSeparators) != std::string::npos)
        return "the name " + name + " would lead into another folder";
    const std::string wanted = WithTrailingSeparator(folder) + name;
    const CJobCopying copies;
    constexpr int kAttempts = 100;  // others may take the name that was free
    platform::FileResult copied;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        copied = platform::CopyFile(file, UniqueSpaced(wanted, NameIsTaken), platform::Existing::Fail);
        if (platform::ProblemOf(copied) != platform::FileProblem::Exists) break;
    }
    return copied.Ok() ? std::string() : platform::ErrorText(copied.errorNumber);
}
