#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "Tools.h"

using namespace openhost;
using testing::HasSubstr;

namespace {

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

struct Kind {
    const char* what;
    int method, revision, keyBytes;
    int writtenVersion, writtenRevision, writtenMethod;

    StandardSecurity For(const std::string& user, const std::string& owner) const
    {
        return Protection(user, owner, method, revision, keyBytes);
    }
};
const Kind kKinds[] = {
    {"RC4", 2, 3, 16, 2, 3, 2},        {"AES-128", 6, 4, 16, 4, 4, 6},        {"AES-256", 7, 5, 32, 5, 6, 7},
    {"revision 6", 7, 6, 32, 5, 6, 7}, {"32 bytes alone", 0, 0, 32, 5, 6, 7}, {"host's choice", 0, 0, 16, 4, 4, 6}};

}  // namespace

using Security = CPdfTest;

TEST_F(Security, EachKindIsWrittenAsOtherReadersKnowIt)
{
    if (!HaveTool("qpdf") || !HaveTool("pdftotext") || !HaveTool("mutool")) GTEST_SKIP() << "tools are missing";
    for (const auto& kind : kKinds) {
        const std::string path = Protect(folder, "out.pdf", kind.For("open", "change"));
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
        for (const std::string password : {"open", "change"}) {
            const ToolResult text = RunTool({"pdftotext", password == "open" ? "-upw" : "-opw", password, path, "-"});
            EXPECT_EQ(text.output, "Page 1 of the sample\n\n\fPage 2 of the sample\n\n\f") << kind.what << password;
            const ToolResult drawn = RunTool({"mutool", "draw", "-F", "txt", "-p", password, path});
            EXPECT_THAT(drawn.output, HasSubstr("Page 2 of the sample")) << kind.what << password;
        }
    }
}

TEST_F(Security, PasswordsOfEveryKindOpenAgainAsFarAsEveryReaderReadsThem)
{
    const std::string long300(300, 'p');
    const struct {
        std::string user, owner;
        int revision;  // from which one on
    } rows[] = {{"    ", "  x  ", 3},
                {"h\u00f4tel", "\u00e2ge", 3},
                {"\u00aa\u00adb", "\U0001F600 \U0002070E", 6},
                {"\u1100\u0300\u1161\u0323", "\u03b1\u03b2", 6},
                {"12345678901234567890123456789012-and-more", "another-one-that-is-much-longer-than-32", 3},
                {long300, "change", 3}};
    for (const auto& kind : kKinds) {
        for (const auto& row : rows) {
            if (row.revision > kind.writtenRevision) continue;
            const std::string path = Protect(folder, "out.pdf", kind.For(row.user, row.owner));
            EXPECT_EQ(OpenedBy(path, row.user), OpenedWith::User) << kind.what << ' ' << row.user;
            EXPECT_EQ(OpenedBy(path, row.owner), OpenedWith::Owner) << kind.what << ' ' << row.owner;
        }
        const std::size_t counts = kind.writtenRevision >= 5 ? 127 : 32;
        EXPECT_EQ(OpenedBy(folder / "out.pdf", std::string(counts, 'p')), OpenedWith::User) << kind.what;
        EXPECT_EQ(OpenedBy(folder / "out.pdf", std::string(counts - 1, 'p')), OpenedWith::None) << kind.what;
        if (!HaveTool("qpdf")) continue;
        const std::string cut = "--password=" + std::string(counts, 'p');
        EXPECT_EQ(RunTool({"qpdf", "--check", cut, folder / "out.pdf"}).code, 0) << kind.what;
    }
}

TEST_F(Security, AnEmptyPermissionsPasswordGivesNobodyOwnerRights)
{
    for (const auto& kind : kKinds) {
        StandardSecurity request = kind.For("", "");
        request.hasOwner = true;
        EXPECT_EQ(OpenedBy(Protect(folder, "out.pdf", request), ""), OpenedWith::User) << kind.what;
        const std::string open = Protect(folder, "open.pdf", kind.For("open", ""));
        EXPECT_EQ(OpenedBy(open, ""), OpenedWith::None) << kind.what;
        EXPECT_EQ(OpenedBy(open, "open"), OpenedWith::Owner) << kind.what;
    }
}

TEST_F(Security, ThePermissionWordKeepsItsReservedBits)
{
    const struct {
        std::uint32_t asked, storedTo4, stored6;
    } rows[] = {{0xFFFFFFFF, 0xFFFFFFFC, 0xFFFFFFFC}, {0, 0xFFFFF0C0, 0xFFFFF2C0},
                {0xFFFDF243, 0xFFFFF2C0, 0xFFFFF2C0}, {0x4, 0xFFFFF0C4, 0xFFFFF2C4},
                {0x800, 0xFFFFF8C0, 0xFFFFFAC0},      {0x38, 0xFFFFF0F8, 0xFFFFF2F8}};
    for (const auto& kind : kKinds) {
        for (const auto& row : rows) {
            StandardSecurity request = kind.For("", "change");
            request.permissions = row.asked;
            const CPdfDocument document = CPdfDocument::Open(Protect(folder, "out.pdf", request));
            EXPECT_EQ(document.PermissionWord(), kind.writtenRevision < 6 ? row.storedTo4 : row.stored6)
                << kind.what << std::hex << ' ' << row.asked;
        }
    }
}

