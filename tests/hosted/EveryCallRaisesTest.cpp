// A host in which any one call fails: nothing may stay open, whatever the call was.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "openhost/commands/Commands.h"
#include "openhost/core/Memory.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/files/Streams.h"
#include "openhost/program/OpenHost.h"
#include "openhost/values/Cabinet.h"
#include "openhost/values/Text.h"
#include "support/Interposer.h"
#include "support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace openhost;

constexpr int kWorkers = 2;  // the test's shares, so that they can run side by side

const char kSequence[] =
    R"(<?xml version="1.0"?><Workflow title="t" description=""><Group label="g">
<Command name="NoSuchStep"/>
<Command name="QLNX_FerrulePasswordProtectCommand"><Items>
<Item name="EncryptionMethod" type="integer" value="2"/><Item name="PasswordProtect" type="boolean" value="true"/>
<Item name="Password" type="text" value="secret"/><Items name="FileMapping"><Item name="NumItems" type="integer" value="0"/>
</Items></Items></Command>
<Command name="WorkflowPlaybackSaveFiles"><Items>
<Item name="DocSaveDestType" type="string" value="WorkflowPlaybackSave"/></Items></Command>
</Group></Workflow>)";

/// A place with two inputs and a sequence that protects and saves them; the environment says to run it.
struct Scene {
    CTemporaryFolder folder;
    const fs::path input = folder.MakeFolder("in"), output = folder.MakeFolder("out");

    Scene()
    {
        for (const char* name : {"a.pdf", "b.pdf"}) fs::copy_file(FERRULE_SAMPLE_PDF, input / name);
        for (const char* name : {"FERRULEDEST", "FERRULEFILEEXT", "FERRULENOSUBFOLDERS", "EXECUTEINSTEPS"})
            SetVariable(name, "");
        SetVariable("FERRULESEQU", folder.Write("s.sequ", kSequence));
        SetVariable("FERRULEALTPATH", input);
        SetVariable("FERRULEALTOUTPUTPATH", output);
        SetVariable("FERRULENOPROGRESS", "yes");
        SetVariable("FERRULEFINAL", "0");
        SetVariable("XDG_CONFIG_HOME", folder / "c");
    }

    /// The inputs are whole and the output folder holds finished documents only, each of them protected.
    std::string Damage() const
    {
        for (const char* name : {"a.pdf", "b.pdf"})
            if (fs::file_size(input / name) != fs::file_size(FERRULE_SAMPLE_PDF))
                return std::string("input changed: ") + name;
        for (const auto& entry : fs::directory_iterator(output)) {
            const std::string name = entry.path().filename();
            if (name.starts_with('.')) return "temporary file left: " + name;
            if (FileBytes(entry.path()).find("/Encrypt") == std::string::npos) return "not protected: " + name;
        }
        return {};
    }
};

using Counts = std::map<std::string, std::size_t>;

Counts CountsNow()
{
    return {{"documents", Part<CDocuments>().Live()},
            {"cabs", LiveCabs()},
            {"texts", LiveTexts()},
            {"paths", LivePaths()},
            {"files", LiveFiles()},
            {"streams", LiveStreams()},
            {"commands", Part<CCommands>().Live()},
            {"exception frames", Part<CFrames>().Depth()}};
}

/// One life of a host in which call number `raiseOn` raises. Answers what was left open after the run, compared with
/// before it, and how many frames remained.
std::string RunOnce(int raiseOn, bool& raised)
{
    const Scene scene;
    auto& gate = testsupport::CCallGate::Instance();
    OpenHostOptions options;
    options.plugIns = {{FERRULE_PLUG_IN, nullptr}};
    options.diagnostics = [](std::string_view) {};
    options.sleep = [](std::uint64_t) {};
    options.afterOffering = [](CTables& tables) { testsupport::InterposeEverything(tables); };
    gate.RaiseOnCall(raiseOn);
    const std::size_t blocksBefore = LiveSharedBlocks();
    std::string left;
    {
        COpenHost host(options);
        const bool up = host.StartUp();
        const Counts before = CountsNow();
        if (up) host.Run();
        for (const auto& [what, count] : CountsNow())
            if (count > before.at(what)) left += ' ' + std::to_string(count - before.at(what)) + ' ' + what;
        raised = gate.Raised();
        gate.RaiseOnCall(0);
        host.ShutDown();
    }
    if (LiveSharedBlocks() > blocksBefore) left += " memory blocks";
    return left + scene.Damage();
}

/// Runs in a child process: a crash is a finding, not the end of the test. 0: nothing raised any more, 1: all well,
/// 2: something was left.
int RunInChild(int raiseOn, std::string& finding)
{
    int channel[2];
    if (pipe(channel) != 0) return -1;
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        bool raised = false;
        const std::string left = RunOnce(raiseOn, raised);
        const std::string text = testsupport::CCallGate::Instance().RaisedName() + ":" + left;
        if (write(channel[1], text.data(), text.size()) < 0) _exit(99);
        close(channel[1]);
        std::exit(!left.empty() ? 2 : raised ? 1 : 0);  // not _exit: the leak check runs at exit
    }
    close(channel[1]);
    char buffer[500];
    for (ssize_t count; (count = read(channel[0], buffer, sizeof buffer)) > 0;)
        finding.append(buffer, static_cast<std::size_t>(count));
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

class EveryCall : public ::testing::TestWithParam<int> {};

TEST_P(EveryCall, MayRaiseWithoutLeavingAnythingOpen)
{
    std::string finding;
    ASSERT_EQ(RunInChild(0, finding), 0) << "a run in which nothing raises:" << finding;
    int failures = 0;
    for (int number = 1 + GetParam();; number += kWorkers) {
        finding.clear();
        const int result = RunInChild(number, finding);
        if (result == 0) {
            EXPECT_GT(number, 300) << "the run is shorter than it can be";
            return;
        }
        EXPECT_EQ(result, 1) << "host call " << number << " " << finding;
        if (result != 1 && ++failures >= 10) return;  // the rest would say the same
    }
}

INSTANTIATE_TEST_SUITE_P(Host, EveryCall, ::testing::Range(0, kWorkers));

}  // namespace
