#include <qpdf/QPDF.hh>

#include "base/Unicode.h"
#include "openhost/core/Memory.h"
#include "openhost/documents/Documents.h"
#include "openhost/script/Scripts.h"
#include "openhost/script/Slots.h"
#include "openhost/values/Text.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

/// A script whose answer is event.value, or the reason why it failed.
struct ScriptRow {
    std::string script;
    std::string answer;
};

class Scripts : public CHostFixture {
protected:
    Scripts()
    {
        OfferScriptSlots(Part<CTables>());
        document = Part<CDocuments>().Open(folder.Write("a.pdf", SamplePdf(3)), false, {});
        DocumentAt(document).pdf.SetInfo("Title", "One");
        DocumentAt(document).pdf.SetModified(false);
    }
    ~Scripts() override { Part<CDocuments>().Close(document); }

    std::string Run(const std::string& script)
    {
        try {
            const ScriptResult result = RunScript(document, Utf8ToUtf16(script));
            return result.value ? Utf16ToUtf8(*result.value) : result.rc ? "none" : "refused";
        } catch (const CScriptError& error) {
            return error.what();
        }
    }
    /// Each script's value; a row that ends with an ellipsis tells the beginning of the answer.
    void Check(const std::vector<ScriptRow>& rows)
    {
        for (const ScriptRow& row : rows) {
            const std::string answer = Run(row.script);
            if (row.answer.ends_with("..."))
                EXPECT_TRUE(answer.starts_with(row.answer.substr(0, row.answer.size() - 3))) << row.script << "\n"
                                                                                             << answer;
            else
                EXPECT_EQ(answer, row.answer) << row.script;
        }
    }
    void CheckValues(const std::vector<ScriptRow>& rows)
    {
        for (const ScriptRow& row : rows) Check({{"event.value = (" + row.script + ")", row.answer}});
    }

    CTemporaryFolder folder;
    PDDoc document = nullptr;
};

}  // namespace

TEST_F(Scripts, HostileOnesCostNothingButThemselves)
{
    Part<ScriptSession>().limits.memory = 8 * 1024 * 1024;
    Check({
        {"throw { toString: function () { for (;;); } }", "failed: ..."},
        {"var a = [];\nfor (;;) a = [a]",
         "failed in line 2: it needs more than the 8 MB of memory that a script may have"},
        {"var a = 'x'; for (;;) a += a", "failed in line 1: it needs more than the 8 MB..."},
        {"var a = new Array(1e5).join('x');\nfor (var i = 0;; ++i) info['a' + i] = a",
         "failed in line 2: Error: the script sets too much document information"},
        {"function f() { return f() + 1 }\nf()", "failed in line 1: RangeError..."},
        {"function f() { [1].map(f) }\nf()", "failed in line 1: RangeError..."},
        {"var a = []; for (var i = 0; i < 1e4; ++i) a = [a]; JSON.stringify(a)", "failed in line 1: RangeError..."},
        {"eval(new Array(100000).join('(') + 1)", "failed in line 1: ..."},
        {"\n\nthrow new Error('on purpose')", "failed in line 3: Error: on purpose"},
        {"throw 'text'", "failed: text"},
        {"\r\n\rvar = 1", "failed in line 3: SyntaxError..."},
        {"var a = 1;\nthis.a;\nthis.missing()", "failed in line 3: TypeError: ..."},
        {"this.delay = true", "failed in line 1: Error: this host has no property delay of documents"},
        {"this.numPages = 1", "failed in line 1: Error: numPages cannot be set"},
        {"var a = new Array(5000).join('x'); for (var i = 0; i < 300; ++i) global[i] = a",
         "failed: Error: \"global\" holds more than..."},
    });
    Part<ScriptSession>().limits.time = std::chrono::milliseconds(500);
    const std::string late = "it ran longer than 0.5 seconds and was stopped";
    Check({
        {"var a;\nfor (;;) a = 1;", "failed in line 2: " + late},
        {"for (;;) try { for (;;); } catch (e) {} finally { continue }", "failed in line 1: " + late},
        {"event.value = { toString: function () { for (;;); } }", "failed in line 1: " + late},
        {"global.a = { toJSON: function () { for (;;); } }", "failed in line 1: " + late},
        {"\n[].indexOf.call({ length: 2e9 }, 1)", "failed in line 2: " + late},
        {"\nvar a = []; a[2e9] = 1; a.sort()", "failed in line 2: " + late},
        {"\n/^(([a-z])+.)+[A-Z]([a-z])+$/.test('aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa')",
         "failed in line 2: " + late},
        {"var a = 'aaaaaaaa';\nwhile (a.length < 500000) a += a;\na.indexOf(a.substr(0, 200000) + 'b')",
         "failed in line 3: " + late},
        {"var a = 'ü'; while (a.length < 1e6) a += a;\nfor (;;) a.charCodeAt(a.length * Math.random() | 0)",
         "failed in line 2: " + late},
    });
    EXPECT_EQ(Part<ScriptSession>().globals, "{}");
    said.clear();
    Check({{"for (var i = 0; i < 1e4; ++i) console.println('a\\nb')", "none"}});
    EXPECT_EQ(said.size(), Part<ScriptSession>().limits.lines + 1);
    EXPECT_TRUE(said.front().ends_with("a.pdf: script: a b")) << said.front();
}

