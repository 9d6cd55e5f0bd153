#include <qpdf/QPDF.hh>

#include "base/Text.h"
#include "openhost/commands/Commands.h"
#include "openhost/commands/LocalNames.h"
#include "openhost/documents/Documents.h"
#include "support/KnownLeaks.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

/// One run of a step on a document of three pages, the objects 1000, 1002 and 1004; 1 is the root, 2 the page tree.
struct OwnStepRow {
    const char* what;
    const char* step;
    std::string edits;   // "1000 /Rotate 90; ...": done to the document before
    std::string params;  // "Degrees=i90; Title=tabc; ..."
    std::string ending;  // "changed", "same", or a part of the error
    std::string after;   // "1000 /Rotate 180; ..."
};

class OwnSteps : public CHostFixture {
protected:
    OwnSteps() { RegisterBuiltInCommands(); }
    ~OwnSteps() override { Part<CCommands>().DestroyAll(); }

    static std::string Rest(const std::string& statement, std::string& object, std::string& key)
    {
        const auto first = statement.find(' '), second = statement.find(' ', first + 1);
        object = statement.substr(0, first);
        key = statement.substr(first + 1, second - first - 1);
        return statement.substr(second + 1);
    }
    static std::vector<std::string> Statements(const std::string& all)
    {
        std::vector<std::string> trimmed;
        for (const std::string& one : Split(all, ";")) trimmed.push_back(Trim(one));
        return trimmed;
    }
    static void Edit(PDDoc document, const std::string& edits)
    {
        QPDF& library = DocumentAt(document).pdf.Library();
        std::string object, key;
        for (const std::string& edit : Statements(edits)) {
            const std::string value = Rest(edit, object, key);
            const QPDFObjectHandle parsed = QPDFObjectHandle::parse(&library, value);
            if (key == "=")
                library.replaceObject(QPDFObjGen(std::stoi(object), 0), parsed);
            else
                library.getObject(std::stoi(object), 0).replaceKey(key, parsed);
        }
        DocumentAt(document).pdf.SetModified(false);
    }
    static void ExpectAfter(PDDoc document, const OwnStepRow& row)
    {
        QPDF& library = DocumentAt(document).pdf.Library();
        std::string object, key;
        for (const std::string& expected : Statements(row.after)) {
            const std::string value = Rest(expected, object, key);
            QPDFObjectHandle holder =
                object == "info" ? library.getTrailer().getKey("/Info") : library.getObject(std::stoi(object), 0);
            const std::string found = key == "=" ? holder.unparseResolved() : holder.getKey(key).unparse();
            EXPECT_EQ(found, value) << row.what << ": " << object << ' ' << key;
        }
    }
    AVCommandStatus Run(const char* step, PDDoc document, const std::string& params)
    {
        const AVCommand command = HOST(AcroView, AVCommandNew, AtomFromText(step));
        const COwnedCab inputs = COwnedCab::New(), given = COwnedCab::New();
        inputs->PutPointer(kAVCommandKeyPDDoc, "PDDoc", document);
        for (const std::string& one : Statements(params)) {
            const auto at = one.find('=');
            const std::string key = one.substr(0, at), value = one.substr(at + 2);
            if (one[at + 1] == 't') given->PutText(key, value);
            if (one[at + 1] == 's') given->PutString(key, value);
            if (one[at + 1] == 'i') given->PutInt(key, std::stoi(value));
            if (one[at + 1] == 'd') given->PutDouble(key, std::stod(value));
            if (one[at + 1] == 'b') given->PutBool(key, value == "1");
        }
        HOST(AcroView, AVCommandSetInputs, command, inputs.Get());
        HOST(AcroView, AVCommandSetParams, command, given.Get());
        return HOST(AcroView, AVCommandWork, command);
    }
    std::string EndingOf(const char* step, PDDoc document, const std::string& params)
    {
        try {
            EXPECT_EQ(Run(step, document, params), kAVCommandDone);
        } catch (const CHostRaise& raise) {
            return raise.Message();
        }
        return DocumentAt(document).pdf.IsModified() ? "changed" : "same";
    }
    void Check(const std::vector<OwnStepRow>& rows)
    {
        for (const OwnStepRow& row : rows) {
            const std::string path = folder.Write("a.pdf", SamplePdf(3, {}, objects));
            const PDDoc document = Part<CDocuments>().Open(path, false, {});
            Edit(document, row.edits);
            const std::string ending = EndingOf(row.step, document, row.params);
            const bool fails = row.ending != "changed" && row.ending != "same";
            if (fails)
                EXPECT_NE(ending.find(row.ending), ending.npos) << row.what << ": " << ending;
            else
                EXPECT_EQ(ending, row.ending) << row.what;
            EXPECT_EQ(fails && DocumentAt(document).pdf.IsModified(), false) << row.what;
            EXPECT_EQ(fails && ending.find("a.pdf") == ending.npos, false) << row.what << ": " << ending;
            ExpectAfter(document, row);
            Part<CDocuments>().Close(document);
        }
    }

