#include <fstream>
#include <functional>
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "Tools.h"
#include "platform/Files.h"

using namespace openhost;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Append = CPdfTest;

namespace {

const std::string kIdentifier = "/ID[<0011><2233>]";
const std::string kOldInfo = "/Info<</Title(old)/Author(goes)/Own(\\000\\377)/Wrong 7/Odd#20Key[(a)<</B(c)>>]>>";
const std::string kPacket =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:title><rdf:Alt>"
    "<rdf:li xml:lang='de'>Alt</rdf:li><rdf:li xml:lang='x-default'>old</rdf:li></rdf:Alt></dc:title>"
    "<dc:rights>mine</dc:rights></rdf:Description></rdf:RDF></x:xmpmeta>";

/// A sample of two pages in which other programs find nothing to complain about.
std::string Sound(const std::string& extra, const std::string& objects = {})
{
    const std::string all = StreamObject(100, "/Type/Metadata", kPacket) + "101 0 obj\n<</Fields[]>>\nendobj\n";
    std::string bytes = SamplePdf(2, extra, all + objects);
    bytes.replace(bytes.find("/Size 9000"), 10, "/Size 1004");
    return bytes;
}

std::string Plain() { return Sound(kIdentifier + kOldInfo); }

/// Has `path` changed by the other program; false where that is missing.
bool Rewritten(const std::string& path, std::vector<std::string> options)
{
    if (!HaveTool("qpdf")) return false;
    const std::string result = path + ".new";
    options.insert(options.begin(), "qpdf");
    options.insert(options.end(), {path, result});
    if (RunTool(options).code != 0) return false;
    std::filesystem::rename(result, path);
    return true;
}

}  // namespace

