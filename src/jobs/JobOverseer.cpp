#include "jobs/JobOverseer.h"

#include "hostapi/JobsTable.h"
#include "hostcalls/Jobs.h"

namespace {

int JobAct(COverseer::Act act)
{
    using Act = COverseer::Act;
    switch (act) {
        case Act::Put:
            return kJobActPut;
        case Act::Move:
            return kJobActMove;
        case Act::Delete:
            return kJobActDelete;
        case Act::Start:
            return kJobActStart;
    }
    return kJobActPut;
}

}  // namespace

CJobOverseer::CJobOverseer(bool pretends) : m_pretends(pretends), m_installed(JobsTablePresent())
{
    if (m_installed) m_before = InstallOverseer(this);
}

CJobOverseer::~CJobOverseer()
{
    if (m_installed) InstallOverseer(m_before);
}

COverseer::Answer CJobOverseer::Ask(Act act, const std::string& file, const std::string& target)
{
    switch (JobMayAct(JobAct(act), file, target)) {
        case kJobActAllowed:
            // A host that lets a trial run act has misunderstood.
            return m_pretends ? Answer::Refuse : Answer::Go;
        case kJobActPretended:
            return Answer::Pretend;
        default:
            return Answer::Refuse;
    }
}

std::optional<bool> CJobOverseer::Exists(const std::string& path) const
{
    if (!m_pretends) return std::nullopt;
    switch (JobPathState(path)) {
        case kJobPathThere:
            return true;
        case kJobPathGone:
            return false;
        default:
            return std::nullopt;
    }
}