    CTemporaryFolder folder;
    std::string objects;
};

}  // namespace

TEST_F(OwnSteps, TheFrameReadsParametersAndPages)
{
    const char* const rotate = "RotatePages";
    Check({
        {"defaults", rotate, "", "", "changed", "1000 /Rotate 90; 1004 /Rotate 90"},
        {"numbers as texts", rotate, "", "Degrees=t180; Group=s2; From=i2; To=t2", "changed",
         "1000 /Rotate null; 1002 /Rotate 180; 1004 /Rotate null"},
        {"a whole double", rotate, "", "Degrees=d270.0", "changed", "1000 /Rotate 270"},
        {"even pages", rotate, "", "EvenOdd=i1", "changed", "1000 /Rotate null; 1002 /Rotate 90"},
        {"odd of a range", rotate, "", "EvenOdd=i2; Group=i2; From=t2; To=t3", "changed",
         "1000 /Rotate null; 1002 /Rotate null; 1004 /Rotate 90"},
        {"no page is meant", rotate, "", "EvenOdd=i1; Group=i2; From=t1; To=t1", "same", ""},
        {"what all pages leave unread", rotate, "", "From=tx; To=t99", "changed", "1004 /Rotate 90"},
        {"none of the values", rotate, "", "Degrees=i45", "cannot take 45 for \"Degrees\": it must be 90, 180 or 270",
         ""},
        {"a broken number", rotate, "", "Degrees=d90.5", "cannot take 90.5", "1000 /Rotate null"},
        {"another type", rotate, "", "Degrees=b1", "cannot take true", ""},
        {"too far", rotate, "", "Group=i2; From=t2; To=t4", "\"4\" for \"To\": the document has 3 pages", ""},
        {"no number", rotate, "", "Group=i2; From=tiv; To=t4", "\"iv\" for \"From\"", ""},
        {"from is missing", rotate, "", "Group=i2; To=t2", "needs a page number in \"From\"", ""},
        {"backwards", rotate, "", "Group=i2; From=t3; To=t2", "from 3 to 2, which are none; the document has 3", ""},
        {"selected pages", rotate, "", "Group=i1", "selected", ""},
        {"an ambiguous number", "CropPages", "", "Left=t1,234", "cannot take \"1,234\" for \"Left\"", ""},
        {"even pages where there are none", "DeletePages", "", "EvenOdd=i1; From=t1; To=t1", "EvenOdd", ""},
    });
    said.clear();
    Check({{"a misspelled name", rotate, "", "Degres=i180", "changed", "1000 /Rotate 90"}});
    EXPECT_NE(SaidAll().find("\"Degres\""), std::string::npos) << SaidAll();
}

