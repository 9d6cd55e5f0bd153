#include "tools/rename/RenameRun.h"

#include <utility>

#include "base/Names.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "tools/RenameWork.h"

namespace {

using platform::FileResult;

/// With whole paths where files are moved, so that the list alone says where everything goes.
std::vector<RenameLine> LinesOf(const RenameRequest& request)
{
    const std::string folder =
        request.settings.moveOnSuccess ? WithTrailingSeparator(request.settings.outputFolder) : std::string();
    std::vector<RenameLine> lines;
    for (std::size_t place = 0; place < request.paths.size(); ++place) {
        const std::string& name = request.names[place];
        const bool isName = !name.empty() && name.find_first_of("/\\") == name.npos;
        lines.push_back({.path = ListedPath(request.paths[place]), .newName = isName ? folder + name : name});
    }
    return lines;
}

class CRenameRun {
public:
    CRenameRun(CRenameLists lists, const RenameRequest& request, CLogWriter& log)
        : m_lists(std::move(lists)),
          m_work({.overwrite = request.settings.overwriteExisting}, m_lists.Path(),
                 request.settings.executeScript ? request.settingsFile : std::string()),
          m_log(log)
    {
    }

    Expected<CRenameReport> Run(CProgressMonitorWrapper& progress)
    {
        if (std::string problem = Prepare(); !problem.empty()) {
            if (!m_lists.WasInterrupted()) m_lists.Finish();
            return Failure(std::move(problem));
        }
        Rename(progress);
        m_lists.Finish();
        return std::move(m_report);
    }

private:
    /// Answers why nothing can be begun.
    std::string Prepare()
    {
        if (std::string problem = m_work.Load(m_log); !problem.empty()) return problem;
        // What stands in the way of a new renaming is what an interrupted one has left.
        if (!m_lists.WasInterrupted())
            if (std::string objection = m_work.Facts({.settings = m_execution, .wanted = {}}).objection;
                !objection.empty())
                return objection;
        return m_work.InputPlaces(m_execution, {}, Asking::Unwanted, m_log,
                                  [&](const std::string& path) { m_order.push_back(path); });
    }

    void Rename(CProgressMonitorWrapper& progress)
    {
        m_work.Begin({m_execution, m_log, progress, {}, static_cast<int>(m_order.size())});
        progress.BeginOperation();
        progress.SetDuration(static_cast<int>(m_order.size()));
        std::size_t end = m_order.size();
        for (std::size_t place = 0; place < end; ++place) {
            if (const std::string* const target = m_lists.TargetOf(m_order[place]))
                m_report.Renamed(m_order[place], *target);
            else
                RenameOne(place);
            if (end == m_order.size() && progress.IsCancelled()) end = EndOfCancelled(place + 1);
        }
        progress.EndOperation();
        for (std::size_t place = end; place < m_order.size(); ++place)
            m_report.Skipped(m_order[place], "It has been skipped - processing has been canceled by user.");
    }

    void RenameOne(std::size_t place)
    {
        if (m_lists.WasInterrupted() && m_lists.HasLeft(m_order[place])) return FindLost(m_order[place]);
        m_foundLost = true;
        const ProcessedFile file = m_work.Process(m_order[place], static_cast<int>(place) + 1);
        if (const std::string& target = m_work.LastTarget(); !target.empty())
            Take(file.path, target, file.outcome == FileOutcome::Saved ? std::string() : file.message);
        else if (file.outcome == FileOutcome::Skipped)
            m_report.Skipped(file.path, file.message);
        else if (const std::string there = PutBack(file.path); there != file.path)
            Take(file.path, there, file.message);
        else
            m_report.Failed(file.path, file.message);
    }

    /// Only the first file that is not in the way back could have been renamed all the same.
    void FindLost(const std::string& path)
    {
        const std::string maybe = std::exchange(m_foundLost, true) ? std::string() : m_lists.MayBeAt(path);
        if (!maybe.empty())
            Take(path, maybe, "The program ended while it was being renamed; please look whether it is this file.");
        else
            m_report.Failed(path, "The file is gone.");
    }

    void Take(const std::string& from, const std::string& to, const std::string& remark)
    {
        if (const FileResult written = m_lists.Add(from, to); !written)
            m_log.NameValue("The way back cannot be written", platform::ErrorText(written.errorNumber), 1);
        m_report.Renamed(from, to, remark);
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

    CRenameLists m_lists;
    CRenameWork m_work;
    CLogWriter& m_log;
    ExecutorSettings m_execution;
    std::vector<std::string> m_order;
    bool m_foundLost = false;
    CRenameReport m_report;
};

}  // namespace

Expected<CRenameReport> RenameFilesOf(const RenameRequest& request, CProgressMonitorWrapper& progress,
                                      CLogWriter& log)
{
    auto lists = CRenameLists::Begin(request.listFolder, LinesOf(request));
    if (!lists) return Failure(lists.Error());
    return CRenameRun(std::move(*lists), request, log).Run(progress);
}

Expected<CRenameReport> FinishRenaming(CRenameLists lists, const RenameRequest& request,
                                       CProgressMonitorWrapper& progress, CLogWriter& log)
{
    return CRenameRun(std::move(lists), request, log).Run(progress);
}
