#include <functional>

#include "hostapi/HostInterface.h"
#include "hostcalls/Documents.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/AcrobatDoc.h"
#include "unit/hostcalls/HostedCalls.h"
#include "unit/openhost_pdf/TestPdfs.h"

namespace {

struct SaveCall {
    int flags;
    bool withPath;
};

std::vector<SaveCall> g_saves;
PDDocSaveSlotProc g_realSave;

void HOSTCALL RecordSave(PDDoc document, PDSaveFlags flags, ASPathName path, ASFileSys fileSys,
                         ASProgressMonitor monitor, void* data)
{
    g_saves.push_back({flags, path != nullptr});
    g_realSave(document, flags, path, fileSys, monitor, data);
}

/// Documents whose saves are written down on their way to the host.
class AcrobatDoc : public CHostedCalls {
protected:
    AcrobatDoc()
    {
        auto& tables = openhost::Part<openhost::CTables>();
        g_realSave = reinterpret_cast<PDDocSaveSlotProc>(tables.Get(openhost::Table::PDModel)[kSlotPDDocSave]);
        tables.PutTyped<PDDocSaveSlotProc>(openhost::Table::PDModel, kSlotPDDocSave, &RecordSave);
        g_saves.clear();
    }

    const std::string m_input = m_folder.Write("in put.pdf", SamplePdf(3));
};

StandardSecurityRequest NoChanges()
{
    StandardSecurityRequest request;
    request.openPassword = "open";
    request.permissionsPassword = "owner";
    request.permissions = 0xFFFDF243;
    request.revision = 4;
    request.cryptMethod = 6;
    return request;
}

}  // namespace

TEST_F(AcrobatDoc, OpensAndSaysWhatItIs)
{
    CAcrobatDoc doc;
    EXPECT_FALSE(doc);
    doc.Open(m_input);
    EXPECT_EQ(doc.PageCount(), 3);
    EXPECT_EQ(doc.FullPath(), m_input);
    EXPECT_EQ(doc.CurrentFile(), m_input);
    EXPECT_TRUE(doc.MayModify());
    EXPECT_TRUE(doc.MayFullSave());
    EXPECT_EQ(doc.Close(), CAcrobatDoc::Closed::Document);
    EXPECT_EQ(doc.Close(), CAcrobatDoc::Closed::NothingOpen);
}

TEST_F(AcrobatDoc, WhatIsNoDocumentRaisesAndLeavesNothingOpen)
{
    for (const std::string& path :
         {m_folder / "missing.pdf", m_folder.Write("text.pdf", "no document"), m_folder.Path()}) {
        CAcrobatDoc doc;
        const auto error = CatchHostError([&] { doc.Open(path); });
        ASSERT_TRUE(error) << path;
        EXPECT_NE(error->text, "") << path;
        EXPECT_FALSE(doc) << path;
    }
}

TEST_F(AcrobatDoc, SavesFullyWhenPathSecurityOrHostDemandIt)
{
    const std::string other = m_folder / "other.pdf";
    const struct {
        const char* what;
        std::function<void(CAcrobatDoc&)> prepare;
        std::string path;
        int extra;
        int flags;
    } rows[] = {
        {"same path", [](auto&) {}, m_input, 0, PDSaveIncremental},
        {"same path, asked for", [](auto&) {}, m_input, PDSaveFull | PDSaveLinearized, PDSaveFull | PDSaveLinearized},
        {"other path", [](auto&) {}, other, 0, PDSaveFull},
        {"security changed", [](auto& doc) { doc.MarkSecurityChanged(); }, m_input, 0, PDSaveFull},
        {"host demands", [](auto& doc) { SetDocumentFlags(doc.Document(), PDDocRequiresFullSave); }, m_input, 0,
         PDSaveFull},
        {"copy", [](auto&) {}, other, PDSaveCopy, PDSaveFull | PDSaveCopy},
    };
    for (const auto& row : rows) {
        g_saves.clear();
        CAcrobatDoc doc;
        doc.Open(m_input);
        row.prepare(doc);
        doc.SaveTo(row.path, row.extra);
        ASSERT_EQ(g_saves.size(), 1u) << row.what;
        EXPECT_EQ(g_saves[0].flags, row.flags) << row.what;
        EXPECT_EQ(g_saves[0].withPath, (row.flags & PDSaveFull) != 0) << row.what;
        const bool moved = row.path == other && (row.flags & PDSaveCopy) == 0;
        EXPECT_EQ(doc.CurrentFile(), moved ? other : m_input) << row.what;
        EXPECT_EQ(doc.FullPath(), doc.CurrentFile()) << row.what;
        EXPECT_FALSE(doc.SecurityChanged()) << row.what;
        EXPECT_TRUE(FileBytes(row.path).starts_with("%PDF-")) << row.what;
    }
}

