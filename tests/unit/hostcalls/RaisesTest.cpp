// Raises and exceptions between plug-in, host and callbacks of the plug-in. On every way each object is destroyed
// once.
#include "hostapi/HostInterface.h"
#include "hostcalls/HostEntry.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

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

class Raises : public testing::Test {
protected:
    Raises()
    {
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
