#include <functional>

#include "openhost/app/IdleProcedures.h"
#include "openhost/app/Notifications.h"
#include "unit/openhost_app/HostFixture.h"

using namespace openhost;

namespace {

/// Client data that does what the test says.
struct Caller {
    int calls = 0;
    std::function<void()> work;
};
void Run(void* data)
{
    auto& caller = *static_cast<Caller*>(data);
    ++caller.calls;
    if (caller.work) caller.work();
}
void HOSTCALL Idle(void* data) { CSlot<&Run>::Entry(data); }
void HOSTCALL OnDocument(PDDoc document, void* data)
{
    EXPECT_EQ(document, reinterpret_cast<PDDoc>(0x1234));
    CSlot<&Run>::Entry(data);
}

class Events : public CHostFixture {
protected:
    void Register(Caller& caller, ASUns32 period)
    {
        HOST(AcroView, AVAppRegisterIdleProc, &Idle, static_cast<void*>(&caller), period);
    }
    void Unregister(Caller& caller) { HOST(AcroView, AVAppUnregisterIdleProc, &Idle, static_cast<void*>(&caller)); }
    void Listen(Caller& caller, NSelector selector = AVDocWillOpenFromPDDocNSEL)
    {
        HOST(AcroView, AVAppRegisterNotification, selector, ASExtension{}, reinterpret_cast<void*>(&OnDocument),
             static_cast<void*>(&caller));
    }
    void Unlisten(Caller& caller)
    {
        HOST(AcroView, AVAppUnregisterNotification, AVDocWillOpenFromPDDocNSEL, ASExtension{},
             reinterpret_cast<void*>(&OnDocument), static_cast<void*>(&caller));
    }
    void Send() { Notify(AVDocWillOpenFromPDDocNSEL, reinterpret_cast<PDDoc>(0x1234)); }
    CIdleProcedures& Procedures() { return Part<CIdleProcedures>(); }
    void CallAt(std::uint64_t milliseconds)
    {
        now = milliseconds;
        Procedures().CallDue();
    }
};

}  // namespace

TEST_F(Events, TheFirstIdleCallComesAtOnceAndThePeriodIsTheLeastDistance)
{
    Caller caller, once;
    Register(caller, 60);
    HOST(AcroView, AVAppRegisterIdleProcExWithName, &Idle, static_cast<void*>(&once), ASBool{0}, ASUns32{60},
         ASBool{0}, ASUns32{6}, ASUns32{6}, "p", "n");
    EXPECT_FALSE(Procedures().AllCalled());
    const struct {
        std::uint64_t at;
        int calls, ofOnce;
    } rows[] = {{1000, 1, 0}, {1999, 1, 0}, {2000, 2, 1}};
    for (const auto& row : rows) {
        CallAt(row.at);
        EXPECT_EQ(caller.calls, row.calls) << row.at;
        EXPECT_EQ(once.calls, row.ofOnce) << row.at << ": waits its delay";
    }
    EXPECT_TRUE(Procedures().AllCalled());
    EXPECT_EQ(Procedures().Count(), 1u) << "the other one goes";
    caller.work = [&] { now += 5000; };
    CallAt(3000);
    EXPECT_EQ(Procedures().NextDue(), 9000u) << "a long call is followed by a whole period";
}

TEST_F(Events, AnIdleCallMayUnregisterItselfAndRegisterOthersAndIsNotEnteredAgain)
{
    Caller first, second;
    first.work = [&] {
        Procedures().CallDue();  // as when a dialog runs the loop
        Unregister(first);
        Register(second, 0);
    };
    Register(first, 0);
    CallAt(1000);
    CallAt(1001);
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 1);
    EXPECT_EQ(Procedures().Count(), 1u);
    const auto extension = reinterpret_cast<ASExtension>(this);
    {
        const CActiveExtensionScope active(extension);
        Register(first, 0);
    }
    Procedures().DropOwner(extension);
    EXPECT_EQ(Procedures().Count(), 1u) << "with its plug-in";
}

TEST_F(Events, WhatAnIdleProcedureRaisesOrThrowsIsSaidAndHarmsNobody)
{
    Caller raises, other;
    raises.work = [] { Raise(genErrGeneral, "deliberate"); };
    const auto throws = [](void*) { throw std::runtime_error("let out"); };
    HOST(AcroView, AVAppRegisterIdleProc, static_cast<AVIdleProc>(throws), static_cast<void*>(nullptr), ASUns32{0});
    Register(raises, 0);
    Register(other, 0);
    CallAt(1000);
    CallAt(1001);
    EXPECT_EQ(raises.calls, 2);
    EXPECT_EQ(other.calls, 2);
    other.work = [] { Part<AppWishes>().quit = true; };
    Register(raises, 0);
    CallAt(1002);
    EXPECT_EQ(other.calls, 3);
    EXPECT_EQ(raises.calls, 3) << "none is called after the wish to quit";
    for (const char* text : {"deliberate", "let out"}) EXPECT_NE(SaidAll().find(text), std::string::npos) << text;
    EXPECT_EQ(Part<CFrames>().Depth(), 0u);
}

TEST_F(Events, EveryRegistrationOfANotificationIsCalledAndOneTakenBackAtATime)
{
    Caller caller, other;
    Listen(caller);
    Listen(caller);
    Listen(other, AVDocDidOpenNSEL);
    Send();
    EXPECT_EQ(caller.calls, 2);
    EXPECT_EQ(other.calls, 0) << "another event";
    Unlisten(caller);
    Send();
    EXPECT_EQ(caller.calls, 3);
    Unlisten(caller);
    Unlisten(caller);
    Send();
    EXPECT_EQ(caller.calls, 3);
}

TEST_F(Events, AListenerMayChangeTheListAndRaiseWithoutHarmToOthers)
{
    Caller first, taken, added, last;
    first.work = [&] {
        Unlisten(taken);
        if (first.calls == 1) Listen(added);
        Raise(genErrGeneral, "deliberate");
    };
    Listen(first);
    Listen(taken);
    Listen(last);
    Send();
    EXPECT_EQ(taken.calls, 0);
    EXPECT_EQ(last.calls, 1);
    EXPECT_EQ(added.calls, 0) << "it came during the event";
    Send();
    EXPECT_EQ(added.calls, 1);
    EXPECT_NE(SaidAll().find("deliberate"), std::string::npos);
}

TEST_F(Events, AlertsAreSaidOnOneLineAndNothingIsConfirmed)
{
    EXPECT_EQ(HOST(AcroView, AVAlertConfirm, "Delete\nall?"), 0);
    EXPECT_EQ(HOST(AcroView, AVAlert, 0, "Note", "OK", "Cancel", static_cast<const char*>(nullptr), ASBool{0}), 1);
    ASPathName path = nullptr;
    AVOpenSaveDialogParamsRec params = {};
    params.size = sizeof(params);
    EXPECT_EQ(HOST(AcroView, AVAppChooseFolderDialog, &params, static_cast<ASFileSys*>(nullptr), &path), 0);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(said, (std::vector<std::string>{"alert: Delete all?", "alert: Note"}));
}
