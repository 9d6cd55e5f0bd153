#include "engine/SearchWork.h"

#include <utility>

#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/AcrobatDoc.h"
#include "platform/NarrowText.h"
#include "protocol/Json.h"

namespace {

SearchSettings SettingsOf(const SearchOrder& order)
{
    SearchSettings settings;
    for (const SearchTerm& term : order.terms) {
        SearchRule rule{.matchCase = term.matchCase,
                        .wholeWords = term.wholeWords,
                        .countLineEnds = term.lineEnds,
                        .useExpression = term.isExpression,
                        .expression = term.text,
                        .format = term.format,
                        .stopOnMatch = order.firstMatchOnly};
        if (!order.firstPage.empty() || !order.lastPage.empty()) {
            rule.pages.selection = static_cast<int>(PageSelection::FromTo);
            rule.pages.firstExpression = order.firstPage;
            rule.pages.lastExpression = order.lastPage;
        }
        rule.useArea = order.area.has_value();
        if (const auto& area = order.area)
            rule.area = {.left = (*area)[0], .right = (*area)[2], .top = (*area)[3], .bottom = (*area)[1]};
        settings.rules.push_back(std::move(rule));
    }
    return settings;
}

bool WritesReport(const SearchSettings& settings) { return settings.createReport && !settings.reportFile.empty(); }

std::string Joined(const std::vector<std::string>& sentences)
{
    std::string joined;
    for (const std::string& sentence : sentences) joined += (joined.empty() ? "" : " ") + sentence;
    return joined;
}

std::string NoTextSentence(const SearchFindings& findings)
{
    if (findings.pagesWithoutText == 0) return {};
    if (findings.pagesWithoutText == findings.pagesRead) return "There is no text on the pages that were searched.";
    return "There is no text on " + std::to_string(findings.pagesWithoutText) + " of the " +
           std::to_string(findings.pagesRead) + " pages that were searched.";
}

}  // namespace

CSearchWork::CSearchWork(SearchOrder order, std::string rulesFile)
    : m_order(std::move(order)), m_rulesFile(std::move(rulesFile))
{
}

Expected<SearchSettings> CSearchWork::Settings() const
{
    auto settings = m_rulesFile.empty() ? SettingsOf(m_order) : ReadSearchSettings(m_rulesFile);
    if (!settings || m_order.reportFile.empty()) return settings;
    settings->createReport = settings->overwriteReport = true;
    settings->appendReport = false;
    settings->reportFile = m_order.reportFile;
    return settings;
}

std::string CSearchWork::Load(CLogWriter& log)
{
    auto settings = Settings();
    std::string problem = settings ? Joined(Review(*settings).mistakes) : settings.Error();
    if (problem.empty()) {
        m_search.emplace(std::move(*settings));
        problem = m_search->Problem();
    }
    if (!problem.empty()) log.NameValue("Search is rejected", problem, 1);
    return problem;
}

std::string CSearchWork::InputPlaces(const ExecutorSettings& settings, const std::vector<std::string>&, Asking,
                                     CLogWriter& log, const TakePlace& take) const
{
    const std::vector<std::string> places = ChosenPlaces(settings);
    if (places.empty()) return "No files or folders are named to search in.";
    for (const std::string& place : places) {
        log.NameValue("Source file path", place, 1);
        if (take) take(place);
    }
    return {};
}

/// The names that copies of a file may get.
std::vector<ResultName> CSearchWork::Copies() const
{
    std::vector<ResultName> copies;
    if (!m_order.copyFolder.empty()) copies.push_back({.folder = m_order.copyFolder});
    for (const SearchRule& rule : m_search->Settings().rules)
        if (rule.copyFile && !rule.copyFolder.empty())
            copies.push_back({.folder = rule.copyFolder,
                              .before = platform::NarrowFromUtf8(rule.prefix),
                              .after = platform::NarrowFromUtf8(rule.suffix)});
    return copies;
}

std::vector<std::string> CSearchWork::OwnOutputFolders() const
{
    std::vector<std::string> folders;
    for (const ResultName& copy : Copies()) folders.push_back(*copy.folder);
    return folders;
}

WorkFacts CSearchWork::Facts(const PlanRequest&) const
{
    const SearchSettings& settings = m_search->Settings();
    return {.noun = "search",
            .noInputs = "A search has no input files of its own.",
            .usesOutputFolder = false,
            .reports = WritesReport(settings),
            .results = Copies(),
            .warnings = Review(settings).remarks};
}

void CSearchWork::Begin(const WorkServices& services) { m_log = &services.log; }

ProcessedFile CSearchWork::Process(const std::string& path, int)
{
    ProcessedFile file{.path = path, .input = platform::StampOf(path)};
    const auto fail = [&](const std::string& reason) {
        m_log->NameValue("ERROR: Searching failed", reason, 1);
        file.outcome = FileOutcome::Failed;
        file.message = reason;
    };
    m_log->NameValue("Opening input document", path, 1);
    const auto error = CatchHostError([&] {
        CAcrobatDoc document;
        if (const std::string reason = OpenInput(document, path, *m_log); !reason.empty())
            return fail("The file cannot be opened: " + reason);
        SearchIn(document.Document(), file);
    });
    if (error) fail(error->text);
    return file;
}

void CSearchWork::SearchIn(PDDoc document, ProcessedFile& file) const
{
    const auto incomplete = [&](const std::string& why) {
        file.outcome = FileOutcome::Incomplete;
        file.message += (file.message.empty() ? "" : " ") + why;
    };
    const SearchedDocument searched =
        m_search->Search(document, [&](const std::string& what, const std::string& why) {
            m_log->NameValue("ERROR: " + what, why, 1);
            incomplete(what + ": " + why);
        });
    std::vector<Finding> findings;
    int term = 0;
    for (const RuleFindings& rule : searched.found.rules) {
        ++term;
        for (const FoundText& text : rule.found) findings.push_back({term, text.page0 + 1, text.text});
    }
    m_log->NameNumber("Number of matches", static_cast<long long>(findings.size()), 1);
    if (!findings.empty() && !m_order.copyFolder.empty())
        if (const std::string problem = CopyFound(searched.path, m_order.copyFolder); !problem.empty())
            incomplete("The file cannot be copied into " + m_order.copyFolder + ": " + problem + '.');
    Json found = FindingsJson(findings);
    const Json report = Json::parse(m_search->ReportEventOf(searched), nullptr, false);
    if (report.is_array()) found.insert(found.end(), report.begin(), report.end());
    file.findings = LineOf(found);
    if (file.message.empty()) file.message = NoTextSentence(searched.found);
}
