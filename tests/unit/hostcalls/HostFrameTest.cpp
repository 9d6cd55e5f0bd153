#include "hostcalls/HostFrame.h"

#include "hostapi/HostInterface.h"
#include "hostcalls/HostSlot.h"
#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

void HOSTCALL FailInFrame(ASErrorCode code) { CHandMadeHost::Raise(code); }

ASInt32 HOSTCALL LengthUnlessEmpty(const char* text)
{
    if (*text == '\0') CHandMadeHost::Raise(genErrBadParm);
    return static_cast<ASInt32>(std::char_traits<char>::length(text));
}

class HostFrame : public testing::Test {
protected:
    HostFrame()
    {
        m_host.errorTexts = {{genErrBadParm, "Bad parameter."}, {genErrCanceled, "Cancelled."}};
        EXPECT_TRUE(HostTables().Import(m_host.Core()));
    }
    ~HostFrame() override
    {
        EXPECT_EQ(m_host.Depth(), 0);
        HostTables() = CHostTables{};
    }

    CHandMadeHost m_host;
};

}  // namespace

TEST_F(HostFrame, IsPoppedOnceWhetherOrNotSomethingRaises)
{
    const int popsBefore = m_host.Pops();
    int depthInside = 0;
    EXPECT_FALSE(InHostFrame([&] { depthInside = m_host.Depth(); }));
    EXPECT_EQ(depthInside, 1);
    EXPECT_EQ(m_host.Pops() - popsBefore, 1);

    const auto error = InHostFrame([] { FailInFrame(genErrBadParm); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, genErrBadParm);
    EXPECT_EQ(error->text, "Bad parameter.");
    EXPECT_EQ(m_host.Pops() - popsBefore, 3);  // this frame, and the one around the question for the text
}

TEST_F(HostFrame, ARaiseReachesTheInnermostFrameOnly)
{
    ASErrorCode inner = 0;
    const auto outer = InHostFrame([&] {
        inner = hostcalls::RunInFrame([](void*) { FailInFrame(genErrCanceled); }, nullptr);
        if (m_host.Depth() == 1) FailInFrame(genErrBadParm);
    });
    EXPECT_EQ(inner, genErrCanceled);
    ASSERT_TRUE(outer);
    EXPECT_EQ(outer->code, genErrBadParm);
}

TEST_F(HostFrame, ARaiseBecomesAnExceptionThatRunsEveryDestructorOnItsWay)
{
    int destroyed = 0;
    struct CCounter {
        int& count;
        ~CCounter() { ++count; }
    };
    const auto error = CatchHostError([&] {
        const CCounter outer{destroyed};
        EXPECT_EQ(HostCall(&LengthUnlessEmpty, std::string(3, 'x').c_str()), 3);
        const CCounter inner{destroyed};
        HostCall(&LengthUnlessEmpty, std::string().c_str());
        ADD_FAILURE() << "went on after a raise";
    });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, genErrBadParm);
    EXPECT_EQ(destroyed, 2);
}

TEST_F(HostFrame, ARaiseWithoutACodeIsStillAnError)
{
    const auto error = InHostFrame([] { FailInFrame(0); });
    ASSERT_TRUE(error);
    EXPECT_NE(error->code, 0);
}

TEST_F(HostFrame, ErrorTextsAreCutMadeUpWhenMissingAndNeverRaise)
{
    m_host.errorTexts[genErrCanceled] = std::string(400, 'e');
    EXPECT_EQ(HostErrorText(genErrCanceled), std::string(255, 'e'));
    EXPECT_EQ(HostErrorText(0x20030027), "Host error 0x20030027");
    m_host.errorTextRaises = true;
    EXPECT_EQ(HostErrorText(genErrBadParm), "Host error 0x40000003");
    EXPECT_EQ(m_host.Depth(), 0);
}

TEST_F(HostFrame, CodesAreComparedWithoutTheirSeverity)
{
    const HostError error{0x40030027, "x"};
    EXPECT_TRUE(error.Is(0x20030027));
    EXPECT_FALSE(error.Is(0x40030028));
    EXPECT_FALSE(error.Is(0x40040027));
}

TEST_F(HostFrame, AnEntryThatTheHostDoesNotHaveIsAnErrorAndNoCrash)
{
    const struct {
        const char* what;
        std::function<void()> call;
    } rows[] = {
        {"table there, entry empty", [] { HostCall(HOST_SLOT(ASExtra, ASCabNew)); }},
        {"no such table", [] { HostCall(HOST_SLOT(Catalog, CatalogGiveStatus)); }},
    };
    for (const auto& row : rows) {
        const auto error = CatchHostError(row.call);
        ASSERT_TRUE(error) << row.what;
        EXPECT_TRUE(error->Is(genErrMethodNotImplemented)) << row.what;
    }
}
