#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostapi/HostRecords.h"

namespace openhost {

/// The one function that a plug-in exports under its name, "PlugInMain".
/// platformWords  two words: the host's main window handle (null without a window) and the plug-in's library handle
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

/// Where a plug-in comes from: a library file, or code of this process.
struct PlugInSource {
    std::string path;                ///< for code of this process a name of its own
    PlugInMainProc entry = nullptr;  ///< null: loaded from `path`
};

/// The plug-ins of a host, from loading to unloading.
///
/// A plug-in that cannot be loaded, declines or raises at any stage is given up with a remark: what it registered is
/// taken back, it is told to unload if it got as far as its own callbacks, and it is not called again. Its library
/// stays mapped until this object goes, after the host: nothing left in the host can point into nowhere.
class CPlugIns {
public:
    /// Loads it and has it shake hands. A name that another plug-in already has is refused.
    void Load(const PlugInSource& source);
    /// All of them export, then all import, then all initialise.
    void RunStages();
    /// Tells those that live to unload, the last loaded first.
    void Unload();
    std::size_t Living() const;

private:
    struct PlugIn {
        std::string path;
        std::unique_ptr<CPlugInLibrary> library;
        ASExtension extension = nullptr;
        PIHandshakeData_V0200 callbacks = {};
        bool living = false;
    };
    bool ShakeHands(PlugIn& plugIn, PlugInMainProc entry, std::string& problem);
    bool TakeName(PlugIn& plugIn, std::string& problem);
    void RunStage(const char* stage, ASCallback PIHandshakeData_V0200::*callback);
    void TellToUnload(PlugIn& plugIn);
    void GiveUp(PlugIn& plugIn, const std::string& problem);

    std::vector<PlugIn> m_plugIns;
};

}  // namespace openhost
