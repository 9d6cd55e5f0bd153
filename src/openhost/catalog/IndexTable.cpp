#include "hostapi/IndexTable.h"

#include <algorithm>
#include <memory>

#include "base/Text.h"
#include "openhost/catalog/Catalog.h"
#include "openhost/catalog/Slots.h"
#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"
#include "platform/Clock.h"
#include "protocol/Json.h"

namespace openhost {

namespace {

constexpr std::uint64_t kBetweenProgressMs = 100;

using Report = std::function<void(const Json&)>;

const char* WordFor(DocumentState state)
{
    switch (state) {
        case DocumentState::Indexed:
            return "incomplete";
        case DocumentState::NoText:
            return "no-text";
        case DocumentState::LeftOut:
            return "encrypted";
        case DocumentState::NeedsPassword:
            return "needs-password";
        case DocumentState::NotPermitted:
            return "not-permitted";
        case DocumentState::Unreadable:
            return "unreadable";
        case DocumentState::Failed:
            break;
    }
    return "failed";
}

void ReportProblems(const std::vector<IndexProblem>& problems, const Report& report)
{
    for (const IndexProblem& problem : problems)
        report({{"document",
                 {{"path", TextFromBytes(problem.path)},
                  {"state", WordFor(problem.state)},
                  {"message", problem.message}}}});
}

CatalogAnswer Create(const std::string& path, const Json& order, const Report&)
{
    return Part<CCatalog>().Create(
        path, {.folders = BytesListAt(order, "folders"), .includeEncrypted = FlagAt(order, "includeEncrypted")});
}

CatalogAnswer Build(const std::string& path, const Json& order, const Report& report)
{
    ReaderSettings readers = Part<CCatalog>().readers;
    readers.jobs = std::max(1, CountAt(order, "jobs"));
    readers.timeoutSeconds = CountAt(order, "timeout");
    readers.memoryBytes = static_cast<std::uint64_t>(std::max<std::int64_t>(0, DecimalAt(order, "memory")));
    BuildSummary summary;
    std::uint64_t told = 0;
    CatalogAnswer answer = Part<CCatalog>().Build(path, readers, summary, [&](std::size_t done, std::size_t total) {
        const std::uint64_t now = platform::MonotonicMilliseconds();
        if (now - told < kBetweenProgressMs) return;
        told = now;
        report({{"progress", {{"done", done}, {"total", total}}}});
    });
    if (answer.status != IndexBuildDone) return answer;
    ReportProblems(summary.problems, report);
    report({{"summary",
             {{"documents", summary.documents},
              {"pages", summary.pages},
              {"read", summary.read},
              {"unchanged", summary.unchanged},
              {"removed", summary.removed}}}});
    return answer;
}

CatalogAnswer Purge(const std::string& path, const Json&, const Report&) { return Part<CCatalog>().Purge(path); }

CatalogAnswer Contents(const std::string& path, const Json&, const Report& report)
{
    IndexContents contents;
    CatalogAnswer answer = Part<CCatalog>().Contents(path, contents);
    if (answer.status != IndexLoadDone) return answer;
    ReportProblems(contents.problems, report);
    report({{"contents",
             {{"built", contents.built},
              {"documents", contents.documents},
              {"pages", contents.pages},
              {"bytes", contents.bytes},
              {"builtAt", contents.built ? platform::UtcText(contents.builtAt) : ""}}}});
    return answer;
}

CatalogAnswer Search(const std::string& path, const Json& order, const Report& report)
{
    const SearchOptions options{.onOnePage = FlagAt(order, "onOnePage"),
                                .withSnippets = FlagAt(order, "snippets", true),
                                .most = static_cast<std::size_t>(CountAt(order, "most"))};
    return Part<CCatalog>().Search(path, TextAt(order, "query"), options, [&](const IndexHit& hit) {
        report({{"hit", {{"path", TextFromBytes(hit.path)}, {"page", hit.page}, {"text", hit.snippet}}}});
    });
}

constexpr struct {
    const char* word;
    CatalogAnswer (*carryOut)(const std::string& path, const Json& order, const Report& report);
} kOrders[] = {{"create", Create}, {"build", Build}, {"purge", Purge}, {"status", Contents}, {"search", Search}};

CatalogAnswer CarryOut(const Json& order, const Report& report)
{
    const std::string word = TextAt(order, "do");
    for (const auto& known : kOrders)
        if (word == known.word) return known.carryOut(BytesAt(order, "path"), order, report);
    return {IndexInvalid, "Nothing can be done with an index that is called \"" + word + "\"."};
}

/// The entry: nothing raises.
ASInt32 HOSTCALL CarryOutEntry(const char* text, IndexReportProc procedure, void* clientData)
{
    try {
        const Report report = [&](const Json& object) {
            if (procedure) CallPlugIn(procedure, LineOf(object).c_str(), clientData);
        };
        const CatalogAnswer answer = CarryOut(ParseObject(text ? text : "").value_or(Json::object()), report);
        if (!answer.message.empty()) report({{"problem", answer.message}});
        return answer.status;
    } catch (...) {
        static_cast<void>(RememberCurrentException());
        return IndexInvalid;
    }
}

}  // namespace

void OfferIndexTable()
{
    auto& servers = Part<CTableServers>();
    const HFT table = servers.NewTable(kTableIndexSelectors, kTableIndexVersion);
    const IndexCarryOutSlotProc entry = &CarryOutEntry;
    table[kSlotIndexCarryOut] = reinterpret_cast<HFTEntry>(entry);
    auto server = std::make_unique<CTableServer>();
    server->name = HOST_TABLE_INDEX;
    server->table = table;
    servers.servers.Add(std::move(server));
}

}  // namespace openhost
