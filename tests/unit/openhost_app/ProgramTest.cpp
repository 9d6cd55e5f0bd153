// The program: loading plug-ins, the loop, exit codes, the command line.
#include <functional>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "openhost/app/Events.h"
#include "openhost/app/Menus.h"
#include "openhost/core/Extensions.h"
#include "openhost/program/CommandLine.h"
#include "openhost/program/OpenHost.h"
#include "platform/Files.h"
#include "support/InProcessPlugIn.h"
#include "support/TemporaryFolder.h"

using namespace in_process;
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

namespace {

std::function<void()> g_idle;

void HOSTCALL IdleOnce(void*)
{
    if (g_idle) g_idle();
}

void RegisterIdle()
{
    Slot<AVAppRegisterIdleProcSlotProc>("AcroView", 0x00060000, kSlotAVAppRegisterIdleProc)(&IdleOnce, nullptr, 60);
}

void Quit()
{
    const auto bar = Slot<AVAppGetMenubarSlotProc>("AcroView", 0, kSlotAVAppGetMenubar)();
    const auto find =
        Slot<AVMenubarAcquireMenuItemByNameSlotProc>("AcroView", 0, kSlotAVMenubarAcquireMenuItemByName);
    if (const AVMenuItem item = find(bar, "Quit"))
        Slot<AVMenuItemExecuteSlotProc>("AcroView", 0, kSlotAVMenuItemExecute)(item);
}

/// Tells a run over these outcomes; a negative end is never told.
void TellRun(const std::vector<int>& outcomes, int end)
{
    Jobs<JobsRunStartsSlotProc>(kSlotJobsRunStarts)(static_cast<ASInt32>(outcomes.size()));
    for (const int outcome : outcomes) Jobs<JobsFileDoneSlotProc>(kSlotJobsFileDone)("/in/a\nb.pdf", outcome, "why");
    if (end >= 0) Jobs<JobsRunEndsSlotProc>(kSlotJobsRunEnds)(end, "told");
}

struct Outcome {
    int code = -1;
    std::string remarks;
    std::uint64_t clock = 0;
};

Outcome RunWith(OpenHostOptions options = {})
{
    Outcome outcome;
    options.plugIns = {{"in-process", &Entry}};
    options.diagnostics = [&](std::string_view line) { outcome.remarks += std::string(line) + "\n"; };
    options.clockMilliseconds = [&] { return outcome.clock; };
    options.sleep = [&](std::uint64_t milliseconds) { outcome.clock += milliseconds; };
    COpenHost host(std::move(options));
    EXPECT_TRUE(host.StartUp());
    outcome.code = host.Run();
    return outcome;
}

}  // namespace

TEST(ExitCodes, TellHowTheRunWent)
{
    constexpr int kSaved = kJobFileSaved, kFailed = kJobFileFailed, kNever = -1;
    const struct {
        const char* what;
        bool idle, tells;
        std::vector<int> outcomes;
        int end;
        bool quit;
        int code;
        const char* said;
    } rows[] = {
        {"nothing to do", false, false, {}, 0, false, 1, "nothing was scheduled"},
        {"work of which nothing is told", true, false, {}, 0, true, 0, ""},
        {"work without an end", true, false, {}, 0, false, 1, "was not asked to quit"},
        {"all fine", true, true, {kSaved, kSaved}, kJobRunFinished, true, 0, "2 files: 2 saved"},
        {"no files", true, true, {}, kJobRunFinished, true, 0, "0 files"},
        {"some failed", true, true, {kSaved, kFailed}, kJobRunFinished, true, 3, "2 files: 1 saved, 1 failed"},
        {"copied", true, true, {kJobFileCopiedUnchanged}, kJobRunFinished, true, 3, "1 file: 1 copied unchanged"},
        {"incomplete", true, true, {kJobFileIncomplete}, kJobRunFinished, true, 3, "incomplete: /in/a b.pdf: why"},
        {"an outcome of a later table", true, true, {77}, kJobRunFinished, true, 3, "1 file: 1 failed"},
        {"broken off", true, true, {kSaved}, kJobRunBroken, true, 1, "the run broke off: told"},
        {"not started", true, true, {}, kJobRunNotStarted, true, 1, "the run did not start: told"},
        {"fine but no quit", true, true, {kSaved}, kJobRunFinished, false, 1, "over, but the host was not"},
        {"its end was never told", true, true, {kSaved}, kNever, true, 1, ""}};
    for (const auto& row : rows) {
        g_initialise = [&] { row.idle ? RegisterIdle() : void(); };
        g_idle = [&] {
            if (row.tells) TellRun(row.outcomes, row.end);
            if (row.quit) Quit();
        };
        const Outcome outcome = RunWith();
        EXPECT_EQ(outcome.code, row.code) << row.what;
        EXPECT_NE(outcome.remarks.find(row.said), std::string::npos) << row.what << ": " << outcome.remarks;
    }
}

