#include "openhost/app/Views.h"

#include "openhost/app/Progress.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/values/Cabinet.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

std::string g_events;
void HOSTCALL WillOpenFromDocument(PDDoc, void*) { g_events += "will-open "; }
void HOSTCALL WillOpenFromFile(ASPathName path, ASFileSys fileSys, void*)
{
    g_events += path && fileSys ? "will-open-file " : "? ";
}
void HOSTCALL DidOpen(AVDoc view, ASInt32 error, void*)
{
    g_events += error == 0 && HOST(AcroView, AVDocGetPDDoc, view) ? "did-open " : "? ";
}
void HOSTCALL WillClose(AVDoc view, void*) { g_events += HOST(AcroView, AVDocGetPDDoc, view) ? "will-close " : "? "; }
void HOSTCALL DidClose(AVDoc, void*) { g_events += "did-close "; }
void HOSTCALL DocumentDidClose(PDDoc, void*) { g_events += "document-did-close "; }

class ViewTests : public CHostFixture {
protected:
    ViewTests()
    {
        g_events.clear();
        Listen(AVDocWillOpenFromPDDocNSEL, reinterpret_cast<void*>(&WillOpenFromDocument));
        Listen(AVDocWillOpenFromFileNSEL, reinterpret_cast<void*>(&WillOpenFromFile));
        Listen(AVDocDidOpenNSEL, reinterpret_cast<void*>(&DidOpen));
        Listen(AVDocWillCloseNSEL, reinterpret_cast<void*>(&WillClose));
        Listen(AVDocDidCloseNSEL, reinterpret_cast<void*>(&DidClose));
        Listen(PDDocDidCloseNSEL, reinterpret_cast<void*>(&DocumentDidClose));
    }
    void Listen(NSelector selector, void* procedure)
    {
        HOST(AcroView, AVAppRegisterNotification, selector, ASExtension{}, procedure, static_cast<void*>(nullptr));
    }
    PDDoc Open() { return Part<CDocuments>().Open(path, true, {}); }
    AVDoc View(PDDoc document) { return HOST(AcroView, AVDocOpenFromPDDoc, document, ASText{}); }
    ASProgressMonitor Monitor()
    {
        void* data = nullptr;
        return HOST(AcroView, AVAppGetDocProgressMonitor, &data);
    }

    CTemporaryFolder folder;
    std::string path = folder.Write("a.pdf", SamplePdf(1));
};

}  // namespace

TEST_F(ViewTests, AViewClosesItsDocumentAndTellsOfIt)
{
    const PDDoc document = Open();
    EXPECT_EQ(HOST(AcroView, AVDocFromPDDoc, document), nullptr);
    EXPECT_EQ(Monitor(), nullptr) << "no monitor without a view";
    const AVDoc view = View(document);
    EXPECT_EQ(HOST(AcroView, AVDocFromPDDoc, document), view);
    EXPECT_EQ(View(document), view) << "one view for each document";
    EXPECT_NE(Monitor(), nullptr);
    EXPECT_EQ(HOST(AcroView, AVDocClose, view, ASBool{1}), 1);
    EXPECT_EQ(g_events, "will-open did-open will-close document-did-close did-close ");
    EXPECT_EQ(Part<CDocuments>().Live(), 0u);
    EXPECT_REFUSED(HOST(AcroView, AVDocGetPDDoc, view));
    EXPECT_REFUSED(View(document)) << "a closed document";
}

TEST_F(ViewTests, OpeningAFileTwiceGivesTheSameViewAndClosesOnce)
{
    const ASPathName name = NewPath(path);
    const auto open = [&] {
        return HOST(AcroView, AVDocOpenFromFileWithParams, name, ASFileSys{}, ASText{}, AVDocOpenParams{});
    };
    const AVDoc view = open();
    EXPECT_EQ(open(), view);
    ReleasePath(name);
    HOST(AcroView, AVDocClose, view, ASBool{1});
    EXPECT_EQ(Part<CDocuments>().Live(), 0u);
    EXPECT_EQ(g_events.rfind("will-open-file did-open ", 0), 0u) << g_events;
}

TEST_F(ViewTests, UnsavedChangesAndUsersOfTheDocumentKeepAViewOpen)
{
    const PDDoc document = Open();
    const AVDoc view = View(document);
    DocumentAt(document).pdf.SetInfo("Title", "changed");
    EXPECT_EQ(HOST(AcroView, AVDocClose, view, ASBool{0}), 0);
    EXPECT_EQ(HOST(AcroView, AVDocFromPDDoc, document), view);
    HOST(PDModel, PDDocAcquire, document);
    EXPECT_EQ(RaisedBy([&] { HOST(AcroView, AVDocClose, view, ASBool{1}); }), pdErrUnableToCloseDueToRefs);
    HOST(PDModel, PDDocRelease, document);
    EXPECT_EQ(HOST(AcroView, AVDocClose, view, ASBool{1}), 1);
}

TEST_F(ViewTests, AListenerMayCloseTheViewThatIsAboutToClose)
{
    const auto closes = [](AVDoc closing, void*) {
        static bool again = false;
        if (again) return;
        again = true;
        HOST(AcroView, AVDocClose, closing, ASBool{1});
    };
    Listen(AVDocWillCloseNSEL, reinterpret_cast<void*>(static_cast<void(HOSTCALL*)(AVDoc, void*)>(closes)));
    EXPECT_EQ(HOST(AcroView, AVDocClose, View(Open()), ASBool{1}), 1);
    EXPECT_EQ(Part<CDocuments>().Live(), 0u);
    EXPECT_EQ(HOST(AcroView, AVAppGetNumDocs), 0);
}

TEST_F(ViewTests, ReportsAreSaidAndTheirObjectsDestroyed)
{
    const auto texts = LiveTexts(), cabs = LiveCabs();
    void* data = this;
    const ASReportProc report = HOST(AcroView, AVAppGetReportProc, &data);
    CallPlugIn(report, ASReportType{kASReportWarning}, 0, NewText("careful"), NewText("more"), NewCab(), data);
    EXPECT_EQ(LiveTexts(), texts);
    EXPECT_EQ(LiveCabs(), cabs);
    EXPECT_EQ(said, std::vector<std::string>{"warning: careful (more)"});
    const ASCancelProc cancelled = HOST(AcroView, AVAppGetCancelProc, &data);
    EXPECT_EQ(CallPlugIn(cancelled, data), 0);
    Part<AppWishes>().stop = true;
    EXPECT_EQ(CallPlugIn(cancelled, data), 1);
}
