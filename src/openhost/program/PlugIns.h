#ifndef FERRULE_OPENHOST_PROGRAM_PLUG_INS_H
#define FERRULE_OPENHOST_PROGRAM_PLUG_INS_H

#include <memory>
#include <string>
#include <vector>

#include "openhost/program/PlugInLibrary.h"

namespace openhost {

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

#endif