TEST(ExitCodes, TheLoopGoesOnUntilTheRunEndsOrTheHostIsAskedToQuit)
{
    int calls = 0;
    g_initialise = &RegisterIdle;
    g_idle = [&] {
        if (++calls == 1) Jobs<JobsRunStartsSlotProc>(kSlotJobsRunStarts)(-1);
        if (calls < 3) return;
        Jobs<JobsRunEndsSlotProc>(kSlotJobsRunEnds)(kJobRunFinished, nullptr);
        Quit();
    };
    const Outcome several = RunWith();
    EXPECT_EQ(several.code, 0);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(several.clock, 2000u) << "two periods of a second";
    OpenHostOptions options;
    options.quitItem = false;
    EXPECT_EQ(RunWith(options).code, 1) << "without a Quit item it ends anyway, but not well";

    calls = 0;
    g_idle = [&] { ++calls == 5 ? Quit() : void(); };
    options.quitItem = options.stay = true;
    EXPECT_EQ(RunWith(options).code, 0);
    EXPECT_EQ(calls, 5);
}

TEST(CommandLine, WrongArgumentsAreUsageAndMissingFilesBreakTheRun)
{
    const CTemporaryFolder folder;
    const std::string none = folder / "none", good = std::string(TEST_PLUG_INS) + "/good.api";
    const struct {
        std::vector<std::string> arguments;
        int code;
        const char* said;
    } rows[] = {{{"--version"}, 0, "ferrule-host 0."},
                {{"--help"}, 0, "Exit codes"},
                {{"--no-such-option"}, 2, "--no-such-option"},
                {{"--host-version", "4"}, 2, "--host-version"},
                {{"--host-version", "100"}, 2, "--host-version"},
                {{"--host-version", "x"}, 2, "--host-version"},
                {{"--plugin"}, 2, "--plugin"},
                {{"stray"}, 2, "stray"},
                {{"--plugin", none}, 1, "no plug-in could be used"},
                {{"--plugin", good, "--plugin", none}, 1, "not every plug-in that was named"},
                {{"--plugin", good, "--verbose"}, 1, "loaded: T:Good from"},
                {{"--plugin", good}, 1, "nothing was scheduled"},
                {{"--plugin", none, "--password-file", none}, 1, "password file"}};
    for (const auto& row : rows) {
        std::vector<std::string> words = row.arguments;
        words.insert(words.begin(), "ferrule-host");
        std::vector<char*> values;
        for (std::string& word : words) values.push_back(word.data());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = RunCommandLine(static_cast<int>(values.size()), values.data());
        const std::string said = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
        EXPECT_EQ(code, row.code) << row.arguments.front();
        EXPECT_NE(said.find(row.said), std::string::npos) << said;
    }
}

TEST(CommandLine, PasswordsKeepTheirBlanks)
{
    const struct {
        const char* text;
        std::vector<std::string> passwords;
    } rows[] = {{"", {}},
                {"one", {"one"}},
                {"    \n two \n", {"    ", " two "}},
                {"a\r\n\r\nb\n\nc\r", {"a", "b", "c"}},
                {"\xEF\xBB\xBF\xC3\xA4\n", {"\xC3\xA4"}}};
    for (const auto& row : rows) EXPECT_EQ(PasswordsFromText(row.text), row.passwords) << '"' << row.text << '"';
    EXPECT_FALSE(ReadPasswordFile("/no/such/file").has_value());
    EXPECT_FALSE(ReadPasswordFile("/").has_value()) << "a folder";
}
