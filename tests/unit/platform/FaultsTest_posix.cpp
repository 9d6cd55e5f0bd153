// Each file call of each service fails once with each error, and is once the last thing that the process does.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <functional>
#include <string_view>

#include <gtest/gtest.h>

#include "FileActs.h"
#include "support/TemporaryFolder.h"

using platform::Existing;
using platform::FileProblem;
using platform::FileResult;

namespace {

constexpr int kDie = -1;

struct Fault {
    int at = 0;  // 0: none
    int error = 0;
    int calls = 0;
    std::string hit;
};
Fault fault;
std::function<void(std::string_view call)> somebodyElse;  // acts between the calls

}  // namespace

extern "C" int FerruleBeforeFileCall(const char* call, const char*)
{
    if (somebodyElse) somebodyElse(call);
    if (++fault.calls != fault.at) return 0;
    fault.hit = call;
    if (fault.error == kDie) kill(getpid(), SIGKILL);
    return fault.error;
}

namespace {

struct State {
    std::string a, b;
    bool operator==(const State&) const = default;
};
std::ostream& operator<<(std::ostream& out, const State& state) { return out << state.a << ", " << state.b; }

const std::string kNone = "<missing>";

// "a" holds "new"; "b" holds "old" or is missing.
struct Operation {
    const char* name;
    FileAct run;
    State before, after;
    bool otherFileSystem = false;
    int error = 0;  // without any fault
};

const Operation kOperations[] = {
    {"copy", Copying(Existing::Fail), {"new", kNone}, {"new", "new"}},
    {"copy over", Copying(Existing::Replace), {"new", "old"}, {"new", "new"}},
    {"copy onto a taken name", Copying(Existing::Fail), {"new", "old"}, {"new", "old"}, false, EEXIST},
    {"move", Moving(Existing::Fail), {"new", kNone}, {kNone, "new"}},
    {"move over", Moving(Existing::Replace), {"new", "old"}, {kNone, "new"}},
    {"move onto a taken name", Moving(Existing::Fail), {"new", "old"}, {"new", "old"}, false, EEXIST},
    {"move far", Moving(Existing::Fail), {"new", kNone}, {kNone, "new"}, true},
    {"move far over", Moving(Existing::Replace), {"new", "old"}, {kNone, "new"}, true},
    {"delete", Deleting(), {"new", kNone}, {kNone, kNone}},
    {"write", Writing(Existing::Fail), {"new", kNone}, {"new", "new"}},
    {"write over", Writing(Existing::Replace), {"new", "old"}, {"new", "new"}},
    {"settings", WritingSettings(), {"new", "old"}, {"new", "new"}},
};

// Quicker, because nothing reaches a disk; the usual folder where there is no such file system.
std::string InMemory() { return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : ""; }

/// One service with one fault, in folders of its own.
class CTrial {
public:
    CTrial(const Operation& operation, int at, int error)
        : m_operation(operation), m_near(operation.otherFileSystem ? "" : InMemory()), m_far(InMemory())
    {
        m_near.Write("a", operation.before.a);
        if (operation.before.b != kNone) m_far.Write("b", operation.before.b);
        fault = {at, error, 0, {}};
    }

    FileResult Run() const
    {
        const auto result = m_operation.run(m_near / "a", m_far / "b");
        fault.at = 0;
        return result;
    }
    State Found() const { return {FileBytes(m_near / "a"), FileBytes(m_far / "b")}; }
    bool LeftSomething() const
    {
        return m_near.EntryCount() + m_far.EntryCount() != (Found().a != kNone ? 1u : 0u) + (Found().b != kNone);
    }

private:
    const Operation& m_operation;
    CTemporaryFolder m_near, m_far;
};

bool IsPossible(const Operation& operation) { return !operation.otherFileSystem || !InMemory().empty(); }

/// Both files, where the source could not be removed behind the complete target.
bool StandsTwice(const Operation& operation, const State& found)
{
    return operation.after.a == kNone && found.a == "new" && found.b == "new";
}

}  // namespace

TEST(Faults, AFailedCallIsAFailureThatChangedNothingOrASuccessThatIsComplete)
{
    const int errors[] = {EIO, ENOSPC, ENOSYS, EXDEV, EINTR};
    for (const auto& operation : kOperations) {
        if (!IsPossible(operation)) continue;
        for (const int error : errors) {
            for (int at = 1;; ++at) {
                const CTrial trial(operation, at, error);
                const auto result = trial.Run();
                const bool hit = !fault.hit.empty();
                SCOPED_TRACE(std::string(operation.name) + ", call " + std::to_string(at) + " (" + fault.hit +
                             ") fails with " + std::to_string(error));
                const State found = trial.Found();
                if (operation.otherFileSystem && !result && StandsTwice(operation, found)) {
                    EXPECT_TRUE(fault.hit == "unlink" || fault.hit == "fsync" || fault.hit == "stat") << found;
                } else {
                    EXPECT_EQ(found, result ? operation.after : operation.before);
                }
                EXPECT_TRUE(!trial.LeftSomething() || fault.hit == "unlink");
                if (hit) continue;
                EXPECT_EQ(result.errorNumber, operation.error) << "no call failed";
                EXPECT_GT(at, 2) << "hardly anything was made to fail";
                break;
            }
        }
    }
}

TEST(Faults, DyingAnywhereLosesNothingAndLeavesNoHalfFile)
{
    for (const auto& operation : kOperations) {
        if (!IsPossible(operation)) continue;
        for (int at = 1;; ++at) {
            SCOPED_TRACE(std::string(operation.name) + ", dies before call " + std::to_string(at));
            const CTrial trial(operation, at, kDie);
            const pid_t process = fork();
            if (process == 0) {
                (void)trial.Run();
                _exit(0);
            }
            int status = 0;
            ASSERT_EQ(waitpid(process, &status, 0), process);
            const State found = trial.Found();
            EXPECT_TRUE(found == operation.before || found == operation.after || StandsTwice(operation, found))
                << found;
            if (!WIFSIGNALED(status)) break;
        }
    }
}

TEST(Faults, WhatSomebodyElseWritesMeanwhileIsNeitherReplacedNorRemoved)
{
    const struct {
        const char* name;
        FileAct run;
        const char* during;  // call
        bool far, writesSource;
        FileProblem problem;
    } rows[] = {
        {"a new version of what is moved far", Moving(Existing::Fail), "fsync", true, true, FileProblem::InUse},
        {"a file at a name that was free", Writing(Existing::Replace), "fsync", false, false, FileProblem::Exists},
    };
    for (const auto& row : rows) {
        if (row.far && InMemory().empty()) continue;
        const CTemporaryFolder near(row.far ? "" : InMemory()), far(InMemory());
        const std::string source = near.Write("a", "new"), target = far / "b";
        const std::string& touched = row.writesSource ? source : target;
        fault = {};
        somebodyElse = [&](std::string_view call) {
            if (call == row.during) std::ofstream(touched) << "somebody's newer bytes";
        };
        const FileResult result = row.run(source, target);
        somebodyElse = {};
        EXPECT_EQ(platform::ProblemOf(result), row.problem) << row.name;
        EXPECT_EQ(FileBytes(touched), "somebody's newer bytes") << row.name;
    }
}
