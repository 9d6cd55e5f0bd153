#include "tools/rename/RenameTool.h"

#include <functional>

#include "base/Names.h"
#include "base/Text.h"
#include "common/ErrorReport.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "platform/Programs.h"
#include "protocol/Json.h"
#include "tools/DlgAddFiles.h"
#include "tools/DlgReviewNames.h"
#include "tools/NamingWork.h"
#include "tools/rename/DlgAutoRename.h"
#include "tools/rename/RenameRun.h"
#include "ui/DlgErrorReport.h"

namespace {

constexpr char kRenameTitle[] = "Rename PDF Files";
constexpr char kRenamePrompt[] =
    "Press \"Add Files...\" button to select PDF files to rename. Press OK button once all files have been selected.";
constexpr char kRenamed[] =
    "%d file(s) out of %d have been renamed.\n%d document(s) have been skipped or failed.\nDo you want to open a "
    "processing log for review?";
constexpr char kInterrupted[] =
    "An earlier renaming was interrupted before it came to its end.\nDo you want to finish it now?";
constexpr char kReportFile[] = "Rename Report.txt";

/// One use of the tool.
class CRenameUse {
public:
    CRenameUse(const DialogServices& dialogs, const ProductPaths& paths, CLogWriter& log)
        : m_dialogs(dialogs), m_log(log)
    {
        m_request.settingsFile = paths.renameSettingsFile;
        m_request.listFolder = paths.settingsFolder + "Renames";
    }

    void Run()
    {
        if (FinishInterrupted()) return;
        CDlgAddFiles chosen(m_dialogs, kRenameTitle, kRenamePrompt);
        if (!chosen.Show()) return;
        m_request.paths = chosen.Files();
        if (m_request.paths.empty() || !AskForSettings() || !FindNames() || !Review()) return;
        Rename([this](CProgressMonitorWrapper& progress) { return RenameFilesOf(m_request, progress, m_log); });
    }

private:
    void Warn(const std::string& bytes) const
    {
        m_dialogs.windows.Message(MessageKind::Warning, platform::Utf8FromNarrow(bytes));
    }

    RenameSettings Remembered() const
    {
        if (!platform::NameExists(m_request.settingsFile)) return {};
        auto settings = ReadRenameSettings(m_request.settingsFile);
        if (settings) return std::move(*settings);
        Warn(settings.Error());
        return {};
    }

    /// True when that was what the user wanted.
    bool FinishInterrupted()
    {
        auto lists = CRenameLists::Interrupted(m_request.listFolder);
        if (!lists || !m_dialogs.windows.Message(MessageKind::Question, kInterrupted)) return false;
        auto settings = ReadRenameSettings(m_request.settingsFile);
        if (!settings) {
            Warn(settings.Error());
            return true;
        }
        m_request.settings = std::move(*settings);
        Rename([&](CProgressMonitorWrapper& progress) {
            return FinishRenaming(std::move(*lists), m_request, progress, m_log);
        });
        return true;
    }

    bool AskForSettings()
    {
        CDlgAutoRename dialog(m_dialogs, Remembered());
        if (!dialog.Show()) return false;
        m_request.settings = dialog.Settings();
        // Naming and the script read them from there.
        const std::string problem = WriteRenameSettings(m_request.settingsFile, m_request.settings);
        if (!problem.empty()) Warn(problem + " No file has been renamed.");
        return problem.empty();
    }

    /// The name alone, without the folder that files are moved into.
    std::string NameOf(const ProcessedFile& file) const
    {
        const Json findings = Json::parse(file.findings, nullptr, false);
        const auto found = NewNameFrom(findings.is_array() ? findings : Json::array());
        if (!found) return {};
        const std::string folder = WithTrailingSeparator(m_request.settings.outputFolder);
        const bool moves = m_request.settings.moveOnSuccess && found->name.starts_with(folder);
        return moves ? found->name.substr(folder.size()) : found->name;
    }

    bool FindNames()
    {
        CNamingWork work({}, m_request.settingsFile);
        if (const std::string problem = work.Load(m_log); !problem.empty()) {
            Warn(problem);
            return false;
        }
        CErrorReport report;
        if (!NameAll(work, report)) return false;
        if (!report.Empty())
            CDlgErrorReport(m_dialogs, report, "Processing Results",
                            "These documents have no new name. You can enter names for them in the list that "
                            "follows.")
                .Show();
        return true;
    }

    /// False when the user has stopped it.
    bool NameAll(CNamingWork& work, CErrorReport& report)
    {
        CCustomMonitor progress;
        progress.Start([this] { return m_dialogs.windows.MakeProgress(); });
        const ExecutorSettings execution;
        const int total = static_cast<int>(m_request.paths.size());
        work.Begin({execution, m_log, progress, {}, total});
        progress.BeginOperation();
        progress.SetDuration(total);
        bool cancelled = false;
        for (int number = 1; number <= total && !cancelled; ++number) {
            progress.SetOperationText(FormatText("Building file name %d out of %d...", number, total));
            progress.SetCurrentValue(number);
            const std::string& path = m_request.paths[static_cast<std::size_t>(number) - 1];
            const ProcessedFile file = work.Process(path, number);
            m_request.names.push_back(NameOf(file));
            if (m_request.names.back().empty())
                report.Add({.description = file.message, .isError = true, .fileName = path, .fileNumber = number});
            cancelled = progress.IsCancelled();
        }
        progress.EndOperation();
        return !cancelled;
    }

    bool Review()
    {
        std::vector<std::string> shown;
        for (const std::string& path : m_request.paths) shown.push_back(platform::Utf8FromNarrow(path));
        CDlgReviewNames dialog(m_dialogs, shown, m_request.names);
        if (!dialog.Show()) return false;
        m_request.names = dialog.Names();
        return true;
    }

    void Rename(const std::function<Expected<CRenameReport>(CProgressMonitorWrapper&)>& rename) const
    {
        CCustomMonitor progress;
        progress.Start([this] { return m_dialogs.windows.MakeProgress(); });
        const auto report = rename(progress);
        if (!report) return Warn(report.Error() + " No file has been renamed.");
        const auto renamed = static_cast<int>(report->RenamedFiles()),
                   others = static_cast<int>(report->OtherFiles());
        if (m_dialogs.windows.Message(MessageKind::Question, FormatText(kRenamed, renamed, renamed + others, others)))
            ShowReport(report->Text(__DATE__, platform::LocalTimeText(platform::NanosecondsSince1970())));
    }

    void ShowReport(const std::string& text) const
    {
        const std::string path = WithTrailingSeparator(m_request.listFolder) + kReportFile;
        platform::CAtomicFile file(path, platform::Existing::Replace);
        file.Write(text.data(), text.size());
        if (const auto written = file.Commit(); !written)
            return Warn(path + ": the report cannot be written (" + platform::ErrorText(written.errorNumber) + ").");
        if (!platform::OpenDocument(path)) Warn("There is no program that shows " + path + ".");
    }

    const DialogServices& m_dialogs;
    CLogWriter& m_log;
    RenameRequest m_request;
};

}  // namespace

void RenameDocuments(const DialogServices& dialogs, const ProductPaths& paths, CLogWriter& log)
{
    CRenameUse(dialogs, paths, log).Run();
}
