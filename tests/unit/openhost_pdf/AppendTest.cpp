#include <fstream>
#include <functional>
#include <memory>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <qpdf/Buffer.hh>
#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QUtil.hh>

#include "TestPdfs.h"
#include "Tools.h"
#include "openhost/pdf/IncrementalUpdate.h"
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

/// `bytes` with a newer part: these objects, the trailer before it with `more`, and whatever `more` says of a place
/// is given that of an object by "@NUMBER".
std::string WithUpdate(std::string bytes, const std::string& objects, std::string more)
{
    const std::size_t start = bytes.rfind("trailer"), from = bytes.find("<<", start) + 2;
    const std::size_t reference = bytes.rfind("startxref");
    const std::string before = bytes.substr(from, bytes.rfind(">>", reference) - from);
    const std::string previous = bytes.substr(reference + 10, bytes.find('\n', reference + 10) - reference - 10);
    std::string table = "xref\n";
    for (std::size_t at = objects.find(" 0 obj"); at != std::string::npos; at = objects.find(" 0 obj", at + 1)) {
        const std::size_t line = at == 3 ? 0 : objects.rfind('\n', at) + 1;
        const std::string number = objects.substr(line, at - line);
        std::string offset = std::to_string(bytes.size() + line);
        if (const std::size_t place = more.find('@' + number); place != std::string::npos)
            more.replace(place, number.size() + 1, offset);
        offset.insert(0, 10 - offset.size(), '0');
        table += number + " 1\n" + offset + " 00000 n \n";
    }
    bytes += objects;
    return bytes + table + "trailer\n<<" + before + more + "/Prev " + previous + ">>\nstartxref\n" +
           std::to_string(bytes.size()) + "\n%%EOF\n";
}

/// Its information stands in a stream of objects that only a cross-reference stream beside the table knows.
std::string Hybrid()
{
    const std::string plain = Sound(kIdentifier);
    std::string place(12, '\0');
    for (int i = 0; i < 4; ++i)
        place[static_cast<std::size_t>(i + 1)] = static_cast<char>(plain.size() >> (24 - 8 * i));
    place[0] = 1, place[6] = 2, place[10] = 110;
    const std::string held = "111 0 <</Title(old)/Author(goes)>>";
    return WithUpdate(plain,
                      StreamObject(110, "/Type/ObjStm/N 1/First 6", held) +
                          StreamObject(112, "/Type/XRef/Size 1004/W[1 4 1]/Index[110 2]", place),
                      "/Info 111 0 R/XRefStm @112");
}

/// An encrypted document whose metadata packet has this crypt filter in front, with a key of their own or none.
std::string WithCryptFilter(const std::string& path, const std::string& filter)
{
    const std::string bytes = FileBytes(path);
    const std::size_t type = bytes.find("/Type /Metadata"), from = bytes.rfind('\n', bytes.rfind(" 0 obj", type)) + 1;
    const std::string number = bytes.substr(from, bytes.find(' ', from) - from);
    const std::size_t data = bytes.find("stream\n", type) + 7;
    const std::string encrypted = bytes.substr(data, std::stoul(bytes.substr(bytes.find("/Length ", type) + 8)));
    return WithUpdate(bytes,
                      StreamObject(std::stoi(number),
                                   "/Type/Metadata/Subtype/XML/Filter[/Crypt]/DecodeParms[<</Name/" + filter + ">>]",
                                   filter == "Identity" ? kPacket : encrypted),
                      {});
}

