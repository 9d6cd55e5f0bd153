#include "base/Unicode.h"
#include "openhost/commands/Step.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

constexpr const char* kEntries[] = {"Title", "Subject", "Author", "Keywords"};

bool IsWanted(const CStepRun& run, const std::string& key) { return run.Has(key) && !run.Flag("LeaveAsIs:" + key); }

/// Of the entry itself; the metadata packet follows with the next save.
bool Says(CPdfDocument& document, const std::string& key, const std::string& wantedUtf8)
{
    const auto present = document.Info(key);
    if (!present) return wantedUtf8.empty();
    return Utf16FromPdText(*present) == Utf8ToUtf16(wantedUtf8) && document.MetadataHold(wantedUtf8);
}

StepResult SetGeneralInfo(CStepRun& run)
{
    StepResult result = StepResult::Unchanged;
    for (const char* const key : kEntries) {
        if (!IsWanted(run, key) || Says(run.Pdf(), key, run.Text(key))) continue;
        run.Pdf().SetInfo(key, PdTextFromUtf16(Utf8ToUtf16(run.Text(key))));
        result = StepResult::Changed;
    }
    return result;
}

}  // namespace

const StepDescription& GeneralInfoStep()
{
    static const StepDescription step{
        .names = {"GeneralInfo"},
        .group = "Document",
        .title = "Description",
        .rights = {PdfRight::Change},
        .parameters = {{{.key = "Title", .kind = ParameterKind::Text},
                        {.key = "Subject", .kind = ParameterKind::Text},
                        {.key = "Author", .kind = ParameterKind::Text},
                        {.key = "Keywords", .kind = ParameterKind::Text},
                        {.key = "Binding"},
                        {.key = "LeaveAsIs:Title", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Subject", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Author", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Keywords", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Binding"}}},
        .work = &SetGeneralInfo};
    return step;
}

}  // namespace openhost
