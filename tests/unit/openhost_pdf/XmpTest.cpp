#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "openhost/pdf/Xmp.h"
#include "support/TemporaryFolder.h"

using namespace openhost;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kHead =
    "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
    "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>";
const std::string kTail = "</r:RDF></x:xmpmeta>\n   <?xpacket end='w'?>";

std::string Packet(const std::string& descriptions) { return kHead + descriptions + kTail; }

XmpProperty Title(const std::string& text) { return *XmpCounterpart("Title", text); }

std::string PdfWithPacket(const std::string& packet)
{
    const std::string stream = StreamObject(100, "/Type/Metadata/Subtype/XML", packet);
    return SamplePdf(1, "/Info<</Title(old)/Author(keeps)>>", stream);
}

}  // namespace

TEST(Xmp, ReplacesWhatThePacketSaysOfTheDocument)
{
    const std::string dc = "xmlns:d='http://purl.org/dc/elements/1.1/' xmlns:p='http://ns.adobe.com/pdf/1.3/'";
    const struct {
        const char* what;
        std::string descriptions;
        const char* gone;
        const char* stays;
    } rows[] = {
        {"element", "<r:Description r:about='uuid:1' " + dc + "><d:title>old</d:title><d:x/></r:Description>", "old",
         "<d:x/>"},
        {"attribute", "<r:Description r:about='uuid:1' " + dc + " d:title = \"old\" p:Producer='kept'/>", "old",
         "kept"},
        {"empty element", "<r:Description r:about='uuid:1' " + dc + "><d:title /></r:Description>", "<d:title />",
         "uuid:1"},
        {"twice",
         "<r:Description r:about='uuid:1' " + dc + "><d:title>old</d:title></r:Description><r:Description " + dc +
             "><d:title>old</d:title></r:Description>",
         "old", "uuid:1"},
        {"nested: of another thing",
         "<r:Description r:about='uuid:1' " + dc +
             "><d:source><r:Description><d:title>other's</d:title></r:Description></d:source></r:Description>",
         "old", "other's"},
        {"prefix of another namespace",
         "<r:Description r:about='uuid:1' xmlns:dc='urn:other'><dc:title>theirs</dc:title></r:Description>", "old",
         "theirs"},
        {"language left out",
         "<r:Description r:about='uuid:1' " + dc +
             "><d:title><r:Alt><r:li>old</r:li></r:Alt></d:title></r:Description>",
         "old", "uuid:1"},
        {"comment and section",
         "<!-- <d:title>kept --><r:Description r:about='uuid:1' " + dc +
             "><d:title><![CDATA[</d:title>old]]></d:title></r:Description>",
         "old", "kept -->"}};
    for (const auto& row : rows) {
        const auto changed = ChangedPacket(Packet(row.descriptions), {Title("new <&> title")});
        ASSERT_TRUE(changed) << row.what;
        EXPECT_THAT(*changed, Not(HasSubstr(row.gone))) << row.what;
        EXPECT_THAT(*changed, HasSubstr(row.stays)) << row.what;
        EXPECT_THAT(*changed, HasSubstr("rdf:about=\"uuid:1\"")) << row.what;
        EXPECT_THAT(*changed, HasSubstr("<rdf:li xml:lang=\"x-default\">new &lt;&amp;&gt; title</rdf:li>"))
            << row.what;
        EXPECT_THAT(*changed, testing::EndsWith(kTail)) << row.what;
        const auto again = ChangedPacket(*changed, {Title("new <&> title")});
        EXPECT_EQ(again, changed) << row.what;
    }
}

TEST(Xmp, LeavesPacketsItDoesNotUnderstand)
{
    std::string deep;
    for (int i = 0; i < 200; ++i) deep += "<a>";
    const std::string rows[] = {"",
                                "no markup at all",
                                kHead,
                                Packet("<a>"),
                                Packet("<a></b>"),
                                Packet("<a b=c/>"),
                                Packet("<a b='c/>"),
                                Packet("<a"),
                                Packet("<!-- "),
                                "<!DOCTYPE x [<!ENTITY a 'b'>]>" + Packet(""),
                                Packet(deep),
                                "<x:xmpmeta xmlns:x='adobe:ns:meta/'></x:xmpmeta>",
                                std::string("\xFE\xFF\0<\0x", 6),
                                Packet("") + Packet("")};
    for (const std::string& row : rows) EXPECT_FALSE(ChangedPacket(row, {Title("x")})) << row;
}

TEST(Xmp, DatesBecomeThoseOfThePacket)
{
    const struct {
        const char* date;
        const char* iso;
    } rows[] = {{"D:20240131120005+01'30'", "2024-01-31T12:00:05+01:30"},
                {"D:20240131120005-08'00", "2024-01-31T12:00:05-08:00"},
                {"D:20240131120005Z", "2024-01-31T12:00:05Z"},
                {"20240131120005", "2024-01-31T12:00:05"},
                {"D:202401311200", "2024-01-31T12:00"},
                {"D:2024013112", "2024-01-31"},
                {"D:2024", "2024"},
                {"Thursday", nullptr},
                {"D:202", nullptr},
                {"D:20240131120005 noon", nullptr},
                {"D:2024013112000512", nullptr}};
    for (const auto& row : rows) {
        const auto property = XmpCounterpart("ModDate", row.date);
        EXPECT_EQ(property ? property->content : "none", row.iso ? row.iso : "none") << row.date;
    }
}

TEST(Xmp, FollowsTheInformationAtSave)
{
    const CTemporaryFolder folder;
    const std::string description =
        "<r:Description r:about='' xmlns:d='http://purl.org/dc/elements/1.1/'><d:title>old one</d:title>"
        "<d:creator>untouched</d:creator></r:Description>";
    CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", PdfWithPacket(Packet(description))));
    document.SetInfo("Title", "\xFE\xFF\x03\xB1");
    document.SetInfo("Own Key", "has no counterpart");
    document.Save({.path = folder / "b.pdf"});
    const std::string bytes = FileBytes(folder / "b.pdf");
    EXPECT_THAT(bytes, HasSubstr("<rdf:li xml:lang=\"x-default\">\u03b1</rdf:li>"));
    EXPECT_THAT(bytes, HasSubstr("<d:creator>untouched</d:creator>"));
    EXPECT_THAT(bytes, Not(HasSubstr("old one")));
    EXPECT_EQ(CPdfDocument::Open(folder / "b.pdf", {.repair = false}).Info("Title"), "\xFE\xFF\x03\xB1");

    const std::string broken = "<r:RDF><d:title>old one</d:title>";
    CPdfDocument other = CPdfDocument::Open(folder.Write("c.pdf", PdfWithPacket(broken)));
    other.SetInfo("Title", "new");
    other.Save({});
    EXPECT_THAT(FileBytes(folder / "c.pdf"), HasSubstr(broken));
}
