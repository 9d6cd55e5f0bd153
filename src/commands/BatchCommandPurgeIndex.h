// The step "Purge Catalog Index".
#pragma once

#include "commands/CatalogCommand.h"

class CBatchCommandPurgeIndex final : public CCatalogCommand {
public:
    explicit CBatchCommandPurgeIndex(CLogWriter& log);

private:
    int RunCatalog(const std::string& indexPath) override;
};
