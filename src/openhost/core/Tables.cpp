#include "openhost/core/Tables.h"

#include <set>
#include <string>
#include <utility>

#include "openhost/core/Diagnostics.h"

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

}  // namespace openhost
