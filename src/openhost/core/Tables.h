#pragma once

#include <array>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostapi/HostInterface.h"
#include "hostapi/HostRecords.h"
#include "hostapi/HostSlotLists.h"
#include "openhost/core/Handles.h"
#include "openhost/core/Raise.h"

namespace openhost {

enum class Table {
#define ENTRY(table, name) table,
    HOST_TABLES(ENTRY)
#undef ENTRY
        Count
};

/// The host's own function tables. Every entry is filled: one that the host does not offer raises
/// genErrMethodNotImplemented and names itself in the diagnostics.
class CTables {
public:
    CTables();

    /// Puts an entry into its place; use OFFER, which checks the type.
    void Put(Table table, int slot, HFTEntry entry)
    {
        m_entries[Index(table)][static_cast<std::size_t>(slot)] = entry;
    }
    template <class SlotProc>
    void PutTyped(Table table, int slot, SlotProc entry)
    {
        Put(table, slot, reinterpret_cast<HFTEntry>(entry));
    }

    HFT Get(Table table) { return m_entries[Index(table)].data(); }
    ASVersion Version(Table table) const;
    std::string_view Name(Table table) const;
    /// Whether the host offers this table at all; a table without any own entry may still be offered.
    void SetAvailable(Table table, bool available) { m_available[Index(table)] = available; }
    bool Available(Table table) const { return m_available[Index(table)]; }
    bool Offers(Table table, int slot) const;
    std::size_t EntryCount(Table table) const { return m_entries[Index(table)].size(); }  // entry 0 included

private:
    static std::size_t Index(Table table) { return static_cast<std::size_t>(table); }
    std::array<std::vector<HFTEntry>, static_cast<std::size_t>(Table::Count)> m_entries;
    std::array<std::vector<HFTEntry>, static_cast<std::size_t>(Table::Count)> m_stubs;
    std::array<bool, static_cast<std::size_t>(Table::Count)> m_available{};
};

/// The published name of a function, or empty when the slot is not known.
std::string_view SlotName(Table table, int slot);

/// Offers the host function `impl` as `function` of `table`; does not compile when the signatures differ.
#define OFFER(tables, table, function, impl) \
    (tables).PutTyped<function##SlotProc>(openhost::Table::table, kSlot##function, &openhost::CSlot<&impl>::Entry)

/// Fills in what the host itself needs at the lowest level: exceptions, atoms, callbacks, memory, tables and their
/// servers.
void OfferCoreSlots(CTables& tables);

/// A server through which a plug-in offers a table of its own.
struct CTableServer {
    std::string name;
    HFTServerProvideHFTProc provide = nullptr;
    HFTServerDestroyProc destroy = nullptr;
    void* clientData = nullptr;
    HFT table = nullptr;  // the one table that all clients share, once it was asked for
};

/// A table made by a plug-in.
struct CPlugInTable {
    std::vector<HFTEntry> entries;  // index = slot; 0 is no function
    ASVersion version = HFT_ERROR_NO_VERSION;
};

/// Tables that plug-ins offer, and the history of replaced entries of all tables.
class CTableServers {
public:
    CHandles<CTableServer, HFTServer> servers{"table server"};

    /// The table of the server with this name, made by its plug-in when it is asked for the first time; null when
    /// there is none or its version is too old.
    HFT Find(const std::string& name, ASVersion version);
    HFT NewTable(std::size_t selectors, ASVersion version);
    void Destroy(HFT table);
    CPlugInTable* FindTable(HFT table);

    struct Replacement {
        HFT table;
        int slot;
        HFTEntry older;
        HFTEntry newer;
    };
    std::vector<Replacement> replacements;  // oldest first

private:
    std::list<CPlugInTable> m_tables;
};

}  // namespace openhost
