#include "openhost/core/TableServers.h"

#include <algorithm>

#include "openhost/core/Frames.h"
#include "openhost/core/Tables.h"

namespace openhost {

namespace {

/// How many entries the table has, entry 0 included; nothing when it is no table at all.
std::optional<std::size_t> EntriesOf(HFT table)
{
    if (const CPlugInTable* made = Part<CTableServers>().FindTable(table)) return made->entries.size();
    auto& tables = Part<CTables>();
    for (int index = 0; index < static_cast<int>(Table::Count); ++index)
        if (tables.Get(static_cast<Table>(index)) == table) return tables.EntryCount(static_cast<Table>(index));
    return std::nullopt;
}

HFTEntry& EntryAt(HFT table, Selector selector)
{
    const auto entries = EntriesOf(table);
    Require(entries.has_value(), "not a function table");
    Require(selector > 0 && static_cast<std::size_t>(selector) < *entries, "no such entry in the function table");
    return table[selector];
}

HFTServer ServerNew(const char* name, HFTServerProvideHFTProc provide, HFTServerDestroyProc destroy, void* clientData)
{
    Require(name && *name, "a table server needs a name");
    auto server = std::make_unique<CTableServer>();
    server->name = name;
    server->provide = provide;
    server->destroy = destroy;
    server->clientData = clientData;
    return Part<CTableServers>().servers.Add(std::move(server));
}

void ServerDestroy(HFTServer server)
{
    const auto gone = Part<CTableServers>().servers.Take(server);
    Require(gone != nullptr, "not a living table server");
    if (gone->destroy) CallPlugIn(gone->destroy, server, gone->clientData);
}

HFT TableNew(HFTServer server, ASTCount selectors)
{
    static_cast<void>(Part<CTableServers>().servers.At(server));
    Require(selectors >= 0 && selectors < 100000, "a function table cannot have so many entries");
    return Part<CTableServers>().NewTable(static_cast<std::size_t>(selectors), HFT_ERROR_NO_VERSION);
}

HFT TableNewWithData(HFTServer server, HFTData data)
{
    static_cast<void>(Part<CTableServers>().servers.At(server));
    Require(data && data->size >= sizeof(HFTDataRec) && data->numSelectors < 100000,
            "unusable description of a table");
    const HFT table = Part<CTableServers>().NewTable(data->numSelectors, data->version);
    const auto* const entries = static_cast<const HFTEntry*>(data->hftProcs);
    if (entries) std::copy(entries, entries + data->numSelectors, table + 1);
    return table;
}

void TableDestroy(HFT table) { Part<CTableServers>().Destroy(table); }

ASBool TableIsValid(HFT table) { return EntriesOf(table).has_value(); }

void ReplaceEntry(HFT table, Selector selector, HFTEntry entry, ASFlagBits)
{
    HFTEntry& place = EntryAt(table, selector);
    if (place) Part<CTableServers>().replacements.push_back({table, selector, place, entry});
    place = entry;
}

void ReplaceEntryFor(HFT table, Selector selector, HFTEntry entry, ASExtension, ASFlagBits flags)
{
    ReplaceEntry(table, selector, entry, flags);
}

/// The entry that stood there before `entry` was put in, or null.
HFTEntry ReplacedEntry(HFT table, Selector selector, HFTEntry entry)
{
    const auto& all = Part<CTableServers>().replacements;
    for (auto one = all.rbegin(); one != all.rend(); ++one)
        if (one->table == table && one->slot == selector && one->newer == entry) return one->older;
    return nullptr;
}

void UnreplaceEntry(HFT table, Selector selector, HFTEntry entry, ASExtension)
{
    auto& all = Part<CTableServers>().replacements;
    HFTEntry& place = EntryAt(table, selector);
    for (std::size_t index = all.size(); index-- > 0;) {
        if (all[index].table != table || all[index].slot != selector || all[index].newer != entry) continue;
        if (place == entry) place = all[index].older;
        for (auto& later : all)  // whoever replaced this entry now has the older one beneath
            if (later.table == table && later.slot == selector && later.older == entry)
                later.older = all[index].older;
        all.erase(all.begin() + static_cast<std::ptrdiff_t>(index));
        return;
    }
}

ASVersion TableVersion(HFT table)
{
    if (const CPlugInTable* made = Part<CTableServers>().FindTable(table)) return made->version;
    auto& tables = Part<CTables>();
    for (int index = 0; index < static_cast<int>(Table::Count); ++index)
        if (tables.Get(static_cast<Table>(index)) == table) return tables.Version(static_cast<Table>(index));
    return HFT_ERROR_NO_VERSION;
}

}  // namespace

HFT CTableServers::NewTable(std::size_t selectors, ASVersion version)
{
    m_tables.push_back({std::vector<HFTEntry>(selectors + 1, nullptr), version});
    return m_tables.back().entries.data();
}

CPlugInTable* CTableServers::FindTable(HFT table)
{
    for (CPlugInTable& made : m_tables)
        if (made.entries.data() == table) return &made;
    return nullptr;
}

void CTableServers::Destroy(HFT table)
{
    const auto made = std::find_if(m_tables.begin(), m_tables.end(),
                                   [&](CPlugInTable& each) { return each.entries.data() == table; });
    Require(made != m_tables.end(), "not a table that a plug-in made");
    servers.ForEach([&](CTableServer& server) {
        if (server.table == table) server.table = nullptr;
    });
    m_tables.erase(made);
}

HFT CTableServers::Find(const std::string& name, ASVersion version)
{
    CTableServer* found = nullptr;
    servers.ForEach([&](CTableServer& server) {
        if (server.name == name) found = &server;
    });
    if (!found) return nullptr;
    if (!found->table && found->provide)
        found->table = CallPlugIn(found->provide, servers.HandleOf(*found), version, found->clientData);
    if (!found->table) return nullptr;
    const CPlugInTable* const made = FindTable(found->table);
    const bool tooOld = made && made->version != HFT_ERROR_NO_VERSION && made->version < version;
    return tooOld ? nullptr : found->table;
}

void OfferTableServerSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, HFTServerNew, ServerNew);
    OFFER(tables, AcroSupport, HFTServerDestroy, ServerDestroy);
    OFFER(tables, AcroSupport, HFTNew, TableNew);
    OFFER(tables, AcroSupport, HFTNewEx, TableNewWithData);
    OFFER(tables, AcroSupport, HFTDestroy, TableDestroy);
    OFFER(tables, AcroSupport, HFTIsValid, TableIsValid);
    OFFER(tables, AcroSupport, HFTReplaceEntry, ReplaceEntry);
    OFFER(tables, AcroSupport, HFTReplaceEntryEx, ReplaceEntryFor);
    OFFER(tables, AcroSupport, HFTGetReplacedEntry, ReplacedEntry);
    OFFER(tables, AcroSupport, HFTUnreplaceEntry, UnreplaceEntry);
    OFFER(tables, AcroSupport, HFTGetVersion, TableVersion);
}

}  // namespace openhost