TEST_F(OwnSteps, PagesAreTurnedAndCroppedAsTheyAreShown)
{
    const char* const rotate = "RotatePages";
    const char* const crop = "CropPages";
    const std::string margins = "Left=d10; Top=d20; Right=d30; Bottom=d40";
    const std::string boxes = "2 /MediaBox [0 0 612 792]; 1000 /MediaBox null; 2 /CropBox [12 12 600 780]";
    Check({
        {"further", rotate, "2 /Rotate 270; 1002 /Rotate -90", "", "changed", "1000 /Rotate 0; 1002 /Rotate 0"},
        {"landscape as shown", rotate, "1000 /Rotate 90; 1002 /CropBox [0 0 600 90]", "Action=i0", "changed",
         "1000 /Rotate 180; 1002 /Rotate 90; 1004 /Rotate null"},
        {"portrait, not square", rotate, "1000 /MediaBox [0 0 50 50]; 1002 /Rotate 90", "Action=i1", "changed",
         "1000 /Rotate null; 1002 /Rotate 90; 1004 /Rotate 90"},
        {"a page that stands twice", rotate, "2 /Kids [1000 0 R 1000 0 R 1004 0 R]", "Group=i2; From=t2; To=t2",
         "changed", "1000 /Rotate null"},

        {"upright", crop, "", margins, "changed", "1000 /CropBox [ 10 40 582 772 ]"},
        {"turned by 90", crop, "1000 /Rotate 90", margins, "changed", "1000 /CropBox [ 20 10 572 762 ]"},
        {"turned by 180", crop, "2 /Rotate 180", margins, "changed", "1000 /CropBox [ 30 20 602 752 ]"},
        {"turned by 270", crop, "1000 /Rotate 270", margins, "changed", "1000 /CropBox [ 40 30 592 782 ]"},
        {"corners the other way", crop, "1000 /MediaBox [612 792 0 0]", margins, "changed",
         "1000 /CropBox [ 10 40 582 772 ]"},
        {"units of two points", crop, "1000 /UserUnit 2", margins, "changed", "1000 /CropBox [ 5 20 597 782 ]"},
        {"no margins, no box", crop, "", "Left=d0", "same", "1000 /CropBox null"},
        {"no margins take an inherited box back", crop, boxes, "", "changed", "1000 /CropBox [ 0 0 612 792 ]"},
        {"the box goes", crop, "1000 /CropBox [1 1 9 9]", "CropType=i2", "changed", "1000 /CropBox null"},
        {"an inherited box goes", crop, boxes, "BoxType=i0; Crop:CropType=i2", "changed",
         "1000 /CropBox [ 0 0 612 792 ]; 2 /CropBox [ 12 12 600 780 ]"},
        {"outside the page", crop, "", "Left=d-5; Right=d12", "changed", "1000 /CropBox [ 0 0 600 792 ]"},
        {"nothing is left, and no page is touched", crop, "1002 /MediaBox [0 0 40 40]", margins, "nothing of page 2",
         "1000 /CropBox null"},
        {"another box, from the crop box", crop, boxes, "BoxType=i2; Trim:Left=d8; Crop:Left=d99", "changed",
         "1000 /TrimBox [ 20 12 600 780 ]; 1000 /CropBox null"},
        {"its items are missing", crop, "", "BoxType=i3; Crop:Left=d9", "lacks the items \"Art\"", ""},
        {"other boxes stay inside", crop, "1000 /TrimBox [5 5 600 700]; 1000 /ArtBox [0 0 9 9]", margins, "changed",
         "1000 /TrimBox [ 10 40 582 700 ]; 1000 /ArtBox null"},
        {"texts of the dialog", crop, "", "BoxType=i0; Crop:Left=d7; Crop:LeftText=t7 点; Crop:version=i2", "changed",
         "1000 /CropBox [ 7 0 612 792 ]"},
    });
    objects = "200 0 obj\n<</Length 20>>\nstream\n72 700 100 12 re f  \nendstream\nendobj\n";
    const PDDoc document = Part<CDocuments>().Open(folder.Write("c.pdf", SamplePdf(3, {}, objects)), false, {});
    Edit(document, "1000 /Contents [200 0 R]; 1002 /Contents null");
    EXPECT_EQ(EndingOf(crop, document, "CropType=i1; Group=i2; From=t1; To=t2"), "changed");
    QPDF& library = DocumentAt(document).pdf.Library();
    ASSERT_TRUE(library.getObject(1000, 0).getKey("/CropBox").isArray());
    auto box = library.getObject(1000, 0).getKey("/CropBox").getArrayAsVector();
    constexpr double kExpected[] = {72, 700, 172, 712};
    for (std::size_t edge = 0; edge < 4; ++edge) EXPECT_NEAR(box[edge].getNumericValue(), kExpected[edge], 1) << edge;
    EXPECT_TRUE(library.getObject(1002, 0).getKey("/CropBox").isNull()) << "a blank page keeps its boxes";
    // Text that cannot be drawn for want of a font must not be cut off.
    const std::string text = EndingOf(crop, document, "CropType=i1; Group=i2; From=t3; To=t3");
    EXPECT_TRUE(text == "changed" || text.find("font") != text.npos) << text;
    Part<CDocuments>().Close(document);
}

