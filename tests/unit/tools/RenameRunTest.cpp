// What the rename tool does to files.
#include <gtest/gtest.h>

#include "base/Overseer.h"
#include "common/Progress.h"
#include "common/RenamePlan.h"
#include "platform/Files.h"
#include "support/MemoryLog.h"
#include "support/TemporaryFolder.h"
#include "tools/rename/RenameRun.h"

namespace {

/// Cancelled after so many files; negative: never.
class CCancelling final : public CProgressMonitorWrapper {
public:
    explicit CCancelling(int files) : m_files(files) {}
    void BeginOperation() override {}
    void EndOperation() override {}
    void SetOperationText(const std::string&) override {}
    void SetStatusText(const std::string&) override {}
    void SetDuration(int) override {}
    void SetCurrentValue(int) override {}
    bool IsCancelled() override { return --m_files == 0; }

private:
    int m_files;
};

/// Keeps files from getting one name.
class CForbidding final : public COverseer {
public:
    explicit CForbidding(std::string target) : m_target(std::move(target)), m_former(InstallOverseer(this)) {}
    ~CForbidding() override { InstallOverseer(m_former); }
    Answer Ask(Act act, const std::string&, const std::string& target) override
    {
        return act == Act::Move && target == m_target ? Answer::Refuse : Answer::Go;
    }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    std::string m_target;
    COverseer* m_former;
};

struct RunCase {
    const char* what;
    std::vector<std::string> names;  // for a, b, c and d
    int cancelAfter;
    const char* forbidden;
    std::string there;  // what stands under a, b, c, d and further names afterwards
    std::size_t renamed;
};

const RunCase kRunCases[] = {
    {"names of their own", {"x", "", "c", "x"}, -1, "", "b:b c:c x:a x_1:d", 3},
    {"a cycle and a chain", {"b", "c", "a", "e"}, -1, "", "a:c b:a c:b e:d", 4},
    {"cancelled before anything waits", {"x", "c", "d", "b"}, 1, "", "b:b c:c d:d x:a", 1},
    {"cancelled within a cycle", {"b", "c", "a", "x"}, 1, "", "a:c b:a c:b d:d", 3},
    {"one of a cycle cannot get its name", {"b", "c", "a", ""}, -1, "b", "a:c a_1:a c:b d:d", 3},
    {"no name of a file", {"../x", ".", "c/", "x"}, -1, "", "a:a b:b c:c x:d", 1},
};

std::string Standing(const CTemporaryFolder& folder)
{
    std::string text;
    for (const char* name : {"a", "a_1", "b", "c", "d", "e", "x", "x_1"})
        if (platform::NameExists(folder / name))
            text += (text.empty() ? "" : " ") + std::string(name) + ":" + FileBytes(folder / name);
    return text;
}

CRenameReport Rename(const CTemporaryFolder& own, std::vector<std::string> paths, std::vector<std::string> names,
                     int cancelAfter)
{
    const RenameRequest request{.paths = std::move(paths),
                                .names = std::move(names),
                                .settings = {},
                                .settingsFile = {},
                                .listFolder = own.Path()};
    CMemoryLog log;
    CCancelling progress(cancelAfter);
    auto report = RenameFilesOf(request, progress, log);
    EXPECT_TRUE(report) << report.Error();
    return report ? *report : CRenameReport();
}

void TakeBack(const CTemporaryFolder& own)
{
    std::vector<std::string> paths, names;
    const std::string problem = ForEachRename(FileBytes(own / "way-back.csv").substr(3), [&](const RenameLine& line) {
        paths.push_back(line.path);
        names.push_back(line.newName);
    });
    ASSERT_EQ(problem, "");
    (void)Rename(own, paths, names, -1);
}

TEST(RenameRun, LeavesEachFileUnderANameThatIsReportedAndTheWayBack)
{
    for (const RunCase& test : kRunCases) {
        const CTemporaryFolder folder, own;
        for (const char* name : {"a", "b", "c", "d"}) folder.Write(name, name);
        std::vector<std::string> paths;
        for (const char* name : {"a", "b", "c", "d"}) paths.push_back(folder / name);
        std::optional<CForbidding> forbidding(folder / test.forbidden);
        const CRenameReport report = Rename(own, paths, test.names, test.cancelAfter);
        forbidding.reset();
        EXPECT_EQ(Standing(folder), test.there) << test.what;
        EXPECT_EQ(report.RenamedFiles(), test.renamed) << test.what;
        EXPECT_EQ(report.RenamedFiles() + report.OtherFiles(), 4u) << test.what;
        EXPECT_EQ(own.EntryCount(), 1u) << "no list but the way back";
        const std::string text = report.Text("", "");
        for (const char* name : {"a", "b", "c", "d"})
            EXPECT_NE(text.find(". " + folder / name), std::string::npos) << test.what << text;
        TakeBack(own);
        EXPECT_EQ(Standing(folder), "a:a b:b c:c d:d") << test.what;
    }
}

/// The program ends at one of the moves.
class CCrashing final : public COverseer {
public:
    explicit CCrashing(int move) : m_move(move), m_former(InstallOverseer(this)) {}
    ~CCrashing() override { InstallOverseer(m_former); }
    Answer Ask(Act act, const std::string&, const std::string&) override
    {
        if (act == Act::Move && --m_move == 0) throw std::runtime_error("crash");
        return Answer::Go;
    }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    int m_move;
    COverseer* m_former;
};

/// As if the program had ended behind the move of the last file, or within a line.
void CutWayBack(const CTemporaryFolder& own, std::size_t bytes)
{
    for (const auto& entry : std::filesystem::directory_iterator(own.Path()))
        if (entry.path().extension() == ".back")
            std::filesystem::resize_file(entry.path(), entry.file_size() - bytes);
}

TEST(RenameRun, ThatWasCutShortIsFinished)
{
    const RenameRequest names{.paths = {}, .names = {"b", "c", "a", "e"}};
    for (const std::size_t cut : {0u, 1u, 5u})
        for (int move = 1; move <= 5; ++move) {
            const CTemporaryFolder folder, own;
            RenameRequest request = names;
            request.listFolder = own.Path();
            for (const char* name : {"a", "b", "c", "d"}) request.paths.push_back(folder.Write(name, name));
            CMemoryLog log;
            CCancelling progress(-1);
            {
                const CCrashing crashing(move);
                EXPECT_THROW((void)RenameFilesOf(request, progress, log), std::runtime_error);
            }
            CutWayBack(own, cut);
            auto lists = CRenameLists::Interrupted(own.Path());
            ASSERT_TRUE(lists) << move;
            EXPECT_FALSE(CRenameLists::Interrupted(own.Path())) << "one process only";
            const auto report = FinishRenaming(std::move(*lists), request, progress, log);
            ASSERT_TRUE(report) << move << report.Error();
            EXPECT_EQ(Standing(folder), "a:c b:a c:b e:d") << move;
            EXPECT_EQ(report->RenamedFiles(), 4u) << move << report->Text("", "");
            TakeBack(own);
            EXPECT_EQ(Standing(folder), "a:a b:b c:c d:d") << move << " " << cut;
            EXPECT_EQ(own.EntryCount(), 1u);
        }
}

}  // namespace
