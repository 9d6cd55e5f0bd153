#include <functional>

#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "support/RefusingOverseer.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

/// The last 5 bytes, which every document ends with; "" when the file cannot be read.
std::string EndOf(ASFile file)
{
    char bytes[6] = {};
    const ASErrorCode raised = RaisedBy([&] {
        HOST(AcroSupport, ASFileSetPos, file, HOST(AcroSupport, ASFileGetEOF, file) - 6);
        HOST(AcroSupport, ASFileRead, file, bytes, 5);
    });
    return raised == 0 ? bytes : "";
}

class Documents : public CHostFixture {
protected:
    PDDoc Open(const std::string& file)
    {
        const ASPathName name = NewPath(file);
        const PDDoc document = HOST(PDModel, PDDocOpen, name, ASFileSys{}, PDAuthProc{}, ASBool{1});
        ReleasePath(name);
        return document;
    }
    ASErrorCode Close(PDDoc document)
    {
        return RaisedBy([&] { HOST(PDModel, PDDocClose, document); });
    }

    CTemporaryFolder folder;
    std::string path = folder.Write("a.pdf", SamplePdf(2));
};

}  // namespace

TEST_F(Documents, EachOpeningIsClosedOnceUnlessInUseAndAClosedOneIsKnownNoMore)
{
    const PDDoc document = Open(path);
    EXPECT_EQ(Open(folder / "./a.pdf"), document) << "another spelling of the same file";
    EXPECT_EQ(Close(document), 0);
    EXPECT_EQ(HOST(PDModel, PDDocGetNumPages, document), 2) << "the first opening still holds";
    const PDDoc other = Open(folder.Write("b.pdf", SamplePdf(1)));
    const auto overOther = [&] { Part<CDocuments>().Save(document, {.path = folder / "b.pdf"}); };
    EXPECT_EQ(RaisedBy(overOther), pdErrAlreadyOpen) << "it is open as another document";
    EXPECT_EQ(Close(other), 0);
    char buffer[] = "####";
    HOST(PDModel, PDDocSetInfo, document, "Title", "ab", 2);
    EXPECT_EQ(HOST(PDModel, PDDocGetInfo, document, "Title", buffer, 2), 2);
    EXPECT_STREQ(buffer, "ab##") << "no room for a zero";
    EXPECT_EQ(HOST(PDModel, PDDocGetInfo, document, "Title", buffer, 3), 2);
    EXPECT_STREQ(buffer, "ab");
    HOST(PDModel, PDDocAcquire, document);
    EXPECT_EQ(Close(document), pdErrUnableToCloseDueToRefs);
    EXPECT_EQ(HOST(PDModel, PDDocGetNumPages, document), 2);
    HOST(PDModel, PDDocRelease, document);
    EXPECT_REFUSED(HOST(PDModel, PDDocRelease, document)) << "it was acquired once";
    EXPECT_EQ(Close(document), 0);
    EXPECT_EQ(Close(document), genErrBadParm);
    EXPECT_REFUSED(HOST(PDModel, PDDocGetNumPages, document));
    EXPECT_REFUSED(HOST(PDModel, PDDocRelease, document));
    EXPECT_REFUSED(HOST(PDModel, PDDocSetNewCryptHandler, document, kNullAtom));
    EXPECT_EQ(Close(nullptr), genErrBadParm);
}