TEST_F(OwnSteps, PagesGoWithoutTakingWhatOthersNeed)
{
    const char* const remove = "DeletePages";
    for (int number = 200; number < 206; ++number) objects += std::to_string(number) + " 0 obj\n<</T(x)>>\nendobj\n";
    const std::string labels = "1 /PageLabels <</Nums[0<</S/r>>2<</S/D/St 5>>]>>";
    Check({
        {"the first", remove, "", "From=t1; To=t1", "changed",
         "2 /Kids [ 1002 0 R 1004 0 R ]; 2 /Count 2; 1000 = null"},
        {"labels stay with their pages", remove, labels, "From=t1; To=t1", "changed",
         "1 /PageLabels << /Nums [ 0 << /S /r /St 2 >> 1 << /S /D /St 5 >> ] >>"},
        {"from the middle", remove, labels, "From=t2; To=t2", "changed",
         "1 /PageLabels << /Nums [ 0 << /S /r /St 1 >> 1 << /S /D /St 5 >> ] >>"},
        {"inherited entries", remove, "2 /Rotate 90; 2 /MediaBox [0 0 9 9]; 1004 /MediaBox null", "From=t1; To=t2",
         "changed", "1004 /Rotate 90; 1004 /MediaBox [ 0 0 9 9 ]"},
        {"fields shown there alone", remove,
         "1 /AcroForm <</Fields[200 0 R 201 0 R 202 0 R]/CO[201 0 R 202 0 R]>>; 201 /Kids [203 0 R 204 0 R]; "
         "202 /Kids [205 0 R]; 1000 /Annots [200 0 R 203 0 R 205 0 R]; 1002 /Annots [204 0 R]",
         "From=t1; To=t1", "changed", "1 /AcroForm << /CO [ 201 0 R ] /Fields [ 201 0 R ] >>; 201 /Kids [ 204 0 R ]"},
        {"all of them", remove, labels, "From=t1; To=t3", "would leave no page", "2 /Count 3"},
        {"all without saying so", remove, "", "Group=i0", "would leave no page", ""},
        {"nothing said", remove, "", "", "needs a page number in \"From\"", "2 /Count 3"},
    });
}

TEST_F(OwnSteps, CommentsGoAndEverythingElseStays)
{
    std::string all;
    int number = 200;
    for (const char* type : {"Text", "Popup", "Highlight", "FileAttachment", "Redact", "Link", "Widget", "Screen",
                             "Movie", "3D", "RichMedia", "PrinterMark", "Watermark"}) {
        objects += std::to_string(number) + " 0 obj\n<</Type/Annot/Subtype/" + type + "/Rect[0 0 9 9]>>\nendobj\n";
        all += std::to_string(number++) + " 0 R ";
    }
    const std::string kept = "205 0 R 206 0 R 207 0 R 208 0 R 209 0 R 210 0 R 211 0 R 212 0 R";
    Check({
        {"of every kind", "DeleteAll", "1000 /Annots [" + all + "]", "", "changed",
         "1000 /Annots [ " + kept + " ]; 200 = null; 204 = null"},
        {"and the newer name", "Annots:DeleteAll", "1002 /Annots [200 0 R 201 0 R]", "", "changed",
         "1002 /Annots null"},
        {"none", "DeleteAll", "1000 /Annots [" + kept + "]", "", "same", "1000 /Annots [ " + kept + " ]"},
    });
}

