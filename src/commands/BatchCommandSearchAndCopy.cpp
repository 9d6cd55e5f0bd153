#include "commands/BatchCommandSearchAndCopy.h"

#include <algorithm>
#include <stdexcept>

#include "base/Text.h"
#include "commands/DlgSearchText.h"
#include "common/Log.h"
#include "common/ProductPaths.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"
#include "pdflib/AcrobatDoc.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"
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

DialogOutcome CBatchCommandSearchAndCopy::ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs)
{
    // Rules that cannot be read are not replaced by none.
    auto settings = SearchSettings::Read(RecordFromCab(parameters));
    if (!settings) {
        dialogs.windows.Message(MessageKind::Warning, settings.Error());
        return DialogOutcome::Failed;
    }
    // A step that has no rules yet begins with those of the last one.
    const std::string lastFile = MakeProductPaths(platform::ApplicationDataFolder()).searchSettingsFile;
    if (auto last = ReadSearchSettings(lastFile); settings->rules.empty() && last) settings = std::move(last);
    CDlgSearchText dialog(dialogs, *settings);
    if (!dialog.Show()) return DialogOutcome::Cancelled;
    if (const std::string problem = WriteSearchSettings(lastFile, dialog.Settings()); !problem.empty())
        m_log.NameValue("Search settings are not kept", problem, 0);
    const CCab changed = CabFromRecord(dialog.Settings().Write());
    parameters.MakeEmpty();
    parameters.CopyFrom(changed.View());
    return DialogOutcome::Confirmed;
}

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
    CDocumentSearch search(std::move(*settings));
    if (!search.Problem().empty()) m_log.NameValue("ERROR: Search rules", search.Problem(), kIndent);
    m_prepared.push_back(std::make_unique<Prepared>(std::move(record), std::move(search)));
    return *m_prepared.back();
}

void CBatchCommandSearchAndCopy::SearchDocument(PDDoc document, const Prepared& prepared)
{
    m_log.NameValue("Searching text...", CAcrobatDoc(document).CurrentFile(), kIndent);
    const SearchedDocument searched = prepared.search.Search(
        document,
        [&](const std::string& what, const std::string& why) { m_log.NameValue("ERROR: " + what, why, kIndent); });
    if (searched.found.pagesRead > 0 && searched.found.pagesWithoutText == searched.found.pagesRead)
        m_log.NameValue("WARNING: There is no text on the pages that were searched", searched.path, kIndent);
    Report(prepared.search, searched);
}

void CBatchCommandSearchAndCopy::Report(const CDocumentSearch& search, const SearchedDocument& searched)
{
    // Whoever gave a job writes the reports, with the outcomes of the files.
    if (JobText()) {
        const std::string line = search.ReportEventOf(searched);
        if (!line.empty()) JobFileFound(line);
        return;
    }
    m_report.SetFacts(FactsOfThisHost());
    if (const std::string problem = m_report.Add(search.Settings(), searched.entry); !problem.empty())
        m_log.NameValue("ERROR: No report", problem, kIndent);
}
