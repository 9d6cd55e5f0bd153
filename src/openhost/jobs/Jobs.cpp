#include "openhost/jobs/Jobs.h"

#include "openhost/app/AppState.h"

namespace openhost {

CJobs::CJobs() : m_source(std::make_shared<CJobSource>())
{
    Install();
    m_former = InstallOverseer(m_ledger.get());
}

CJobs::~CJobs() { InstallOverseer(m_former); }

void CJobs::TakeFrom(std::shared_ptr<CJobSource> source)
{
    m_source = std::move(source);
    Install();
    InstallOverseer(m_ledger.get());
}

void CJobs::Install() { m_ledger = std::make_unique<CLedger>(*m_source, Part<AppClock>().milliseconds); }

const JobInputFile* CJobs::NextInput()
{
    m_input = m_source->NextInput();
    if (!m_input) return nullptr;
    m_ledger->InputBegins(*m_input);
    return &*m_input;
}

}  // namespace openhost
