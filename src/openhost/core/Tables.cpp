#include "openhost/core/Tables.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"

namespace openhost {

namespace {

constexpr std::size_t kTables = static_cast<std::size_t>(Table::Count);

struct TableFacts {
    const char* name;
    ASVersion version;
    int selectors;
};

constexpr TableFacts kFacts[kTables] = {
#define ENTRY(table, name) {name, kTable##table##Version, kTable##table##Selectors},
    HOST_TABLES(ENTRY)
#undef ENTRY
};

struct SlotFacts {
    Table table;
    int slot;
    const char* name;
};

constexpr SlotFacts kSlots[] = {
#define ENTRY(table, slot, function) {Table::table, slot, #function},
    HOST_SLOTS_CORE(ENTRY) HOST_SLOTS_ACROSUPPORT(ENTRY) HOST_SLOTS_COS(ENTRY) HOST_SLOTS_PDMODEL(ENTRY)
        HOST_SLOTS_ACROVIEW(ENTRY) HOST_SLOTS_WIN(ENTRY) HOST_SLOTS_ASEXTRA(ENTRY) HOST_SLOTS_PDMETADATA(ENTRY)
            HOST_SLOTS_FORMS(ENTRY) HOST_SLOTS_CATALOG(ENTRY) HOST_SLOTS_PDBATES(ENTRY)
#undef ENTRY
};

struct NotOfferedSlots {
    std::set<std::pair<Table, int>> said;
};

ASErrorCode RememberNotOffered(Table table, int slot)
{
    std::string name = std::string(kFacts[static_cast<std::size_t>(table)].name) + " " + std::to_string(slot);
    if (const auto known = SlotName(table, slot); !known.empty()) name += " (" + std::string(known) + ")";
    const std::string message = "the host does not offer the function " + name;
    if (Part<NotOfferedSlots>().said.insert({table, slot}).second) Diagnose(message);
    Part<CFrames>().Remember(genErrMethodNotImplemented, message);
    return genErrMethodNotImplemented;
}

/// Stands in every place that the host does not fill.
template <Table table, int slot>
void HOSTCALL NotOffered()
{
    RememberNotOffered(table, slot);
    Part<CFrames>().LeaveThroughTop();
}

template <Table table, int... slots>
std::vector<HFTEntry> MakeStubs(std::integer_sequence<int, slots...>)
{
    return {reinterpret_cast<HFTEntry>(&NotOffered<table, slots>)...};
}

}  // namespace

CTables::CTables()
{
#define ENTRY(table, name)         \
    m_stubs[Index(Table::table)] = \
        MakeStubs<Table::table>(std::make_integer_sequence<int, kTable##table##Selectors + 1>());
    HOST_TABLES(ENTRY)
#undef ENTRY
    m_entries = m_stubs;
}

ASVersion CTables::Version(Table table) const { return kFacts[Index(table)].version; }

std::string_view CTables::Name(Table table) const { return kFacts[Index(table)].name; }

bool CTables::Offers(Table table, int slot) const
{
    const auto position = static_cast<std::size_t>(slot);
    return m_entries[Index(table)].at(position) != m_stubs[Index(table)].at(position);
}

std::string_view SlotName(Table table, int slot)
{
    for (const SlotFacts& facts : kSlots)
        if (facts.table == table && facts.slot == slot) return facts.name;
    return {};
}

ASErrorCode RememberCurrentException() noexcept
{
    auto& frames = Part<CFrames>();
    try {
        throw;
    } catch (const CHostRaise& raise) {
        frames.Remember(raise.Code() != 0 ? raise.Code() : static_cast<ASErrorCode>(genErrGeneral), raise.Message());
    } catch (const std::bad_alloc&) {
        frames.Remember(genErrNoMemory, "out of memory");
    } catch (const std::exception& error) {
        frames.Remember(genErrGeneral, error.what());
    } catch (...) {
        frames.Remember(genErrGeneral, "an unknown error in the host");
    }
    return frames.LastCode();
}

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
