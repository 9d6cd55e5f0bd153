// Decides from what is on disk how an act is taken back, and does it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Files.h"
#include "supervisor/undo/ActsToUndo.h"

/// What stands under a name.
struct NameState {
    enum class Kind {
        Nothing,
        File,
        Other,
        Unknown  ///< its folder is not there, such as that of a disk which is not connected, or lets nobody look
    };
    Kind kind = Kind::Nothing;
    std::string sha256 = {};                        ///< of a file, links followed; empty when it cannot be read
    std::string link = {};                          ///< where it leads, when it is a symbolic link
    std::optional<platform::FileStamp> stamp = {};  ///< of a file that is no link, before its content was read

    /// Whether it is the file of this content.
    bool Holds(const std::string& content) const { return !content.empty() && sha256 == content; }
    bool IsFree() const { return kind == Kind::Nothing; }
    bool Is(const FormerFile& former) const;
};

/// Names as they are on disk, or as they will be once later acts have been taken back.
class CNames {
public:
    virtual ~CNames() = default;
    [[nodiscard]] virtual NameState At(const std::string& path);
    /// Whether anything stands there. Reads no content.
    [[nodiscard]] virtual bool IsTaken(const std::string& path);
};

struct UndoStep {
    enum class Kind {
        Nothing,   ///< it is as it was before the act
        Remove,    ///< the result goes
        PutBack,   ///< what was kept takes the result's place, or the name that is free
        MoveBack,  ///< the file goes back to where it came from, and what was kept takes its place
        Leave      ///< it cannot be taken back
    };
    Kind kind = Kind::Nothing;
    bool restoresKept = false;                     ///< with MoveBack and Remove: something was kept, too
    std::string problem = {};                      ///< what stays otherwise than before: a sentence; empty: nothing
    std::string remark = {};                       ///< what is otherwise than the run left it and is no harm
    std::optional<platform::FileStamp> seen = {};  ///< of the file that is going to be removed, replaced or moved
};
/// "remove", "put-back", "move-back".
[[nodiscard]] std::string_view UndoWord(UndoStep::Kind kind);

/// Says of each act what is to be done. A result stays when the file that it was made from is not back, because it
/// may be all that is left of it. Memory: for each file that something is left of.
class CUndoDecider {
public:
    /// Names: borrowed.
    explicit CUndoDecider(CNames& names) : m_names(names) {}
    /// The latest act first.
    [[nodiscard]] UndoStep Decide(const ActToUndo& act);

private:
    CNames& m_names;
    std::set<int> m_left;  // numbers of files that were moved or deleted and do not come back
};

struct UndoneStep {
    bool done = true;          ///< else it can be tried again
    std::string problem = {};  ///< what went wrong, also with what is done: a sentence; empty: nothing
};

/// Does it. Nothing that came later is replaced: free names stay what they are when somebody takes them meanwhile.
[[nodiscard]] UndoneStep DoUndo(const ActToUndo& act, const UndoStep& step);

/// What the disk will be like, act by act. Memory: eight bytes for each name that acts touch.
class CFutureNames final : public CNames {
public:
    /// First every act once.
    void Expect(const ActToUndo& act);
    void BeginToUse();
    [[nodiscard]] NameState At(const std::string& path) override;
    [[nodiscard]] bool IsTaken(const std::string& path) override;
    /// In the order in which they are taken back.
    void Undone(const ActToUndo& act, const UndoStep& step);

private:
    void Set(const std::string& path, NameState state);
    void Used(const std::string& path);

    std::vector<std::uint64_t> m_uses;  // a hash for each use that is still to come, sorted
    std::vector<bool> m_past;           // beside them
    std::map<std::string, NameState> m_states;
};
