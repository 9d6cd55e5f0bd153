#include <functional>
#include <map>

#include "openhost/commands/Commands.h"
#include "openhost/commands/Handlers.h"
#include "unit/openhost_app/HostFixture.h"

using namespace openhost;

namespace {

/// What the test's handler does in each callback; a missing entry answers `answer`.
struct Script {
    std::map<std::string, int> calls;
    std::map<std::string, std::function<AVCommandStatus(AVCommand)>> does;
    AVCommandStatus answer = kAVCommandDone;
    bool start = true;
};
Script* g_script = nullptr;

AVCommandStatus Called(const char* where, AVCommand command)
{
    ++g_script->calls[where];
    const auto found = g_script->does.find(where);
    return found == g_script->does.end() ? g_script->answer : found->second(command);
}

ASBool Initialise(ASAtom) { return ++g_script->calls["Initialize"], g_script->start; }
void TerminateName(ASAtom) { ++g_script->calls["Terminate"]; }
void RegisterNames(ASAtom name)
{
    ++g_script->calls["RegisterCommands"];
    HOST(AcroView, AVAppRegisterGlobalCommand, HOST(AcroView, AVCommandNew, name));
}
void Created(AVCommand command) { Called("Created", command); }
void Destroyed(AVCommand command) { Called("Destroy", command); }
AVCommandStatus SetParams(AVCommand command, ASCab) { return Called("SetParams", command); }
void GetParams(AVCommand command, ASCab) { Called("GetParams", command); }
void GetProps(AVCommand command, ASCab) { Called("GetProps", command); }
AVCommandStatus ShowDialog(AVCommand command) { return Called("ShowDialog", command); }
AVCommandStatus Work(AVCommand command) { return Called("Work", command); }
AVCommandStatus Cancel(AVCommand command) { return Called("Cancel", command); }
AVCommandStatus Reset(AVCommand command) { return Called("Reset", command); }

AVCommandHandlerRec FullHandler()
{
    AVCommandHandlerRec record = {};
    record.size = sizeof(record);
    record.Initialize = &CSlot<&Initialise>::Entry;
    record.Terminate = &CSlot<&TerminateName>::Entry;
    record.RegisterCommands = &CSlot<&RegisterNames>::Entry;
    record.Created = &CSlot<&Created>::Entry;
    record.Destroy = &CSlot<&Destroyed>::Entry;
    record.SetParams = &CSlot<&SetParams>::Entry;
    record.GetParams = &CSlot<&GetParams>::Entry;
    record.GetProps = &CSlot<&GetProps>::Entry;
    record.ShowDialog = &CSlot<&ShowDialog>::Entry;
    record.Work = &CSlot<&Work>::Entry;
    record.Cancel = &CSlot<&Cancel>::Entry;
    record.Reset = &CSlot<&Reset>::Entry;
    return record;
}

class Commands : public CHostFixture {
protected:
    Commands() { g_script = &script; }
    ~Commands() override { Part<CCommands>().DestroyAll(); }

    void Register(const char* name = "T:Step")
    {
        HOST(AcroView, AVAppRegisterCommandHandler, AtomFromText(name), &handler);
    }
    AVCommand New(const char* name = "T:Step") { return HOST(AcroView, AVCommandNew, AtomFromText(name)); }
    AVCommandStatus Status(AVCommand command) { return HOST(AcroView, AVCommandGetStatus, command); }
    AVCommandStatus Do(const char* operation, AVCommand command, ASCab cab)
    {
        const std::string wanted = operation;
        if (wanted == "Work") return HOST(AcroView, AVCommandWork, command);
        if (wanted == "Cancel") return HOST(AcroView, AVCommandCancel, command);
        if (wanted == "Reset") return HOST(AcroView, AVCommandReset, command);
        if (wanted == "ShowDialog") return HOST(AcroView, AVCommandShowDialog, command);
        if (wanted == "GetParams") return HOST(AcroView, AVCommandGetParams, command, cab), Status(command);
        if (wanted == "GetProps") return HOST(AcroView, AVCommandGetProps, command, cab), Status(command);
        return HOST(AcroView, AVCommandSetParams, command, cab);
    }

    Script script;
    AVCommandHandlerRec handler = FullHandler();
};

const char* const kOperations[] = {"Work", "Cancel", "Reset", "ShowDialog", "GetParams", "GetProps", "SetParams"};

}  // namespace

