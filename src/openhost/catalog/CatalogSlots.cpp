#include "openhost/catalog/Catalog.h"
#include "openhost/catalog/Slots.h"
#include "openhost/core/Host.h"

namespace openhost {

namespace {

/// Steps only log the code; the sentence is for whoever operates the host.
IndexStatus Told(const CatalogAnswer& answer)
{
    if (!answer.message.empty()) Diagnose(answer.message);
    return answer.status;
}

void Activate() { Diagnose("this host shows no window for its catalog"); }

IndexStatus LoadIndex(char* path) { return path ? Told(Part<CCatalog>().Load(path)) : IndexInvalid; }

IndexStatus BuildIndexOf(char* path)
{
    if (!path) return IndexInvalid;
    auto& catalog = Part<CCatalog>();
    BuildSummary summary;
    const CatalogAnswer answer = catalog.Build(path, catalog.readers, summary);
    if (!summary.problems.empty() && summary.read > 0) {
        const IndexProblem& first = summary.problems.front();
        Diagnose("the index " + std::string(path) + " holds no text, or not all of it, of " +
                 std::to_string(summary.problems.size()) + " documents and folders; the first is " + first.path +
                 ": " + first.message);
    }
    return Told(answer);
}

IndexStatus PurgeIndex(char* path) { return path ? Told(Part<CCatalog>().Purge(path)) : IndexInvalid; }

CatalogStatus GiveStatus() { return Part<CCatalog>().Status(); }

}  // namespace

void OfferCatalogSlots(CTables& tables)
{
    OFFER(tables, Catalog, CatalogActivate, Activate);
    OFFER(tables, Catalog, CatalogLoadIndex, LoadIndex);
    OFFER(tables, Catalog, CatalogBuildIndex, BuildIndexOf);
    OFFER(tables, Catalog, CatalogPurgeIndex, PurgeIndex);
    OFFER(tables, Catalog, CatalogGiveStatus, GiveStatus);
    tables.SetAvailable(Table::Catalog, true);
    OfferIndexTable();
}

}  // namespace openhost
