#include <fstream>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include "TestPdfs.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "platform/Files.h"

using namespace openhost;
using testing::HasSubstr;

using Forget = CPdfTest;

namespace {

const std::string kOldTitle = "Old pl\xC3\xA4n & co";
const std::string kInXml = "Old pl\xC3\xA4n &amp; co";
const std::string kPacketHead =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' "
    "xmlns:xmp='http://ns.adobe.com/xap/1.0/'";
const std::string kTitleInXml = "<dc:title><rdf:Alt><rdf:li xml:lang='en'>" + kInXml +
                                "</rdf:li><rdf:li xml:lang='fr'>Plan</rdf:li><rdf:li xml:lang='x-default'>" + kInXml +
                                "</rdf:li></rdf:Alt></dc:title>";
const std::string kPacketTail = "</rdf:Description></rdf:RDF></x:xmpmeta>";

QPDFObjectHandle Text(const std::string& utf8) { return QPDFObjectHandle::newUnicodeString(utf8); }

void SetInformation(QPDF& pdf, const std::string& key, QPDFObjectHandle value)
{
    pdf.getTrailer().getKey("/Info").replaceKey(key, value);
}

QPDFObjectHandle Stream(QPDF& pdf, const std::string& dictionary, const std::string& bytes)
{
    QPDFObjectHandle stream = pdf.newStream(bytes);
    QPDFObjectHandle entries = QPDFObjectHandle::parse("<<" + dictionary + ">>");
    for (const std::string& key : entries.getKeys()) stream.getDict().replaceKey(key, entries.getKey(key));
    return stream;
}

void SetPacket(QPDF& pdf, const std::string& packet, const std::string& dictionary = "/Type/Metadata")
{
    pdf.getRoot().replaceKey("/Metadata", Stream(pdf, dictionary, packet));
}

QPDFObjectHandle Holding(const std::string& key, QPDFObjectHandle value)
{
    QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
    dictionary.replaceKey(key, value);
    return dictionary;
}

QPDFObjectHandle FirstPage(QPDF& pdf) { return pdf.getAllPages().front(); }

struct OldPlace {
    const char* what;
    std::function<void(QPDF&)> put;  // the old title into a place
};

const char* const kInInfo = "the entry \"Subject\" of its information";
const char* const kInPacket = "its metadata packet";

/// The old title stands in one of these; the second text is what is said of it.
const std::pair<OldPlace, const char*> kTraces[] = {
    {{"PDFDocEncoding", [](QPDF& pdf) { SetInformation(pdf, "/Subject", Text("The " + kOldTitle + '!')); }}, kInInfo},
    {{"UTF-16, with a language inside",
      [](QPDF& pdf) {
          SetInformation(pdf, "/Subject",
                         Text("Old \x1B"
                              "de\x1Bpl\xC3\xA4n & co \xE6\xBC\xA2"));
      }},
     kInInfo},
    {{"UTF-8",
      [](QPDF& pdf) { SetInformation(pdf, "/Subject", QPDFObjectHandle::newString("\xEF\xBB\xBF" + kOldTitle)); }},
     kInInfo},
    {{"UTF-16 without a mark",
      [](QPDF& pdf) {
          SetInformation(pdf, "/Subject", QPDFObjectHandle::newString(Utf8ToUtf16Bytes(kOldTitle, false)));
      }},
     kInInfo},
    {{"deep in an entry",
      [](QPDF& pdf) {
          SetInformation(pdf, "/Subject", QPDFObjectHandle::newArray({Holding("/A", Text(kOldTitle))}));
      }},
     kInInfo},
    {{"another property",
      [](QPDF& pdf) {
          SetPacket(pdf, kPacketHead + '>' + kTitleInXml + "<dc:rights>" + kInXml + "</dc:rights>" + kPacketTail);
      }},
     kInPacket},
    {{"an attribute",
      [](QPDF& pdf) { SetPacket(pdf, kPacketHead + " xmp:Label='" + kInXml + "'>" + kTitleInXml + kPacketTail); }},
     kInPacket},
    {{"a comment",
      [](QPDF& pdf) { SetPacket(pdf, kPacketHead + "><!-- " + kOldTitle + " -->" + kTitleInXml + kPacketTail); }},
     kInPacket},
    {{"references",
      [](QPDF& pdf) { SetPacket(pdf, kPacketHead + " xmp:Label='Old pl&#xE4;n &#38; co'>" + kPacketTail); }},
     kInPacket},
    {{"a broken packet", [](QPDF& pdf) { SetPacket(pdf, kPacketHead + '>' + kTitleInXml); }}, kInPacket},
    {{"a packet in UTF-16",
      [](QPDF& pdf) {
          SetPacket(pdf, "\xFF\xFE" + Utf8ToUtf16Bytes(kPacketHead + '>' + kTitleInXml + kPacketTail, false));
      }},
     kInPacket},
    {{"a packet that nobody can unpack", [](QPDF& pdf) { SetPacket(pdf, "?", "/Type/Metadata/Filter/Nobody"); }},
     "its metadata packet cannot be unpacked"},
    {{"the packet of an image",
      [](QPDF& pdf) {
          QPDFObjectHandle image =
              Stream(pdf, "/Subtype/Image/Width 1/Height 1/BitsPerComponent 8/ColorSpace/DeviceGray", "x");
          image.getDict().replaceKey("/Metadata",
                                     Stream(pdf, "/Type/Metadata", kPacketHead + '>' + kTitleInXml + kPacketTail));
          FirstPage(pdf).getKey("/Resources").replaceKey("/XObject", Holding("/I", image));
      }},
     "the metadata of one of its parts"},
    {{"private data of a page",
      [](QPDF& pdf) {
          FirstPage(pdf).replaceKey("/PieceInfo", Holding("/Program", Holding("/Private", Text(kOldTitle))));
      }},
     "the description of one of its parts"},
    {{"a private stream of a page",
      [](QPDF& pdf) {
          FirstPage(pdf).replaceKey("/PieceInfo", Holding("/Program", Stream(pdf, "/Filter/ASCIIHexDecode",
                                                                             "4F6C6420706CE46E202620636F>")));
      }},
     "its private data"},
    {{"the catalogue", [](QPDF& pdf) { pdf.getRoot().replaceKey("/Private", Text(kOldTitle)); }}, "its catalogue"},
    {{"the trailer", [](QPDF& pdf) { pdf.getTrailer().replaceKey("/Private", Text(kOldTitle)); }}, "its trailer"},
    {{"an article",
      [](QPDF& pdf) {
          QPDFObjectHandle thread = pdf.makeIndirectObject(Holding("/I", Holding("/Title", Text(kOldTitle))));
          pdf.getRoot().replaceKey("/Threads", QPDFObjectHandle::newArray({thread}));
          FirstPage(pdf).replaceKey("/B",
                                    QPDFObjectHandle::newArray({pdf.makeIndirectObject(Holding("/T", thread))}));
      }},
     "its private data"},
};

/// What a document shows is no trace, nor are parts of words, nor what is in use no more.
const OldPlace kNoTraces[] = {
    {"only where it was", [](QPDF&) {}},
    {"other languages", [](QPDF& pdf) { SetPacket(pdf, kPacketHead + '>' + kTitleInXml + kPacketTail); }},
    {"a page",
     [](QPDF& pdf) {
         FirstPage(pdf).replaceKey("/Contents", Stream(pdf, "", "BT /F1 9 Tf (" + kOldTitle + ") Tj ET"));
     }},
    {"a bookmark",
     [](QPDF& pdf) {
         pdf.getRoot().replaceKey("/Outlines",
                                  pdf.makeIndirectObject(Holding("/First", Holding("/Title", Text(kOldTitle)))));
     }},
    {"a field",
     [](QPDF& pdf) {
         pdf.getRoot().replaceKey("/AcroForm",
                                  Holding("/Fields", QPDFObjectHandle::newArray({Holding("/V", Text(kOldTitle))})));
     }},
    {"an attached file",
     [](QPDF& pdf) {
         pdf.getRoot().replaceKey(
             "/Names",
             Holding("/EmbeddedFiles", Holding("/Names", QPDFObjectHandle::newArray({Stream(pdf, "", kOldTitle)}))));
     }},
    {"a longer word", [](QPDF& pdf) { SetInformation(pdf, "/Subject", Text(kOldTitle + "mplete")); }},
    {"an object that nobody uses", [](QPDF& pdf) { pdf.makeIndirectObject(Text(kOldTitle)); }},
};

/// A document with the old title, opened with all rights.
CPdfDocument Document(const std::string& path, const OldPlace& place, bool encrypted)
{
    const std::string info = "/Info<</Title " + Text(kOldTitle).unparse() + ">>";
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        << SamplePdf(1, info,
                     StreamObject(100, "/Type/Metadata", kPacketHead + '>' + kTitleInXml + kPacketTail) +
                         "101 0 obj\n<<>>\nendobj\n");
    {
        CPdfDocument document = CPdfDocument::Open(path);
        place.put(document.Library());
        document.SetModified(true);
        if (encrypted) document.SetSecurity(Protection("", "owner"));
        document.Save({});
    }
    CPdfDocument document = CPdfDocument::Open(path);
    document.Authorize("owner", WantedRights::Owner);
    return document;
}

std::string MessageOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const CPdfError& error) {
        return error.Message();
    }
    return {};
}

}  // namespace