TEST_F(Commands, EachAnswerOfWorkEndsInItsState)
{
    Register();
    const struct {
        int answer, status;
    } rows[] = {{kAVCommandWorking, kAVCommandWorking},         {kAVCommandDone, kAVCommandDone},
                {kAVCommandCanceled, kAVCommandCanceled},       {kAVCommandInError, kAVCommandInError},
                {kAVCommandPaused, kAVCommandPaused},           {kAVCommandReady, kAVCommandInError},
                {kAVCommandNotExecuted, kAVCommandNotExecuted}, {99, kAVCommandInError}};
    for (const auto& row : rows) {
        const AVCommand command = New();
        script.does["Work"] = [&](AVCommand running) {
            EXPECT_EQ(Status(running), kAVCommandWorking);
            EXPECT_EQ(HOST(AcroView, AVCommandWork, running), kAVCommandWorking) << "it is not entered again";
            EXPECT_EQ(HOST(AcroView, AVCommandReset, running), kAVCommandWorking) << "and not reset";
            return static_cast<AVCommandStatus>(row.answer);
        };
        script.calls.clear();
        EXPECT_EQ(HOST(AcroView, AVCommandWork, command), row.status) << row.answer;
        const bool goesOn = row.status == kAVCommandWorking || row.status == kAVCommandPaused;
        HOST(AcroView, AVCommandWork, command);
        EXPECT_EQ(script.calls["Work"], goesOn ? 2 : 1) << "a finished command does not work, answer " << row.answer;
        HOST(AcroView, AVCommandDestroy, command);
    }
}

TEST_F(Commands, ARaiseOfAnyCallbackPutsTheCommandInErrorAndGoesOn)
{
    Register();
    for (const char* operation : kOperations) {
        const AVCommand command = New();
        script.does[operation] = [](AVCommand) -> AVCommandStatus { Raise(genErrGeneral, "deliberate"); };
        const COwnedCab cab = COwnedCab::New();
        EXPECT_EQ(RaisedBy([&] { Do(operation, command, cab.Get()); }), genErrGeneral) << operation;
        EXPECT_EQ(ErrorText(genErrGeneral), "deliberate") << operation;
        EXPECT_EQ(Status(command), kAVCommandInError) << operation;
        script.does.clear();
        script.answer = kAVCommandReady;
        EXPECT_EQ(HOST(AcroView, AVCommandReset, command), kAVCommandReady) << operation;
        HOST(AcroView, AVCommandDestroy, command);
    }
    const auto cabs = LiveCabs();
    script.does["Created"] = [](AVCommand) -> AVCommandStatus { Raise(genErrGeneral); };
    EXPECT_EQ(RaisedBy([&] { New(); }), genErrGeneral);
    EXPECT_EQ(Part<CCommands>().Live(), 0u);
    EXPECT_EQ(LiveCabs(), cabs);
}

TEST_F(Commands, ARecordMayEndBehindAnyCallbackAndWhatFollowsIsNotRead)
{
    const char* const names[] = {"Initialize", "Terminate", "RegisterCommands", "Created", "Destroy", "SetParams",
                                 "GetParams",  "GetProps",  "ShowDialog",       "Work",    "Cancel",  "Reset"};
    const std::map<std::string, int> untouched = {{"Work", kAVCommandNotExecuted}, {"Cancel", kAVCommandCanceled}};
    for (std::size_t index = 0; index < std::size(names); ++index) {
        for (const std::size_t missing : {0u, 1u}) {
            const std::size_t callbacks = index + 1 - missing;
            handler.size = offsetof(AVCommandHandlerRec, Initialize) + (index + 1) * sizeof(void*) - missing;
            script.calls.clear();
            Part<CCommandHandlers>().Start();
            Register();
            for (const char* operation : kOperations) {
                const int status = Do(operation, New(), COwnedCab::New().Get());
                const auto alone = untouched.find(operation);
                if (callbacks > 0) continue;
                EXPECT_EQ(status, alone == untouched.end() ? kAVCommandReady : alone->second) << operation;
            }
            Part<CCommands>().DestroyAll();
            Part<CCommandHandlers>().Terminate();
            for (std::size_t each = 0; each < std::size(names); ++each)
                EXPECT_EQ(script.calls[names[each]] > 0, each < callbacks) << names[each] << ' ' << handler.size;
        }
    }
}

TEST_F(Commands, ParametersWithoutACallbackAreReplacedAndReadBackAsCopiesWhileTheCommandIsReady)
{
    handler.SetParams = nullptr;
    handler.GetParams = nullptr;
    Register();
    const AVCommand command = New(), other = New();
    const COwnedCab given = COwnedCab::New(), seen = COwnedCab::New();
    const auto set = [&](int value) {
        given->MakeEmpty();
        given->PutInt(std::to_string(value), value);
        return HOST(AcroView, AVCommandSetParams, command, given.Get());
    };
    EXPECT_EQ(set(1), kAVCommandReady);
    EXPECT_EQ(set(2), kAVCommandReady);
    seen->PutInt("old", 1);
    HOST(AcroView, AVCommandGetParams, command, seen.Get());
    EXPECT_TRUE(seen->Equals(*given));
    HOST(AcroView, AVCommandGetParams, other, seen.Get());
    EXPECT_EQ(seen->NumEntries(), 0u) << "parameters live with each command";
    HOST(AcroView, AVCommandWork, command);
    EXPECT_EQ(set(3), kAVCommandDone);
    EXPECT_EQ(HOST(AcroView, AVCommandSetConfig, command, given.Get()), kAVCommandDone);
    EXPECT_EQ(HOST(AcroView, AVCommandSetInputs, command, given.Get()), kAVCommandDone);
    HOST(AcroView, AVCommandGetInputs, command, seen.Get());
    HOST(AcroView, AVCommandGetConfig, command, seen.Get());
    EXPECT_EQ(seen->NumEntries(), 0u);
    const ASCab params = HOST(AcroView, AVCommandGetCab, command, kAVCommandKeyParams, ASBool{0});
    EXPECT_EQ(CabAt(params).GetInt("2"), 2) << "a copy, and not the third one";
}

