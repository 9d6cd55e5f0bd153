#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "openhost/pdf/Conversions.h"
#include "openhost/pdf/OutputProfiles.h"
#include "openhost/pdf/TextEngine.h"
#include "support/TemporaryFolder.h"

using namespace openhost;
using namespace std::string_literals;

namespace {

std::string Segment(char marker, const std::string& data)
{
    const std::size_t length = data.size() + 2;
    return std::string{'\xFF', marker, static_cast<char>(length >> 8), static_cast<char>(length)} + data;
}

std::string Frame(char marker, char bits, char components)
{
    // 200 by 100 pixels.
    std::string data{bits, 0, 100, 0, '\xC8', components};
    for (char i = 1; i <= components; ++i) data += std::string{i, 0x11, 0};
    return Segment(marker, data);
}

std::string Jfif(char unit, char x, char y)
{
    return Segment('\xE0', "JFIF\0\1\2"s + unit + '\0' + x + '\0' + y + "\0\0"s);
}

/// One directory: orientation, both resolutions of 150, unit inch; big-endian.
std::string Exif(char orientation)
{
    const std::string head = "Exif\0\0MM\0\x2A\0\0\0\x08\0\4"s;
    const std::string entries = "\x01\x12\0\3\0\0\0\1\0"s + orientation + "\0\0"s +
                                "\x01\x1A\0\5\0\0\0\1\0\0\0\x3E"s + "\x01\x1B\0\5\0\0\0\1\0\0\0\x3E"s +
                                "\x01\x28\0\3\0\0\0\1\0\2\0\0"s;
    return Segment('\xE1', head + entries + "\0\0\0\0"s + "\0\0\0\x96\0\0\0\1"s);
}

const std::string kStart = "\xFF\xD8"s, kScan = Segment('\xDA', "\1\1\0\0\x3F\0"s) + "data\xFF\xD9"s;

}  // namespace

TEST(JpegHeader, TellsWhatADocumentNeeds)
{
    const struct {
        const char* what;
        std::string segments;
        int components;
        double dpi;
        int turn;
        bool adobe;
    } rows[] = {{"bare", Frame('\xC0', 8, 3), 3, 0, 0, false},
                {"progressive grey", Frame('\xC2', 8, 1), 1, 0, 0, false},
                {"dots per inch", Jfif(1, 96, 96) + Frame('\xC0', 8, 3), 3, 96, 0, false},
                {"dots per centimetre", Jfif(2, 50, 50) + Frame('\xC0', 8, 3), 3, 127, 0, false},
                {"only a ratio", Jfif(0, 1, 1) + Frame('\xC0', 8, 3), 3, 0, 0, false},
                {"camera, turned", Exif(6) + Frame('\xC0', 8, 3), 3, 150, 90, false},
                {"both: the picture's own first", Jfif(1, 96, 96) + Exif(3) + Frame('\xC0', 8, 3), 3, 96, 180, false},
                {"four inks", Segment('\xEE', "Adobe\0\x64\0\0\0\0\2"s) + Frame('\xC1', 8, 4), 4, 0, 0, true},
                {"padding", "\xFF\xFF\xFF"s + Frame('\xC0', 8, 3).substr(1), 3, 0, 0, false}};
    for (const auto& row : rows) {
        std::string reason;
        const auto header = ReadJpegHeader(kStart + row.segments + kScan, reason);
        ASSERT_TRUE(header) << row.what << ": " << reason;
        EXPECT_EQ(std::tuple(header->width, header->height, header->components), std::tuple(200, 100, row.components))
            << row.what;
        EXPECT_EQ(std::tuple(header->turn, header->adobeMarker), std::tuple(row.turn, row.adobe)) << row.what;
        EXPECT_DOUBLE_EQ(header->dpiX, row.dpi) << row.what;
        EXPECT_DOUBLE_EQ(header->dpiY, row.dpi) << row.what;
    }
}

TEST(JpegHeader, RefusesWhatCannotBeEmbedded)
{
    const std::string good = kStart + Exif(1) + Jfif(1, 96, 96) + Frame('\xC0', 8, 3) + kScan;
    const std::string rows[] = {"",
                                kStart + kScan,
                                kStart + Frame('\xC0', 12, 3) + kScan,
                                kStart + Frame('\xC3', 8, 3) + kScan,
                                kStart + Frame('\xC9', 8, 3) + kScan,
                                kStart + Frame('\xC0', 8, 2) + kScan};
    std::string reason;
    for (const std::string& row : rows) EXPECT_FALSE(ReadJpegHeader(row, reason)) << testing::PrintToString(row);
    // Cut anywhere before its data begin, it is no picture.
    const std::size_t data = good.find("data");
    for (std::size_t length = 0; length < data; ++length) {
        EXPECT_FALSE(ReadJpegHeader(good.substr(0, length), reason)) << length;
    }
    EXPECT_TRUE(ReadJpegHeader(good, reason));
}