TEST_F(Forget, AnOldTextInWhatDescribesTheDocumentCostsTheSave)
{
    const std::string path = folder / "a.pdf";
    for (const auto& [place, said] : kTraces) {
        for (const bool encrypted : {false, true}) {
            SCOPED_TRACE(place.what);
            CPdfDocument document = Document(path, place, encrypted);
            const std::string before = FileBytes(path);
            document.SetInfo("Title", "new");
            EXPECT_THAT(MessageOf([&] { document.Save({.append = Appending::WherePossible, .forget = true}); }),
                        HasSubstr(said));
            EXPECT_EQ(FileBytes(path), before);
        }
    }
}

TEST_F(Forget, WhatADocumentShowsMayStillSayIt)
{
    const std::string path = folder / "a.pdf";
    for (const OldPlace& place : kNoTraces) {
        for (const bool encrypted : {false, true}) {
            SCOPED_TRACE(place.what);
            CPdfDocument document = Document(path, place, encrypted);
            document.SetInfo("Title", "new");
            EXPECT_EQ(MessageOf([&] { document.Save({.append = Appending::WherePossible, .forget = true}); }), "");
            EXPECT_NE(document.WrittenWhole(), "");
            CPdfDocument reopened = CPdfDocument::Open(path);
            EXPECT_EQ(reopened.Info("Title"), "new");
            EXPECT_TRUE(reopened.MetadataHold("Plan") && !reopened.MetadataHold(kOldTitle));
        }
    }
}