TEST_F(Security, RightsFollowThePermissionWord)
{
    using enum PdfRight;
    const struct {
        std::uint32_t word;
        std::vector<PdfRight> granted;
    } rows[] = {{0x4, {PrintLow}},
                {0x804, {PrintLow, PrintHigh}},
                {0x800, {}},
                {0x8, {Change, Assemble, FullSave}},
                {0x400, {Assemble}},
                {0x10, {Copy, CopyForAccessibility}},
                {0x200, {CopyForAccessibility}},
                {0x20, {Annotate, FillForms}},
                {0x100, {FillForms}}};
    for (const auto& row : rows) {
        StandardSecurity request = Protection("", "change", 6, 4, 16);
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

TEST_F(Security, MetadataStayReadableWhenAsked)
{
    const std::string packet = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>readable words</x:xmpmeta>";
    const std::string stream = StreamObject(100, "/Type/Metadata/Subtype/XML", packet);
    const std::string plain = folder.Write("plain.pdf", SamplePdf(1, "", stream));
    for (const auto& kind : kKinds) {
        for (const bool encrypted : {true, false}) {
            CPdfDocument document = CPdfDocument::Open(plain);
            StandardSecurity request = kind.For("open", "change");
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

TEST_F(Security, RefusedProtectionIsNeverFollowedByAnUnprotectedFile)
{
    const std::string path = folder.Write("plain.pdf", SamplePdf(1));
    const struct {
        StandardSecurity request;
        PdfProblem problem;
    } rows[] = {{Protection("\u03b1", "change", 6), PdfProblem::PasswordNotExpressible},
                {Protection("open", "\u03b1", 2), PdfProblem::PasswordNotExpressible},
                {Protection("\u00ad", "change"), PdfProblem::PasswordNotExpressible},
                {Protection("open", "change", 0, 2, 5), PdfProblem::BadSecuritySettings}};
    for (const auto& row : rows) {
        CPdfDocument document = CPdfDocument::Open(path);
        EXPECT_EQ(ProblemOf([&] { document.SetSecurity(row.request); }), row.problem);
        EXPECT_EQ(ProblemOf([&] { document.Save({.path = folder / "out.pdf"}); }), row.problem);
        EXPECT_EQ(ProblemOf([&] { document.Save({.path = folder / "out.pdf"}); }), row.problem);
        EXPECT_EQ(folder.EntryCount(), 1u);
        document.SetSecurity(Protection("open", "change", 7, 5, 32));
        document.Save({.path = folder / "out.pdf"});
        EXPECT_EQ(OpenedBy(folder / "out.pdf", "open"), OpenedWith::User);
        std::filesystem::remove(folder / "out.pdf");
    }
}

TEST_F(Security, ChangingNeedsTheRightOrTheOwner)
{
    StandardSecurity request = Protection("open", "change", 6);
    request.permissions = pdfright::kPrint;
    CPdfDocument document = CPdfDocument::Open(Protect(folder, "out.pdf", request), WithPassword("open"));
    const std::function<void()> forbidden[] = {[&] { document.SetInfo("Title", "x"); },
                                               [&] { document.Save({.path = folder / "again.pdf"}); },
                                               [&] { document.SetSecurity(Protection("other", "other")); },
                                               [&] { document.RemoveSecurity(); }, [&] { document.Save({}); }};
    for (const auto& work : forbidden) EXPECT_EQ(ProblemOf(work), PdfProblem::NotPermitted) << &work - forbidden;
    EXPECT_FALSE(document.IsModified());
    EXPECT_FALSE(std::filesystem::exists(folder / "again.pdf"));

    EXPECT_FALSE(document.Authorize("wrong", WantedRights::Owner));
    EXPECT_TRUE(document.Authorize("change", WantedRights::Owner));
    document.SetInfo("Title", "x");
    document.RemoveSecurity();
    document.Save({.path = folder / "free.pdf"});
    EXPECT_FALSE(CPdfDocument::Open(folder / "free.pdf").IsEncrypted());
    document.SetInfo("Title", "y");
    document.Save({});
    EXPECT_EQ(TitleOf(folder / "free.pdf"), "y");
}

TEST_F(Security, UnchangedEncryptionSurvivesEverySave)
{
    for (const auto& kind : kKinds) {
        const std::string path = Protect(folder, "out.pdf", kind.For("open", "change"));
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

TEST_F(Security, RightsOfALockedDocumentAreNone)
{
    const std::string path = Protect(folder, "out.pdf", Protection("open", "change", 7, 6, 32));
    PdfOpenOptions options;
    options.authorise = [&](CPdfDocument& document) {
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
}
