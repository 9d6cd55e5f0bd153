#include "commands/BatchCommandSearchAndCopy.h"

#include <algorithm>
#include <stdexcept>

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "common/Log.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"
#include "hostcalls/Scripts.h"
#include "pdflib/AcrobatDoc.h"
#include "pdflib/DocumentPages.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "sequence/Findings.h"
#include "sequence/SequenceFile.h"
#include "sequence/StepDescription.h"

namespace {

constexpr std::size_t kMostPrepared = 8;  // steps of one sequence, as a rule
constexpr int kIndent = 3;

std::vector<CopyPlace> CopyPlaces(CCabView parameters)
{
    std::vector<CopyPlace> places;
    const auto settings = SearchSettings::Read(RecordFromCab(parameters));
    if (!settings) return places;
    for (const SearchRule& rule : settings->rules)
        if (rule.copyFile && !rule.copyFolder.empty())
            places.push_back(
                {rule.copyFolder, platform::NarrowFromUtf8(rule.prefix), platform::NarrowFromUtf8(rule.suffix)});
    return places;
}

void CheckSettings(const SequenceStep& step, CSequenceFindings& findings)
{
    const auto settings = SearchSettings::Read(RecordFromCab(step.parameters));
    if (!settings) return findings.Error("search-rules", settings.Error());
    const SearchSettingsReview review = Review(*settings);
    for (const std::string& mistake : review.mistakes) findings.Error("search-rule", mistake);
    for (const std::string& remark : review.remarks) findings.Warning("search-settings", remark);
}

const StepDescription kSearchAndCopy{.handler = "QLNX_FerruleSearchAndCopyCommand",
                                     .shared = SharedWork::Report,
                                     .copies = CopyPlaces,
                                     .secrecy = Secrecy::WhatSoundsLikePasswords,
                                     .check = CheckSettings};

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
    for (const SearchRule& rule : settings.rules) {
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
        rules.push_back(std::move(made));
    }
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

/// Why there is no copy; empty when there is one.
std::string CopyOf(const std::string& file, const SearchRule& rule)
{
    if (file.empty()) return "the document is in no file yet";
    const std::string name = platform::NarrowFromUtf8(rule.prefix) + NameWithoutExtension(file) +
                             platform::NarrowFromUtf8(rule.suffix) + ".pdf";
    if (name.find_first_of(kSeparators) != std::string::npos)
        return "the name " + name + " would lead into another folder";
    const std::string wanted = WithTrailingSeparator(rule.copyFolder) + name;
    const CJobCopying copies;
    constexpr int kAttempts = 100;  // others may take the name that was free
    platform::FileResult copied;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        copied = platform::CopyFile(file, UniqueSpaced(wanted, NameIsTaken), platform::Existing::Fail);
        if (platform::ProblemOf(copied) != platform::FileProblem::Exists) break;
    }
    return copied.Ok() ? std::string() : platform::ErrorText(copied.errorNumber);
}

}  // namespace

CBatchCommandSearchAndCopy::CBatchCommandSearchAndCopy(CLogWriter& log)
    : CBatchCommand(FerruleStep(kSearchAndCopy, "Search and Copy Files")), m_log(log)
{
}

void CBatchCommandSearchAndCopy::SetDefaultParameters(CCabEditor parameters)
{
    parameters.MakeEmpty();
    const CCab defaults = CabFromRecord(SearchSettings().Write());
    parameters.CopyFrom(defaults.View());
}

std::vector<std::string> CBatchCommandSearchAndCopy::DescribeParameters(CCabView parameters) const
{
    const auto settings = SearchSettings::Read(RecordFromCab(parameters));
    if (!settings) return {settings.Error()};
    std::vector<std::string> lines{"Number of search rules: " + std::to_string(settings->rules.size())};
    for (const SearchRule& rule : settings->rules)
        lines.push_back("Search text: " + platform::NarrowFromUtf8(rule.expression));
    if (settings->createReport && !settings->reportFile.empty()) lines.push_back("Report: " + settings->reportFile);
    return lines;
}

DialogOutcome CBatchCommandSearchAndCopy::ShowSettingsDialog(CCabEditor) { return DialogOutcome::Cancelled; }

