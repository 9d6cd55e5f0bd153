#include <gtest/gtest.h>

#include "sequence/GuardedXml.h"

namespace {

std::string Repeated(const std::string& piece, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i) text += piece;
    return text;
}

std::string Problem(std::string_view bytes, const XmlLimits& limits = {})
{
    const auto checked = CheckedXml(bytes, limits);
    return checked ? "" : checked.Error();
}

TEST(XmlGuard, RefusesWhatAParserShouldNotSee)
{
    const std::string nul("<a>\0</a>", 8);
    const struct {
        const char* what;
        std::string xml;
        const char* sentence;
    } rows[] = {
        {"nothing", "", "empty"},
        {"blanks behind a mark", "\xEF\xBB\xBF \n", "empty"},
        {"no element", "<!-- <a/> -->", "does not contain"},
        {"document type", "<!DOCTYPE a [<!ENTITY x \"y\">]><a>&x;</a>", "declarations"},
        {"entity inside", "<a><!ENTITY x \"y\"></a>", "declarations"},
        {"UTF-16", "\xFF\xFE<\x01", "UTF-8"},
        {"zero byte", nul, "UTF-8"},
        {"Latin-1", "<a t=\"\xE4\"/>", "UTF-8"},
        {"101 deep", Repeated("<a>", 101) + Repeated("</a>", 101), "deeply"},
        {"101 deep, never closed", Repeated("<a>", 101), "deeply"},
        {"open at the end", "<a><b></b>", "not closed"},
        {"closed twice", "<a></a></a>", "not opened"},
        {"two roots", "<a/><b/>", "root"},
        {"text outside", "<a/>x", "outside"},
        {"cut in a tag", "<a b=\"1\"", "cut off"},
        {"cut in a value", "<a b=\"1></a>", "cut off"},
        {"cut in a comment", "<a><!-- </a>", "cut off"},
        {"comment that only seems to end", "<a><!--></a>", "cut off"},
        {"cut in the declaration", "<?xml version=\"1.0\"", "cut off"},
        {"second declaration", "<a/><?xml version='?><!--'?>", "declaration inside"},
        {"declaration in capitals", "<?XML version='1'?><a/>", "declaration inside"},
        {"style sheet that is read as a declaration", "<a/><?xml-x Version='?><!--'?>", "declaration inside"},
        {"instruction with elements in it", "<a><?p ><b> ?></a>", "not closed"},
        {"value without quotes", "<a b=1/>", "quotes"},
        {"attribute without value", "<a b/>", "no value"},
        {"tag in an attribute name", "<a b<c>=\"1\"/>", "no value"},
        {"element named by a digit", "<1 b=\"><a>\"/>", "proper name"},
        {"zero reference", "<a b=\"&#0;\"/>", "character"},
        {"surrogate reference", "<a>&#xD800;</a>", "character"},
        {"reference beyond the last character", "<a b=\"&#x110000;\"/>", "character"},
        {"endless reference", "<a b=\"&#" + std::string(5000, '9') + ";\"/>", "character"},
        {"reference without end", "<a b=\"&#65\"/>", "character"},
        {"reference without digits", "<a b=\"&#;\"/>", "character"},
        {"unknown entity", "<a b=\"&bomb;\"/>", "entity"},
        {"plain ampersand", "<a>a & b</a>", "entity"},
        {"entity in capitals", "<a>&AMP;</a>", "entity"},
        {"101 attributes", "<a" + Repeated(" b=\"\"", 101) + "/>", "attributes"},
    };
    for (const auto& row : rows)
        EXPECT_NE(Problem(row.xml).find(row.sentence), std::string::npos) << row.what << ": " << Problem(row.xml);
}

TEST(XmlGuard, TakesOrdinaryDocuments)
{
    const std::string rows[] = {
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n",
        "<a b='>' c=\"<'/>\"><!-- <b> &#0; -- > --><![CDATA[<b> &#0;]]><c d = \"&#xD;&#10;&#x1F600;&amp;\"/></a >",
        Repeated("<a>", 100) + Repeated("</a>", 100),
        "<?pi some data?><a/><!-- end -->",
        "\n <?xml version='1.0'?>\n<?xml-stylesheet href='a.xsl'?><a/>",
    };
    for (const auto& xml : rows) EXPECT_EQ(Problem(xml), "") << xml.substr(0, 60);
}

TEST(XmlGuard, TooManyElementsAreRefusedAtOnce)
{
    const std::string bomb = "<a>" + Repeated("<b/>", 4'000'000) + "</a>";
    EXPECT_NE(Problem(bomb).find("too many elements"), std::string::npos);
    EXPECT_EQ(Problem("<a>" + Repeated("<b/>", 9) + "</a>", {.elements = 10}), "");
    EXPECT_NE(Problem("<a>" + Repeated("<b/>", 10) + "</a>", {.elements = 10}), "");
    EXPECT_NE(Problem("<a></a>", {.bytes = 6}), "");
}

}  // namespace
