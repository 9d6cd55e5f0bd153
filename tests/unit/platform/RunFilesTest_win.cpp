#include <gtest/gtest.h>

#include "platform/ChildProcess.h"
#include "platform/FileLock.h"
#include "platform/FileProblem.h"
#include "support/TemporaryFolder.h"

using platform::CChildProcess;
using platform::CFileLock;
using platform::FileProblem;
using platform::ProblemOf;

TEST(RunFilesWindows, ALockIsHeldUntilTheLastChildThatInheritedItIsGone)
{
    const CTemporaryFolder folder;
    const auto path = folder / "lock";
    CFileLock other;
    std::optional<CChildProcess> heir, stranger;
    {
        CFileLock lock;
        ASSERT_TRUE(lock.TryLock(path));
        const platform::ChildOptions options{.program = CHILD_PROGRAM, .arguments = {"wait"}};
        stranger = CChildProcess::Start(options);
        auto inheriting = options;
        inheriting.inheritedDescriptors = {lock.Descriptor()};
        heir = CChildProcess::Start(inheriting);
        ASSERT_TRUE(heir && stranger);
    }
    EXPECT_EQ(ProblemOf(other.TryLock(path)), FileProblem::InUse);
    heir.reset();
    EXPECT_TRUE(other.TryLock(path)) << "the child that did not inherit it does not count";
}
