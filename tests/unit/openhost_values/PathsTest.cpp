#include <algorithm>
#include <filesystem>

#include "support/TemporaryFolder.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

#ifdef _WIN32
constexpr char kTop[] = "C:\\", kTopText[] = "/C/", kTopUrl[] = "file:///C:/";
#else
constexpr char kTop[] = "/", kTopText[] = "/", kTopUrl[] = "file:///";
#endif

/// With this system's separators.
std::string Slashed(std::string path)
{
    if (*kTop != '/') std::ranges::replace(path, '/', '\\');
    return path;
}
/// "a/b" below the top folder, as this system writes it.
std::string Top(const std::string& path) { return kTop + Slashed(path); }

class Paths : public CValuesHost {
protected:
    static ASAtom Atom(const char* text) { return CORE(ASAtomFromString)(text); }
    static ASPathName Make(const char* type, const void* spec, const void* extra = nullptr)
    {
        return SUPPORT(ASFileSysCreatePathName)(nullptr, Atom(type), spec, extra);
    }
    static std::string Freed(char* text)
    {
        std::string copy = text;
        SUPPORT(ASfree)(text);
        return copy;
    }
    /// Releases the path.
    static std::string Native(ASPathName path)
    {
        ASPlatformPath native = nullptr;
        EXPECT_EQ(SUPPORT(ASFileSysAcquirePlatformPath)(nullptr, path, Atom("Cstring"), &native), 0);
        std::string text = SUPPORT(ASPlatformPathGetCstringPtr)(native);
        SUPPORT(ASFileSysReleasePlatformPath)(nullptr, native);
        SUPPORT(ASFileSysReleasePath)(nullptr, path);
        return text;
    }
    CTemporaryFolder folder;
};

TEST_F(Paths, EveryFormOfTextMakesAnAbsolutePath)
{
    const std::string here = std::filesystem::current_path().string(), inside = folder.Path();
    const std::string baseFile = Top("base/folder/file.pdf");
    const ASPathName base = Make("Cstring", baseFile.c_str()), real = Make("Cstring", inside.c_str());
    const std::string absolute = kTopText + std::string("a/b.pdf");
    struct Row {
        const char* type;
        std::string spec;
        ASPathName from;
        std::string native;
    };
    std::vector<Row> rows = {{"Cstring", Top("a/b.pdf"), nullptr, Top("a/b.pdf")},
                             {"Cstring", Top("/a/.//b/"), nullptr, Top("a/b")},
                             {"Cstring", kTop, nullptr, kTop},
                             {"Cstring", "x/y.pdf", nullptr, here + Slashed("/x/y.pdf")},
                             {"Cstring", "./y.pdf", nullptr, here + Slashed("/y.pdf")},
                             {"Cstring", "caf\xE9.pdf", nullptr, here + Slashed("/caf\xE9.pdf")},  // no text
                             {"DIPath", absolute, base, Top("a/b.pdf")},
                             {"DIPath", "b.pdf", nullptr, here + Slashed("/b.pdf")},
                             {"DIPath", "b.pdf", base, Top("base/folder/b.pdf")},
                             {"DIPath", "../x/./b.pdf", base, Top("base/x/b.pdf")},
                             {"DIPath", "../../../../b.pdf", base, Top("b.pdf")},
                             {"DIPath", "b.pdf", real, inside + Slashed("/b.pdf")}};
#ifdef _WIN32
    const std::string drive = here.substr(0, 2);
    rows.insert(rows.end(), {{"Cstring", "c:/a/b.pdf", nullptr, "c:\\a\\b.pdf"},
                             {"Cstring", "C:\\..\\..\\b", nullptr, "C:\\b"},
                             {"Cstring", "C:\\a.\\b. ", nullptr, "C:\\a.\\b. "},
                             {"Cstring", "//server/share/", nullptr, "\\\\server\\share\\"},
                             {"Cstring", "\\\\?\\C:\\a\\b.pdf", nullptr, "C:\\a\\b.pdf"},
                             {"Cstring", "\\\\?\\UNC\\server\\share\\b.pdf", nullptr, "\\\\server\\share\\b.pdf"},
                             {"Cstring", "\\\\.\\pipe\\x", nullptr, "\\\\.\\pipe\\x"},
                             {"Cstring", "\\a\\b.pdf", nullptr, drive + "\\a\\b.pdf"},
                             {"DIPath", "/C", base, "C:\\"},
                             {"DIPath", "D:\\a\\b.pdf", base, "D:\\a\\b.pdf"},
                             {"DIPath", "/server/share/a/b.pdf", base, "\\\\server\\share\\a\\b.pdf"},
                             {"DIPath", "//a/b.pdf", base, drive + "\\a\\b.pdf"}});
#else
    rows.push_back({"Cstring", "/a/../b", nullptr, "/a/../b"});  // "a" may be a link
#endif
    for (const Row& row : rows) {
        SCOPED_TRACE(row.spec);
        EXPECT_EQ(Native(Make(row.type, row.spec.c_str(), row.from)), row.native);
        const OwnText text = EXTRA(ASTextFromEncoded)(row.spec.c_str(), 0);
        const std::string textForm = std::string(row.type) + "WithASText";
        EXPECT_EQ(Native(Make(textForm.c_str(), text, row.from)), row.native);
    }
    EXPECT_EQ(Native(Make("FolderPathName", real, "n \xC3\xA9.pdf")), folder / "n \xC3\xA9.pdf");
    const OwnText name = EXTRA(ASTextFromEncoded)("n.pdf", 0);
    EXPECT_EQ(Native(Make("FolderPathNameWithASText", real, name)), folder / "n.pdf");
    EXPECT_EQ(Native(base) + Native(real), baseFile + inside);
}