TEST_F(Scripts, WhatOneDoesToItsObjectsIsNotThereForTheNext)
{
    Check({
        {"Array.prototype.map = Date = util.printf = console.println = null; JSON.stringify = function () { return "
         "'no' };"
         "Object.prototype.foul = 1; var left = 1; global.kept = { a: [1, 'ü😀'], f: function () {} }; event.value = "
         "'done'",
         "done"},
        {"event.value = [typeof left, typeof Date, typeof {}.foul, [1].map(String), util.printf('%d', 1)]",
         "undefined,function,undefined,1,1"},
        {"event.value = JSON.stringify(global)", "{\"kept\":{\"a\":[1,\"ü😀\"]}}"},
        {"global.kept = 2; throw 1", "failed: 1"},
        {"app = 1; console = 2; event = 3; event.value = global.kept.a[0]", "1"},
    });
}

TEST_F(Scripts, TheDocumentIsReadAndDescribed)
{
    CheckValues({
        {"[numPages, this.numPages, documentFileName, this.pageNum, this === event.target]", "3,3,a.pdf,0,true"},
        {"[this.path.charAt(0), this.path.substr(-6), this.path.indexOf('\\\\')]", "/,/a.pdf,-1"},
        {"this.filesize > 100", "true"},
        {"[info.Title, this.info.title, this.title, info.Author === '', info.Other === undefined]",
         "One,One,One,true,true"},
        {"this.getPageBox() + ';' + getPageBox({ cBox: 'Media', nPage: 1 })", "0,792,612,0;0,792,612,0"},
        {"getPageBox('Crop', 3)", "failed in line 1: Error: there is no page 3..."},
        {"getPageBox('Crap')", "failed in line 1: Error: there is no box \"Crap\"..."},
        {"getPageLabel(1)", "2"},
        {"[app.viewerVersion, app.alert('Hm'), app.alert({ cMsg: 'Sure?', nType: 2 })]", "21,1,3"},
    });
    EXPECT_FALSE(DocumentAt(document).pdf.IsModified());
    QPDF& library = DocumentAt(document).pdf.Library();
    library.getRoot().replaceKey("/PageLabels",
                                 QPDFObjectHandle::parse("<</Nums[0<</S/R/St 4>>1<</S/a/St 27/P(A-)>>2<</P(x)>>]>>"));
    library.getObject(1000, 0).replaceKey("/Rotate", QPDFObjectHandle::newInteger(90));
    library.getObject(1000, 0).replaceKey("/CropBox", QPDFObjectHandle::parse("[10 20 310 420]"));
    CheckValues(
        {{"[getPageLabel(), getPageLabel(1), getPageLabel(2)]", "IV,A-aa,x"}, {"getPageBox()", "20,602,420,302"}});
}

