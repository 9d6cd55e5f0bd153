#include <gtest/gtest.h>

#include "base/PathNames.h"
#include "openhost/core/Extensions.h"
#include "openhost/program/CommandLine.h"
#include "openhost/program/OpenHost.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

using namespace openhost;

namespace {

struct Life {
    bool up = false;
    std::string stages;  // what the plug-ins said, in order
    std::string remarks;
    std::vector<std::string> living;
};

/// Starts a host with these plug-ins, runs and ends it.
Life LiveWith(const std::vector<std::string>& names)
{
    Life life;
    OpenHostOptions options;
    for (const std::string& name : names)
        options.plugIns.push_back({std::string(TEST_PLUG_INS) + "/" + name + ".api", nullptr});
    options.diagnostics = [&](std::string_view line) {
        constexpr std::string_view kAlert = "alert: ";
        if (line.starts_with(kAlert))
            life.stages += std::string(line.substr(kAlert.size())) + ";";
        else
            life.remarks += std::string(line) + "\n";
    };
    COpenHost host(std::move(options));
    life.up = host.StartUp();
    for (ASExtension extension : Part<CExtensions>().InOrder())
        if (Part<CExtensions>().At(extension).living)
            life.living.push_back(AtomText(Part<CExtensions>().At(extension).registeredName));
    host.Run();
    host.ShutDown();
    return life;
}

}  // namespace

TEST(StartUp, AllPlugInsPassEachStageBeforeTheNextAndUnloadInReverse)
{
    const Life life = LiveWith({"good", "other"});
    EXPECT_EQ(
        life.stages,
        "good setup;good handshake;other setup;other handshake;good export;other export;good import;other import;"
        "good init;other init;good started;other started;other unload;good unload;");
    EXPECT_EQ(life.living, (std::vector<std::string>{"T:Good", "T:Other"}));
    EXPECT_EQ(life.remarks, "nothing was scheduled: no plug-in has anything to do\n");
}

TEST(StartUp, APlugInThatFailsIsGivenUpAndTheOthersGoOn)
{
    const struct {
        const char *name, *said, *stages;
    } rows[] = {{"missing", "missing.api cannot be loaded: ", ""},
                {"no-entry", "exports no PlugInMain", ""},
                {"no-setup", "declined at its setup", "bad setup;"},
                {"no-handshake", "declined at its handshake", "bad setup;bad handshake;"},
                {"raises-handshake", "raised an error at its handshake", "bad setup;bad handshake;"},
                {"no-import", "declined at its import of tables",
                 "bad setup;bad handshake;bad export;bad import;bad unload;"},
                {"no-init", "declined at its initialisation",
                 "bad setup;bad handshake;bad export;bad import;bad init;bad unload;"},
                {"raises-init", "raised an error at its initialisation",
                 "bad setup;bad handshake;bad export;bad import;bad init;bad unload;"},
                {"same-name", "another plug-in already has its name \"T:Good\"", "bad setup;bad handshake;"}};
    for (const auto& row : rows) {
        const Life life = LiveWith({"good", row.name});
        EXPECT_TRUE(life.up) << row.name;
        EXPECT_NE(life.remarks.find(row.said), std::string::npos) << row.name << ": " << life.remarks;
        EXPECT_EQ(life.living, std::vector<std::string>{"T:Good"}) << row.name;
        std::string stages;
        for (std::size_t at = 0; (at = life.stages.find("bad ", at)) != std::string::npos; ++at)
            stages += life.stages.substr(at, life.stages.find(';', at) + 1 - at);
        EXPECT_EQ(stages, row.stages) << row.name << " must not be called again";
        EXPECT_NE(life.stages.find("good started;"), std::string::npos) << row.name << life.stages;
    }
    EXPECT_FALSE(LiveWith({"no-init"}).up);
}

TEST(StartUp, APlugInLoadsFromAPathWithBlanksAndLettersOfAnyKind)
{
    const CTemporaryFolder folder;
    const std::string here = folder.MakeFolder("plug ins \xC3\xA9 \xE2\x82\xAC"), good = "/good.api";
    const std::string path = here + kSeparator + "my good.api";
    ASSERT_TRUE(platform::CopyFile(TEST_PLUG_INS + good, path, platform::Existing::Fail));
    for (const std::string& file : {path, TEST_PLUG_INS + ("/../plug_ins/" + good), here + "/./my good.api"}) {
        OpenHostOptions options;
        options.plugIns.push_back({file, nullptr});
        options.diagnostics = [](std::string_view) {};
        COpenHost host(std::move(options));
        EXPECT_TRUE(host.StartUp()) << file;
        host.ShutDown();
    }
    EXPECT_EQ(LiveWith({"nameless"}).living, std::vector<std::string>{"nameless.api"}) << "known by its file";
}

TEST(StartUp, AFolderGivesItsPlugInsByName)
{
    const auto found = PlugInsOfFolder(TEST_PLUG_INS);
    ASSERT_GE(found.size(), 3u);
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
    for (const std::string& path : found) EXPECT_TRUE(path.ends_with(".api")) << path;
    EXPECT_TRUE(PlugInsOfFolder("/no/such/folder").empty());
}