/// Bytes, many zeros, and bytes again, without a file of that size.
class CHollowSource final : public InputSource {
public:
    CHollowSource(std::string head, qpdf_offset_t hollow, std::string tail)
        : m_head(std::move(head)),
          m_tail(std::move(tail)),
          m_tailAt(static_cast<qpdf_offset_t>(m_head.size()) + hollow)
    {
    }
    qpdf_offset_t findAndSkipNextEOL() override
    {
        char byte = 0;
        while (read(&byte, 1) == 1 && byte != '\n' && byte != '\r') {
        }
        const qpdf_offset_t end = m_at - 1;
        while (read(&byte, 1) == 1 && (byte == '\n' || byte == '\r')) {
        }
        --m_at;
        return end;
    }
    const std::string& getName() const override { return m_name; }
    qpdf_offset_t tell() override { return m_at; }
    void seek(qpdf_offset_t offset, int whence) override
    {
        m_at = offset + (whence == SEEK_END   ? m_tailAt + static_cast<qpdf_offset_t>(m_tail.size())
                         : whence == SEEK_CUR ? m_at
                                              : 0);
    }
    void rewind() override { m_at = 0; }
    std::size_t read(char* bytes, std::size_t count) override
    {
        std::size_t done = 0;
        last_offset = m_at;  // as the library wants it
        for (const auto head = static_cast<qpdf_offset_t>(m_head.size()); done < count; ++done, ++m_at) {
            if (m_at >= m_tailAt + static_cast<qpdf_offset_t>(m_tail.size())) break;
            bytes[done] = m_at < head       ? m_head[static_cast<std::size_t>(m_at)]
                          : m_at < m_tailAt ? '\0'
                                            : m_tail[static_cast<std::size_t>(m_at - m_tailAt)];
        }
        return done;
    }
    void unreadCh(char) override { --m_at; }

private:
    std::string m_head, m_tail;
    qpdf_offset_t m_tailAt, m_at = 0;
    const std::string m_name = "hollow";
};

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
        {"hybrid", Hybrid()},
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
    std::string looped = Plain();  // its older part is its newest one
    const std::size_t reference = looped.rfind("startxref\n") + 10;
    looped.insert(looped.rfind("/Root"),
                  "/Prev " + looped.substr(reference, looped.find('\n', reference) - reference));
    const struct {
        const char* reason;
        std::string bytes;
        std::function<void(CPdfDocument&)> change;
    } rows[] = {
        {"more than its properties has changed", Plain(), [](CPdfDocument& pdf) { pdf.SetModified(true); }},
        {"its protection is to change", Plain(),
         [](CPdfDocument& pdf) { pdf.SetSecurity(Protection("open", "change")); }},
        {"its file was repaired", Plain().substr(0, Plain().rfind("startxref")), nothing},
        {"its file was repaired", looped, nothing},
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

TEST_F(Append, WhatOnlyTryingShowsIsAnObstacleFromThenOn)
{
    const std::string path = folder.Write("a.pdf", Plain());
    if (!Rewritten(path, {"--compress-streams=n", "--encrypt", "", "owner", "128", "--use-aes=y", "--"}))
        GTEST_SKIP() << "qpdf is missing";
    const struct {
        std::string bytes;
        std::string reason;
    } rows[] = {
        {WithCryptFilter(path, "Identity"), ""},
        {WithCryptFilter(path, "StdCF"), "its metadata have an encryption of their own"},
        {Sound("/Info 1 0 R"), "its information is also its catalogue"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        folder.Write("a.pdf", row.bytes);
        CPdfDocument document = CPdfDocument::Open(path, WithPassword("owner", WantedRights::Owner));
        ASSERT_TRUE(document.MetadataHold("mine") && !document.MetadataHold("other"));
        document.SetInfo("Title", "new");
        EXPECT_EQ(document.AppendObstacle(), "");
        if (row.reason.empty()) {
            document.Save({.append = Appending::Only});
        } else {
            EXPECT_EQ(ProblemOf([&] { document.Save({.append = Appending::Only}); }), PdfProblem::CannotWrite);
            EXPECT_EQ(FileBytes(path), row.bytes);
            EXPECT_EQ(document.AppendObstacle(), row.reason);
            document.Save({.append = Appending::WherePossible});
        }
        EXPECT_EQ(document.WrittenWhole(), row.reason);
        CPdfDocument reopened = CPdfDocument::Open(path);
        EXPECT_EQ(reopened.Info("Title"), "new");
        EXPECT_TRUE(reopened.MetadataHold(">new<") || reopened.MetadataHold("new"));
    }
}

TEST_F(Append, EntriesOfAnyKindGiveWayToAnyText)
{
    std::string controls = "\xFE\xFF";
    for (char c = 0; c < 32; ++c) controls += {'\0', c};
    const std::string was[] = {"/Name",     "7",        "true",    "[(a)(b)]",
                               "<</A(b)>>", "4711 0 R", "102 0 R", "(\\376\\377\\330)"};
    const std::string texts[] = {std::string(1 << 20, 'x'),
                                 "\xFE\xFF\xD8" + std::string(1, '\0') + "A",
                                 std::string("\xFE\xFF\xDC\0\0a", 6),
                                 controls,
                                 "(\\(\r\n\r",
                                 "\xEF\xBB\xBF\xE2\x82\xAC"};
    for (const std::string& old : was) {
        for (const std::string& text : texts) {
            if (text.size() > 1000 && &old != was) continue;
            SCOPED_TRACE(old + " becomes " + std::to_string(&text - texts));
            const std::string path = folder.Write(
                "a.pdf", Sound("/Info<</Title " + old + "/Other[(kept)7]>>", "102 0 obj\n(text)\nendobj\n"));
            const std::string before = FileBytes(path);
            CPdfDocument document = TitledDocument(path, text);
            document.Save({.append = Appending::Only});
            EXPECT_THAT(FileBytes(path), StartsWith(before));
            CPdfDocument reopened = CPdfDocument::Open(path, {.repair = false});
            EXPECT_TRUE(reopened.Info("Title") == text);
            EXPECT_EQ(reopened.Library().getTrailer().getKey("/Info").getKey("/Other").unparse(), "[ (kept) 7 ]");
            EXPECT_EQ(reopened.Warnings(), std::vector<std::string>());
        }
    }
}

TEST_F(Append, ThePacketIsBroughtInStepWhereverItCanBeRead)
{
    const std::string broken = kPacket.substr(0, kPacket.size() - 4);
    const struct {
        const char* what;
        std::string dictionary, packet;
        bool changes;
    } rows[] = {
        {"sound", "/Type/Metadata", kPacket, true},
        {"without type", "", kPacket, true},
        {"of two codings", "/Type/Metadata/Filter[/ASCIIHexDecode/ASCIIHexDecode]", "", true},
        {"broken", "/Type/Metadata", broken, false},
        {"empty", "/Type/Metadata", "", false},
        {"of an unknown coding", "/Type/Metadata/Filter/Nobody", kPacket, false},
    };
    for (const auto& row : rows) {
        for (const bool encrypted : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + (encrypted ? ", encrypted" : ""));
            std::string packet = row.packet;
            if (std::string(row.dictionary).find("Hex") != std::string::npos) {
                const auto hex = [](const std::string& bytes) { return QUtil::hex_encode(bytes) + '>'; };
                packet = hex(hex(kPacket));
            }
            std::string bytes = SamplePdf(
                1, kIdentifier, StreamObject(100, row.dictionary, packet) + "101 0 obj\n<</Fields[]>>\nendobj\n");
            bytes.replace(bytes.find("/Size 9000"), 10, "/Size 1002");
            const std::string path = folder.Write("a.pdf", bytes);
            if (encrypted) {
                CPdfDocument document = CPdfDocument::Open(path);
                document.SetSecurity(Protection("", "owner"));
                document.Save({});
            }
            const std::string before = FileBytes(path);
            CPdfDocument document = CPdfDocument::Open(path, WithPassword("owner", WantedRights::Owner));
            if (encrypted) document.Authorize("owner", WantedRights::Owner);
            document.SetInfo("Title", "changed");
            document.Save({.append = Appending::Only});
            EXPECT_THAT(FileBytes(path), StartsWith(before));
            CPdfDocument reopened = CPdfDocument::Open(path);
            EXPECT_EQ(reopened.Info("Title"), "changed");
            QPDFObjectHandle stream = reopened.Library().getRoot().getKey("/Metadata");
            const bool isRead = std::string(row.dictionary).find("Nobody") == std::string::npos;
            const auto data = isRead ? stream.getStreamData() : stream.getRawStreamData();
            const std::string now(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
            EXPECT_EQ(now.find("changed") != std::string::npos, row.changes);
            EXPECT_TRUE(row.changes || now == packet);
        }
    }
}

TEST_F(Append, LargeFilesGetWhatTheirTableCanHold)
{
    const std::string plain = Sound(kIdentifier), head = plain.substr(0, plain.rfind("xref\n0 1"));
    const std::string table = plain.substr(head.size(), plain.rfind("startxref") - head.size());
    std::string entries = std::string(11, '\0'), index = "0 1 ";
    std::istringstream lines(table.substr(table.find(" f \n") + 4));
    for (std::string number, one, offset, rest;
         lines >> number >> one >> offset >> rest >> one && number != "trailer";) {
        index += number + " 1 ";
        entries += '\1';
        for (int shift = 56; shift >= 0; shift -= 8) entries += static_cast<char>(std::stoull(offset) >> shift);
        entries += std::string(2, '\0');
    }
    const std::string stream =
        StreamObject(1010, "/Type/XRef/Size 1011/Root 1 0 R/W[1 8 2]/Index[" + index + ']', entries);
    constexpr qpdf_offset_t kGigabyte = 1'000'000'000;
    const struct {
        const std::string& section;
        qpdf_offset_t hollow;
        const char* obstacle;
    } rows[] = {{table, 3 * kGigabyte, ""},
                {table, 11 * kGigabyte, "it is too large for its kind of table"},
                {stream, 3 * kGigabyte, ""},
                {stream, 11 * kGigabyte, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.hollow);
        const auto start = static_cast<qpdf_offset_t>(head.size()) + row.hollow;
        const std::string tail = row.section + "startxref\n" + std::to_string(start) + "\n%%EOF\n";
        const auto source = std::make_shared<CHollowSource>(head, row.hollow, tail);
        QPDF document;
        document.setSuppressWarnings(true);
        document.processInputSource(source);
        QPDFObjectHandle info = document.makeIndirectObject(QPDFObjectHandle::parse("<</Title(new)>>"));
        document.getTrailer().replaceKey("/Info", info);
        const IncrementalUpdate update = MakeIncrementalUpdate(document, *source, {"Title"});
        EXPECT_EQ(update.obstacle, row.obstacle);
        if (!update.obstacle.empty()) continue;
        QPDF changed;
        changed.setAttemptRecovery(false);
        changed.processInputSource(std::make_shared<CHollowSource>(head, row.hollow, tail + update.bytes));
        EXPECT_EQ(changed.getTrailer().getKey("/Info").getKey("/Title").unparse(), "(new)");
        EXPECT_EQ(changed.getAllPages().size(), 2u);
        EXPECT_TRUE(changed.getWarnings().empty());
    }
}
