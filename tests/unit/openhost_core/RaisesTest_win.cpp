// A plug-in of another compiler that raises, or is raised over: its frames' clean-ups run once.
#include <gtest/gtest.h>

#include "openhost/core/Extensions.h"
#include "openhost/core/Tables.h"
#include "unit/hostcalls/ForeignFrame_win.h"

using namespace openhost;

namespace {

void HOSTCALL RaiseIt(void* core)
{
    reinterpret_cast<ASRaiseSlotProc>(static_cast<HFT>(core)[kSlotASRaise])(genErrCanceled);
}

/// Two frames of the plug-in between the host's call and the raise.
ASBool HOSTCALL Visitor(ASExtension, void* core)
{
    CallThroughForeignFrame([](void* data) { CallThroughForeignFrame(&RaiseIt, data); }, core);
    return 1;
}

}  // namespace

TEST(RaisesThroughForeignFrames, AVisitorOfAnotherCompilerIsUnwoundOnce)
{
    const CHost host;
    OfferCoreSlots(Part<CTables>());
    Part<CExtensions>().Add("one.api");
    const HFT core = Part<CTables>().Get(Table::Core);
    const auto visit = [core] {
        reinterpret_cast<ASEnumExtensionsSlotProc>(core[kSlotASEnumExtensions])(&Visitor, core, 0);
    };
    for (int round = 0; round < 3; ++round) {
        foreign::ForgetCalls();
        const ASErrorCode raised = RunInFrame([](void* work) { (*static_cast<decltype(visit)*>(work))(); },
                                              const_cast<void*>(static_cast<const void*>(&visit)));
        EXPECT_EQ(raised, genErrCanceled);
        EXPECT_EQ(foreign::CallsSoFar().cleanUps, 2);
        EXPECT_EQ(Part<CFrames>().Depth(), 0u);
    }
}
