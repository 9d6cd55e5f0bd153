// Who is asked before anything is done to a file or program for good.
#pragma once

#include <optional>
#include <string>

/// Watches over what this module does to files and programs for good.
///
/// The file services of `platform/` ask the installed overseer themselves, so no caller can forget it. Not asked:
/// logs, settings files and temporary files, which are nobody's documents.
class COverseer {
public:
    enum class Act {
        Put,     ///< the complete file takes the place, or the free name, `target`
        Move,    ///< the file gets the name `target`
        Delete,  ///< the file is removed; `target` is empty
        Start    ///< the program `target` is started with the file as its argument
    };
    enum class Answer {
        Go,
        Refuse,  ///< the act fails with the error "cancelled"
        Pretend  ///< the act is left out and counts as done
    };

    virtual ~COverseer() = default;

    /// Asked immediately before the act: for Put after the content is complete and flushed. `file` holds the content
    /// that the act is about; while Pretends, for Put it may be empty.
    virtual Answer Ask(Act act, const std::string& file, const std::string& target) = 0;

    /// True during a trial run: every answer will be Pretend or Refuse, so nothing needs to be written for it.
    virtual bool Pretends() const = 0;

    /// Whether a pretended act has created (true) or removed (false) the path; nothing when the disk tells.
    virtual std::optional<bool> Exists(const std::string& path) const = 0;
};

/// Borrowed until another one, or null for none, is installed; answers the former one. Each module has its own.
COverseer* InstallOverseer(COverseer* overseer);
/// Null when none is installed.
COverseer* Overseer();

/// While it lives, the file services of this module ask nobody: for files that are nobody's documents.
class CUnwatched {
public:
    CUnwatched() : m_former(InstallOverseer(nullptr)) {}
    CUnwatched(const CUnwatched&) = delete;
    CUnwatched& operator=(const CUnwatched&) = delete;
    ~CUnwatched() { InstallOverseer(m_former); }

private:
    COverseer* m_former;
};
