#include "tools/EditMetadataTool.h"

#include "base/Text.h"
#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/DocumentProperties.h"
#include "tools/DlgAddFiles.h"
#include "tools/DlgSpreadsheet.h"
#include "tools/MetadataWork.h"
#include "ui/DlgErrorReport.h"

namespace {

constexpr char kEditTitle[] = "Edit Document Metadata";
constexpr char kEditPrompt[] =
    "Press \"Add Files...\" button to select PDF files for editing document metadata. Press OK button once all files "
    "have been selected.";

/// The documents of the host.
class CHostMetadata final : public CMetadataDocuments {
public:
    explicit CHostMetadata(CLogWriter& log) : m_log(log) {}

    Expected<std::vector<std::string>> Read(const std::string& path, const std::vector<std::string>& keys) override
    {
        std::vector<std::string> texts;
        std::string reason;
        const auto error = CatchHostError([&] {
            CAcrobatDoc document;
            reason = OpenInput(document, path, m_log);
            if (reason.empty()) texts = ReadDocumentProperties(document, keys);
        });
        if (error) reason = error->text;
        if (!reason.empty()) return Failure(reason);
        return texts;
    }

    Expected<std::string> Write(const std::string& path, const std::map<std::string, std::string>& entries) override
    {
        MetadataChangeOrder order{.inPlace = true};
        for (const auto& [key, text] : entries) {
            auto written = EntryText(key, text);
            if (!written) return Failure(written.Error());
            order.entries.emplace(key, *std::move(written));
        }
        CMetadataWork work(std::move(order));
        work.Begin({m_execution, m_log, m_silent, {}, 1});
        const ProcessedFile file = work.Process(path, 1);
        if (file.outcome == FileOutcome::Saved) return std::string();
        if (file.outcome == FileOutcome::Incomplete) return file.message;
        return Failure(file.message);
    }

private:
    CLogWriter& m_log;
    const ExecutorSettings m_execution;
    CSilentProgress m_silent;
};

void UseWidths(CGridModel& model, const std::map<std::string, int>& widths)
{
    for (std::size_t column = 0; column < model.Columns(); ++column)
        if (const auto found = widths.find(model.Column(column).name); found != widths.end())
            model.SetWidth(column, found->second);
}

}  // namespace

void EditMetadata(const DialogServices& dialogs, std::map<std::string, int>& widths, CLogWriter& log)
{
    CDlgAddFiles chosen(dialogs, kEditTitle, kEditPrompt);
    if (!chosen.Show()) return;
    const std::vector<std::string> files = chosen.Files();
    if (files.empty()) return;

    CHostMetadata documents(log);
    CMetadataTable table(documents);
    UseWidths(table.Model(), widths);
    CErrorReport report;
    {
        CCustomMonitor progress;
        progress.Start([&dialogs] { return dialogs.windows.MakeProgress(); });
        if (!table.Load(files, progress, report)) return;
    }
    if (!report.Empty())
        CDlgErrorReport(dialogs, report, "Processing Results",
                        "These documents cannot be opened and are not in the table.")
            .Show();
    if (table.Model().Rows() == 0) return;
    CDlgSpreadsheet(dialogs, table).Show();
    for (std::size_t column = 0; column < table.Model().Columns(); ++column)
        widths[table.Model().Column(column).name] = table.Model().Column(column).width;
    if (!table.HasApplied()) return;
    dialogs.windows.Message(MessageKind::Note,
                            FormatText("%d document(s) out of %d have been updated with metadata changes.",
                                       static_cast<int>(table.Updated()), static_cast<int>(table.Model().Rows())));
}
