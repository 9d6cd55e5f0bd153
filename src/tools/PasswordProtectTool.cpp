#include "tools/PasswordProtectTool.h"

#include "base/Text.h"
#include "commands/DlgSecuritySettings.h"
#include "common/ErrorReport.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "hostcalls/Application.h"
#include "platform/NarrowText.h"
#include "tools/DlgAddFiles.h"
#include "tools/ProtectWork.h"
#include "ui/DlgErrorReport.h"

namespace {

constexpr char kTitle[] = "Password Protect Multiple Documents";
constexpr char kPrompt[] =
    "Press \"Add Files...\" button to select input PDF documents for password protecting. Press OK button to "
    "continue "
    "to the next step.";
constexpr char kConfirm[] =
    "Press OK button to start password-protecting files.\nAll input PDF files will be modified. Make sure to keep "
    "backup copies of the original files.";
constexpr char kKept[] =
    "The passwords are kept in your settings file Ferrule.cfs, which only you may read, and are offered again.";
constexpr std::size_t kFilesWithoutProgress = 10;

struct Protected {
    int done = 0;
    CErrorReport problems;
};

std::string CountText(const Protected& result, std::size_t files)
{
    return FormatText("%d out of %d documents have been successfully processed.", result.done,
                      static_cast<int>(files));
}

void ProtectOne(CProtectWork& work, const std::string& path, int number, Protected& result)
{
    const ProcessedFile file = work.Process(path, number);
    if (file.outcome == FileOutcome::Saved)
        ++result.done;
    else
        result.problems.Add({.description = file.message,
                             .isError = !CProtectWork::WasNotOpened(file),
                             .fileName = path,
                             .fileNumber = number});
}

/// True when the user has stopped it.
bool ProtectAll(CProtectWork& work, const std::vector<std::string>& files, CProgressMonitorWrapper& progress,
                Protected& result)
{
    progress.BeginOperation();
    progress.SetDuration(static_cast<int>(files.size()));
    bool cancelled = false;
    for (std::size_t i = 0; i < files.size() && !cancelled; ++i) {
        ProtectOne(work, files[i], static_cast<int>(i) + 1, result);
        cancelled = progress.IsCancelled();
    }
    progress.EndOperation();
    return cancelled;
}

}  // namespace

void ProtectDocuments(const DialogServices& dialogs, SecuritySettings& current, CLogWriter& log)
{
    CDlgAddFiles chosen(dialogs, kTitle, kPrompt);
    if (!chosen.Show()) return;
    const std::vector<std::string> files = chosen.Files();
    if (files.empty()) return;
    CDlgSecuritySettings settings(dialogs, current, kKept);
    if (!settings.Show()) return;
    current = settings.Settings();
    if (!AlertConfirm(kConfirm)) return;

    CCustomMonitor monitor;
    const bool watched =
        files.size() > kFilesWithoutProgress && monitor.Start([&dialogs] { return dialogs.windows.MakeProgress(); });
    CSilentProgress silent;
    CProgressMonitorWrapper& progress = watched ? static_cast<CProgressMonitorWrapper&>(monitor) : silent;
    const ExecutorSettings execution;
    CProtectWork work({.inPlace = true}, current);
    work.Begin({execution, log, progress, {}, static_cast<int>(files.size())});
    Protected result;
    const bool cancelled = ProtectAll(work, files, progress, result);
    const std::string count = CountText(result, files.size());
    if (cancelled) AlertNote("Processing has been canceled by user.");
    if (result.problems.Empty()) return AlertNote(count);
    CDlgErrorReport(dialogs, result.problems, "Processing Results",
                    count + "\nThe following errors and warnings were encountered during the processing:")
        .Show();
}
