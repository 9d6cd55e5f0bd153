#include "tools/PropertiesWork.h"

#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/DocumentProperties.h"
#include "protocol/Json.h"

Expected<std::vector<std::string>> CPropertiesWork::InputPlaces(const ExecutorSettings& settings,
                                                                const std::vector<std::string>&, Asking,
                                                                CLogWriter& log) const
{
    std::vector<std::string> places = ChosenPlaces(settings);
    if (places.empty()) return Failure("No files or folders are named to read.");
    log.NameNumber("Number of chosen files and folders", static_cast<long long>(places.size()), 1);
    return places;
}

WorkFacts CPropertiesWork::Facts(const PlanRequest&) const
{
    return {.noun = "reading of properties",
            .noInputs = "Reading properties has no input files of its own.",
            .inputsMayBeGone = true,
            .usesOutputFolder = false};
}

ProcessedFile CPropertiesWork::Process(const std::string& path, int)
{
    m_run->log.NameValue("Opening input document", path, 1);
    ProcessedFile file{.path = path, .input = platform::StampOf(path)};
    std::string reason;
    const auto error = CatchHostError([&] {
        CAcrobatDoc document;
        reason = OpenInput(document, path, m_run->log);
        if (reason.empty()) file.findings = LineOf(PropertiesJson(ReadDocumentProperties(document, m_order.keys)));
    });
    if (error) reason = error->text;
    if (reason.empty()) return file;
    m_run->log.NameValue("ERROR: Cannot open file", reason, 1);
    file.outcome = FileOutcome::Failed;
    file.message = "The file cannot be opened: " + reason;
    return file;
}
