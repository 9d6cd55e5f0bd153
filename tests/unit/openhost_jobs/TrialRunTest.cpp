#include <gtest/gtest.h>

#include <map>

#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/jobs/Jobs.h"
#include "openhost/pdf/Conversions.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

/// Pretends everything and remembers what came and went.
class CTrialSource final : public CJobSource {
public:
    bool Pretends() override { return true; }
    bool WantsRecords() const override { return true; }
    Answer MayAct(const IntendedAct& intended) override
    {
        if (intended.target == refused) return Answer::Refuse;
        if (!intended.target.empty()) states[intended.target] = true;
        if (intended.act != COverseer::Act::Put) states[intended.file] = false;
        return Answer::Pretend;
    }
    std::optional<bool> Exists(const std::string& path) override
    {
        const auto found = states.find(path);
        return found == states.end() ? std::nullopt : std::optional(found->second);
    }
    void FileDone(const FileRecord& record) override { records.push_back(record); }

    std::map<std::string, bool> states;
    std::vector<FileRecord> records;
    std::string refused = "none";
};

class TrialRun : public CHostFixture {
protected:
    TrialRun() { Part<CJobs>().TakeFrom(source); }

    std::string NativeOf(ASFile file) { return PathAt(HOST(AcroSupport, ASFileAcquirePathName, file)).Native(); }

    const CTemporaryFolder folder;
    const std::shared_ptr<CTrialSource> source = std::make_shared<CTrialSource>();
    const std::string bytes = SamplePdf(2, "/Info<</Title(a title)>>");
    const std::string input = folder.Write("in.pdf", bytes);
};

}  // namespace

TEST_F(TrialRun, ADocumentGoesOnAsIfItHadBeenSavedAndTheDiskIsAsBefore)
{
    const PDDoc document = Part<CDocuments>().Open(input, true, nullptr);
    auto& pdf = DocumentAt(document).pdf;
    pdf.SetInfo("Title", "another");
    StandardSecurity security;
    security.method = 7;
    security.revision = 6;
    security.keyLengthBytes = 32;
    security.hasUser = true;
    security.userPasswordUtf8 = "open";
    pdf.SetSecurity(security);
    for (const char* name : {"first.pdf", "second.pdf", "in.pdf"}) {
        Part<CDocuments>().Save(document, {.path = folder / name, .linearise = true});
        EXPECT_EQ(pdf.Path(), folder / name);
        EXPECT_FALSE(pdf.IsModified()) << name;
        EXPECT_TRUE(pdf.IsEncrypted()) << name;
        EXPECT_EQ(pdf.Info("Title"), "another");
        EXPECT_EQ(pdf.PageCount(), 2);
        EXPECT_EQ(NativeOf(Part<CDocuments>().FileOf(document)), folder / name);
        EXPECT_TRUE(platform::NameExists(folder / name)) << "as far as this run is concerned";
    }
    Part<CDocuments>().Close(document);
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_EQ(FileBytes(input), bytes);
    const FileRecord record = Part<CJobs>().Ledger().FileDone(input, kJobFileSaved, "");
    EXPECT_EQ(record.outputs.size(), 3u);
}

TEST_F(TrialRun, WhatTheRealRunWouldRefuseIsRefused)
{
    const PDDoc document = Part<CDocuments>().Open(input, true, nullptr);
    auto& documents = Part<CDocuments>();
    EXPECT_NE(RaisedBy([&] { documents.Save(document, {.path = folder / "no/such/out.pdf"}); }), 0);
    EXPECT_EQ(RaisedBy([&] { documents.Save(document, {.path = input, .mustNotExist = true}); }), fileErrExists);
    documents.Save(document, {.path = folder / "out.pdf", .copy = true});
    EXPECT_EQ(
        RaisedBy([&] { documents.Save(document, {.path = folder / "out.pdf", .copy = true, .mustNotExist = true}); }),
        fileErrExists)
        << "a pretended file stands in the way of the next";
    source->refused = folder / "refused.pdf";
    EXPECT_EQ(RaisedBy([&] { documents.Save(document, {.path = source->refused}); }), pdErrUnableToWrite);
    EXPECT_EQ(DocumentAt(document).pdf.Path(), input);
    documents.Close(document);
    EXPECT_EQ(folder.EntryCount(), 1u);
}

TEST_F(TrialRun, TextIsMadeOfThePretendedState)
{
    const PDDoc document = Part<CDocuments>().Open(input, true, nullptr);
    Part<CDocuments>().Save(document, {.path = folder / "gone.pdf"});
    TextOutput output;
    output.path = folder / "out.txt";
    EXPECT_NO_THROW(PdfToText(DocumentAt(document).pdf, output));
    EXPECT_EQ(source->states.count(folder / "out.txt"), 1u);
    Part<CDocuments>().Close(document);
    EXPECT_EQ(folder.EntryCount(), 1u);
}

TEST_F(TrialRun, FilesOfPlugInsAreNotWritten)
{
    const ASPathName path = NewPath(folder / "new.txt");
    ASFile file = nullptr;
    EXPECT_EQ(HOST(AcroSupport, ASFileSysOpenFile, nullptr, path, ASFILE_WRITE | ASFILE_CREATE, &file),
              fileErrWrPerm);
    EXPECT_NE(SaidAll().find("trial run"), std::string::npos);
    EXPECT_EQ(HOST(AcroSupport, ASFileSysCreateFolder, nullptr, path, true), fileErrWrPerm);
    ASFileSysItemPropsRec props = {};
    props.size = sizeof props;
    source->states[folder / "new.txt"] = true;
    EXPECT_EQ(HOST(AcroSupport, ASFileSysGetItemProps, nullptr, path, &props), 0);
    EXPECT_TRUE(props.isThere);
    EXPECT_EQ(props.type, kASFileSysFile);
    source->states[input] = false;
    EXPECT_EQ(HOST(AcroSupport, ASFileSysGetItemProps, nullptr, NewPath(input), &props), 0);
    EXPECT_FALSE(props.isThere);
    EXPECT_EQ(folder.EntryCount(), 1u);
}
