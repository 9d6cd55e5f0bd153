#include <filesystem>

#include "support/TemporaryFolder.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

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
    const std::string here = std::filesystem::current_path().string();
    const ASPathName base = Make("Cstring", "/base/folder/file.pdf");
    const ASPathName realFolder = Make("Cstring", folder.Path().c_str());
    const struct {
        const char *type, *spec;
        ASPathName from;
        std::string native;
    } rows[] = {{"Cstring", "/a/b.pdf", nullptr, "/a/b.pdf"},
                {"Cstring", "//a/.//b/", nullptr, "/a/b"},
                {"Cstring", "/", nullptr, "/"},
                {"Cstring", "/a/../b", nullptr, "/a/../b"},
                {"Cstring", "x/y.pdf", nullptr, here + "/x/y.pdf"},
                {"Cstring", "./y.pdf", nullptr, here + "/y.pdf"},
                {"Cstring", "caf\xE9.pdf", nullptr, here + "/caf\xE9.pdf"},
                {"DIPath", "/a/b.pdf", base, "/a/b.pdf"},
                {"DIPath", "b.pdf", nullptr, here + "/b.pdf"},
                {"DIPath", "b.pdf", base, "/base/folder/b.pdf"},
                {"DIPath", "../x/./b.pdf", base, "/base/x/b.pdf"},
                {"DIPath", "../../../../b.pdf", base, "/b.pdf"},
                {"DIPath", "b.pdf", realFolder, folder / "b.pdf"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.spec);
        EXPECT_EQ(Native(Make(row.type, row.spec, row.from)), row.native);
        const ASText text = EXTRA(ASTextFromEncoded)(row.spec, 0);
        const std::string textForm = std::string(row.type) + "WithASText";
        EXPECT_EQ(Native(Make(textForm.c_str(), text, row.from)), row.native);
        EXTRA(ASTextDestroy)(text);
    }
    EXPECT_EQ(Native(Make("FolderPathName", realFolder, "n\xFF.pdf")), folder / "n\xFF.pdf");
    const ASText name = EXTRA(ASTextFromEncoded)("n.pdf", 0);
    EXPECT_EQ(Native(Make("FolderPathNameWithASText", realFolder, name)), folder / "n.pdf");
    EXTRA(ASTextDestroy)(name);
    EXPECT_EQ(Native(base) + Native(realFolder), "/base/folder/file.pdf" + folder.Path());
}

TEST_F(Paths, UnusablePathsRaise)
{
    const ASPathName gone = Make("Cstring", "/a");
    const ASPathName there = SUPPORT(ASFileSysCopyPath)(nullptr, gone);
    SUPPORT(ASFileSysReleasePath)(SUPPORT(ASGetDefaultFileSys)(), gone);
    ASFileSysRec foreign{};
    const ASErrorCode raised[] = {
        Raised([&] {
            SUPPORT(ASFileSysReleasePath)
            (nullptr, gone);
        }),
        Raised([&] {
            SUPPORT(ASFileSysCopyPath)
            (nullptr, gone);
        }),
        Raised([&] {
            SUPPORT(ASFileSysCopyPath)
            (&foreign, there);
        }),
        Raised([&] { Make("Cstring", nullptr); }),
        Raised([&] { Make("Cstring", ""); }),
        Raised([&] { Make("DIPath", ""); }),
        Raised([&] { Make("DIPath", "a", gone); }),
        Raised([&] { Make("NoSuchForm", "/a"); }),
        Raised([&] { Make("FolderPathName", there, nullptr); }),
        Raised([&] { Make("FolderPathName", there, "x/y"); }),
        Raised([&] { Make("FolderPathName", there, ".."); }),
        Raised([&] {
            SUPPORT(ASFileSysDIPathFromPath)
            (nullptr, nullptr, nullptr);
        }),
        Raised([&] {
            SUPPORT(ASPlatformPathGetCstringPtr)
            (nullptr);
        }),
    };
    for (const ASErrorCode code : raised) EXPECT_EQ(code, BadParm()) << "row " << &code - raised;
    SUPPORT(ASFileSysReleasePath)(nullptr, there);
}

TEST_F(Paths, DeviceIndependentTextLeadsBackToThePath)
{
    const struct {
        const char *path, *from, *text;
    } rows[] = {{"/a/b/c.pdf", nullptr, "/a/b/c.pdf"},
                {"/a/b/c.pdf", "/a/b/x.pdf", "c.pdf"},
                {"/a/b/c.pdf", "/a/x/y/z.pdf", "../../b/c.pdf"},
                {"/a/b/c.pdf", "/x/y.pdf", "/a/b/c.pdf"},
                {"/a/b", "/a/b/x.pdf", "/a/b"}};
    for (const auto& row : rows) {
        const ASPathName path = Make("Cstring", row.path);
        const ASPathName from = row.from ? Make("Cstring", row.from) : nullptr;
        EXPECT_EQ(Freed(SUPPORT(ASFileSysDIPathFromPath)(nullptr, path, from)), row.text);
        EXPECT_EQ(Native(Make("DIPath", row.text, from)), row.path);
        SUPPORT(ASFileSysReleasePath)(nullptr, path);
        if (from) SUPPORT(ASFileSysReleasePath)(nullptr, from);
    }
    folder.Write("there.pdf", "x");
    const ASPathName base = Make("Cstring", (folder / "base.pdf").c_str());
    const ASText name = EXTRA(ASTextFromEncoded)("there.pdf", 0);
    EXPECT_EQ(Native(SUPPORT(ASFileSysPathFromDIPath)(nullptr, "there.pdf", base)), folder / "there.pdf");
    EXPECT_EQ(Native(SUPPORT(ASFileSysPathFromDIPathEx)(nullptr, name, base)), folder / "there.pdf");
    EXPECT_EQ(SUPPORT(ASFileSysPathFromDIPath)(nullptr, "missing.pdf", base), nullptr);
    EXTRA(ASTextDestroy)(name);
    SUPPORT(ASFileSysReleasePath)(nullptr, base);
}