TEST(JpegToPdf, EmbedsThePictureUnchangedAndRefusesOtherFiles)
{
    const CTemporaryFolder folder;
    const std::string picture =
        kStart + Exif(6) + Frame('\xC0', 8, 4) + Segment('\xEE', "Adobe\0\x64\0\0\0\0\2"s) + kScan;
    CPdfDocument document = JpegToPdf(folder.Write("picture.jpg", picture));
    EXPECT_EQ(document.PageCount(), 1);
    EXPECT_TRUE(document.IsModified());
    EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::NoPath);
    document.Save({.path = folder / "out.pdf"});
    const std::string bytes = FileBytes(folder / "out.pdf");
    EXPECT_THAT(bytes, testing::HasSubstr(picture));
    EXPECT_THAT(bytes, testing::HasSubstr("/MediaBox [ 0 0 96 48 ]"));
    EXPECT_THAT(bytes, testing::HasSubstr("/Rotate 90"));
    EXPECT_THAT(bytes, testing::HasSubstr("/Decode [ 1 0 1 0 1 0 1 0 ]"));
    EXPECT_EQ(CPdfDocument::Open(folder / "out.pdf", {.repair = false}).PageCount(), 1);
    EXPECT_EQ(ProblemOf([&] { JpegToPdf(folder.Write("a.jpg", "GIF89a")); }), PdfProblem::UnsupportedInput);
    EXPECT_EQ(ProblemOf([&] { JpegToPdf(folder / "missing.jpg"); }), PdfProblem::NotFound);
    EXPECT_EQ(ProblemOf([&] { JpegToPdf(folder.Path()); }), PdfProblem::NotAFile);
}

TEST(PdfToText, WritesEveryStateOfADocument)
{
    const CTemporaryFolder folder;
    const std::string text = folder / "out.txt", expected = "Page 1 of the sample\n\fPage 2 of the sample\n";
    CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", SamplePdf(2)));
    const auto converted = [&] {
        PdfToText(document, {.path = text});
        return FileBytes(text);
    };
    EXPECT_EQ(converted(), expected) << "untouched";
    document.SetInfo("Title", "x");
    EXPECT_EQ(converted(), expected) << "changed";
    document.SetSecurity(Protection("h\u00f4tel", "change"));
    EXPECT_EQ(converted(), expected) << "to be protected";
    document.Save({});
    EXPECT_EQ(converted(), expected) << "protected";
    document = CPdfDocument::Open(document.Path(), WithPassword("change"));
    EXPECT_EQ(converted(), expected) << "opened by its owner";
}

TEST(PdfToText, KeepsRightsAndExistingFiles)
{
    const CTemporaryFolder folder;
    CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", SamplePdf(2)));
    const std::string taken = folder.Write("taken.txt", "mine");
    const auto problem = [&](const TextOutput& output) { return ProblemOf([&] { PdfToText(document, output); }); };
    EXPECT_EQ(problem({.path = taken, .mustNotExist = true}), PdfProblem::Exists);
    EXPECT_EQ(problem({.path = taken, .cancelled = [] { return true; }}), PdfProblem::Cancelled);
    EXPECT_EQ(problem({.path = folder / "no/out.txt"}), PdfProblem::CannotWrite);
    StandardSecurity security = Protection("", "change", 0);
    security.permissions = pdfright::kPrint;
    document.SetSecurity(security);
    document.Save({.path = folder / "b.pdf"});
    document = CPdfDocument::Open(folder / "b.pdf");
    EXPECT_EQ(problem({.path = taken}), PdfProblem::NotPermitted);
    EXPECT_EQ(FileBytes(taken), "mine");
    const auto engine = NewTextEngine();
    engine->LoadFile(folder.Write("a.pdf", SamplePdf(1)), "");
    for (const int page : {-1, 1}) EXPECT_EQ(ProblemOf([&] { engine->PageText(page); }), PdfProblem::BadPage) << page;
}

// The profile, and nothing else of the file, is what the text is read without.
TEST(TextEngine, DoesWithoutOutputProfiles)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "a.pdf", profile(3000, 'p');
    for (const bool encrypted : {false, true}) {
        auto document = CPdfDocument::FromMemory(SamplePdf(1), "sample");
        QPDF& library = document.Library();
        auto intent = QPDFObjectHandle::parse("<</Type/OutputIntent/S/GTS_PDFA1>>");
        intent.replaceKey("/DestOutputProfile", library.newStream(profile));
        library.getRoot().replaceKey("/OutputIntents", QPDFObjectHandle::newArray({intent}));
        if (encrypted) document.SetSecurity(Protection("open", "change"));
        document.Save({.path = path});
        document = CPdfDocument::Open(path, WithPassword("open"));

        const auto offsets = OutputProfilesIn(document);
        ASSERT_EQ(offsets.size(), 1U);
        const std::string before = FileBytes(path);
        std::string after = before;
        SpoilOutputProfiles(after, {offsets[0], 0, offsets[0] + 1, before.size(), before.size() + 1});
        const auto changed = std::ranges::mismatch(before, after);
        EXPECT_EQ(changed.in1 - before.begin(), static_cast<std::ptrdiff_t>(offsets[0]));
        EXPECT_TRUE(std::equal(changed.in1 + 128, before.end(), changed.in2 + 128) && after.size() == before.size());

        const auto engine = NewTextEngine();
        LoadPresentState(*engine, document);
        EXPECT_THAT(engine->PageText(0), testing::StartsWith("Page 1 of the sample\n"));
    }
}
