#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "Tools.h"
#include "support/TemporaryFolder.h"

using namespace openhost;
using testing::HasSubstr;

namespace {

StandardSecurity Request(int method, int revision, int keyBytes, const std::string& user, const std::string& owner)
{
    StandardSecurity request;
    request.method = method;
    request.revision = revision;
    request.keyLengthBytes = keyBytes;
    request.hasUser = !user.empty();
    request.hasOwner = !owner.empty();
    request.userPasswordUtf8 = user;
    request.ownerPasswordUtf8 = owner;
    return request;
}

/// A protected copy of a two-page document.
std::string Protect(const CTemporaryFolder& folder, const std::string& name, const StandardSecurity& request)
{
    CPdfDocument document =
        CPdfDocument::Open(folder.Write("plain.pdf", SamplePdf(2, "/Info<</Title(secret title)>>")));
    document.SetSecurity(request);
    document.Save({.path = folder / name, .copy = true});
    return folder / name;
}

OpenedWith OpenedBy(const std::string& path, const std::string& passwordUtf8)
{
    try {
        return CPdfDocument::Open(path, WithPassword(passwordUtf8, WantedRights::Owner)).OpenedBy();
    } catch (const CPdfError&) {
        return OpenedWith::None;
    }
}

const struct {
    const char* what;
    int method, revision, keyBytes;
    int writtenVersion, writtenRevision, writtenMethod;
} kKinds[] = {
    {"RC4", 2, 3, 16, 2, 3, 2},        {"AES-128", 6, 4, 16, 4, 4, 6},        {"AES-256", 7, 5, 32, 5, 6, 7},
    {"revision 6", 7, 6, 32, 5, 6, 7}, {"32 bytes alone", 0, 0, 32, 5, 6, 7}, {"host's choice", 0, 0, 16, 4, 4, 6},
};

}  // namespace

TEST(Security, EachKindIsWrittenAsOtherReadersKnowIt)
{
    if (!HaveTool("qpdf") || !HaveTool("pdftotext") || !HaveTool("mutool")) GTEST_SKIP() << "tools are missing";
    const CTemporaryFolder folder;
    for (const auto& kind : kKinds) {
        const std::string path =
            Protect(folder, "out.pdf", Request(kind.method, kind.revision, kind.keyBytes, "open", "change"));
        CPdfDocument reopened = CPdfDocument::Open(path, WithPassword("open"));
        const SecurityInfo info = reopened.Security();
        EXPECT_EQ(info.version, kind.writtenVersion) << kind.what;
        EXPECT_EQ(info.revision, kind.writtenRevision) << kind.what;
        EXPECT_EQ(info.method, kind.writtenMethod) << kind.what;
        EXPECT_EQ(reopened.Info("Title"), "secret title") << kind.what;
        EXPECT_EQ(reopened.OpenedBy(), OpenedWith::User) << kind.what;

        EXPECT_EQ(ProblemOf([&] { CPdfDocument::Open(path); }), PdfProblem::NeedsPassword) << kind.what;
        EXPECT_EQ(RunTool({"qpdf", "--requires-password", path}).code, 0) << kind.what;
        EXPECT_EQ(RunTool({"qpdf", "--check", "--password=change", path}).code, 0) << kind.what;
        for (const char* option : {"-upw", "-opw"}) {
            const char* password = option[1] == 'u' ? "open" : "change";
            const ToolResult text = RunTool({"pdftotext", option, password, path, "-"});
            EXPECT_EQ(text.output, "Page 1 of the sample\n\n\fPage 2 of the sample\n\n\f") << kind.what << option;
            EXPECT_THAT(RunTool({"pdfinfo", option, password, path}).output, HasSubstr("secret title")) << kind.what;
            const ToolResult drawn = RunTool({"mutool", "draw", "-F", "txt", "-p", password, path});
            EXPECT_THAT(drawn.output, HasSubstr("Page 2 of the sample")) << kind.what;
            EXPECT_THAT(drawn.output, testing::Not(HasSubstr("padding"))) << kind.what;
        }
    }
}

