#include "commands/CatalogCommand.h"

#include "base/Text.h"
#include "common/Log.h"
#include "hostcalls/CatalogIndex.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"

#include <iterator>

namespace {

constexpr char kIndex[] = "File";

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
    : CBatchCommand(FerruleStep(text.handlerName, text.displayName)), m_text(text), m_log(log)
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

DialogOutcome CCatalogCommand::ShowSettingsDialog(CCabEditor) { return DialogOutcome::Canceled; }

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
