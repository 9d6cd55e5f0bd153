#include <map>

#include <gtest/gtest.h>

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
    Answer MayAct(const IntendedAct& intended) override
    {
        if (intended.target == refused) return Answer::Refuse;
        states[intended.target] = true;
        return Answer::Pretend;
    }
    std::optional<bool> Exists(const std::string& path) override
    {
        const auto found = states.find(path);
        return found == states.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<std::string, bool> states;
    std::string refused = "none";
};

class TrialRun : public CHostFixture {
protected:
    TrialRun() { Part<CJobs>().TakeFrom(source); }
    ~TrialRun() override
    {
        EXPECT_EQ(folder.EntryCount(), 1u);
        EXPECT_EQ(FileBytes(input), bytes);
    }

    const CTemporaryFolder folder;
    const std::shared_ptr<CTrialSource> source = std::make_shared<CTrialSource>();
    const std::string bytes = SamplePdf(2, "/Info<</Title(a title)>>");
    const std::string input = folder.Write("in.pdf", bytes);
    CDocuments& documents = Part<CDocuments>();
};

}  // namespace

TEST_F(TrialRun, ADocumentGoesOnAsIfItHadBeenSavedAndTheDiskIsAsBefore)
{
    const PDDoc document = documents.Open(input, true, nullptr);
    auto& pdf = DocumentAt(document).pdf;
    pdf.SetInfo("Title", "another");
    pdf.SetSecurity(Protection("open", ""));
    for (const char* name : {"first.pdf", "second.pdf", "in.pdf"}) {
        documents.Save(document, {.path = folder / name, .linearise = true});
        EXPECT_EQ(pdf.Path(), folder / name);
        EXPECT_FALSE(pdf.IsModified()) << name;
        EXPECT_TRUE(pdf.IsEncrypted()) << name;
        EXPECT_EQ(pdf.Info("Title"), "another");
        EXPECT_EQ(pdf.PageCount(), 2);
        EXPECT_EQ(PathAt(HOST(AcroSupport, ASFileAcquirePathName, documents.FileOf(document))).Native(),
                  folder / name);
        EXPECT_TRUE(platform::NameExists(folder / name)) << "as far as this run is concerned";
        TextOutput output;
        output.path = folder / "out.txt";
        EXPECT_NO_THROW(PdfToText(pdf, output)) << name;
    }
    EXPECT_EQ(source->states.count(folder / "out.txt"), 1u);
    documents.Close(document);
}

TEST_F(TrialRun, WhatTheRealRunWouldRefuseIsRefused)
{
    const PDDoc document = documents.Open(input, true, nullptr);
    const auto raised = [&](const DocumentSaveRequest& request) {
        return RaisedBy([&] { documents.Save(document, request); });
    };
    EXPECT_NE(raised({.path = folder / "no/such/out.pdf"}), 0);
    EXPECT_EQ(raised({.path = input, .mustNotExist = true}), fileErrExists);
    EXPECT_EQ(raised({.path = folder / "out.pdf", .copy = true}), 0);
    EXPECT_EQ(raised({.path = folder / "out.pdf", .copy = true, .mustNotExist = true}), fileErrExists)
        << "a pretended file stands in the way of the next";
    source->refused = folder / "refused.pdf";
    EXPECT_EQ(raised({.path = source->refused}), pdErrUnableToWrite);
    EXPECT_EQ(DocumentAt(document).pdf.Path(), input);
    documents.Close(document);
}

TEST_F(TrialRun, FilesOfPlugInsAreNotWritten)
{
    const ASPathName path = NewPath(folder / "new.txt");
    ASFile file = nullptr;
    EXPECT_EQ(HOST(AcroSupport, ASFileSysOpenFile, nullptr, path, ASFileMode{ASFILE_WRITE | ASFILE_CREATE}, &file),
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
}