namespace {

ASInt32 g_flags;
ASInt32 HOSTCALL TellFlags(PDDoc) { return g_flags; }
void HOSTCALL TakeFlags(PDDoc, ASInt32 flags) { g_flags |= flags; }

}  // namespace

TEST_F(AcrobatDoc, AHostThatSetsNoFlagItselfStillSavesNewSecurity)
{
    auto& tables = openhost::Part<openhost::CTables>();
    tables.PutTyped<PDDocGetFlagsSlotProc>(openhost::Table::PDModel, kSlotPDDocGetFlags, &TellFlags);
    tables.PutTyped<PDDocSetFlagsSlotProc>(openhost::Table::PDModel, kSlotPDDocSetFlags, &TakeFlags);
    g_flags = 0;
    CAcrobatDoc engines;
    engines.Open(m_input);
    CAcrobatDoc steps(engines.Document());  // a step works on an object of its own
    steps.ApplyStandardSecurity(NoChanges());
    engines.SaveTo(m_input, 0);
    ASSERT_EQ(g_saves.size(), 1u);
    EXPECT_EQ(g_saves[0].flags, PDSaveFull);
    EXPECT_NE(FileBytes(m_input).find("/Encrypt"), std::string::npos);
}

TEST_F(AcrobatDoc, NewSecurityTakesEffectAtTheNextSaveAndBindsItsReaders)
{
    {
        CAcrobatDoc doc;
        doc.Open(m_input);
        doc.ApplyStandardSecurity(NoChanges());
        EXPECT_TRUE(doc.SecurityChanged());
        doc.SaveTo(m_input, 0);
        EXPECT_FALSE(doc.SecurityChanged());
    }
    auto& candidates = openhost::Part<openhost::CDocuments>().passwordCandidates;
    const struct {
        const char* password;
        bool opens;
        bool mayModify;
    } rows[] = {{"", false, false}, {"wrong", false, false}, {"open", true, false}, {"owner", true, true}};
    for (const auto& row : rows) {
        candidates = {row.password};
        CAcrobatDoc doc;
        const auto error = CatchHostError([&] { doc.Open(m_input); });
        EXPECT_EQ(!error, row.opens) << row.password;
        EXPECT_TRUE(!error || error->Is(pdErrNeedPassword)) << row.password;
        if (doc) {
            EXPECT_EQ(doc.MayModify(), row.mayModify) << row.password;
        }
    }
}

TEST_F(AcrobatDoc, SecurityThatCouldNotBeSetIsNotForgottenAtTheNextSave)
{
    CAcrobatDoc doc;
    doc.Open(m_input);
    StandardSecurityRequest request = NoChanges();
    request.openPassword = std::string(256, 'x');  // the record has no room for it
    EXPECT_TRUE(CatchHostError([&] { doc.ApplyStandardSecurity(request); }));
    EXPECT_TRUE(doc.SecurityChanged());
    EXPECT_TRUE(CatchHostError([&] { doc.SaveTo(m_folder / "open.pdf", 0); }));
    EXPECT_EQ(FileBytes(m_folder / "open.pdf"), "<missing>");
    request.openPassword = std::string(255, 'x');
    doc.ApplyStandardSecurity(request);
    doc.SaveTo(m_folder / "closed.pdf", 0);
    EXPECT_NE(FileBytes(m_folder / "closed.pdf").find("/Encrypt"), std::string::npos);
}

TEST_F(AcrobatDoc, IsClosedThroughTheViewThatItOrAStepOpened)
{
    CAcrobatDoc doc;
    doc.Open(m_input);
    EXPECT_TRUE(doc.OpenView());
    EXPECT_TRUE(doc.OpenView());
    EXPECT_EQ(doc.View(), ViewOf(doc.Document()));
    EXPECT_EQ(doc.Close(), CAcrobatDoc::Closed::View);
    EXPECT_EQ(Leftovers(), "");

    doc.Open(m_input);
    ASSERT_NE(OpenView(doc.Document(), "made by a step"), nullptr);
    EXPECT_EQ(doc.Close(), CAcrobatDoc::Closed::View);
    EXPECT_EQ(Leftovers(), "");
}

TEST_F(AcrobatDoc, LeavesOpenWhatOthersOpened)
{
    CHostDocument shown = CHostDocument::Open(m_input);
    const AVDoc view = OpenView(shown.Get(), "");
    shown.Release();
    {
        CAcrobatDoc second;
        second.Open(m_input);
        EXPECT_TRUE(second.OpenView());
        EXPECT_EQ(second.Close(), CAcrobatDoc::Closed::Document);
    }
    {
        CAcrobatDoc borrowed(openhost::Part<openhost::CDocuments>().All().front());
        EXPECT_EQ(borrowed.FullPath(), m_input);
        EXPECT_EQ(borrowed.Close(), CAcrobatDoc::Closed::NothingOpen);
    }
    EXPECT_EQ(openhost::Part<openhost::CDocuments>().Live(), 1u);
    EXPECT_TRUE(CloseView(view, true));
}
