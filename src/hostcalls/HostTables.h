// The host's function tables.
#pragma once

#include "hostapi/HostTypes.h"

#include <array>
#include <cstddef>

enum class HostTable {
    Core,
    AcroSupport,
    Cos,
    PDModel,
    PDFEditWrite,
    PDFEditRead,
    PDSysFont,
    PagePDEContent,
    AcroView,
    PDSWrite,
    PDSRead,
    Win,
    ASExtra,
    PDMetadata,
    Forms,
    Catalog,
    FerruleJobs,
    Count
};

/// The tables that the plug-in got hold of, and their versions. The host owns them; they live until the plug-in is
/// unloaded.
class CHostTables {
public:
    /// Fetches the support table and the thirteen tables that the plug-in cannot do without, reached through `core`.
    /// False as soon as one of them is missing or too old; the plug-in must not load then. Does not throw.
    [[nodiscard]] bool Import(HFT core);

    /// Fetches the tables that need not be there: forms, index catalog, jobs. Only after a successful Import.
    void ImportOptional();

    bool Has(HostTable table) const { return Table(table) != nullptr; }

    /// Null when the table is not there.
    HFT Table(HostTable table) const { return m_entries[static_cast<std::size_t>(table)].table; }

    /// 0 when the table is not there, and for a table whose own version is 0.
    ASVersion Version(HostTable table) const { return m_entries[static_cast<std::size_t>(table)].version; }

    /// The identity under which the host knows this plug-in; null until it is set.
    ASExtension Extension() const { return m_extension; }
    void SetExtension(ASExtension extension) { m_extension = extension; }

private:
    struct Entry {
        HFT table = nullptr;
        ASVersion version = 0;
    };

    bool ImportOne(HostTable table, const char* name, ASVersion required);
    Entry Find(const char* name, ASVersion required) const;
    HFT Ask(const char* name, ASVersion version) const;
    ASVersion OwnVersion(HFT support, HFT table) const;
    Entry& At(HostTable table) { return m_entries[static_cast<std::size_t>(table)]; }

    std::array<Entry, static_cast<std::size_t>(HostTable::Count)> m_entries{};
    ASVersion m_supportVersion = 0;
    ASExtension m_extension = nullptr;
};

/// The tables of the running plug-in, the only ones that the typed calls use.
CHostTables& HostTables();
