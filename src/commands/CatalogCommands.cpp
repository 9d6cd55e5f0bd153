#include "commands/CatalogCommands.h"

#include <iterator>

#include "base/Text.h"
#include "common/Log.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"
#include "sequence/StepChecks.h"
#include "sequence/StepDescription.h"

namespace {

constexpr char kIndex[] = "File";

void CheckIndex(const SequenceStep& step, CSequenceFindings& findings) { CheckNamedFile(step, kIndex, findings); }

const OpenParameter kOfIndexSteps[] = {{kIndex}};
const StepDescription kRebuild{.handler = "QLNX_FerruleRebuildIndexCommand",
                               .shared = SharedWork::Index,
                               .open = kOfIndexSteps,
                               .check = CheckIndex};
const StepDescription kPurge{.handler = "QLNX_FerrulePurgeIndexCommand",
                             .shared = SharedWork::Index,
                             .open = kOfIndexSteps,
                             .check = CheckIndex};

std::string IndexPath(CCabView parameters) { return parameters.StringOrText(kIndex).value_or(""); }

}  // namespace

std::string CatalogStatusText(int status, const std::string& indexPath)
{
    static constexpr const char* kTexts[] = {"Index is invalid: %s", "Index could not be saved: %s",
                                             "Rebuild is done: %s",  "Index is purged: %s",
                                             "Index is loaded: %s",  "Cannot rebuild index (Catalog is busy): %s"};
    if (status < 0 || status >= static_cast<int>(std::size(kTexts))) return {};
    return ReplaceAll(kTexts[status], "%s", indexPath);
}

CCatalogCommand::CCatalogCommand(const CatalogStepText& text, CLogWriter& log)
    : CBatchCommand(FerruleStep(text.step, text.displayName)), m_text(text), m_log(log)
{
}

void CCatalogCommand::SetDefaultParameters(CCabEditor parameters)
{
    parameters.MakeEmpty();
    parameters.PutString(kIndex, {});
}

std::vector<std::string> CCatalogCommand::DescribeParameters(CCabView parameters) const
{
    return {ReplaceAll(m_text.description, "%s", IndexPath(parameters))};
}

DialogOutcome CCatalogCommand::ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs)
{
    return ChooseFileParameter(parameters, kIndex, dialogs,
                               {.filter = "Acrobat Catalog Index File (*.pdx)|*.pdx||", .defaultExtension = "pdx"});
}

bool CCatalogCommand::ProcessDocument(const CommandTarget&, CCabView parameters)
{
    const std::string indexPath = IndexPath(parameters);
    if (!platform::FileExists(indexPath) || !CatalogPresent()) return true;
    (void)CatchHostError([&] {
        const int status = RunCatalog(indexPath);
        m_log.NameValue(m_text.displayName, CatalogStatusText(status, indexPath), 3);
    });
    return true;
}

CBatchCommandRebuildIndex::CBatchCommandRebuildIndex(CLogWriter& log)
    : CCatalogCommand(
          {.step = kRebuild, .displayName = "Rebuild Catalog Index", .description = "Index file to rebuild: %s"}, log)
{
}

int CBatchCommandRebuildIndex::RunCatalog(const std::string& indexPath) { return BuildCatalogIndex(indexPath); }

CBatchCommandPurgeIndex::CBatchCommandPurgeIndex(CLogWriter& log)
    : CCatalogCommand(
          {.step = kPurge, .displayName = "Purge Catalog Index", .description = "Index file to purge: %s"}, log)
{
}

int CBatchCommandPurgeIndex::RunCatalog(const std::string& indexPath) { return PurgeCatalogIndex(indexPath); }
