#include "tools/rename/RenameRun.h"

#include <algorithm>

#include "base/Names.h"
#include "base/Text.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "common/RenamePlan.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/HeldFiles.h"
#include "platform/NarrowText.h"
#include "tools/RenameWork.h"

namespace {

using platform::FileResult;

std::string PathText(const std::string& path) { return TextFromBytes(platform::Utf8FromNarrow(path)); }

/// The list of all new names, for whoever finds the files after a crash; removed in the end.
class CListFile {
public:
    explicit CListFile(const std::string& folder)
        : m_path(WithTrailingSeparator(folder) + "names-" + std::to_string(platform::NanosecondsSince1970()) + ".csv")
    {
    }
    CListFile(const CListFile&) = delete;
    CListFile& operator=(const CListFile&) = delete;
    ~CListFile() { (void)platform::DeleteFile(m_path); }

    FileResult Write(const RenameRequest& request) const
    {
        std::string text = RenamePlanHeading();
        for (std::size_t place = 0; place < request.paths.size(); ++place)
            text += RenamePlanLine(PathText(request.paths[place]), request.names[place]);
        platform::CAtomicFile file(m_path, platform::Existing::Fail);
        file.Write(text.data(), text.size());
        return file.Commit();
    }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

/// Grows with each file; an older one goes with the first.
class CWayBack {
public:
    CWayBack(const std::string& folder, CLogWriter& log)
        : m_path(WithTrailingSeparator(folder) + kWayBackList), m_log(log)
    {
    }

    void Add(const std::string& from, const std::string& to)
    {
        if (m_failed || from == to) return;
        FileResult written;
        if (!m_file.IsOpen()) written = Begin();
        if (written) written = m_file.Write(RenamePlanLine(PathText(to), PathText(from)));
        m_failed = !written;
        if (m_failed) m_log.NameValue("The way back cannot be written", platform::ErrorText(written.errorNumber), 1);
    }

private:
    FileResult Begin()
    {
        FileResult result = m_file.Open(m_path);
        if (result) result = m_file.Truncate(0);
        return result ? m_file.Write(RenamePlanHeading()) : result;
    }

    std::string m_path;
    CLogWriter& m_log;
    platform::CAppendFile m_file;
    bool m_failed = false;
};

class CRenameRun {
public:
    CRenameRun(const RenameRequest& request, CRenameWork& work, CLogWriter& log)
        : m_request(request), m_work(work), m_log(log), m_wayBack(request.listFolder, log)
    {
        if (request.settings.moveOnSuccess)
            m_execution.alternativeOutputPath = platform::NarrowFromUtf8(request.settings.outputFolder);
    }

    /// Answers why nothing can be begun.
    std::string Prepare()
    {
        if (std::string problem = m_work.Load(m_log); !problem.empty()) return problem;
        if (std::string objection = m_work.Facts({.settings = m_execution, .wanted = {}}).objection;
            !objection.empty())
            return objection;
        auto order = m_work.InputPlaces(m_execution, {}, Asking::Unwanted, m_log);
        if (!order) return order.Error();
        m_order = std::move(*order);
        return {};
    }

    void Rename(CProgressMonitorWrapper& progress)
    {
        m_work.Begin({m_execution, m_log, progress, {}, static_cast<int>(m_order.size())});
        progress.BeginOperation();
        progress.SetDuration(static_cast<int>(m_order.size()));
        std::size_t end = m_order.size();
        for (std::size_t place = 0; place < end; ++place) {
            RenameOne(place);
            if (end == m_order.size() && progress.IsCancelled()) end = EndOfCancelled(place + 1);
        }
        progress.EndOperation();
        for (std::size_t place = end; place < m_order.size(); ++place)
            m_report.Skipped(m_order[place], "It has been skipped - processing has been canceled by user.");
    }

    CRenameReport& Report() { return m_report; }

private:
    void RenameOne(std::size_t place)
    {
        const ProcessedFile file = m_work.Process(m_order[place], static_cast<int>(place) + 1);
        if (const std::string& target = m_work.LastTarget(); !target.empty()) {
            m_wayBack.Add(file.path, target);
            m_report.Renamed(file.path, target, file.outcome == FileOutcome::Saved ? "" : file.message);
        } else if (file.outcome == FileOutcome::Skipped) {
            m_report.Skipped(file.path, file.message);
        } else if (const std::string there = PutBack(file.path); there != file.path) {
            m_wayBack.Add(file.path, there);
            m_report.Renamed(file.path, there, file.message);
        } else {
            m_report.Failed(file.path, file.message);
        }
    }

    /// Nobody goes on with this run: a file that waits for a name which it cannot get has to have one. Answers where
    /// it is.
    std::string PutBack(const std::string& path) const
    {
        const std::string waiting = WaitingPlaceOf(path);
        if (!platform::NameExists(waiting)) return path;
        const std::string target = UniqueUnderscore(path, platform::NameExists);
        const FileResult moved = platform::MoveFile(waiting, target, platform::Existing::Fail);
        m_log.NameValue("Moved back to", moved ? target : waiting, 1);
        return moved ? target : waiting;
    }

    /// Behind the last file that stands under a third name.
    std::size_t EndOfCancelled(std::size_t next) const
    {
        std::size_t end = m_order.size();
        while (end > next && !platform::NameExists(WaitingPlaceOf(m_order[end - 1]))) --end;
        return end;
    }

    const RenameRequest& m_request;
    CRenameWork& m_work;
    CLogWriter& m_log;
    ExecutorSettings m_execution;
    CWayBack m_wayBack;
    std::vector<std::string> m_order;
    CRenameReport m_report;
};

}  // namespace

Expected<CRenameReport> RenameFilesOf(const RenameRequest& request, CProgressMonitorWrapper& progress,
                                      CLogWriter& log)
{
    (void)platform::CreateFolders(request.listFolder);
    const CListFile list(request.listFolder);
    if (const FileResult written = list.Write(request); !written)
        return Failure(list.Path() + ": the list of new names cannot be written (" +
                       platform::ErrorText(written.errorNumber) + ").");
    CRenameWork work({.overwrite = request.settings.overwriteExisting}, list.Path(),
                     request.settings.executeScript ? request.settingsFile : std::string());
    CRenameRun run(request, work, log);
    if (std::string problem = run.Prepare(); !problem.empty()) return Failure(std::move(problem));
    run.Rename(progress);
    return std::move(run.Report());
}