TEST_F(OwnSteps, DescriptionAndOpenSettingsFollowWhatIsGiven)
{
    const char* const info = "GeneralInfo";
    const char* const open = "OpenInfo";
    objects = StreamObject(
        100, "/Type/Metadata/Subtype/XML",
        "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-"
        "ns#'><rdf:Description rdf:about=''/></rdf:RDF></x:xmpmeta>");
    Check({
        {"nothing", info, "", "", "same", ""},
        {"some", info, "", "Title=tA; Keywords=sb", "changed",
         "info /Title (A); info /Keywords (b); info /Author null"},
        {"one to be left", info, "", "Title=tA; LeaveAsIs:Title=b1", "same", ""},

        {"nothing", open, "", "", "same", "1 /ViewerPreferences null"},
        {"the usual set", open, "",
         "CenterWindow=b0; DisplayDocTitle=b1; FullScreen=b0; Magnification=t适合宽度; PageLayout=i2; PageMode=i1; "
         "PageNum=t1; "
         "ResetDest=b1; LeaveAsIs:PageMode=b1",
         "changed",
         "1 /ViewerPreferences << /DisplayDocTitle true >>; 1 /PageLayout /OneColumn; 1 /PageMode null; "
         "1 /OpenAction [ 1000 0 R /FitH null ]"},
        {"the destination to be left", open, "1 /OpenAction [1002 0 R /Fit]",
         "Magnification=t50%; PageNum=t1; ResetDest=b0; LeaveAsIs:OpenAction=b1; PageLayout=i0", "same",
         "1 /OpenAction [ 1002 0 R /Fit ]"},
        {"a page alone keeps the view", open, "1 /OpenAction <</S/GoTo/D[1002 0 R /FitH 7]>>", "PageNum=t3",
         "changed", "1 /OpenAction << /D [ 1004 0 R /FitH 7 ] /S /GoTo >>"},
        {"a view alone keeps the page", open,
         "1 /OpenAction (n); 1 /Dests null; 1 /Names <</Dests<</Names[(n)[1004 0 R/Fit]]>>>>", "Magnification=t125 %",
         "changed", "1 /OpenAction [ 1004 0 R /XYZ null null 1.25 ]"},
        {"a script is kept", open, "1 /OpenAction <</S/JavaScript/JS(x)>>", "PageNum=t2; Magnification=tFit Page",
         "changed", "1 /OpenAction << /D [ 1002 0 R /Fit ] /Next << /JS (x) /S /JavaScript >> /S /GoTo >>"},
        {"an unknown name", open, "1 /OpenAction [1002 0 R /Fit]", "Magnification=tzzz; PageNum=t2", "same", ""},
        {"no such page, and nothing is touched", open, "", "PageNum=t4; PageLayout=i1", "the document has 3 pages",
         "1 /PageLayout null"},
        {"no such layout", open, "", "PageLayout=i9", "from 0 up to 6", ""},
        {"full screen over bookmarks", open, "", "PageMode=i3; FullScreen=b1", "changed",
         "1 /PageMode /FullScreen; 1 /ViewerPreferences << /NonFullScreenPageMode /UseOutlines >>"},
        {"out of full screen", open, "1 /PageMode /FullScreen; 1 /ViewerPreferences <</NonFullScreenPageMode/UseOC>>",
         "FullScreen=b0", "changed", "1 /PageMode /UseOC; 1 /ViewerPreferences null"},
        {"flags off, layout as the reader likes", open,
         "1 /PageLayout /OneColumn; 1 /ViewerPreferences <</HideToolbar true>>", "HideToolbar=tfalse; PageLayout=i0",
         "changed", "1 /PageLayout null; 1 /ViewerPreferences null"},
    });
    EXPECT_NE(SaidAll().find("does not know the magnification \"zzz\""), std::string::npos) << SaidAll();

    const std::string path = folder.Write("m.pdf", SamplePdf(1, {}, objects));
    const PDDoc document = Part<CDocuments>().Open(path, false, {});
    Run(info, document, "Title=tÄ < 適");
    Part<CDocuments>().Save(document, {});
    EXPECT_TRUE(DocumentAt(document).pdf.MetadataHold("Ä < 適"));
    EXPECT_FALSE(DocumentAt(document).pdf.MetadataHold("something else"));
    EXPECT_EQ(EndingOf(info, document, "Title=tÄ < 適"), "same") << "entry and packet say it already";
    Part<CDocuments>().Close(document);
}

