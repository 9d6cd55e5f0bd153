#include "tools/ExportMetadataTool.h"

#include "base/Text.h"
#include "common/Progress.h"
#include "platform/NarrowText.h"
#include "protocol/Json.h"
#include "tools/DlgAddFiles.h"
#include "tools/PropertiesWork.h"
#include "tools/TableFile.h"

namespace {

constexpr char kExportTitle[] = "Export Metadata";
constexpr char kExportPrompt[] =
    "Press \"Add Files...\" button to select files to export metadata from. Press OK button to start exporting.";

std::vector<std::string> RowOf(const ProcessedFile& file)
{
    const Json found = Json::parse(file.findings, nullptr, false);
    if (auto texts = PropertiesFrom(found.is_array() ? found : Json::array())) return std::move(*texts);
    return {platform::Utf8FromNarrow(file.path), kCannotOpenDocument};
}

}  // namespace

void ExportMetadata(const DialogServices& dialogs, CLogWriter& log)
{
    CDlgAddFiles chosen(dialogs, kExportTitle, kExportPrompt);
    if (!chosen.Show()) return;
    const std::vector<std::string> files = chosen.Files();
    if (files.empty()) return;
    const auto target = AskForTableFile(dialogs);
    if (!target) return;
    CReportWriter table;
    if (!OpenTable(table, *target, {kPropertyColumns.begin(), kPropertyColumns.end()}, dialogs)) return;

    CCustomMonitor progress;
    progress.Start([&dialogs] { return dialogs.windows.MakeProgress(); });
    const ExecutorSettings execution;
    const int total = static_cast<int>(files.size());
    CPropertiesWork work({});
    work.Begin({execution, log, progress, {}, total});
    progress.BeginOperation();
    progress.SetDuration(total);
    bool cancelled = false;
    for (int number = 1; number <= total && !cancelled; ++number) {
        progress.SetOperationText(FormatText("Loading metadata from file %d out of %d...", number, total));
        progress.SetCurrentValue(number);
        table.AddRow(RowOf(work.Process(files[static_cast<std::size_t>(number) - 1], number)));
        cancelled = progress.IsCancelled();
    }
    progress.EndOperation();
    // A table that ends in the middle would look like one of all documents.
    if (!cancelled) CloseTable(table, *target, dialogs);
}