TEST_F(Append, TheFileIsAPrefixAndTheChangesAreReadByEveryone)
{
    const auto encrypt = [](std::vector<std::string> how) {
        std::vector<std::string> options = {"--allow-weak-crypto", "--encrypt", "", "owner"};
        options.insert(options.end(), how.begin(), how.end());
        options.emplace_back("--");
        return options;
    };
    const struct {
        const char* what;
        std::string bytes;
        std::vector<std::string> options = {};
    } rows[] = {
        {"table", Plain()},
        {"no information", Sound(kIdentifier)},
        {"information that leads nowhere", Sound("/Info 4711 0 R")},
        {"information of a wrong type", Sound("/Info 3")},
        {"information as an object", Sound("/Info 102 0 R", "102 0 obj\n<</Title(old)>>\nendobj\n")},
        {"bytes in front", "MIME-Version: 1.0\r\n\r\n" + Plain()},
        {"bytes behind", Plain() + std::string(500, '\0')},
        {"no line end", Plain().substr(0, Plain().size() - 1)},
        {"cross-reference stream", Plain(), {"--object-streams=generate"}},
        {"linearised", Plain(), {"--linearize"}},
        {"RC4 40", Plain(), encrypt({"40"})},
        {"RC4 128", Plain(), encrypt({"128", "--use-aes=n"})},
        {"AES 128", Plain(), encrypt({"128", "--use-aes=y"})},
        {"AES 256", Plain(), encrypt({"256"})},
        {"AES 256, readable metadata", Plain(), encrypt({"256", "--cleartext-metadata"})},
        {"AES 128, readable metadata", Plain(), encrypt({"128", "--use-aes=y", "--cleartext-metadata"})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string path = folder.Write("a.pdf", row.bytes);
        if (!row.options.empty() && !Rewritten(path, row.options)) continue;
        // A second change is appended to the first.
        for (const std::string title : {"(first) \\ title", "second"}) {
            const std::string before = FileBytes(path);
            CPdfDocument document = CPdfDocument::Open(path, WithPassword("owner", WantedRights::Owner));
            EXPECT_EQ(document.AppendObstacle(), "");
            document.SetInfo("Title", title);
            document.SetInfo("Author", "");
            document.Save({.append = Appending::Only});
            EXPECT_EQ(document.WrittenWhole(), "");
            const std::string after = FileBytes(path);
            EXPECT_THAT(after, StartsWith(before));
            EXPECT_EQ(after.find(kPacket, before.size()), std::string::npos);
            CPdfDocument reopened = CPdfDocument::Open(path, {.repair = false});
            EXPECT_EQ(reopened.Info("Title"), title);
            EXPECT_EQ(reopened.Info("Author"), std::nullopt);
            EXPECT_FALSE(reopened.IsLinearised());
            EXPECT_EQ(reopened.Warnings(), std::vector<std::string>());
            if (row.bytes.find(kOldInfo) != std::string::npos) {
                EXPECT_EQ(reopened.Info("Own"), std::string("\0\xFF", 2));
                EXPECT_THAT(reopened.InfoKeys(), testing::Contains("Odd Key"));
                EXPECT_TRUE(reopened.MetadataHold("<rdf:li xml:lang='de'>Alt") || reopened.MetadataHold("Alt"));
                EXPECT_TRUE(reopened.MetadataHold(title));
                EXPECT_TRUE(reopened.MetadataHold("mine"));
            }
            if (!HaveTool("qpdf") || !HaveTool("pdfinfo")) continue;
            const ToolResult check = RunTool({"qpdf", "--check", path});
            EXPECT_EQ(check.code, 0) << check.output;
            EXPECT_THAT(RunTool({"pdfinfo", path}).output, HasSubstr("Title:           " + title + '\n'));
        }
    }
}

TEST_F(Append, OnlyChangedObjectsAreInTheNewPart)
{
    const std::string path = folder.Write("a.pdf", Plain()), before = FileBytes(path);
    CPdfDocument document = TitledDocument(path, "new");
    document.Save({.append = Appending::Only});
    const std::string part = FileBytes(path).substr(before.size());
    const std::regex object("(\\d+) 0 obj\n");
    std::vector<std::string> numbers;
    for (std::sregex_iterator at(part.begin(), part.end(), object), end; at != end; ++at) numbers.push_back((*at)[1]);
    ASSERT_EQ(numbers.size(), 2u);
    EXPECT_EQ(numbers[1], "100");
    EXPECT_THAT(part, HasSubstr("<rdf:li xml:lang='de'>Alt</rdf:li><rdf:li xml:lang=\"x-default\">new</rdf:li>"));
    EXPECT_THAT(part, Not(HasSubstr("/Catalog")));
    EXPECT_THAT(part, HasSubstr("/Prev "));
    EXPECT_THAT(part, EndsWith("%%EOF\n"));
}

TEST_F(Append, WhatCannotBeAppendedIsWrittenAnewOrRefused)
{
    const auto nothing = [](CPdfDocument&) {};
    const struct {
        const char* reason;
        std::string bytes;
        std::function<void(CPdfDocument&)> change;
    } rows[] = {
        {"more than its properties has changed", Plain(), [](CPdfDocument& pdf) { pdf.SetModified(true); }},
        {"its protection is to change", Plain(),
         [](CPdfDocument& pdf) { pdf.SetSecurity(Protection("open", "change")); }},
        {"its file was repaired", Plain().substr(0, Plain().rfind("startxref")), nothing},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        const std::string path = folder.Write("a.pdf", row.bytes);
        CPdfDocument document = TitledDocument(path, "new");
        row.change(document);
        EXPECT_EQ(document.AppendObstacle(), row.reason);
        EXPECT_EQ(ProblemOf([&] { document.Save({.append = Appending::Only}); }), PdfProblem::CannotWrite);
        EXPECT_EQ(FileBytes(path), row.bytes);
        document.Save({.append = Appending::WherePossible});
        EXPECT_EQ(document.WrittenWhole(), row.reason);
        EXPECT_EQ(document.AppendObstacle(), "");  // of the new file
    }
}

TEST_F(Append, ADamagedPartIsNeverPutInPlace)
{
    const std::string path = folder.Write("a.pdf", Plain()), before = FileBytes(path);
    const std::function<void(std::string&)> damages[] = {
        [&](std::string& bytes) { bytes[10] = '!'; },
        [&](std::string& bytes) { bytes.resize(bytes.size() - 9); },
        [&](std::string& bytes) { bytes.replace(bytes.rfind("(new)"), 5, "(nex)"); },
        [&](std::string& bytes) { bytes.replace(bytes.rfind("mine"), 4, "MINE"); },
        [&](std::string& bytes) { bytes += "more"; },
    };
    for (const auto& damage : damages) {
        CPdfDocument document = TitledDocument(path, "new");
        PdfSaveOptions options{.append = Appending::Only};
        options.beforeReadBack = [&](const std::string& temporary) {
            std::string bytes = FileBytes(temporary);
            damage(bytes);
            std::ofstream(temporary, std::ios::binary | std::ios::trunc) << bytes;
        };
        EXPECT_EQ(ProblemOf([&] { document.Save(options); }), PdfProblem::CannotWrite);
        EXPECT_EQ(FileBytes(path), before);
    }
    CPdfDocument document = TitledDocument(path, "new");
    folder.Write("a.pdf", before + "% somebody else's\n");
    EXPECT_EQ(ProblemOf([&] { document.Save({.append = Appending::WherePossible}); }), PdfProblem::InputChanged);
    EXPECT_EQ(ProblemOf([&] { document.Save({.path = folder / "b.pdf", .append = Appending::Only}); }),
              PdfProblem::InputChanged);
}
