#include "hostcalls/CatalogIndex.h"

#include "hostcalls/HostTables.h"

bool CatalogPresent() { return HostTables().Has(HostTable::Catalog); }

// The host takes a writable text; it gets one of its own.
IndexStatus BuildCatalogIndex(const std::string& indexPath)
{
    std::string path = indexPath;
    return HostCall(HOST_SLOT(Catalog, CatalogBuildIndex), path.data());
}

IndexStatus PurgeCatalogIndex(const std::string& indexPath)
{
    std::string path = indexPath;
    return HostCall(HOST_SLOT(Catalog, CatalogPurgeIndex), path.data());
}
