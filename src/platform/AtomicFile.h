#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/Files.h"

namespace platform {

/// A file that appears under its name complete or not at all: written under a temporary name in the target's folder,
/// flushed, then put in its place at once, with the access rights and, as far as the system lets us, the owner of the
/// file it replaces. A symbolic link is no such file: it is replaced itself, and what it leads to stays as it is.
/// Without Commit nothing but the temporary file was touched, and the destructor removes that.
///
/// During a trial run nothing is created: what is written is dropped, and Commit asks the overseer and is done.
class CAtomicFile {
public:
    /// Creates the temporary file; Result tells whether that worked. Fails: "exists" (Existing::Fail only), "is a
    /// folder", "invalid argument" when the target is no regular file either, and what the system says.
    /// With Existing::Replace only what stands there now is replaced: when a free name was taken meanwhile, Commit
    /// fails with "exists". `source`: the file that the content comes from. Nobody but the owner may read or write
    /// the new file who may not do so with that one; of a source that is gone, nobody at all. Empty: the folder and
    /// the user's mask decide.
    CAtomicFile(const std::string& target, Existing existing, const std::string& source = {});
    CAtomicFile(const CAtomicFile&) = delete;
    CAtomicFile& operator=(const CAtomicFile&) = delete;
    ~CAtomicFile();

    /// The first failure so far.
    FileResult Result() const noexcept { return {m_error}; }
    /// Never throws: the first failure is kept, and later writes do nothing.
    void Write(const char* bytes, std::size_t length) noexcept;
    /// Flushes what was written to disk, so that it can be read back before it is committed. Commit does it
    /// otherwise.
    FileResult Complete();
    /// Where the complete file stands until it is committed; empty during a trial run.
    const std::string& TemporaryPath() const;
    /// Flushes, asks the overseer, puts the file in place and flushes the folder. Once.
    /// Fails: the target is as it was; "cancelled" when the overseer refuses.
    FileResult Commit();

private:
    struct State;
    FileResult Prepare(const std::string& source);
    FileResult Flush();
    void FlushBuffer() noexcept;

    std::unique_ptr<State> m_state;
    int m_error = 0;
};

/// From now on the names of this module's temporary files begin with ".ferrule-<tag>-", so that whoever gave out the
/// tag can find what a killed process left. Letters and digits only.
void SetTemporaryTag(const std::string& tag);
/// What such names begin with; "" as tag: those of runs without one.
std::string TemporaryPrefix(const std::string& tag);

/// A new name for a temporary file of this module. Not derived from any target's, which may already have the greatest
/// length.
std::string NextTemporaryName(unsigned long processId);

}  // namespace platform