TEST(Security, PasswordsOfEveryKindOpenAgain)
{
    const CTemporaryFolder folder;
    const struct {
        const char* user;
        const char* owner;
        int revisions;  // 4: both, 6: only 256 bits can express them
    } rows[] = {
        {"    ", "  x  ", 4},
        {"h\u00f4tel", "\u00e2ge", 4},
        {"\u00aa\u00adb", "\U0001F600 \U0002070E", 6},
        {"\u1100\u0300\u1161\u0323", "\u03b1\u03b2", 6},
        {"12345678901234567890123456789012-and-more", "another-one-that-is-much-longer-than-32", 4},
    };
    for (const auto& row : rows) {
        for (const auto& kind : kKinds) {
            if (row.revisions > kind.writtenRevision) continue;
            const std::string path =
                Protect(folder, "out.pdf", Request(kind.method, kind.revision, kind.keyBytes, row.user, row.owner));
            EXPECT_EQ(OpenedBy(path, row.user), OpenedWith::User) << kind.what << ' ' << row.user;
            EXPECT_EQ(OpenedBy(path, row.owner), OpenedWith::Owner) << kind.what << ' ' << row.owner;
        }
    }
}

TEST(Security, LongPasswordsAreCutWhereEveryReaderCuts)
{
    const CTemporaryFolder folder;
    const std::string long300(300, 'p');
    for (const auto& kind : kKinds) {
        const std::string path =
            Protect(folder, "out.pdf", Request(kind.method, kind.revision, kind.keyBytes, long300, "change"));
        const std::size_t counts = kind.writtenRevision >= 5 ? 127 : 32;
        EXPECT_EQ(OpenedBy(path, long300), OpenedWith::User) << kind.what;
        EXPECT_EQ(OpenedBy(path, std::string(counts, 'p')), OpenedWith::User) << kind.what;
        EXPECT_EQ(OpenedBy(path, std::string(counts - 1, 'p')), OpenedWith::None) << kind.what;
        if (!HaveTool("qpdf")) continue;
        EXPECT_EQ(RunTool({"qpdf", "--check", "--password=" + std::string(counts, 'p'), path}).code, 0) << kind.what;
    }
}

TEST(Security, AnEmptyPermissionsPasswordGivesNobodyOwnerRights)
{
    const CTemporaryFolder folder;
    for (const auto& kind : kKinds) {
        StandardSecurity request = Request(kind.method, kind.revision, kind.keyBytes, "", "");
        request.hasOwner = true;
        const std::string path = Protect(folder, "out.pdf", request);
        EXPECT_EQ(CPdfDocument::Open(path).OpenedBy(), OpenedWith::User) << kind.what;
        EXPECT_EQ(OpenedBy(path, ""), OpenedWith::User) << kind.what;

        const std::string open =
            Protect(folder, "open.pdf", Request(kind.method, kind.revision, kind.keyBytes, "open", ""));
        EXPECT_EQ(OpenedBy(open, ""), OpenedWith::None) << kind.what;
        EXPECT_EQ(OpenedBy(open, "open"), OpenedWith::Owner) << kind.what;
    }
}

TEST(Security, ThePermissionWordKeepsItsReservedBits)
{
    const CTemporaryFolder folder;
    const struct {
        std::uint32_t asked, storedTo4, stored6;
    } rows[] = {
        {0xFFFFFFFF, 0xFFFFFFFC, 0xFFFFFFFC}, {0, 0xFFFFF0C0, 0xFFFFF2C0},     {0xFFFDF243, 0xFFFFF2C0, 0xFFFFF2C0},
        {0x4, 0xFFFFF0C4, 0xFFFFF2C4},        {0x800, 0xFFFFF8C0, 0xFFFFFAC0}, {0x38, 0xFFFFF0F8, 0xFFFFF2F8},
    };
    for (const auto& kind : kKinds) {
        for (const auto& row : rows) {
            StandardSecurity request = Request(kind.method, kind.revision, kind.keyBytes, "", "change");
            request.permissions = row.asked;
            const CPdfDocument document = CPdfDocument::Open(Protect(folder, "out.pdf", request));
            EXPECT_EQ(document.PermissionWord(), kind.writtenRevision < 6 ? row.storedTo4 : row.stored6)
                << kind.what << std::hex << ' ' << row.asked;
        }
    }
}

