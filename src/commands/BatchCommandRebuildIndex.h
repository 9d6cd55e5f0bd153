// The step "Rebuild Catalog Index".
#pragma once

#include "commands/CatalogCommand.h"

class CBatchCommandRebuildIndex final : public CCatalogCommand {
public:
    explicit CBatchCommandRebuildIndex(CLogWriter& log);

private:
    int RunCatalog(const std::string& indexPath) override;
};
