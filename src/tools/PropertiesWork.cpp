#include "tools/PropertiesWork.h"

#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/DocumentProperties.h"
#include "protocol/Json.h"

WorkFacts CPropertiesWork::Facts(const PlanRequest&) const
{
    return {.noun = "reading of properties",
            .noInputs = "Reading properties has no input files of its own.",
            .inputsMayBeGone = true,
            .usesOutputFolder = false};
}

ProcessedFile CPropertiesWork::Process(const std::string& path, int)
{
    Run().log.NameValue("Opening input document", path, 1);
    ProcessedFile file{.path = path, .input = platform::StampOf(path)};
    std::string reason;
    const auto error = CatchHostError([&] {
        CAcrobatDoc document;
        reason = OpenInput(document, path, Run().log);
        if (reason.empty()) file.findings = LineOf(PropertiesJson(ReadDocumentProperties(document, m_order.keys)));
    });
    if (error) reason = error->text;
    if (reason.empty()) return file;
    Run().log.NameValue("ERROR: Cannot open file", reason, 1);
    file.outcome = FileOutcome::Failed;
    file.message = "The file cannot be opened: " + reason;
    return file;
}
