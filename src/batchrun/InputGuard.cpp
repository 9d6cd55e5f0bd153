#include "batchrun/InputGuard.h"

#include "engine/InputState.h"

#include <utility>

CInputGuard::CInputGuard(std::string inputPath, std::optional<platform::FileStamp> stamp)
    : m_inputPath(std::move(inputPath)), m_stamp(stamp), m_former(InstallOverseer(this))
{
}

CInputGuard::~CInputGuard() { InstallOverseer(m_former); }

bool CInputGuard::IsChanged() { return m_foundChange = m_foundChange || HasChanged(m_inputPath, m_stamp); }

COverseer::Answer CInputGuard::Ask(Act act, const std::string& file, const std::string& target)
{
    if (IsChanged()) return Answer::Refuse;
    const Answer answer = m_former ? m_former->Ask(act, file, target) : Answer::Go;
    return answer == Answer::Go && IsChanged() ? Answer::Refuse : answer;
}

bool CInputGuard::Pretends() const { return m_former && m_former->Pretends(); }

std::optional<bool> CInputGuard::Exists(const std::string& path) const
{
    return m_former ? m_former->Exists(path) : std::nullopt;
}
