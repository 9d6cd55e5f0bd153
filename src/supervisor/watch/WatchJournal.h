// The journal of a watch: what it has done, and what it was about to do when it ended. See docs/watch.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/HeldFiles.h"
#include "supervisor/watch/WatchModel.h"

/// Each function that writes fails with a sentence; empty when all is well.
class CWatchJournal {
public:
    explicit CWatchJournal(std::string path) : m_path(std::move(path)) {}

    /// Reads what is there into the model and opens the file for more; a last line that is not complete is cut off.
    /// A journal that cannot be understood is a failure: beginning anew would do everything once more.
    [[nodiscard]] std::string Open(CWatchModel& model, std::uint64_t nowMs);
    /// Only reads.
    [[nodiscard]] std::string Read(CWatchModel& model, std::uint64_t nowMs);

    /// The files of the batch that was begun and is not ended; empty when there is none.
    [[nodiscard]] const std::vector<SeenFile>& OpenBatch() const { return m_batch; }

    /// On disk when this comes back.
    [[nodiscard]] std::string BeginBatch(const std::vector<SeenFile>& files);
    /// What became of the files, and that the batch has ended. On disk when this comes back. When only a part got
    /// there, the batch is still open, and saying the same once more is right.
    [[nodiscard]] std::string EndBatch(const std::vector<WatchedFile>& files, const std::vector<std::string>& gone);
    [[nodiscard]] std::string Add(const std::vector<WatchedFile>& files);
    [[nodiscard]] std::string Forget(const std::vector<std::string>& paths);

    /// Replaces the file by one that holds what the model has and nothing twice. Only without an open batch.
    [[nodiscard]] std::string Compact(const CWatchModel& model);
    /// Much of the file is out of date.
    [[nodiscard]] bool WantsCompacting() const { return m_length > kRoomToGrow + 4 * m_compactLength; }

private:
    static constexpr std::uint64_t kRoomToGrow = std::uint64_t{16} << 20;

    bool TakeLine(const std::string& line, CWatchModel& model, std::uint64_t nowMs);
    std::string Append(const std::string& text);
    std::string Problem(platform::FileResult result) const;

    std::string m_path;
    platform::CAppendFile m_file;
    std::uint64_t m_length = 0, m_compactLength = 0;
    std::vector<SeenFile> m_batch;
};
