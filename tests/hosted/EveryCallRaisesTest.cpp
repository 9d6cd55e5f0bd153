// A host in which any one call fails: nothing may stay open, whatever the call was.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

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

void WriteFile(const fs::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    ASSERT_TRUE(file.flush()) << path;
}

/// A place with two inputs and a sequence that protects and saves them; the environment says to run it.
struct Scene {
    CTemporaryFolder folder;
    fs::path input, output, settings;

    Scene() : input(folder / "in"), output(folder / "out"), settings(folder.Path())
    {
        for (const auto& path : {input, output}) fs::create_directory(path);
        for (const char* name : {"a.pdf", "b.pdf"}) fs::copy_file(FERRULE_SAMPLE_PDF, input / name);
        const fs::path sequence = folder / "s.sequ";
        WriteFile(sequence, kSequence);
        const std::pair<const char*, std::string> variables[] = {{"FERRULESEQU", sequence},
                                                                 {"FERRULEALTPATH", input},
                                                                 {"FERRULEALTOUTPUTPATH", output},
                                                                 {"FERRULENOPROGRESS", "yes"},
                                                                 {"FERRULEFINAL", "0"},
                                                                 {"FERRULEDEST", ""},
                                                                 {"XDG_CONFIG_HOME", settings / "c"},
                                                                 {"FERRULEFILEEXT", ""},
                                                                 {"FERRULENOSUBFOLDERS", ""},
                                                                 {"EXECUTEINSTEPS", ""}};
        for (const auto& [name, value] : variables) setenv(name, value.c_str(), 1);
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

struct Counts {
    std::size_t documents = 0, cabs = 0, texts = 0, paths = 0, files = 0, streams = 0, commands = 0;

    static Counts Now()
    {
        return {Part<CDocuments>().Live(), LiveCabs(), LiveTexts(), LivePaths(), LiveFiles(), LiveStreams(),
                Part<CCommands>().Live()};
    }
    std::string MoreThan(const Counts& other) const
    {
        std::ostringstream text;
        const auto say = [&](const char* what, std::size_t mine, std::size_t theirs) {
            if (mine > theirs) text << ' ' << mine - theirs << ' ' << what;
        };
        say("documents", documents, other.documents);
        say("cabs", cabs, other.cabs);
        say("texts", texts, other.texts);
        say("paths", paths, other.paths);
        say("files", files, other.files);
        say("streams", streams, other.streams);
        say("commands", commands, other.commands);
        return text.str();
    }
};

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
        const Counts before = Counts::Now();
        if (up) host.Run();
        left = Counts::Now().MoreThan(before);
        if (Part<CFrames>().Depth() != 0) left += " exception frames";
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