TEST_F(Scripts, BoxesAndViewAreSet)
{
    CPdfDocument& pdf = DocumentAt(document).pdf;
    const auto page = [&](int number) { return pdf.Library().getObject(number, 0); };
    page(1000).replaceKey("/MediaBox", QPDFObjectHandle::parse("[10 20 410 620]"));
    page(1000).replaceKey("/TrimBox", QPDFObjectHandle::parse("[20 30 60 80]"));
    // What is set is there at once, on a page however it is turned, and the document has it afterwards.
    for (const int rotation : {0, 90, 180, 270}) {
        page(1000).replaceKey("/Rotate", QPDFObjectHandle::newInteger(rotation));
        CheckValues({{"setPageBoxes('Crop', 0, 0, [30, 120, 130, 40]), getPageBox('Crop', 0)", "30,120,130,40"},
                     {"getPageBox('Crop', 0)", "30,120,130,40"},
                     {"setPageBoxes('Crop'), getPageBox('Crop', 0) + '' === getPageBox('Media', 0) + ''", "true"}});
    }
    EXPECT_FALSE(page(1000).hasKey("/CropBox"));
    CheckValues({
        {"setPageBoxes({ cBox: 'Art', nStart: 1, rBox: [1, 4, 3, 2] }), dirty", "true"},
        {"[layout, zoomType]", "SinglePage,Preferred"},
        {"layout = 'OneColumn', zoomType = zoomtype.fitW, [layout, zoomType]", "OneColumn,FitWidth"},
        {"[layout, zoomType]", "OneColumn,FitWidth"},
        {"zoom = 125, [zoom, zoomType]", "125,NoVary"},
        {"setPageBoxes('Media', 0, 0, [0, 9, 9, 0])",
         "failed in line 1: Error: this host does not set the media box"},
        {"setPageBoxes('Crop', 0, 0, [0, 9, 9])", "failed in line 1: Error: rBox must be four numbers..."},
        {"setPageBoxes('Crop', 0, 0, [0, 0, 9, 9])", "failed in line 1: Error: the box is empty..."},
        {"setPageBoxes('Crop', 1, 0, [0, 9, 9, 0])", "failed in line 1: Error: nEnd is before nStart"},
        {"setPageBoxes('Crop', 0, 0, [9000, 9009, 9009, 9000])", "failed in line 1: Error: the box lies beside..."},
        {"layout = 'Fan'", "failed in line 1: Error: there is no layout \"Fan\""},
        {"zoomType = zoomtype.refW", "failed in line 1: Error: no document can open with the zoom type..."},
        {"layout = 'SinglePage', setPageBoxes('Trim', 1, 2, [1, 4, 3, 2]), none",
         "failed in line 1: ReferenceError..."},
    });
    EXPECT_EQ(page(1002).getKey("/ArtBox").unparse(), "[ 1 2 3 4 ]");
    EXPECT_FALSE(page(1002).hasKey("/TrimBox"));
    EXPECT_EQ(pdf.Library().getRoot().getKey("/PageLayout").unparse(), "/OneColumn");
    EXPECT_EQ(pdf.Library().getRoot().getKey("/OpenAction").unparse(), "[ 1000 0 R /XYZ null null 1.25 ]");
}

TEST_F(Scripts, CommentsAreReadAndNotChanged)
{
    CheckValues({{"[syncAnnotScan(), getAnnots()]", ","}});
    DocumentAt(document).pdf.Library().getObject(1002, 0).replaceKey(
        "/Annots",
        QPDFObjectHandle::parse("[<</Subtype/Link/Rect[0 0 9 9]>> 7 <</Subtype/Highlight/Rect[9 8 1 2]/NM(a)"
                                "/T<FEFF00FC>/CA .5/F 4>> <</Subtype/Text/Contents(note)>>]"));
    CheckValues({
        {"getAnnots().map(function (a) { return [a.type, a.page, a.rect, a.author, a.opacity, a.print, a.contents] "
         "})",
         "Highlight,1,1,2,9,8,ü,0.5,true,,Text,1,,,1,false,note"},
        {"[getAnnots(0), getAnnots(1).length, getAnnot(1, 'a').type, getAnnot(1, 'b'), getAnnot(1, '')]",
         ",2,Highlight,,"},
        {"getAnnots({ nSortBy: 1 })", "failed in line 1: Error: getAnnots takes no nSortBy here"},
        {"getAnnots(3)", "failed in line 1: Error: there is no page 3..."},
        {"getAnnots()[0].opacity = 0.5", "failed in line 1: Error: opacity of comments cannot be set"},
        {"getAnnots()[0].style", "failed in line 1: Error: this host has no property style of comments"},
    });
    EXPECT_FALSE(DocumentAt(document).pdf.IsModified());
}

TEST_F(Scripts, WordsAreReadWhereTheyStand)
{
    QPDF& library = DocumentAt(document).pdf.Library();
    const auto put = [&](int page, const char* content) {
        library.getObject(page, 0).replaceKey("/Contents", library.newStream(content));
        library.getObject(page, 0).replaceKey(
            "/Resources", QPDFObjectHandle::parse("<</Font<</F<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>>>>>"));
    };
    put(1000, "BT /F 20 Tf 100 700 Td (\"Hello,\" big world) Tj ET");
    put(1002, "");
    DocumentAt(document).pdf.SetModified(true);
    CheckValues({
        {"[getPageNumWords(), this.getPageNumWords(1)]", "3,0"},
        {"[getPageNthWord(), getPageNthWord(0, 0, false), getPageNthWord(0, 2)]", "Hello,\"Hello,\",world"},
        {"(function (q) { return q.length + ':' + q[0].length + ':' + (Math.abs(q[0][0] - 100) < 1 && q[0][2] > "
         "q[0][0] && "
         "q[0][1] > q[0][5] && Math.abs(q[0][7] - 698) < 5) })(getPageNthWordQuads(0, 0))",
         "1:8:true"},
        {"getPageNthWord(0, 3)",
         "failed in line 1: Error: there is no word 3: words count from 0 and page 0 has 3 of them"},
        {"getPageNumWords(3)", "failed in line 1: Error: there is no page 3..."},
    });
}

