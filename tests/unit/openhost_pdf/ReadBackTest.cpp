#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "TestPdfs.h"

using namespace openhost;

namespace {

using Damage = std::function<void(std::string& bytes)>;

Damage Replaced(const std::string& from, const std::string& to)
{
    return [=](std::string& bytes) {
        const std::size_t at = bytes.rfind(from);
        ASSERT_NE(at, std::string::npos) << from;
        bytes.replace(at, from.size(), to);
    };
}

void Rewrite(const std::string& path, const Damage& damage)
{
    std::string bytes = FileBytes(path);
    damage(bytes);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

/// Changes the hexadecimal digit behind a key.
Damage OtherDigit(const std::string& key)
{
    return [key](std::string& bytes) {
        char& digit = bytes[bytes.rfind(key) + key.size() + 2];
        digit = digit == '0' ? '1' : '0';
    };
}

}  // namespace

using ReadBack = CPdfTest;

TEST_F(ReadBack, FindsEachDamageAndReplacesNothing)
{
    const struct {
        const char* what;
        bool encrypted;
        Damage damage;
        const char* reason;
    } rows[] = {{"cut", false, [](std::string& bytes) { bytes.resize(bytes.size() / 2); }, "startxref"},
                {"wrong offset of the table", false,
                 [](std::string& bytes) { bytes.insert(bytes.rfind("startxref") + 10, "1"); }, "xref"},
                {"an object elsewhere", false, Replaced("\n3 0 obj", "\n9 0 obj"), "object 3 is not where"},
                {"a page less", false, Replaced("/Type /Page ", "/Type /Pagos"), ""},
                {"the last page is nothing", false,
                 [](std::string& bytes) {
                     const std::size_t kids = bytes.find("/Kids [ "), end = bytes.find("0 R ]", kids);
                     bytes.replace(end - 2, 5, "null ");
                 },
                 "2 of 3 pages"},
                {"no content", false, Replaced("/Contents", "/Cantents"), "its content"},
                {"another content", false, Replaced("(Page", "(Pace"), "another content"},
                {"readable by everybody", true, Replaced("/Encrypt", "/Encrapt"), "not encrypted"},
                {"another open password", true, OtherDigit("/U"), ""},
                {"another permissions password", true, OtherDigit("/O"), ""},
                {"more rights", true, Replaced("/P -3904", "/P -3900"), ""}};
    StandardSecurity protection = Protection("open", "change", 2, 3);
    protection.permissions = 0xFFFFF0C0;
    for (const auto& row : rows) {
        const std::string old = SamplePdf(3);
        const std::string path = folder.Write("a.pdf", old);
        CPdfDocument document = CPdfDocument::Open(path);
        if (row.encrypted) document.SetSecurity(protection);
        int writings = 0;
        const auto damage = [&](const std::string& written) {
            ++writings;
            Rewrite(written, row.damage);
        };
        std::string message;
        try {
            document.Save({.linearise = true, .beforeReadBack = damage});
        } catch (const CPdfError& error) {
            EXPECT_EQ(error.Problem(), PdfProblem::NotReadBack) << row.what;
            message = error.Message();
        }
        EXPECT_THAT(message, testing::HasSubstr(row.reason)) << row.what;
        EXPECT_THAT(message, testing::HasSubstr("could not be read back")) << row.what;
        EXPECT_EQ(writings, 2) << row.what << ": linearised, then plain";
        EXPECT_EQ(FileBytes(path), old) << row.what;
        EXPECT_EQ(folder.EntryCount(), 1u) << row.what;
    }
}

TEST_F(ReadBack, WritesPlainlyWhatDoesNotComeBackLinearised)
{
    CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", SamplePdf(2)));
    std::string remark;
    int writings = 0;
    document.Save({.linearise = true,
                   .beforeReadBack =
                       [&](const std::string& written) {
                           if (++writings == 1) Rewrite(written, [](std::string& bytes) { bytes.resize(99); });
                       },
                   .remark = [&](const std::string& text) { remark = text; }});
    EXPECT_EQ(writings, 2);
    EXPECT_THAT(remark, testing::HasSubstr("written without linearisation"));
    EXPECT_EQ(CPdfDocument::Open(folder / "a.pdf", {.repair = false}).PageCount(), 2);
}

TEST_F(ReadBack, WhatTheWriterWouldGetWrongComesOutRight)
{
    const struct {
        const char* what;
        std::string trailer, from, to;
        const char* expected;
    } rows[] = {{"escaped number sign in a key", "", "/Font<</F1 ", "/Font<</G#2341 ", "/G#2341 "},
                {"and in a name", "", "/BaseFont/Helvetica", "/BaseFont/H#2341x", "/BaseFont /H#2341x"},
                {"invalid escapes stay", "", "/BaseFont/Helvetica", "/BaseFont/H#zz", "/BaseFont /H#zz"},
                {"no size", "", "/Size 9000", "", "/Size "},
                {"empty identifier", "/ID[<><>]", "", "", "/ID [<"},
                {"identifier is no list", "/ID(x)", "", "", "/ID [<"}};
    for (const auto& row : rows) {
        for (const bool linearise : {false, true}) {
            std::string file = SamplePdf(2, row.trailer);
            for (std::size_t at = 0; !row.from.empty() && (at = file.find(row.from, at)) != std::string::npos;)
                file.replace(at, row.from.size(), row.to);
            CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", file));
            std::string remark;
            document.Save({.linearise = linearise, .remark = [&](const std::string& text) { remark = text; }});
            EXPECT_EQ(remark, "") << row.what;
            EXPECT_THAT(FileBytes(folder / "a.pdf"), testing::HasSubstr(row.expected)) << row.what;
            CPdfDocument again = CPdfDocument::Open(folder / "a.pdf", {.repair = false});
            EXPECT_EQ(again.PageCount(), 2) << row.what;
            EXPECT_EQ(again.IsLinearised(), linearise) << row.what;
        }
    }
}

TEST_F(ReadBack, ADocumentThatChangedMeanwhileIsNotReplaced)
{
    const std::string path = folder.Write("a.pdf", SamplePdf(1)), newer = SamplePdf(4);
    CPdfDocument document = TitledDocument(path, "old");
    folder.Write("a.pdf", newer);
    EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::InputChanged);
    EXPECT_EQ(FileBytes(path), newer);
    document.Save({.path = folder / "b.pdf"});
    EXPECT_EQ(CPdfDocument::Open(folder / "b.pdf").PageCount(), 1);
    document.SetInfo("Title", "its own file by now");
    document.Save({});
    EXPECT_EQ(TitleOf(folder / "b.pdf"), "its own file by now");
}
