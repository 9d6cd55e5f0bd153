#pragma once

#include <string>
#include <utility>
#include <vector>

#include "openhost/program/OpenHost.h"
#include "platform/Paths.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

extern "C" ASBool HOSTCALL PlugInMain(ASUns32 hostVersion, ASUns32* handshakeVersion, PISetupSDKProcType* setup,
                                      void* platformWords);

/// A document of one empty page.
inline constexpr char kPdf[] =
    "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
    "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>endobj\nxref\n0 4\n0000000000 65535 f \n"
    "0000000009 00000 n \n0000000052 00000 n \n0000000101 00000 n \ntrailer<</Size 4/Root 1 0 R>>\n"
    "startxref\n158\n%%EOF\n";

/// The plug-in, linked into the test, inside the open host, with a folder for application data of its own. One at a
/// time; while it lives, the plug-in's own calls reach this host.
class CPlugInHost {
public:
    explicit CPlugInHost(openhost::OpenHostOptions options = {}) : m_host(Completed(std::move(options)))
    {
        m_started = m_host.StartUp();
    }

    bool Started() const { return m_started; }

    /// Ends the host; the plug-in unloads and closes its log.
    void ShutDown() { m_host.ShutDown(); }

    int Run() { return m_host.Run(); }

    /// What the host said so far, alerts among it.
    const std::vector<std::string>& Remarks() const { return m_remarks; }
    void ForgetRemarks() { m_remarks.clear(); }

    std::string LogText() const { return FileBytes(m_folder / "Quillon/Ferrule/FerruleLog.txt"); }
    const CTemporaryFolder& Folder() const { return m_folder; }

private:
    openhost::OpenHostOptions Completed(openhost::OpenHostOptions options)
    {
        SetVariable(platform::kApplicationDataVariable, m_folder.Path());
        options.plugIns = {{"Ferrule.api", &PlugInMain}};
        options.diagnostics = [this](std::string_view remark) { m_remarks.emplace_back(remark); };
        return options;
    }

    CTemporaryFolder m_folder;
    std::vector<std::string> m_remarks;
    openhost::COpenHost m_host;
    bool m_started = false;
};
