#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

#include "hostapi/HostInterface.h"
#include "hostapi/HostTypes.h"
#include "hostcalls/HostFrame.h"

// The host's function tables.

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
    FerruleIndex,
    Count
};

/// The tables that the plug-in got hold of, and their versions. The host owns them; they live until the plug-in is
/// unloaded.
class CHostTables {
public:
    /// Fetches the support table and the thirteen tables that the plug-in cannot do without, reached through `core`.
    /// False as soon as one of them is missing or too old; the plug-in must not load then. Does not throw.
    [[nodiscard]] bool Import(HFT core);

    /// Fetches the tables that need not be there: forms, index catalog, and the host's own for jobs and indexes. Only
    /// after a successful Import.
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

// From the name of a host function to its entry in its table. For this folder only.

namespace hostcalls {

/// The entry of a slot. Throws CHostException with "not implemented" when the table or the entry is missing.
[[nodiscard]] void* SlotEntry(HostTable table, int slot, const char* function);

/// A raise of our own making: the host answered "no" where only a value makes sense.
[[noreturn]] inline void ThrowHostError(ASErrorCode code) { throw CHostException({code, HostErrorText(code)}); }

/// For destructors: whatever goes wrong in `work` has nobody to be told to.
template <class Work>
void Quietly(Work work) noexcept
{
    try {
        work();
    } catch (...) {  // what could not be given back stays with the host
    }
}

/// Runs `work` at the end of its block, quietly.
template <class Work>
class CAtEnd {
public:
    explicit CAtEnd(Work work) : m_work(work) {}
    ~CAtEnd() { Quietly(m_work); }
    CAtEnd(const CAtEnd&) = delete;
    CAtEnd& operator=(const CAtEnd&) = delete;

private:
    Work m_work;
};

}  // namespace hostcalls

/// The host function `function` of the table `table`, typed: HostCall(HOST_SLOT(ASExtra, ASCabNew)).
#define HOST_SLOT(table, function) \
    reinterpret_cast<function##SlotProc>(hostcalls::SlotEntry(HostTable::table, kSlot##function, #function))

// Memory that changes hands between the host and us. For this folder only.

/// Owns one block of the host's memory, or nothing.
class CHostMemory {
public:
    explicit CHostMemory(void* adopted) noexcept : m_block(adopted) {}
    CHostMemory(CHostMemory&& other) noexcept : m_block(other.Release()) {}
    CHostMemory& operator=(CHostMemory&&) = delete;
    ~CHostMemory()
    {
        if (m_block) hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASfree), m_block); });
    }

    /// A block with a copy of the bytes and a zero behind them. Throws CHostException when the memory runs out.
    [[nodiscard]] static CHostMemory CopyOf(const std::string& bytes)
    {
        CHostMemory block(HostCall(HOST_SLOT(AcroSupport, ASmalloc), bytes.size() + 1));
        if (!block.m_block) hostcalls::ThrowHostError(genErrNoMemory);
        std::memcpy(block.m_block, bytes.c_str(), bytes.size() + 1);
        return block;
    }

    void* Get() const { return m_block; }
    char* Text() const { return static_cast<char*>(m_block); }
    void* Release() noexcept { return std::exchange(m_block, nullptr); }  // handed over

private:
    void* m_block;
};
