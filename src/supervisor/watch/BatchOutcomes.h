// What the outcomes of a batch mean for the files of a watch.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "protocol/FileRecord.h"
#include "protocol/FinalAction.h"
#include "supervisor/watch/WatchModel.h"

enum class WatchVerdict {
    Done,        ///< this version is done, and the input is where it was
    Gone,        ///< done, and the final action has taken the input away
    TryAgain,    ///< nothing was written: it may come out later
    Quarantine,  ///< it would not come out better, or would leave a second result
    NotDone      ///< nothing was begun with it, or it was given back
};
[[nodiscard]] WatchVerdict VerdictOn(const FileRecord& record, FinalAction finalAction);

/// Tells the model what became of each file of a batch, and collects what the journal has to keep of it.
class CBatchOutcomes {
public:
    /// `folder`: the watched one; results in it are no inputs. The model is borrowed.
    CBatchOutcomes(CWatchModel& model, const std::string& folder);

    /// `records`: by path; a file without one was not done. Reads results that lie in the watched folder.
    void Take(const std::vector<SeenFile>& batch, const std::unordered_map<std::string, FileRecord>& records,
              FinalAction finalAction, std::uint64_t nowMs, std::int64_t nowSeconds);

    const std::vector<WatchedFile>& Kept() const { return m_kept; }
    /// Files of which nothing is to be kept any more.
    const std::vector<std::string>& Gone() const { return m_gone; }

private:
    void TakeOne(const SeenFile& file, const FileRecord& record, WatchVerdict verdict, std::uint64_t nowMs,
                 std::int64_t nowSeconds);
    void TakeResults(const FileRecord& record, std::int64_t nowSeconds);
    void TakeResult(const std::string& path, const std::string& sha256, std::int64_t nowSeconds);

    CWatchModel& m_model;
    std::string m_folder, m_realFolder;  // with their separators; the second without links
    std::vector<WatchedFile> m_kept;
    std::vector<std::string> m_gone;
};