TEST_F(Paths, UnusablePathsRaise)
{
    const ASPathName gone = Make("Cstring", "/a");
    const OwnPath there = SUPPORT(ASFileSysCopyPath)(nullptr, gone);
    SUPPORT(ASFileSysReleasePath)(SUPPORT(ASGetDefaultFileSys)(), gone);
    ASFileSysRec foreign{};
    EXPECT_REFUSED(SUPPORT(ASFileSysReleasePath)(nullptr, gone));
    EXPECT_REFUSED(SUPPORT(ASFileSysCopyPath)(nullptr, gone));
    EXPECT_REFUSED(SUPPORT(ASFileSysCopyPath)(&foreign, there));
    EXPECT_REFUSED(Make("Cstring", nullptr));
    EXPECT_REFUSED(Make("Cstring", ""));
    EXPECT_REFUSED(Make("DIPath", ""));
    EXPECT_REFUSED(Make("DIPath", "a", gone));
    EXPECT_REFUSED(Make("NoSuchForm", "/a"));
    EXPECT_REFUSED(Make("FolderPathName", there, nullptr));
    EXPECT_REFUSED(SUPPORT(ASFileSysDIPathFromPath)(nullptr, nullptr, nullptr));
    EXPECT_REFUSED(SUPPORT(ASPlatformPathGetCstringPtr)(nullptr));
    for (const char* name : {"x/y", "..", ".", ""}) EXPECT_REFUSED(Make("FolderPathName", there, name)) << name;
    if (*kTop == '/') return;
    for (const char* name : {"x\\y", "x:y"}) EXPECT_REFUSED(Make("FolderPathName", there, name)) << name;
}

