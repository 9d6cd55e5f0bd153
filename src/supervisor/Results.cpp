#include "supervisor/Results.h"

using platform::FileResult;

FileResult CResults::AddIntent(const Intent& intent)
{
    return m_parts.journal ? m_parts.journal->AddIntent(intent) : FileResult{};
}

FileResult CResults::AddAgain(int number, ToDo toDo)
{
    return m_parts.journal ? m_parts.journal->AddAgain(number, toDo) : FileResult{};
}

FileResult CResults::AddDone(const DoneFile& done)
{
    DonePlace place{.outcome = done.record.outcome};
    if (m_parts.journal)
        if (const FileResult added = m_parts.journal->AddDone(done, &place.offset); !added) return added;
    Count(done, place);
    return {};
}

void CResults::KeepDone(const DoneFile& done, const DonePlace& place) { Count(done, place); }

void CResults::Count(const DoneFile& done, const DonePlace& place)
{
    m_parts.done.Set(done.record.number, place);
    ++m_progress.filesDone;
    m_progress.bytesDone += done.record.size;
    if (done.record.outcome != FileOutcome::Saved) ++m_progress.notSaved;
    if (m_parts.order) m_parts.order->Done(done, place.logged);
    m_parts.observer.FileDone(done.record, m_progress);
}
