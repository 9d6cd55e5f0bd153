// The host's full-text catalog, which need not be there.
#pragma once

#include <string>

#include "hostapi/HostTypes.h"

[[nodiscard]] bool CatalogPresent();

/// Build or purge the index with that definition file, in the host's status codes. Throw CHostException, also when
/// there is no catalog.
[[nodiscard]] IndexStatus BuildCatalogIndex(const std::string& indexPath);
[[nodiscard]] IndexStatus PurgeCatalogIndex(const std::string& indexPath);
