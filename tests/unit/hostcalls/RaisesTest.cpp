// Raises and exceptions between plug-in, host and callbacks of the plug-in. On every way each object is destroyed
// once.
#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "hostapi/HostInterface.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "unit/hostcalls/HandMadeHost.h"

namespace {

struct CCounted {
    static inline int made = 0, gone = 0;
    CCounted() { ++made; }
    CCounted(const CCounted&) = delete;
    ~CCounted() { ++gone; }
};

std::function<ASBool()> inCallback;

/// A procedure of the plug-in, as every one of them is written.
ASBool HOSTCALL Callback(void*)
{
    const CCounted object;
    return GuardCallback(ASBool{7}, [] {
        const CCounted inside;
        return inCallback();
    });
}

using CallbackProc = ASBool(HOSTCALL*)(void*);
ASBool answered = 0;

/// A host function that calls back, and then raises when the answer is 0.
ASBool HOSTCALL Enumerate(CallbackProc callback)
{
    answered = callback(nullptr);
    if (answered == 0) CHandMadeHost::Raise(genErrCanceled);
    return answered;
}

void HOSTCALL Fail(ASErrorCode code) { CHandMadeHost::Raise(code); }

ASInt32 HOSTCALL LengthOf(const char* text) { return static_cast<ASInt32>(std::char_traits<char>::length(text)); }

class Raises : public testing::Test {
protected:
    Raises()
    {
        m_host.errorTexts = {{genErrBadParm, "Bad parameter."}, {genErrCanceled, std::string(400, 'e')}};
        EXPECT_TRUE(HostTables().Import(m_host.Core()));
        CCounted::made = CCounted::gone = 0;
        answered = 99;
    }
    ~Raises() override
    {
        EXPECT_EQ(m_host.Depth(), 0);
        EXPECT_EQ(CCounted::made, CCounted::gone);
        HostTables() = CHostTables{};
    }

    /// The whole way: plug-in, host, callback; answers the code of what came out of the outer call.
    ASErrorCode RunCallback(std::function<ASBool()> work)
    {
        inCallback = std::move(work);
        const CCounted around;
        const auto error = CatchHostError([] {
            const CCounted inner;
            HostCall(&Enumerate, &Callback);
        });
        EXPECT_EQ(m_host.Depth(), 0);
        return error ? error->code : 0;
    }

    CHandMadeHost m_host;
};

}  // namespace

TEST_F(Raises, WhatHappensInACallbackEndsInItsGuardAndTheHostGoesOn)
{
    const struct {
        const char* what;
        std::function<ASBool()> work;
        ASBool answer;
        int objects;  // two outside, two in the callback, those of the row
    } rows[] = {
        {"nothing", [] { return ASBool{1}; }, 1, 4},
        {"a raise in a host call",
         [] {
             const CCounted object;
             HostCall(&Fail, genErrBadParm);
             return ASBool{1};
         },
         7, 5},
        {"a raise two frames down",
         [] {
             const CCounted object;
             if (!InHostFrame([] { HostCall(&Fail, genErrBadParm); })) return ASBool{1};
             return ASBool{2};
         },
         7, 5},
        {"a raise that is dealt with",
         [] {
             const CCounted object;
             return CatchHostError([] { HostCall(&Fail, genErrBadParm); }) ? ASBool{2} : ASBool{1};
         },
         2, 5},
        {"an exception",
         []() -> ASBool {
             const CCounted object;
             throw std::runtime_error("of ours");
         },
         7, 5},
        {"an exception inside two frames",
         [] {
             const CCounted object;
             (void)InHostFrame([] { (void)InHostFrame([] { throw 42; }); });
             return ASBool{1};
         },
         7, 5},
        {"a callback in a callback that raises",
         [] {
             inCallback = [] {
                 HostCall(&Fail, genErrBadParm);
                 return ASBool{1};
             };
             return HostCall(&Enumerate, &Callback);
         },
         7, 6},
    };
    for (const auto& row : rows) {
        CCounted::made = CCounted::gone = 0;
        EXPECT_EQ(RunCallback(row.work), 0) << row.what;
        EXPECT_EQ(answered, row.answer) << row.what;
        EXPECT_EQ(CCounted::made, row.objects) << row.what;
        EXPECT_EQ(CCounted::gone, row.objects) << row.what;
    }
}

TEST_F(Raises, TheHostMayRaiseAfterACallbackThatRaisedOrThrew)
{
    const std::function<ASBool()> rows[] = {
        [] { return ASBool{0}; },
        [] {
            const CCounted object;
            EXPECT_TRUE(CatchHostError([] { HostCall(&Fail, genErrBadParm); }));
            return ASBool{0};
        },
        [] {
            try {
                (void)InHostFrame([] { throw 42; });
            } catch (int) {
            }
            return ASBool{0};
        },
    };
    for (const auto& row : rows) EXPECT_EQ(RunCallback(row), genErrCanceled) << "row " << &row - rows;
}

TEST_F(Raises, ARaiseWhileAnExceptionIsHandledIsItsOwn)
{
    int caught = 0;
    try {
        const CCounted object;
        throw 42;
    } catch (int value) {
        const auto error = CatchHostError([] { HostCall(&Fail, genErrBadParm); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, genErrBadParm);
        caught = value;
    }
    EXPECT_EQ(caught, 42);
    EXPECT_EQ(std::current_exception(), nullptr);
}

TEST_F(Raises, AFrameIsPoppedOnceWhetherOrNotSomethingRaises)
{
    const int popsBefore = m_host.Pops();
    int depthInside = 0;
    EXPECT_FALSE(InHostFrame([&] { depthInside = m_host.Depth(); }));
    EXPECT_EQ(depthInside, 1);
    EXPECT_EQ(m_host.Pops() - popsBefore, 1);
    EXPECT_EQ(HostCall(&LengthOf, std::string(3, 'x').c_str()), 3);

    const auto error = CatchHostError([] { HostCall(&Fail, genErrBadParm); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, genErrBadParm);
    EXPECT_EQ(error->text, "Bad parameter.");
    EXPECT_EQ(m_host.Pops() - popsBefore, 4);  // of three calls, and of the question for the text
    const auto nameless = InHostFrame([] { Fail(0); });
    ASSERT_TRUE(nameless);
    EXPECT_NE(nameless->code, 0) << "a raise without a code is still an error";
}

TEST_F(Raises, ErrorTextsAreCutMadeUpWhenMissingAndNeverRaise)
{
    EXPECT_EQ(HostErrorText(genErrCanceled), std::string(255, 'e'));
    EXPECT_EQ(HostErrorText(0x20030027), "Host error 0x20030027");
    m_host.errorTextRaises = true;
    EXPECT_EQ(HostErrorText(genErrBadParm), "Host error 0x40000003");
    const HostError error{0x40030027, "x"};
    EXPECT_TRUE(error.Is(0x20030027)) << "the severity does not count";
    EXPECT_FALSE(error.Is(0x40030028) || error.Is(0x40040027));
}

TEST_F(Raises, AnEntryThatTheHostDoesNotHaveIsAnErrorAndNoCrash)
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