TEST(Security, RightsFollowThePermissionWord)
{
    using enum PdfRight;
    const CTemporaryFolder folder;
    const struct {
        std::uint32_t word;
        std::vector<PdfRight> granted;
    } rows[] = {
        {0x4, {PrintLow}},
        {0x804, {PrintLow, PrintHigh}},
        {0x800, {}},
        {0x8, {Change, Assemble, FullSave}},
        {0x400, {Assemble}},
        {0x10, {Copy, CopyForAccessibility}},
        {0x200, {CopyForAccessibility}},
        {0x20, {Annotate, FillForms}},
        {0x100, {FillForms}},
    };
    for (const auto& row : rows) {
        StandardSecurity request = Request(6, 4, 16, "", "change");
        request.permissions = row.word;
        CPdfDocument document = CPdfDocument::Open(Protect(folder, "out.pdf", request));
        const auto all = {Change,   ChangeSecurity, PrintLow, PrintHigh, Copy, CopyForAccessibility,
                          Annotate, FillForms,      Assemble, FullSave};
        std::vector<PdfRight> granted;
        for (const PdfRight right : all) {
            if (document.Allows(right)) granted.push_back(right);
        }
        EXPECT_THAT(granted, testing::UnorderedElementsAreArray(row.granted)) << std::hex << row.word;
        EXPECT_TRUE(document.Authorize("change", WantedRights::Owner));
        for (const PdfRight right : all) EXPECT_TRUE(document.Allows(right));
    }
}

TEST(Security, MetadataStayReadableWhenAsked)
{
    const CTemporaryFolder folder;
    const std::string packet = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>readable words</x:xmpmeta>";
    const std::string stream = "100 0 obj\n<</Type/Metadata/Subtype/XML/Length " + std::to_string(packet.size()) +
                               ">>\nstream\n" + packet + "\nendstream\nendobj\n";
    const std::string plain = folder.Write("plain.pdf", SamplePdf(1, "", stream));
    for (const auto& kind : kKinds) {
        for (const bool encrypted : {true, false}) {
            CPdfDocument document = CPdfDocument::Open(plain);
            StandardSecurity request = Request(kind.method, kind.revision, kind.keyBytes, "open", "change");
            request.encryptMetadata = encrypted;
            document.SetSecurity(request);
            document.Save({.path = folder / "out.pdf"});
            const bool readable = FileBytes(folder / "out.pdf").find("readable words") != std::string::npos;
            EXPECT_EQ(readable, !encrypted && kind.writtenVersion >= 4) << kind.what << encrypted;
            if (!HaveTool("qpdf")) continue;
            EXPECT_EQ(RunTool({"qpdf", "--check", "--password=open", folder / "out.pdf"}).code, 0) << kind.what;
        }
    }
}

TEST(Security, RefusedProtectionIsNeverFollowedByAnUnprotectedFile)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("plain.pdf", SamplePdf(1));
    const struct {
        StandardSecurity request;
        PdfProblem problem;
    } rows[] = {
        {Request(6, 4, 16, "\u03b1", "change"), PdfProblem::PasswordNotExpressible},
        {Request(2, 3, 16, "open", "\u03b1"), PdfProblem::PasswordNotExpressible},
        {Request(7, 5, 32, "\u00ad", "change"), PdfProblem::PasswordNotExpressible},
        {Request(0, 2, 5, "open", "change"), PdfProblem::BadSecuritySettings},
    };
    for (const auto& row : rows) {
        CPdfDocument document = CPdfDocument::Open(path);
        EXPECT_EQ(ProblemOf([&] { document.SetSecurity(row.request); }), row.problem);
        EXPECT_EQ(ProblemOf([&] { document.Save({.path = folder / "out.pdf"}); }), row.problem);
        EXPECT_EQ(ProblemOf([&] { document.Save({.path = folder / "out.pdf"}); }), row.problem);
        EXPECT_EQ(folder.EntryCount(), 1u);
        document.SetSecurity(Request(7, 5, 32, "open", "change"));
        document.Save({.path = folder / "out.pdf"});
        EXPECT_EQ(OpenedBy(folder / "out.pdf", "open"), OpenedWith::User);
        std::filesystem::remove(folder / "out.pdf");
    }
}