TEST_F(Forget, WhatCountsAsTheOldText)
{
    const struct {
        const char *key, *old, *other, *wanted;  // `other` stands in the subject
        bool isTrace;
    } rows[] = {
        {"Title", "Report", "Report of 2024", "Plan", true},
        {"Title", "Report", "Reports of 2024", "Plan", false},
        {"Title", "Report", "Report of 2024", "Report of 2024", false},
        {"Title", "Report", "Report of 2023", "Report of 2024", true},
        {"Title", "ab", "ab cd", "Plan", false},
        {"Title", "ab", " ab ", "Plan", true},
        {"Title", "2024", "2024-01-31", "Plan", false},
        {"Title", "2024", "2024", "Plan", true},
        {"Title", "\xE6\xBC\xA2\xE5\xAD\x97\xE6\xBC\xA2\xE5\xAD\x97",
         "a\xE6\xBC\xA2\xE5\xAD\x97\xE6\xBC\xA2\xE5\xAD\x97z", "Plan", true},
        {"CreationDate", "D:20240131093000Z", "D:20240131093000Z", "D:20200101000000Z", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.old) + " in " + row.other);
        const std::string info = std::string("/Info<</") + row.key + ' ' + Text(row.old).unparse() + "/Subject " +
                                 Text(row.other).unparse() + ">>";
        const std::string path = folder.Write("a.pdf", SamplePdf(1, info));
        CPdfDocument document = CPdfDocument::Open(path);
        document.SetInfo(row.key, row.wanted);
        EXPECT_EQ(ProblemOf([&] { document.Save({.forget = true}); }).has_value(), row.isTrace);
    }
}

