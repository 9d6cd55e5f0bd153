#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <optional>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "platform/AtomicFile.h"
#include "support/TemporaryFolder.h"

using platform::Existing;

namespace {

constexpr uid_t kAnybody = 4711;
constexpr gid_t kOtherGroup = 4712;
constexpr char kRights[] = "system.posix_acl_access", kFolderRights[] = "system.posix_acl_default";

unsigned ModeOf(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::string AttributeOf(const std::string& path, const char* name)
{
    char value[4096];
    const ssize_t size = getxattr(path.c_str(), name, value, sizeof value);
    return size < 0 ? "<none>" : std::string(value, static_cast<std::size_t>(size));
}

bool SetAttribute(const std::string& path, const char* name, const std::string& value)
{
    return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

/// An access list with one more user, whom the mask limits.
std::string ListWith(unsigned group, unsigned user, unsigned mask, unsigned others)
{
    std::string bytes("\2\0\0\0", 4);
    const auto add = [&](unsigned tag, unsigned rights, unsigned id) {
        for (const auto& [number, size] : {std::pair{tag, 2}, {rights, 2}, {id, 4}})
            for (int byte = 0; byte < size; ++byte) bytes += static_cast<char>(number >> (8 * byte));
    };
    add(0x01, 6, ~0U);
    add(0x02, user, kAnybody);
    add(0x04, group, ~0U);
    add(0x10, mask, ~0U);
    add(0x20, others, ~0U);
    return bytes;
}

bool HasLists(const CTemporaryFolder& folder)
{
    return SetAttribute(folder.Write("probe", ""), kRights, ListWith(4, 6, 6, 0));
}

void Save(const std::string& target, const std::string& source)
{
    platform::CAtomicFile file(target, Existing::Replace, source);
    file.Write("new", 3);
    const auto saved = file.Commit();
    EXPECT_TRUE(saved) << platform::ErrorText(saved.errorNumber);
    EXPECT_EQ(FileBytes(target), "new");
}

class CMask {
public:
    explicit CMask(mode_t mask) : m_former(umask(mask)) {}
    ~CMask() { umask(m_former); }

private:
    mode_t m_former;
};

}  // namespace

TEST(AccessRights, AResultIsNeverMoreReadableThanItsInputAndWhatItReplaces)
{
    const struct {
        unsigned input;
        std::optional<unsigned> replaced;
        unsigned saved, copied;
    } rows[] = {
        {0644, {}, 0644, 0644},    {0640, {}, 0640, 0640},    {0600, {}, 0600, 0600},     {0604, {}, 0604, 0604},
        {0666, {}, 0644, 0666},    {0400, {}, 0600, 0400},    {06755, {}, 0644, 0755},    {0640, 0666u, 0640, 0640},
        {0666, 0600u, 0600, 0600}, {0644, 0664u, 0644, 0644}, {0600, 06777u, 0711, 0600},
    };
    const CMask mask(022);
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << std::oct << row.input << " onto " << row.replaced.value_or(0));
        const CTemporaryFolder folder;
        const auto input = folder.Write("in", "new");
        chmod(input.c_str(), row.input);
        for (const char* name : {"saved", "copied"}) {
            if (row.replaced) chmod(folder.Write(name, "old").c_str(), *row.replaced);
        }
        Save(folder / "saved", input);
        EXPECT_EQ(ModeOf(folder / "saved"), row.saved) << std::oct << ModeOf(folder / "saved");
        ASSERT_TRUE(platform::CopyFile(input, folder / "copied", Existing::Replace));
        EXPECT_EQ(ModeOf(folder / "copied"), row.copied) << std::oct << ModeOf(folder / "copied");
    }
    const CTemporaryFolder folder;
    Save(folder / "of a file that is gone", folder / "gone");
    EXPECT_EQ(ModeOf(folder / "of a file that is gone"), 0600u);
}

TEST(AccessRights, AnAccessListOfTheInputOrTheFolderGivesNobodyMore)
{
    const CTemporaryFolder folder;
    if (!HasLists(folder)) GTEST_SKIP() << "no access lists here";
    const struct {
        const char* what;
        std::string input, folder;
        unsigned mode;
        std::string list;
    } rows[] = {
        {"the group has less than the mask says", ListWith(0, 6, 6, 0), "", 0600, "<none>"},
        {"somebody has less than the others", ListWith(4, 0, 4, 4), "", 0600, "<none>"},
        {"the folder lets somebody in", "", ListWith(4, 4, 4, 0), 0640, ListWith(4, 0, 4, 0)},
        {"both let him in", ListWith(4, 4, 4, 0), ListWith(4, 6, 6, 0), 0640, ListWith(4, 6, 4, 0)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const CTemporaryFolder place;
        const auto input = folder.Write("in", "new"), out = place.MakeFolder("out");
        removexattr(input.c_str(), kRights);
        chmod(input.c_str(), 0640);
        ASSERT_TRUE(row.input.empty() || SetAttribute(input, kRights, row.input));
        ASSERT_TRUE(row.folder.empty() || SetAttribute(out, kFolderRights, row.folder));
        Save(out + "/saved", input);
        EXPECT_EQ(ModeOf(out + "/saved"), row.mode) << std::oct << ModeOf(out + "/saved");
        EXPECT_EQ(AttributeOf(out + "/saved", kRights), row.list);
    }
}

TEST(AccessRights, ReplacingKeepsListAndAttributesButNoRightsOfPrograms)
{
    const CTemporaryFolder folder;
    if (!HasLists(folder)) GTEST_SKIP() << "no access lists here";
    const auto path = folder.Write("a", "old"), moved = folder / "b";
    const auto list = ListWith(0, 6, 6, 0);  // the mode says 0660, and yet the group has nothing
    ASSERT_TRUE(SetAttribute(path, kRights, list));
    ASSERT_TRUE(SetAttribute(path, "user.note", "mine"));
    const std::string capability("\1\0\0\2\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20);
    (void)SetAttribute(path, "security.capability", capability);  // the superuser's to give
    Save(path, path);
    ASSERT_TRUE(platform::CopyFile(path, moved, Existing::Fail));
    for (const auto& file : {path, moved}) {
        EXPECT_EQ(AttributeOf(file, kRights), list);
        EXPECT_EQ(AttributeOf(file, "user.note"), "mine");
        EXPECT_EQ(AttributeOf(file, "security.capability"), "<none>");
    }
}

TEST(AccessRights, AnotherGroupGetsWhatOthersHave)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs files of two groups";
    const CTemporaryFolder folder;
    const auto input = folder.Write("in", "x");
    ASSERT_EQ(chown(input.c_str(), kAnybody, kOtherGroup), 0);
    for (const auto& [mode, saved] : {std::pair{0640U, 0600U}, {0604U, 0600U}, {0664U, 0644U}}) {
        chmod(input.c_str(), mode);
        Save(folder / ("saved" + std::to_string(mode)), input);
        EXPECT_EQ(ModeOf(folder / ("saved" + std::to_string(mode))), saved) << std::oct << mode;
    }
    // Who owns the file in the way does not get what he could not read.
    chmod(input.c_str(), 0600);
    const auto trap = folder.Write("trap", "old");
    ASSERT_EQ(chown(trap.c_str(), kOtherGroup, kOtherGroup), 0);
    chmod(trap.c_str(), 0644);
    Save(trap, input);
    struct stat status {};
    ASSERT_EQ(stat(trap.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0u);
    EXPECT_EQ(ModeOf(trap), 0600u);
}