TEST(Security, NeedsOwnerRightsToChange)
{
    const CTemporaryFolder folder;
    const std::string path = Protect(folder, "out.pdf", Request(6, 4, 16, "open", "change"));
    CPdfDocument document = CPdfDocument::Open(path, WithPassword("open"));
    EXPECT_EQ(ProblemOf([&] { document.SetSecurity(Request(6, 4, 16, "other", "other")); }),
              PdfProblem::NotPermitted);
    EXPECT_EQ(ProblemOf([&] { document.Save({.path = folder / "again.pdf"}); }), PdfProblem::NotPermitted);
    EXPECT_EQ(ProblemOf([&] { document.RemoveSecurity(); }), PdfProblem::NotPermitted);
    EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::NotPermitted);
    EXPECT_FALSE(document.IsModified());
    EXPECT_FALSE(std::filesystem::exists(folder / "again.pdf"));

    EXPECT_FALSE(document.Authorize("wrong", WantedRights::Owner));
    EXPECT_TRUE(document.Authorize("change", WantedRights::Owner));
    document.RemoveSecurity();
    document.Save({.path = folder / "free.pdf"});
    EXPECT_FALSE(CPdfDocument::Open(folder / "free.pdf").IsEncrypted());
}

TEST(Security, UnchangedEncryptionSurvivesEverySave)
{
    const CTemporaryFolder folder;
    for (const auto& kind : kKinds) {
        const std::string path =
            Protect(folder, "out.pdf", Request(kind.method, kind.revision, kind.keyBytes, "open", "change"));
        for (const char* password : {"open", "change"}) {
            CPdfDocument document = CPdfDocument::Open(path, WithPassword(password));
            document.SetInfo("Title", password);
            document.Save({});
            document.SetInfo("Author", "after the first save");
            document.Save({});
            EXPECT_EQ(OpenedBy(path, "open"), OpenedWith::User) << kind.what;
            EXPECT_EQ(OpenedBy(path, "change"), OpenedWith::Owner) << kind.what;
            CPdfDocument reopened = CPdfDocument::Open(path, WithPassword("open"));
            EXPECT_EQ(reopened.Info("Title"), password) << kind.what;
            EXPECT_EQ(reopened.Info("Author"), "after the first save") << kind.what;
            EXPECT_EQ(reopened.Security().revision, kind.writtenRevision) << kind.what;
        }
    }
}

TEST(Security, RightsOfALockedDocumentAreNone)
{
    const CTemporaryFolder folder;
    const std::string path = Protect(folder, "out.pdf", Request(7, 6, 32, "open", "change"));
    bool asked = false;
    PdfOpenOptions options;
    options.authorise = [&](CPdfDocument& document) {
        asked = true;
        EXPECT_TRUE(document.IsLocked());
        EXPECT_EQ(document.PageCount(), 0);
        EXPECT_FALSE(document.Allows(PdfRight::PrintLow));
        EXPECT_EQ(ProblemOf([&] { document.SetInfo("Title", "x"); }), PdfProblem::NotPermitted);
        EXPECT_EQ(ProblemOf([&] { document.WriteToMemory(); }), PdfProblem::NeedsPassword);
        EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::NeedsPassword);
        EXPECT_FALSE(document.Authorize("wrong", WantedRights::Open));
        EXPECT_FALSE(document.Authorize("open", WantedRights::Owner));
        EXPECT_EQ(document.OpenedBy(), OpenedWith::User);
        EXPECT_TRUE(document.Authorize("change", WantedRights::Open));
        EXPECT_EQ(document.OpenedBy(), OpenedWith::User);
        return document.Authorize("change", WantedRights::Owner);
    };
    EXPECT_EQ(CPdfDocument::Open(path, options).OpenedBy(), OpenedWith::Owner);
    EXPECT_TRUE(asked);
}