TEST_F(Commands, ConfigurationMergesAndNullErases)
{
    Register();
    const AVCommand command = New();
    const COwnedCab first = COwnedCab::New(), second = COwnedCab::New(), seen = COwnedCab::New();
    first->PutInt(kAVCommandUIPolicy, kAVCommandUISilent);
    first->PutInt("kept", 1);
    HOST(AcroView, AVCommandSetConfig, command, first.Get());
    EXPECT_EQ(HOST(AcroView, AVCommandGetUIPolicy, command), kAVCommandUISilent);
    second->PutNull(kAVCommandUIPolicy);
    second->PutInt("added", 2);
    HOST(AcroView, AVCommandSetConfig, command, second.Get());
    HOST(AcroView, AVCommandGetConfig, command, seen.Get());
    EXPECT_EQ(seen->NumEntries(), 2u);
    EXPECT_FALSE(seen->Known(kAVCommandUIPolicy));
    EXPECT_EQ(HOST(AcroView, AVCommandGetUIPolicy, command), kAVCommandUIErrorsOnly) << "nobody to interact with";
}

TEST_F(Commands, CabsBelongToTheCommand)
{
    Register();
    const auto cabs = LiveCabs();
    const AVCommand command = New();
    const auto own = [&](bool make) { return HOST(AcroView, AVCommandGetCab, command, "Own", ASBool{make}); };
    EXPECT_EQ(own(false), nullptr);
    const ASCab made = own(true);
    EXPECT_EQ(own(false), made);
    EXPECT_REFUSED(HOST(ASExtra, ASCabDestroy, made));
    HOST(AcroView, AVCommandPutCab, command, "Own", NewCab());
    EXPECT_REFUSED(CabAt(made)) << "the former cab is gone";
    HOST(AcroView, AVCommandPutCab, command, "Own", static_cast<ASCab>(nullptr));
    EXPECT_EQ(own(false), nullptr);
    own(true);
    HOST(AcroView, AVCommandDestroy, command);
    EXPECT_EQ(LiveCabs(), cabs);
}

TEST_F(Commands, DestroyingIsRefusedForTheHostsCommandsAndInsideACall)
{
    Register();
    const AVCommand command = New();
    script.does["Work"] = [&](AVCommand running) -> AVCommandStatus {
        HOST(AcroView, AVCommandDestroy, running);
        return kAVCommandDone;
    };
    EXPECT_REFUSED(HOST(AcroView, AVCommandWork, command));
    HOST(AcroView, AVAppRegisterGlobalCommand, command);
    EXPECT_REFUSED(HOST(AcroView, AVCommandDestroy, command));
    EXPECT_EQ(HOST(AcroView, AVAppFindGlobalCommandByName, AtomFromText("T:Step")), command);
    HOST(AcroView, AVAppUnregisterGlobalCommand, command);
    HOST(AcroView, AVCommandDestroy, command);
    EXPECT_EQ(script.calls["Destroy"], 1);
    EXPECT_REFUSED(Status(command));
}

TEST_F(Commands, HandlersStartOnceAndEndOnce)
{
    auto& handlers = Part<CCommandHandlers>();
    Register("T:Early");
    EXPECT_EQ(script.calls["Initialize"], 0);
    handlers.Start();
    Register("T:Late");
    EXPECT_EQ(script.calls["Initialize"], 2);
    EXPECT_EQ(script.calls["RegisterCommands"], 2);
    EXPECT_NE(HOST(AcroView, AVAppFindGlobalCommandByName, AtomFromText("T:Early")), nullptr);
    script.start = false;
    Register("T:Declines");
    EXPECT_EQ(HOST(AcroView, AVAppFindCommandHandlerByName, AtomFromText("T:Declines")), nullptr);
    EXPECT_EQ(New("T:Declines"), nullptr);
    Part<CCommands>().DestroyAll();
    handlers.Terminate();
    handlers.Terminate();
    EXPECT_EQ(script.calls["Terminate"], 2) << "not the one that declined";
    {
        const CActiveExtensionScope active(reinterpret_cast<ASExtension>(this));
        script.start = true;
        handlers.Start();
        Register("T:Owned");
    }
    handlers.DropOwner(reinterpret_cast<ASExtension>(this));
    EXPECT_EQ(script.calls["Terminate"], 3) << "its plug-in goes";
    EXPECT_EQ(handlers.Find(AtomFromText("T:Owned")), nullptr);
}