TEST_F(Paths, DeviceIndependentTextLeadsBackToThePath)
{
    struct Row {
        std::string path, from, text;
    };
    const std::string abc = Top("a/b/c.pdf"), abcText = kTopText + std::string("a/b/c.pdf");
    std::vector<Row> rows = {{abc, "", abcText},
                             {abc, Top("a/b/x.pdf"), "c.pdf"},
                             {abc, Top("a/x/y/z.pdf"), "../../b/c.pdf"},
                             {Top("a/b"), Top("a/b/x.pdf"), kTopText + std::string("a/b")}};
#ifdef _WIN32
    rows.insert(rows.end(), {{"c:\\", "", "/c"},
                             {abc, "C:\\x\\y.pdf", "../a/b/c.pdf"},
                             {abc, "D:\\x\\y.pdf", abcText},
                             {"\\\\server\\share\\a\\b.pdf", "", "/server/share/a/b.pdf"},
                             {"\\\\server\\share\\a\\b.pdf", "\\\\server\\share\\c.pdf", "a/b.pdf"}});
#else
    rows.push_back({abc, "/x/y.pdf", abcText});
#endif
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const OwnPath path = Make("Cstring", row.path.c_str());
        const ASPathName from = row.from.empty() ? nullptr : Make("Cstring", row.from.c_str());
        EXPECT_EQ(Freed(SUPPORT(ASFileSysDIPathFromPath)(nullptr, path, from)), row.text);
        EXPECT_EQ(Native(Make("DIPath", row.text.c_str(), from)), row.path);
        if (from) SUPPORT(ASFileSysReleasePath)(nullptr, from);
    }
    folder.Write("there.pdf", "x");
    const OwnPath base = Make("Cstring", (folder / "base.pdf").c_str());
    const OwnText name = EXTRA(ASTextFromEncoded)("there.pdf", 0);
    EXPECT_EQ(Native(SUPPORT(ASFileSysPathFromDIPath)(nullptr, "there.pdf", base)), folder / "there.pdf");
    EXPECT_EQ(Native(SUPPORT(ASFileSysPathFromDIPathEx)(nullptr, name, base)), folder / "there.pdf");
    EXPECT_EQ(SUPPORT(ASFileSysPathFromDIPath)(nullptr, "missing.pdf", base), nullptr);
}

TEST_F(Paths, NamesAndTextsOfAPath)
{
    struct Row {
        std::string native, name, folder, top, url;
    };
    std::vector<Row> rows = {{Top("some folder/caf\xC3\xA9 100%.pdf"), "caf\xC3\xA9 100%.pdf", Top("some folder"),
                              kTop, kTopUrl + std::string("some%20folder/caf%C3%A9%20100%25.pdf")}};
#ifdef _WIN32
    rows.push_back({"\\\\server\\share\\f\\a.pdf", "a.pdf", "\\\\server\\share\\f", "\\\\server\\share\\",
                    "file://server/share/f/a.pdf"});
#endif
    for (const Row& row : rows) {
        SCOPED_TRACE(row.native);
        const ASPathName path = Make("Cstring", row.native.c_str());
        const auto length = static_cast<ASTArraySize>(row.name.size());
        char buffer[32] = "untouched";
        EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, path, buffer, length), genErrBadParm);  // one byte short
        EXPECT_STREQ(buffer, "untouched");
        EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, path, buffer, length + 1), 0);
        EXPECT_EQ(buffer, row.name);
        EXPECT_EQ(Freed(SUPPORT(ASFileSysDisplayStringFromPath)(nullptr, path)), row.native);
        EXPECT_EQ(Freed(SUPPORT(ASFileSysURLFromPath)(nullptr, path)), row.url);
        ASPlatformPath native = nullptr;
        EXPECT_NE(SUPPORT(ASFileSysAcquirePlatformPath)(nullptr, path, Atom("FSRef"), &native), 0);
        EXPECT_EQ(native, nullptr);
        const ASPathName parent = SUPPORT(ASFileSysAcquireParent)(nullptr, path);
        const ASPathName top = SUPPORT(ASFileSysAcquireParent)(nullptr, parent);
        EXPECT_EQ(SUPPORT(ASFileSysAcquireParent)(nullptr, top), nullptr);
        EXPECT_EQ(Native(parent), row.folder);
        EXPECT_EQ(Native(top), row.top);
        EXPECT_EQ(Native(path), row.native);
    }
}

}  // namespace
