#include "openhost/documents/Documents.h"

#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "support/RefusingOverseer.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

int g_asked = 0;

ASBool HOSTCALL AskTheHost(PDDoc document, void*)
{
    ++g_asked;
    return HOST(AcroView, AVAuthOpen, document);
}

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
    PDDoc Open(const std::string& file, PDAuthProcEx authorise = nullptr)
    {
        const ASPathName name = NewPath(file);
        const auto open = [&] {
            return HOST(PDModel, PDDocOpenEx, name, ASFileSys{}, authorise, static_cast<void*>(nullptr), ASBool{1});
        };
        PDDoc document = nullptr;
        m_raised = RaisedBy([&] { document = open(); });
        ReleasePath(name);
        return document;
    }
    ASErrorCode Close(PDDoc document)
    {
        return RaisedBy([&] { HOST(PDModel, PDDocClose, document); });
    }

    CTemporaryFolder folder;
    std::string path = folder.Write("a.pdf", SamplePdf(2));
    ASErrorCode m_raised = 0;
};

}  // namespace

TEST_F(Documents, EachOpeningIsClosedOnceAndAClosedOneIsKnownNoMore)
{
    const PDDoc document = Open(path);
    EXPECT_EQ(Open(folder / "./a.pdf"), document) << "another spelling of the same file";
    EXPECT_EQ(Close(document), 0);
    EXPECT_EQ(HOST(PDModel, PDDocGetNumPages, document), 2) << "the first opening still holds";
    EXPECT_EQ(Close(document), 0);
    EXPECT_EQ(Close(document), genErrBadParm);
    EXPECT_EQ(RaisedBy([&] { HOST(PDModel, PDDocGetNumPages, document); }), genErrBadParm);
    EXPECT_EQ(RaisedBy([&] { HOST(PDModel, PDDocRelease, document); }), genErrBadParm);
    EXPECT_EQ(RaisedBy([&] { HOST(PDModel, PDDocSetNewCryptHandler, document, kNullAtom); }), genErrBadParm);
    EXPECT_EQ(Close(nullptr), genErrBadParm);
}

TEST_F(Documents, AnAcquiredDocumentStaysOpenAndValid)
{
    const PDDoc document = Open(path);
    HOST(PDModel, PDDocAcquire, document);
    EXPECT_EQ(Close(document), pdErrUnableToCloseDueToRefs);
    EXPECT_EQ(HOST(PDModel, PDDocGetNumPages, document), 2);
    HOST(PDModel, PDDocRelease, document);
    EXPECT_EQ(RaisedBy([&] { HOST(PDModel, PDDocRelease, document); }), genErrBadParm);
    EXPECT_EQ(Close(document), 0);
}

TEST_F(Documents, AWrongPasswordLeavesNothingOpen)
{
    const PDDoc document = Open(path);
    StandardSecurity security;
    security.method = 7;
    security.hasUser = security.hasOwner = true;
    security.userPasswordUtf8 = "open";
    security.ownerPasswordUtf8 = "owner";
    CDocuments& documents = Part<CDocuments>();
    documents.At(document).pdf.SetSecurity(security);
    DocumentSaveRequest request;
    request.path = folder / "locked.pdf";
    documents.Save(document, request);
    EXPECT_EQ(Close(document), 0);

    const struct {
        std::vector<std::string> candidates;
        OpenedWith opened;
    } rows[] = {{{}, OpenedWith::None},
                {{"wrong"}, OpenedWith::None},
                {{"wrong", "open"}, OpenedWith::User},
                {{"open", "owner", "wrong"}, OpenedWith::Owner}};
    for (const auto& row : rows) {
        documents.passwordCandidates = row.candidates;
        g_asked = 0;
        const PDDoc locked = Open(folder / "locked.pdf", &AskTheHost);
        EXPECT_EQ(g_asked, 1);
        EXPECT_EQ(locked != nullptr, row.opened != OpenedWith::None);
        EXPECT_EQ(m_raised == 0, locked != nullptr);
        if (!locked) continue;
        EXPECT_EQ(documents.At(locked).pdf.OpenedBy(), row.opened);
        EXPECT_EQ(Close(locked), 0);
    }
    EXPECT_EQ(documents.Live(), 0u);
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
