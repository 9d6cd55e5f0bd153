#include "commands/BatchCommandRebuildIndex.h"

#include "hostcalls/CatalogIndex.h"

CBatchCommandRebuildIndex::CBatchCommandRebuildIndex(CLogWriter& log)
    : CCatalogCommand({.handlerName = "QLNX_FerruleRebuildIndexCommand",
                       .displayName = "Rebuild Catalog Index",
                       .description = "Index file to rebuild: %s"},
                      log)
{
}

int CBatchCommandRebuildIndex::RunCatalog(const std::string& indexPath) { return BuildCatalogIndex(indexPath); }