TEST_F(Documents, FlagsAfterEachKindOfSave)
{
    constexpr ASInt32 kChanged = PDDocNeedsSave | PDDocIsModified, kLinear = PDDocIsLinearized;
    constexpr ASInt32 kProtected = PDDocNeedsSave | PDDocRequiresFullSave, kAsked = kChanged | PDDocRequiresFullSave;
    const auto title = [](PDDoc document) { HOST(PDModel, PDDocSetInfo, document, "Title", "x", 1); };
    const auto protect = [](PDDoc document) { DocumentAt(document).pdf.SetSecurity(Protection("", "change")); };
    const auto set = [](PDDoc document) { HOST(PDModel, PDDocSetFlags, document, kProtected); };
    const auto quiet = [&](PDDoc document) {
        title(document);
        HOST(PDModel, PDDocClearFlags, document, ASInt32{PDDocNeedsSave});
    };
    const struct {
        const char* what;
        std::function<void(PDDoc)> change;
        ASInt32 changed;
        PDSaveFlags save;
        const char* target;
        ASInt32 after;
        int told = 2;
    } rows[] = {{"increment", title, kChanged, PDSaveIncremental, nullptr, 0},
                {"its own file", title, kChanged, PDSaveFull, "a.pdf", 0},
                {"another file", title, kChanged, PDSaveFull | PDSaveLinearized, "b.pdf", kLinear},
                {"copy", title, kChanged, PDSaveFull | PDSaveCopy | PDSaveLinearized, "b.pdf", kChanged},
                {"copy over its own file", title, kChanged, PDSaveFull | PDSaveCopy, "a.pdf", kChanged},
                {"protection", protect, kAsked, PDSaveFull, "b.pdf", 0},
                {"protection, copy", protect, kAsked, PDSaveFull | PDSaveCopy, "b.pdf", kAsked},
                {"flags set", set, kAsked, PDSaveIncremental, nullptr, 0},
                {"flags set, copy", set, kAsked, PDSaveFull | PDSaveCopy, "b.pdf", kAsked},
                {"quiet", quiet, PDDocIsModified, PDSaveFull, "b.pdf", 0},
                {"quiet, copy", quiet, PDDocIsModified, PDSaveFull | PDSaveCopy, "b.pdf", PDDocIsModified},
                {"a save that fails", title, kChanged, PDSaveFull, "no/b.pdf", kChanged, 1},
                {"increment elsewhere", title, kChanged, PDSaveIncremental, "b.pdf", kChanged, 0}};
    int told = 0;
    const auto tell = [](void* count) { ++*static_cast<int*>(count); };
    ASProgressMonitorRec monitor = {};
    monitor.size = offsetof(ASProgressMonitorRec, setDuration);
    monitor.beginOperation = monitor.endOperation = tell;
    monitor.setDuration = reinterpret_cast<PMSetDurationProc>(&told);  // behind the end of the record
    for (const auto& row : rows) {
        folder.Write("a.pdf", SamplePdf(2));
        const PDDoc document = Open(path);
        const auto flags = [&] { return HOST(PDModel, PDDocGetFlags, document) & ~PDDocIsOpen; };
        EXPECT_EQ(flags(), 0) << row.what;
        row.change(document);
        EXPECT_EQ(flags(), row.changed) << row.what;
        const ASPathName target = row.target ? NewPath(folder / row.target) : nullptr;
        told = 0;
        RaisedBy([&] {
            HOST(PDModel, PDDocSave, document, row.save, target, ASFileSys{}, &monitor, static_cast<void*>(&told));
        });
        EXPECT_EQ(flags(), row.after) << row.what;
        EXPECT_EQ(told, row.told) << row.what << ": begins and ends";
        title(document);
        EXPECT_EQ(flags() & kChanged, kChanged) << row.what << ", changed again";
        if (target) ReleasePath(target);
        EXPECT_EQ(Close(document), 0);
    }
}

TEST_F(Documents, ASaveThatIsToBeNewReplacesNoFileAndTheOneBehindItMay)
{
    const PDDoc document = Open(path);
    const std::string taken = folder.Write("b.pdf", "somebody else's");
    DocumentAt(document).nextSaveIsNew = true;
    const auto save = [&] { Part<CDocuments>().Save(document, {.path = taken}); };
    EXPECT_EQ(RaisedBy(save), fileErrExists);
    EXPECT_EQ(FileBytes(taken), "somebody else's");
    EXPECT_EQ(RaisedBy(save), 0);
    EXPECT_NE(FileBytes(taken), "somebody else's");
    EXPECT_EQ(Close(document), 0);
}

TEST_F(Documents, FilesInPluginsHandsOutlastTheReplacing)
{
    const PDDoc document = Open(path);
    const ASFile file = HOST(PDModel, PDDocGetFile, document);
    const ASPathName name = NewPath(path);
    ASFile own = nullptr;
    EXPECT_EQ(HOST(AcroSupport, ASFileSysOpenFile, nullptr, name, ASFILE_READ, &own), 0);
    ReleasePath(name);
    EXPECT_EQ(own, file);
    const std::string before = FileBytes(path);
    CDocuments& documents = Part<CDocuments>();
    documents.At(document).pdf.SetInfo("Title", "changed");
    {
        const CRefusingOverseer refusing;
        EXPECT_NE(RaisedBy([&] { documents.Save(document, {}); }), 0);
        EXPECT_EQ(FileBytes(path), before);
        EXPECT_EQ(EndOf(file), "%%EOF") << "after a save that failed";
    }
    documents.Save(document, {});
    EXPECT_EQ(EndOf(own), "%%EOF") << "after a save";
    EXPECT_EQ(HOST(AcroSupport, ASFileGetEOF, own), static_cast<int>(FileBytes(path).size())) << "of the new file";
    EXPECT_EQ(HOST(AcroSupport, ASFileClose, own), 0);
    EXPECT_EQ(EndOf(HOST(PDModel, PDDocGetFile, document)), "%%EOF");
    EXPECT_EQ(Close(document), 0);
    EXPECT_EQ(LiveFiles(), 0u);
}