TEST_F(OwnSteps, TheDocumentsRightsCountAndTheOwnerHasAll)
{
    using namespace pdfright;
    const struct {
        const char *step, *params;
        std::uint32_t enough, tooLittle;
    } rows[] = {{"RotatePages", "", kAssemble, kAnnotate | kFillForms},
                {"DeletePages", "From=t1; To=t1", kChange, kFillForms},
                {"CropPages", "Left=d9", kChange, kAssemble | kAnnotate},
                {"OpenInfo", "PageLayout=i1", kChange, kAssemble},
                {"GeneralInfo", "Title=tx", kChange, kAnnotate | kAssemble},
                {"DeleteAll", "", kAnnotate, kAssemble | kFillForms}};
    for (const auto& row : rows) {
        for (const bool granted : {true, false}) {
            objects = "200 0 obj\n<</Type/Annot/Subtype/Text/Rect[0 0 9 9]>>\nendobj\n";
            const std::string path = folder.Write("p.pdf", SamplePdf(2, {}, objects));
            CPdfDocument plain = CPdfDocument::Open(path);
            plain.Library().getObject(1000, 0).replaceKey("/Annots",
                                                          QPDFObjectHandle::parse(&plain.Library(), "[200 0 R]"));
            StandardSecurity security = Protection("", "owner");
            security.permissions = granted ? row.enough : row.tooLittle;
            plain.SetSecurity(security);
            plain.Save({});
            const PDDoc document = Part<CDocuments>().Open(path, false, {});
            const std::string ending = EndingOf(row.step, document, row.params);
            if (granted) {
                EXPECT_EQ(ending, "changed") << row.step;
                EXPECT_EQ(RaisedBy([&] { Part<CDocuments>().Save(document, {}); }), 0) << row.step;
            } else {
                EXPECT_NE(ending.find(std::string(row.step) + " is not permitted"), ending.npos) << ending;
                EXPECT_NE(ending.find("p.pdf"), ending.npos) << ending;
                EXPECT_TRUE(DocumentAt(document).pdf.Authorize("owner", WantedRights::Owner));
                EXPECT_EQ(EndingOf(row.step, document, row.params), "changed") << row.step << " by the owner";
            }
            Part<CDocuments>().Close(document);
        }
    }
}

TEST_F(OwnSteps, PercentagesAndZoomNamesOfManyLanguagesAreRead)
{
    const std::pair<const char*, double> numbers[] = {
        {"100", 100},     {"125%", 125},     {"66,7 %", 66.7},
        {"33.3%", 33.3},  {"%150", 150},     {"1.600 %", 1600},
        {"1,600%", 1600}, {"8.333%", 8.333}, {"1\u00A0200\u202F%", 1200},
        {"1'200%", 1200}, {"１００％", 100}, {"٧٥٪", 75},
        {"८०%", 80},      {"١٢٫٥٪", 12.5},   {"1.234,5 %", 1234.5}};
    for (const auto& [text, percent] : numbers)
        EXPECT_NEAR(ReadPercentage(text, 6400).value_or(-1), percent, 1e-9) << text;
    for (const char* const none : {"", "%", "-5%", "0%", "9000%", "1.2.3", "12x", "1,2,3%", "100%%"})
        EXPECT_FALSE(ReadPercentage(none, 6400)) << none;
    const std::pair<const char*, const char*> names[] = {
        {"Fit Page", "Fit"},    {"fit  width", "FitH"}, {"适合可见", "FitBH"},      {"Fensterbreite", "FitH"},
        {"Pleine page", "Fit"}, {"全体表示", "Fit"},    {"HÖHE EINPASSEN", "FitV"}, {"实际大小", "XYZ"}};
    for (const auto& [name, fit] : names) EXPECT_EQ(ViewNamed(name).value_or(OpenView{"none"}).fit, fit) << name;
}
