#include "platform/FileKeeper.h"

#include "platform/FileSteps.h"
#include "platform/TemporaryFile.h"

namespace platform {

namespace {

/// By whole blocks that both share, or byte by byte.
FileResult CopyTo(const std::string& from, const std::string& to, bool clone)
{
    CTemporaryFile copy;
    if (const auto made = copy.CopyBeside(from, to, {.withOwner = true, .clone = clone}); !made) return made;
    return copy.PutInPlace(to, Existing::Fail);
}

/// Whether another way may succeed.
bool MayGoOn(const FileResult& kept)
{
    const FileProblem problem = ProblemOf(kept);
    return problem != FileProblem::None && problem != FileProblem::Exists && problem != FileProblem::Missing;
}

}  // namespace

FileResult CFileKeeper::Keep(const std::string& from, const std::string& to)
{
    FileResult kept = Failure(FileProblem::Other);
    const bool isLink = NameIsLink(from);
    if (m_mayClone && !isLink) {
        kept = CopyTo(from, to, true);
        m_mayClone = kept.Ok();
    }
    if (m_mayLink && MayGoOn(kept)) kept = LinkFile(from, to);
    if (MayGoOn(kept)) kept = isLink ? CopyLink(from, to) : CopyTo(from, to, false);
    if (!kept) return kept;
    const FileResult flushed = FlushFolderOf(to);
    if (!flushed) (void)RemoveName(to);
    return flushed;
}

}  // namespace platform
