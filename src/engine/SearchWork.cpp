#include "engine/SearchWork.h"

#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/AcrobatDoc.h"
#include "pdflib/DocumentPages.h"
#include "protocol/Json.h"

namespace {

std::vector<TextRule> RulesOf(const SearchOrder& order)
{
    std::vector<TextRule> rules;
    for (const SearchTerm& term : order.terms) {
        TextRule rule{.item = {.text = term.text,
                               .isExpression = term.isExpression,
                               .wholeWords = term.wholeWords,
                               .matchCase = term.matchCase},
                      .countLineEnds = term.lineEnds,
                      .format = term.format,
                      .stopOnMatch = order.firstMatchOnly};
        if (!order.firstPage.empty() || !order.lastPage.empty()) {
            rule.pages.selection = static_cast<int>(PageSelection::FromTo);
            rule.pages.firstExpression = order.firstPage;
            rule.pages.lastExpression = order.lastPage;
        }
        if (const auto& area = order.area) rule.area = PageRect{(*area)[0], (*area)[1], (*area)[2], (*area)[3]};
        rules.push_back(std::move(rule));
    }
    return rules;
}

std::string NoTextSentence(const SearchFindings& findings)
{
    if (findings.pagesWithoutText == 0) return {};
    if (findings.pagesWithoutText == findings.pagesRead) return "There is no text on the pages that were searched.";
    return "There is no text on " + std::to_string(findings.pagesWithoutText) + " of the " +
           std::to_string(findings.pagesRead) + " pages that were searched.";
}

}  // namespace

CSearchWork::CSearchWork(const SearchOrder& order) : m_search(RulesOf(order)) {}

std::string CSearchWork::Load(CLogWriter& log)
{
    const std::string& problem = m_search.Problem();
    if (!problem.empty()) log.NameValue("Search is rejected", problem, 1);
    return problem;
}

Expected<std::vector<std::string>> CSearchWork::InputPlaces(const ExecutorSettings& settings,
                                                            const std::vector<std::string>&, Asking,
                                                            CLogWriter& log) const
{
    std::vector<std::string> places = settings.furtherInputPaths;
    if (!settings.alternativeInputPath.empty()) places.insert(places.begin(), settings.alternativeInputPath);
    if (places.empty()) return Failure("No files or folders are named to search in.");
    for (const std::string& place : places) log.NameValue("Source file path", place, 1);
    return places;
}

WorkFacts CSearchWork::Facts(const PlanRequest&) const
{
    return {.noun = "search", .noInputs = "A search has no input files of its own.", .usesOutputFolder = false};
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
    const CDocumentPages pages(document);
    const SearchFindings found = m_search.Search(document, pages, {});
    std::vector<Finding> findings;
    int term = 0;
    for (const RuleFindings& rule : found.rules) {
        ++term;
        for (const FoundText& text : rule.found) findings.push_back({term, text.page0 + 1, text.text});
        if (rule.problem.empty()) continue;
        file.outcome = FileOutcome::Incomplete;
        file.message += (file.message.empty() ? "" : " ") + rule.problem;
    }
    m_log->NameNumber("Number of matches", static_cast<long long>(findings.size()), 1);
    file.findings = LineOf(FindingsJson(findings));
    if (file.message.empty()) file.message = NoTextSentence(found);
}