TEST_F(Scripts, TheDescriptionChangesWhenTheScriptSucceeds)
{
    CPdfDocument& pdf = DocumentAt(document).pdf;
    Check({{"info.Title = 'Lost'; this.author = 'Lost'; throw 1", "failed: 1"}});
    EXPECT_FALSE(pdf.IsModified());
    Check({{"info.title = 'One'", "none"}});
    EXPECT_FALSE(pdf.IsModified());
    Check({{"this.info.title = 'Zwölf 😀'; author = 'A'; info.Own = 7; info.CreationDate = new Date(Date.UTC(2024, "
            "1, 29));"
            "var all = []; for (var key in info) all.push(key); event.value = [info.Title, title, info.OWN, "
            "all.sort()]",
            "Zwölf 😀,Zwölf 😀,7,Author,CreationDate,Own,Title..."},
           {"event.value = info.creationdate.toISOString()", "2024-02-29T00:00:00.000Z"},
           {"info.ModDate = 'yesterday'", "failed in line 1: Error: ModDate takes a date"},
           {"info['a#b'] = 1", "failed in line 1: Error: the document information can have no entry..."}});
    EXPECT_TRUE(pdf.IsModified());
    EXPECT_EQ(Utf16ToUtf8(Utf16FromPdText(pdf.Info("Title").value_or(""))), "Zwölf 😀");
    EXPECT_EQ(pdf.Info("Author"), "A");
    EXPECT_EQ(pdf.Info("CreationDate"), "D:20240229000000Z");
}

TEST_F(Scripts, TextsNumbersDatesAndColours)
{
    CheckValues({
        {"util.printf('%d')", "failed in line 1: TypeError: util.printf has too few values for its format"},
        {"util.printf('%s|%6.2f|%d|%x|%03d|%+d|%%', 'ä', 3.14159, -2.7, 255, 7, 5)", "ä|  3.14|-2|FF|007|+5|%"},
        {"util.printf('%,0.2f %,1.2f %,2.2f %,3.2f', 1234567.891, 1234.5, 1234567.8, 1234.5)",
         "1,234,567.89 1234.50 1.234.567,80 1234,50"},
        {"util.printd('yyyy-mm-dd HH:MM:ss dddd d. mmmm yy h tt \\\\d', new Date(2024, 1, 9, 15, 4, 5))",
         "2024-02-09 15:04:05 Friday 9. February 24 3 pm d"},
        {"util.printd(0, new Date(2024, 1, 9)).substr(0, 16)", "D:20240209000000"},
        {"util.scand('d.m.yyyy', '31.12.1999').getTime() == new Date(1999, 11, 31).getTime()", "true"},
        {"util.scand('yyyymmdd h:MM tt', '20240229 12:30 am').getHours()", "0"},
        {"util.scand('mmm d yy', 'Feb 30 24')", "none"},
        {"color.convert(['RGB', 1, 0, 0], 'CMYK')", "CMYK,0,1,1,0"},
        {"[color.equal(color.black, ['RGB', 0, 0, 0]), color.equal(color.red, color.blue), color.yellow]",
         "true,false,CMYK,0,0,1,0"},
    });
}

TEST_F(Scripts, PlugInsRunThemThroughTheFormsTable)
{
    char* value = nullptr;
    EXPECT_TRUE(HOST(Forms, AFExecuteThisScript, document, "event.value = 'ü' + this.numPages", &value));
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(value, "ü3");
    FreeShared(value);
    const char wide[] =
        "\xFE\xFF\0e\0v\0e\0n\0t\0.\0r\0c\0=\0"
        "0\0";
    EXPECT_FALSE(HOST(Forms, AFExecuteThisScript, document, wide, &value));
    EXPECT_EQ(value, nullptr);
    try {
        HOST(Forms, AFExecuteThisScript, document, "\n\nboom()", nullptr);
        FAIL() << "it did not raise";
    } catch (const CHostRaise& raise) {
        EXPECT_TRUE(raise.Message().starts_with("the script failed in line 3: ReferenceError")) << raise.Message();
    }
}
