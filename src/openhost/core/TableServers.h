#ifndef FERRULE_OPENHOST_CORE_TABLE_SERVERS_H
#define FERRULE_OPENHOST_CORE_TABLE_SERVERS_H

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Handles.h"

namespace openhost {

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

#endif
