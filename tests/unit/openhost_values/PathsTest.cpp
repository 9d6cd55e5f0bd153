#include <filesystem>

#include "support/TemporaryFolder.h"
#include "unit/openhost_values/SystemExamples.h"
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
    const ASPathName base = Make("Cstring", kBasePath);
    const ASPathName realFolder = Make("Cstring", folder.Path().c_str());
    const ASPathName starts[] = {nullptr, base, realFolder};
    for (const auto& row : MadePaths(here, folder.Path())) {
        SCOPED_TRACE(row.spec);
        const ASPathName from = starts[static_cast<int>(row.from)];
        EXPECT_EQ(Native(Make(row.type, row.spec, from)), row.native);
        const OwnText text = EXTRA(ASTextFromEncoded)(row.spec, 0);
        const std::string textForm = std::string(row.type) + "WithASText";
        EXPECT_EQ(Native(Make(textForm.c_str(), text, from)), row.native);
    }
    EXPECT_EQ(Native(Make("FolderPathName", realFolder, "n \xC3\xA9.pdf")), folder / "n \xC3\xA9.pdf");
    const OwnText name = EXTRA(ASTextFromEncoded)("n.pdf", 0);
    EXPECT_EQ(Native(Make("FolderPathNameWithASText", realFolder, name)), folder / "n.pdf");
    EXPECT_EQ(Native(base) + Native(realFolder), kBasePath + folder.Path());
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
    for (const char* name : ImpossibleNames()) EXPECT_REFUSED(Make("FolderPathName", there, name)) << name;
}

TEST_F(Paths, DeviceIndependentTextLeadsBackToThePath)
{
    for (const auto& row : DeviceIndependentPaths()) {
        SCOPED_TRACE(row.text);
        const OwnPath path = Make("Cstring", row.path);
        const ASPathName from = row.from ? Make("Cstring", row.from) : nullptr;
        EXPECT_EQ(Freed(SUPPORT(ASFileSysDIPathFromPath)(nullptr, path, from)), row.text);
        EXPECT_EQ(Native(Make("DIPath", row.text, from)), row.path);
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
    for (const auto& row : NamedPaths()) {
        SCOPED_TRACE(row.native);
        const ASPathName path = Make("Cstring", row.native);
        const auto length = static_cast<ASTArraySize>(std::string(row.name).size());
        char buffer[32] = "untouched";
        EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, path, buffer, length), genErrBadParm);  // one byte short
        EXPECT_STREQ(buffer, "untouched");
        EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, path, buffer, length + 1), 0);
        EXPECT_STREQ(buffer, row.name);
        EXPECT_EQ(Freed(SUPPORT(ASFileSysDisplayStringFromPath)(nullptr, path)), row.native);
        EXPECT_EQ(Freed(SUPPORT(ASFileSysURLFromPath)(nullptr, path)), row.url);
        const OwnText text = EXTRA(ASTextNew)();
        EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPathAsASText)(nullptr, path, text), 0);
        EXPECT_STREQ(EXTRA(ASTextGetEncoded)(text, 0), row.name);
        EXPECT_EQ(SUPPORT(ASFileSysDisplayASTextFromPath)(nullptr, path, nullptr), genErrBadParm);
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
    char buffer[16];
    EXPECT_EQ(SUPPORT(ASFileSysGetNameFromPath)(nullptr, nullptr, buffer, sizeof buffer), genErrBadParm);
}

TEST_F(Paths, TheRecordOfTheFileSystemWorksLikeTheTable)
{
    const ASFileSys fileSys = SUPPORT(ASGetDefaultFileSys)();
    EXPECT_EQ(fileSys->size, 536u);
    EXPECT_EQ(SUPPORT(ASFileGetFileSysByName)(fileSys->getFileSysName()), fileSys);
    EXPECT_EQ(SUPPORT(ASFileGetFileSysByName)(Atom("CHTTP")), nullptr);
    const auto example = DeviceIndependentPaths().front();
    const ASPathName path = fileSys->createPathName(Atom("Cstring"), example.path, nullptr);
    EXPECT_EQ(Freed(fileSys->diPathFromPath(path, nullptr)), example.text);
    fileSys->disposePathName(path);
    EXPECT_REFUSED(fileSys->disposePathName(path));
}

TEST_F(Paths, ACabKeepsAPathAndAnswersItOnlyForAnExistingFile)
{
    const OwnCab cab = EXTRA(ASCabNew)();
    const std::string file = folder.Write("caf\xC3\xA9.pdf", "x");
    EXTRA(ASCabPutPathName)(cab, "Save:Path", nullptr, Make("Cstring", file.c_str()));
    EXTRA(ASCabPutPathName)(cab, "Missing", nullptr, Make("Cstring", (folder / "missing.pdf").c_str()));
    EXPECT_EQ(EXTRA(ASCabGetString)(cab, "Save:Path:DI"), openhost::CFilePath(file).DeviceIndependent());
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
    const OwnPath kept = Make("Cstring", file.c_str());
    EXPECT_REFUSED(EXTRA(ASCabPutPathName)(cab, "a::b", nullptr, kept));
}

}  // namespace
