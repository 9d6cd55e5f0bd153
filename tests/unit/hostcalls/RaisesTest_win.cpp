// A raise between frames of another compiler: they are unwound once each, and only those that the raise leaves.
#include "hostapi/HostInterface.h"
#include "hostcalls/HostEntry.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "unit/hostcalls/ForeignFrame_win.h"
#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

#include <stdexcept>

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

TEST_F(RaisesThroughForeignFrames, ACallThatGoesWellUnwindsNothing)
{
    HostCall(&CallThroughForeignFrame, &DoNothing, nullptr);
    ExpectCalls(0);
}

TEST_F(RaisesThroughForeignFrames, ARaiseUnwindsEachFrameThatItLeavesOnce)
{
    const auto error = CatchHostError([] { HostCall(&CallThroughForeignFrame, &FailBehindTwoFrames, nullptr); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, genErrBadParm);
    ExpectCalls(2);
}

TEST_F(RaisesThroughForeignFrames, FramesOutsideTheInnermostOneOfOursStay)
{
    bool raised = false;
    HostCall(&CallThroughForeignFrame, &CallbackWhoseCallRaises, static_cast<void*>(&raised));
    EXPECT_TRUE(raised);
    ExpectCalls(1);
}

TEST_F(RaisesThroughForeignFrames, AnExceptionInACallbackNeverReachesThem)
{
    bool reached = false;
    HostCall(&CallThroughForeignFrame, &CallbackThatThrows, static_cast<void*>(&reached));
    EXPECT_TRUE(reached);
    ExpectCalls(0);
}

TEST_F(RaisesThroughForeignFrames, ManyRaisesInARowKeepTheStackInOrder)
{
    int raised = 0;
    for (int round = 0; round < 10000; ++round)
        raised += InHostFrame([] { CallThroughForeignFrame(&FailWith, nullptr); }).has_value() ? 1 : 0;
    EXPECT_EQ(raised, 10000);
    ExpectCalls(10000);
}
