// The plug-in as the host sees it, from loading to unloading.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "base/Text.h"
#include "common/SettingsFile.h"
#include "hostapi/HostInterface.h"
#include "openhost/app/Menus.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Tables.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "support/PlugInHost.h"

namespace {

openhost::CMenuItem& Item(const char* name)
{
    openhost::CMenuItem* item = openhost::Part<openhost::CMenus>().FindItem(name);
    if (item == nullptr) throw std::runtime_error(std::string("no item ") + name);
    return *item;
}

}  // namespace

TEST(PlugInInHost, OnlyAHostThatCallsItselfReaderIsDeclined)
{
    static char reader[] = "Reader", lower[] = "reader";
    static void* answer = nullptr;
    static bool raises = false;
    static std::string asked;
    const struct {
        const char* what;
        void* answer;
        bool raises, starts;
    } rows[] = {{"Reader", reader, false, false},
                {"reader", lower, false, true},
                {"unknown", reinterpret_cast<void*>(~std::uintptr_t{0}), false, true},
                {"raises", nullptr, true, true}};
    for (const auto& row : rows) {
        answer = row.answer;
        raises = row.raises;
        openhost::OpenHostOptions options;
        options.afterOffering = [](openhost::CTables& tables) {
            tables.PutTyped<ASGetConfigurationSlotProc>(
                openhost::Table::Core, kSlotASGetConfiguration, [](ASAtom key) -> void* {
                    HFT core = openhost::Part<openhost::CTables>().Get(openhost::Table::Core);
                    asked = openhost::AtomText(key);
                    if (raises) reinterpret_cast<ASRaiseSlotProc>(core[kSlotASRaise])(genErrGeneral);
                    return answer;
                });
        };
        asked.clear();
        CPlugInHost host(std::move(options));
        EXPECT_EQ(host.Started(), row.starts) << row.what;
        EXPECT_EQ(asked, "Product") << row.what;
        if (row.starts) continue;
        ASSERT_EQ(host.Remarks().size(), 1u) << row.what;
        EXPECT_EQ(host.Remarks()[0], "plug-in Ferrule.api is not used: it declined at its handshake");
        EXPECT_EQ(host.LogText(), "<missing>") << "nothing was begun";
    }
}

TEST(PlugInInHost, ToolsAskForHostVersion9AndHelpDoesNot)
{
    const std::string guard = "alert: Can't execute in the Acrobat version prior 9.0.";
    for (const int version : {8, 9}) {
        openhost::OpenHostOptions options;
        options.majorVersion = version;
        CPlugInHost host(std::move(options));
        ASSERT_TRUE(host.Started()) << version;
        for (const char* name : {"QLNX:Ferrule", "QLNX:FerrulePasswordProtect", "QLNX:FerruleEditMetadata",
                                 "QLNX:FerruleExportMetadata", "QLNX:FerruleAutoRename"}) {
            host.ForgetRemarks();
            EXPECT_TRUE(openhost::IsEnabled(Item(name)));
            openhost::Execute(Item(name));
            ASSERT_EQ(host.Remarks().size(), 1u) << name;
            EXPECT_EQ(host.Remarks()[0] == guard, version < 9) << version << ": " << host.Remarks()[0];
        }
        for (const char* name : {"QLNX:FerruleHelp2", "QLNX:FerruleHelp", "QLNX:AboutFerrule"}) {
            host.ForgetRemarks();
            openhost::Execute(Item(name));
            ASSERT_EQ(host.Remarks().size(), 1u) << name;
            EXPECT_NE(host.Remarks()[0], guard) << name;
        }
    }
}

TEST(PlugInInHost, LogAndSettingsAreWrittenFromStartToEnd)
{
    CPlugInHost host;
    ASSERT_TRUE(host.Started());
    EXPECT_EQ(host.LogText().rfind("1: LOG STARTED: ", 0), 0u);
    host.Run();
    host.ShutDown();

    const std::string log = host.LogText();
    EXPECT_NE(log.find("2: No sequence file specified\r\n3: LOG STOPPED: "), std::string::npos) << log;
    EXPECT_NE(log.find("\r\n4: Plugin : " + ToUpperAscii(platform::ExecutablePath())), std::string::npos) << log;
    EXPECT_NE(log.find("5: Acrobat viewer host application : Ferrule Host\r\n6: Language : ENU\r\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find(", Adobe Acrobat version: 21.0 \r\n"), std::string::npos) << log;

    const SettingsFileContent settings = ReadSettingsFile(host.Folder() / "Quillon/Ferrule/Ferrule.cfs");
    ASSERT_TRUE(settings.Ok()) << settings.problem;
    EXPECT_TRUE(settings.record.Known("AllowLogging"));
    EXPECT_TRUE(settings.record.Known("PasswordProtectFiles"));
}

TEST(PlugInInHost, AStartThatFailsEarlyLeavesTheStoredSettings)
{
    CSettingsRecord stored;
    stored.PutBool("AllowLogging", false);
    std::string path;
    openhost::OpenHostOptions options;
    options.afterOffering = [&](openhost::CTables& tables) {
        path = platform::ApplicationDataFolder() + "/Quillon/Ferrule/Ferrule.cfs";
        ASSERT_TRUE(platform::CreateFolders(FolderOf(path)));
        ASSERT_TRUE(WriteSettingsFile(path, stored));
        tables.PutTyped<AVAppGetMenubarSlotProc>(openhost::Table::AcroView, kSlotAVAppGetMenubar, []() -> AVMenubar {
            HFT core = openhost::Part<openhost::CTables>().Get(openhost::Table::Core);
            reinterpret_cast<ASRaiseSlotProc>(core[kSlotASRaise])(genErrGeneral);
            return nullptr;
        });
    };
    CPlugInHost host(std::move(options));
    host.ShutDown();
    ASSERT_FALSE(host.Remarks().empty()) << "the plug-in was to fail";
    EXPECT_TRUE(ReadSettingsFile(path).record == stored);
}