TEST_F(Paths, NamesAndTextsOfAPath)
{
    const ASPathName path = Make("Cstring", "/some folder/caf\xC3\xA9 100%.pdf");
    char buffer[16] = "untouched";
    EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, path, buffer, 14), genErrBadParm);  // one byte short
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, path, buffer, 15), 0);
    EXPECT_STREQ(buffer, "caf\xC3\xA9 100%.pdf");
    EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, nullptr, buffer, 15), genErrBadParm);
    EXPECT_EQ(Freed(SUPPORT(ASFileSysDisplayStringFromPath)(nullptr, path)), "/some folder/caf\xC3\xA9 100%.pdf");
    EXPECT_EQ(Freed(SUPPORT(ASFileSysURLFromPath)(nullptr, path)), "file:///some%20folder/caf%C3%A9%20100%25.pdf");
    const ASText text = EXTRA(ASTextNew)();
    EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPathAsASText)(nullptr, path, text), 0);
    EXPECT_STREQ(EXTRA(ASTextGetEncoded)(text, 0), "caf\xC3\xA9 100%.pdf");
    EXPECT_EQ(SUPPORT(ASFileSysDisplayASTextFromPath)(nullptr, path, nullptr), genErrBadParm);
    EXTRA(ASTextDestroy)(text);
    ASPlatformPath native = nullptr;
    EXPECT_NE(SUPPORT(ASFileSysAcquirePlatformPath)(nullptr, path, Atom("FSRef"), &native), 0);
    EXPECT_EQ(native, nullptr);
    const ASPathName parent = SUPPORT(ASFileSysAcquireParent)(nullptr, path);
    const ASPathName top = SUPPORT(ASFileSysAcquireParent)(nullptr, parent);
    EXPECT_EQ(SUPPORT(ASFileSysAcquireParent)(nullptr, top), nullptr);
    EXPECT_EQ(Native(parent) + " " + Native(top) + " " + Native(path).substr(0, 5), "/some folder / /some");
}

TEST_F(Paths, TheRecordOfTheFileSystemWorksLikeTheTable)
{
    const ASFileSys fileSys = SUPPORT(ASGetDefaultFileSys)();
    EXPECT_EQ(fileSys->size, 536u);
    EXPECT_EQ(SUPPORT(ASFileGetFileSysByName)(fileSys->getFileSysName()), fileSys);
    EXPECT_EQ(SUPPORT(ASFileGetFileSysByName)(Atom("CHTTP")), nullptr);
    const ASPathName path = fileSys->createPathName(Atom("Cstring"), "/a/b", nullptr);
    EXPECT_EQ(Freed(fileSys->diPathFromPath(path, nullptr)), "/a/b");
    fileSys->disposePathName(path);
    EXPECT_EQ(Raised([&] { fileSys->disposePathName(path); }), genErrBadParm);
}

TEST_F(Paths, ACabKeepsAPathAndAnswersItOnlyForAnExistingFile)
{
    const ASCab cab = EXTRA(ASCabNew)();
    const std::string file = folder.Write("caf\xE9.pdf", "x");
    EXTRA(ASCabPutPathName)(cab, "Save:Path", nullptr, Make("Cstring", file.c_str()));
    EXTRA(ASCabPutPathName)(cab, "Missing", nullptr, Make("Cstring", (folder / "missing.pdf").c_str()));
    EXPECT_STREQ(EXTRA(ASCabGetString)(cab, "Save:Path:DI"), file.c_str());
    EXPECT_EQ(openhost::LivePaths(), 0u);  // they were taken over
    ASFileSys fileSys = nullptr;
    ASPathName path = nullptr;
    EXTRA(ASCabGetPathNameCopy)(cab, "Save:Path", &fileSys, &path);
    EXPECT_EQ(fileSys, SUPPORT(ASGetDefaultFileSys)());
    EXPECT_EQ(Native(path), file);
    EXTRA(ASCabPutAtom)(cab, "Save:Path:FS", Atom("CHTTP"));
    for (const char* key : {"Missing", "Absent", "Save", "Save:Path"}) {
        path = reinterpret_cast<ASPathName>(this);
        EXTRA(ASCabGetPathNameCopy)(cab, key, &fileSys, &path);
        EXPECT_EQ(path, nullptr) << key;
        EXPECT_EQ(fileSys, nullptr) << key;
    }
    EXTRA(ASCabPutAtom)(cab, "Save:Path:FS", Atom("DOS"));  // stored on another system
    EXTRA(ASCabDetachPathName)(cab, "Save:Path", &fileSys, &path);
    EXPECT_EQ(Native(path), file);
    EXPECT_FALSE(EXTRA(ASCabKnown)(cab, "Save:Path"));
    EXTRA(ASCabPutPathName)(cab, "Missing", nullptr, nullptr);
    EXPECT_EQ(EXTRA(ASCabNumEntries)(cab), 1);
    const ASPathName kept = Make("Cstring", file.c_str());
    EXPECT_EQ(Raised([&] { EXTRA(ASCabPutPathName)(cab, "a::b", nullptr, kept); }), genErrBadParm);
    SUPPORT(ASFileSysReleasePath)(nullptr, kept);
    EXTRA(ASCabDestroy)(cab);
}

}  // namespace