bool CBatchCommandSearchAndCopy::ProcessDocument(const CommandTarget& target, CCabView parameters)
{
    const Prepared& prepared = Prepare(parameters);
    // A host error ends the step for this document without a report.
    if (const auto error = CatchHostError([&] { SearchDocument(target.document, prepared); }))
        m_log.NameValue("ERROR: Searching failed", error->text, kIndent);
    return true;
}

/// Throws std::runtime_error for settings that cannot be used.
const CBatchCommandSearchAndCopy::Prepared& CBatchCommandSearchAndCopy::Prepare(CCabView parameters)
{
    CSettingsRecord record = RecordFromCab(parameters);
    const auto known =
        std::ranges::find_if(m_prepared, [&](const auto& prepared) { return prepared->record == record; });
    if (known != m_prepared.end()) return **known;
    auto settings = SearchSettings::Read(record);
    if (!settings) throw std::runtime_error(settings.Error());
    if (m_prepared.size() >= kMostPrepared) m_prepared.erase(m_prepared.begin());
    CTextSearch search(TextRules(*settings));
    if (!search.Problem().empty()) m_log.NameValue("ERROR: Search rules", search.Problem(), kIndent);
    m_prepared.push_back(std::make_unique<Prepared>(std::move(record), std::move(*settings), std::move(search)));
    return *m_prepared.back();
}

void CBatchCommandSearchAndCopy::SearchDocument(PDDoc document, const Prepared& prepared)
{
    const std::string path = CAcrobatDoc(document).CurrentFile();
    m_log.NameValue("Searching text...", path, kIndent);
    const CDocumentPages pages(document);
    const SearchFindings found = prepared.search.Search(document, pages, {});
    std::vector<ReportedRule> reported;
    for (std::size_t i = 0; i < found.rules.size(); ++i) {
        const SearchRule& rule = prepared.settings.rules[i];
        const RuleFindings& findings = found.rules[i];
        const int number = static_cast<int>(i) + 1;
        if (!findings.problem.empty())
            m_log.NameValue(FormatText("ERROR: Rule %d", number), findings.problem, kIndent);
        if (!findings.found.empty()) ActOnRule(document, rule, number, path);
        ReportedRule& entry = reported.emplace_back(ReportedRule{rule.expression, {}});
        for (const FoundText& text : findings.found) entry.matches.push_back({text.page0, text.text});
    }
    if (found.pagesRead > 0 && found.pagesWithoutText == found.pagesRead)
        m_log.NameValue("WARNING: There is no text on the pages that were searched", path, kIndent);
    Report(prepared.settings, MakeReportEntry(platform::Utf8FromNarrow(path), reported));
}

void CBatchCommandSearchAndCopy::ActOnRule(PDDoc document, const SearchRule& rule, int number,
                                           const std::string& path)
{
    const auto tell = [&](const std::string& sentence, const std::string& why) {
        m_log.NameValue("ERROR: " + sentence, why, kIndent);
    };
    if (rule.executeCode) {
        const std::string name = Quoted(platform::Utf8FromNarrow(NameWithoutExtension(path)));
        const std::string script = "var originalFileName = '" + name + "'; " + rule.actionCode;
        if (const auto run = RunScript(document, script); !run)
            tell(FormatText("Error occured while executed JavaScript code for rule %d, document: %s", number,
                            path.c_str()),
                 run.Error());
    }
    if (rule.copyFile && !rule.copyFolder.empty()) {
        if (const std::string problem = CopyOf(path, rule); !problem.empty())
            tell(FormatText("Error occured while copying file for rule %d, document: %s", number, path.c_str()),
                 problem);
    }
}

void CBatchCommandSearchAndCopy::Report(const SearchSettings& settings, const ReportEntry& entry)
{
    const HostVersion version = GetHostVersion();
    const HostFacts facts{.applicationName = {},
                          .language = {},
                          .majorVersion = version.major,
                          .minorVersion = version.minor,
                          .buildDate = __DATE__};
    // Whoever gave a job writes the reports, with the outcomes of the files.
    if (JobText()) {
        const std::string line = ReportEventLine({settings, entry, facts});
        if (!line.empty()) JobFileFound(line);
        return;
    }
    m_report.SetFacts(facts);
    if (const std::string problem = m_report.Add(settings, entry); !problem.empty())
        m_log.NameValue("ERROR: No report", problem, kIndent);
}
