// What the rename tool has on disk while it renames, so that a renaming which is cut short can be brought to its end.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/Expected.h"
#include "common/RenamePlan.h"
#include "platform/HeldFiles.h"

/// In the folder of lists: the way back from the renaming that came to its end last, as a list of new names.
inline constexpr char kWayBackList[] = "way-back.csv";

/// The list of all new names of one renaming, and the way back, which grows with each file. Both stay until Finish,
/// also when this object is gone before. Paths are bytes.
class CRenameLists {
public:
    /// A new renaming. Fails with a sentence when its list cannot be written.
    [[nodiscard]] static Expected<CRenameLists> Begin(const std::string& folder,
                                                      const std::vector<RenameLine>& lines);
    /// One that was cut short and that no process is at; nothing when there is none.
    [[nodiscard]] static std::optional<CRenameLists> Interrupted(const std::string& folder);

    /// Of the list of new names.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] bool WasInterrupted() const { return m_interrupted; }
    /// Null for a file that has not been renamed yet.
    [[nodiscard]] const std::string* TargetOf(const std::string& from) const;
    /// Of a renaming that was cut short, for a file that has not been renamed by what the way back says: whether it
    /// is neither under its old name, which may be another's by now, nor waits for its new one.
    [[nodiscard]] bool HasLeft(const std::string& from) const;
    /// Where it was to go; empty: nothing is there.
    [[nodiscard]] std::string MayBeAt(const std::string& from) const;
    /// Puts it into the way back.
    [[nodiscard]] platform::FileResult Add(const std::string& from, const std::string& to);
    /// The way back becomes that of the last renaming, and the list goes.
    void Finish();

private:
    explicit CRenameLists(std::string path) : m_path(std::move(path)) {}
    [[nodiscard]] std::string WayBackPath() const { return m_path + ".back"; }
    void Remember(const std::string& from, const std::string& to);
    void ReadWayBack();
    void ReadList();

    std::string m_path;
    bool m_interrupted = false;
    std::unordered_map<std::string, std::string> m_planned;  // of an interrupted one
    std::unordered_map<std::string, std::string> m_targets;
    std::unordered_set<std::string> m_taken;  // the new names among them
    std::optional<platform::CFileLock> m_lock;
    platform::CAppendFile m_wayBack;
};

/// A path as lists of new names have it, and back.
[[nodiscard]] std::string ListedPath(const std::string& path);
[[nodiscard]] std::string PathFromList(const std::string& text);
