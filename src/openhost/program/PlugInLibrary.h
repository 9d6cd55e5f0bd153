#ifndef FERRULE_OPENHOST_PROGRAM_PLUG_IN_LIBRARY_H
#define FERRULE_OPENHOST_PROGRAM_PLUG_IN_LIBRARY_H

#include <memory>
#include <string>

#include "hostapi/HostRecords.h"

namespace openhost {

/// The one function that a plug-in exports under its name, "PlugInMain".
/// platformWords  two words: the host's main window handle (here null) and the plug-in's library handle
using PlugInMainProc = ASBool(HOSTCALL*)(ASUns32 hostVersion, ASUns32* plugInVersion, PISetupSDKProcType* setup,
                                         void* platformWords);

/// A loaded library; unloaded with this object.
class CPlugInLibrary {
public:
    /// Null, and the reason in `problem`, when the file cannot be loaded.
    static std::unique_ptr<CPlugInLibrary> Load(const std::string& path, std::string& problem);
    ~CPlugInLibrary();
    CPlugInLibrary(const CPlugInLibrary&) = delete;
    CPlugInLibrary& operator=(const CPlugInLibrary&) = delete;

    /// Null when the library exports no such function.
    PlugInMainProc Entry() const;
    void* Handle() const { return m_handle; }

private:
    explicit CPlugInLibrary(void* handle) : m_handle(handle) {}
    void* m_handle;
};

}  // namespace openhost

#endif
