#include "commands/BatchCommandPurgeIndex.h"

#include "hostcalls/CatalogIndex.h"

CBatchCommandPurgeIndex::CBatchCommandPurgeIndex(CLogWriter& log)
    : CCatalogCommand({.handlerName = "QLNX_FerrulePurgeIndexCommand",
                       .displayName = "Purge Catalog Index",
                       .description = "Index file to purge: %s"},
                      log)
{
}

int CBatchCommandPurgeIndex::RunCatalog(const std::string& indexPath) { return PurgeCatalogIndex(indexPath); }
