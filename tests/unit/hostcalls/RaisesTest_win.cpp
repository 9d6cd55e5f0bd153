// A raise between frames of another compiler: they are unwound once each, and only those that the raise leaves.
#include <stdexcept>

#include <gtest/gtest.h>

#include "hostapi/HostInterface.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "unit/hostcalls/ForeignFrame_win.h"
#include "unit/hostcalls/HandMadeHost.h"

namespace {

void HOSTCALL FailWith(void*) { CHandMadeHost::Raise(genErrBadParm); }
void HOSTCALL DoNothing(void*) {}
void HOSTCALL FailBehindTwoFrames(void*) { CallThroughForeignFrame(&FailWith, nullptr); }

/// Host function, callback of ours, host call in it that raises: the frame in the callback ends it.
void HOSTCALL CallbackWhoseCallRaises(void* raised)
{
    GuardCallback([raised] {
        const auto error = CatchHostError([] { HostCall(&CallThroughForeignFrame, &FailWith, nullptr); });
        *static_cast<bool*>(raised) = error.has_value();
    });
}
void HOSTCALL CallbackThatThrows(void* reached)
{
    GuardCallback([reached] {
        *static_cast<bool*>(reached) = true;
        throw std::runtime_error("of ours");
    });
}

class RaisesThroughForeignFrames : public testing::Test {
protected:
    RaisesThroughForeignFrames()
    {
        EXPECT_TRUE(HostTables().Import(m_host.Core()));
        foreign::ForgetCalls();
    }
    ~RaisesThroughForeignFrames() override
    {
        EXPECT_EQ(m_host.Depth(), 0);
        HostTables() = CHostTables{};
    }
    static void ExpectCalls(int cleanUps)
    {
        EXPECT_EQ(foreign::CallsSoFar().cleanUps, cleanUps);
        EXPECT_EQ(foreign::CallsSoFar().searches, 0) << "a C++ exception came into the host";
    }

    CHandMadeHost m_host;
};

}  // namespace

TEST_F(RaisesThroughForeignFrames, ARaiseUnwindsEachFrameThatItLeavesOnceAndAnExceptionReachesNone)
{
    bool inCallback = false;
    const struct {
        void(HOSTCALL* procedure)(void*);
        bool raises, callsBack;
        int cleanUps;
    } rows[] = {{&DoNothing, false, false, 0},
                {&FailBehindTwoFrames, true, false, 2},
                {&CallbackWhoseCallRaises, false, true, 1},  // the frame around the callback stays
                {&CallbackThatThrows, false, true, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        foreign::ForgetCalls();
        inCallback = false;
        void* const argument = &inCallback;
        const auto error = CatchHostError([&] { HostCall(&CallThroughForeignFrame, row.procedure, argument); });
        EXPECT_EQ(error ? error->code : 0, row.raises ? genErrBadParm : 0);
        EXPECT_EQ(inCallback, row.callsBack);
        ExpectCalls(row.cleanUps);
    }
}

TEST_F(RaisesThroughForeignFrames, ManyRaisesInARowKeepTheStackInOrder)
{
    int raised = 0;
    for (int round = 0; round < 10000; ++round)
        raised += InHostFrame([] { CallThroughForeignFrame(&FailWith, nullptr); }).has_value() ? 1 : 0;
    EXPECT_EQ(raised, 10000);
    ExpectCalls(10000);
}