TEST_F(Forget, WhatOnlyThePacketSaysCountsToo)
{
    const std::string dated = kPacketHead + " xmp:CreateDate='2024-01-31T09:30:00Z'>" + kPacketTail;
    const struct {
        const char* key;
        std::string info, packet, wanted;
        const char* said;
    } rows[] = {
        {"Title", "/Subject(A Secret title)", kPacketHead + "><dc:title>Secret title</dc:title>" + kPacketTail, "new",
         kInInfo},
        {"CreationDate", "/ModDate(D:20240131093000Z)", dated, "D:2020", ""},
        {"CreationDate", "/CreationDate(D:2019)", dated, "D:20240131093000Z", ""},
        {"CreationDate", "/CreationDate(D:2019)", dated.substr(0, dated.size() - 9), "D:2020",
         "its metadata packet is broken"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.packet);
        const std::string path = folder.Write(
            "a.pdf", SamplePdf(1, "/Info<<" + row.info + ">>", StreamObject(100, "/Type/Metadata", row.packet)));
        CPdfDocument document = CPdfDocument::Open(path);
        document.SetInfo(row.key, row.wanted);
        const std::string message = MessageOf([&] { document.Save({.forget = true}); });
        EXPECT_EQ(message.empty(), *row.said == '\0');
        EXPECT_THAT(message, HasSubstr(row.said));
    }
}

TEST_F(Forget, KeywordsGoOneByOne)
{
    const std::string subjects =
        "<dc:subject><rdf:Bag><rdf:li>alpha</rdf:li><rdf:li>beta &amp; co</rdf:li><rdf:li>gamma</rdf:li>"
        "<rdf:li>other</rdf:li></rdf:Bag></dc:subject>";
    const std::string path = folder.Write(
        "a.pdf", SamplePdf(1, "/Info<</Keywords(alpha; beta & co,gamma)>>",
                           StreamObject(100, "/Type/Metadata", kPacketHead + '>' + subjects + kPacketTail)));
    CPdfDocument document = CPdfDocument::Open(path);
    document.SetInfo("Keywords", "gamma, delta");
    document.Save({.forget = true});
    EXPECT_THAT(FileBytes(path), HasSubstr("<rdf:Bag><rdf:li>gamma</rdf:li><rdf:li>other</rdf:li></rdf:Bag>"));
}

TEST_F(Forget, EarlierRevisionsMustBeGone)
{
    const std::string path = folder / "a.pdf";
    const OldPlace noPacket{"", [](QPDF& pdf) { pdf.getRoot().removeKey("/Metadata"); }};
    CPdfDocument document = Document(path, noPacket, false);
    document.SetInfo("Title", "new");
    document.Save({.append = Appending::Only});
    EXPECT_THAT(FileBytes(path), HasSubstr(Text(kOldTitle).unparse()));
    document.Save({.forget = true});  // although nothing changes any more
    EXPECT_EQ(FileBytes(path).find(Text(kOldTitle).unparse()), std::string::npos);
    const std::string before = FileBytes(path);
    PdfSaveOptions options{.forget = true};
    options.beforeReadBack = [](const std::string& temporary) {
        CPdfDocument written = TitledDocument(temporary, "newer");
        written.Save({.append = Appending::Only});
    };
    EXPECT_THAT(MessageOf([&] { document.Save(options); }), HasSubstr("earlier revisions"));
    EXPECT_EQ(FileBytes(path), before);
}
