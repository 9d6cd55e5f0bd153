#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

#include "base/Overseer.h"
#include "base/PathNames.h"
#include "openhost/commands/Commands.h"
#include "openhost/commands/SaveStep.h"
#include "openhost/conversion/Converters.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "support/TemporaryFolder.h"
#include "unit/openhost_app/HostFixture.h"
#include "unit/openhost_pdf/TestPdfs.h"

using namespace openhost;

namespace {

/// With the system's separators.
std::string Native(std::string path)
{
    std::ranges::replace(path, '/', kSeparator);
    return path;
}

}  // namespace

TEST(SaveStep, TargetsFollowFolderAffixesAndUniqueness)
{
    const auto taken = [](const std::string& path) {
        return path == Native("/in/a.pdf") || path == Native("/out/a.pdf") || path == Native("/out/a (1).pdf") ||
               path == Native("/in/p.pdf");
    };
    const SaveStepSettings inPlace, affixed{.after = "_o"}, folder{.inFolder = true, .folder = Native("/out")},
        replace{.inFolder = true, .folder = Native("/out"), .dontOverwrite = false},
        top{.inFolder = true, .folder = Native("/")}, same{.inFolder = true, .folder = Native("/in")},
        sameReplace{.inFolder = true, .folder = Native("/in"), .dontOverwrite = false};
    const SaveStepDocument file{Native("/in/a.pdf"), "", "a"}, unnamed{Native("/in/a.pdf"), "", ""},
        picture{"", Native("/in/p.jpg"), "p"}, other{Native("/in/tmp.pdf"), "", "a"};
    const struct {
        const char* what;
        const SaveStepSettings& settings;
        const SaveStepDocument& document;
        std::string path;
        bool inPlace;
    } rows[] = {{"in place overwrites", inPlace, file, Native("/in/a.pdf"), true},
                {"affix", affixed, file, Native("/in/a_o.pdf"), false},
                {"name of the file without inputs", affixed, unnamed, Native("/in/a_o.pdf"), false},
                {"name of the inputs", affixed, other, Native("/in/a_o.pdf"), false},
                {"unique in the folder", folder, file, Native("/out/a (2).pdf"), false},
                {"replaces in the folder", replace, file, Native("/out/a.pdf"), false},
                {"top folder", top, file, Native("/a.pdf"), false},
                {"own folder, unique", same, file, Native("/in/a (1).pdf"), false},
                {"own folder, replacing itself", sameReplace, file, Native("/in/a.pdf"), true},
                {"a converted document beside its source", inPlace, picture, Native("/in/p (1).pdf"), false},
                {"a converted document with affix", affixed, picture, Native("/in/p_o.pdf"), false}};
    for (const auto& row : rows) {
        const SaveTarget target = PlanSaveTarget(row.settings, row.document, "pdf", taken);
        EXPECT_EQ(target.path, row.path) << row.what;
        EXPECT_EQ(target.inPlace, row.inPlace) << row.what;
    }
    const SaveStepSettings lost{.inFolder = true}, escaping{.before = "../"};
    for (const auto* settings : {&lost, &escaping})
        EXPECT_EQ(RaisedBy([&] { PlanSaveTarget(*settings, file, "pdf", taken); }), genErrBadParm);
    EXPECT_EQ(RaisedBy([&] { PlanSaveTarget(inPlace, {"", "", "x"}, "pdf", taken); }), genErrBadParm);
}

namespace {

AVConversionStatus Convert(ASCab settings, AVConversionFlags, ASPathName, ASFileSys, PDDoc* made,
                           AVStatusMonitorProcs, AVConversionClientData)
{
    EXPECT_TRUE(!settings || CabAt(settings).GetInt("default") == 7);
    *made = Part<CDocuments>().Adopt(CPdfDocument::FromMemory(SamplePdf(1), "sample"));
    return kAVConversionSuccess;
}
AVConversionStatus Raises(ASCab, AVConversionFlags, PDDoc, ASPathName, ASFileSys, AVStatusMonitorProcs,
                          AVConversionClientData)
{
    Raise(genErrGeneral, "deliberate");
}
ASCab Defaults(const char*, AVConversionClientData)
{
    const ASCab cab = NewCab();
    CabAt(cab).PutInt("default", 7);
    return cab;
}

class Steps : public CHostFixture {
protected:
    Steps()
    {
        RegisterBuiltInCommands();
        RegisterBuiltInConverters();
    }
    ~Steps() override { Part<CCommands>().DestroyAll(); }

    PDDoc Open(const std::string& path) { return Part<CDocuments>().Open(path, true, {}); }
    std::string Sample(const std::string& name) { return folder.Write(name, SamplePdf(2)); }

    AVCommand Step(const char* name, PDDoc document, const std::string& base)
    {
        const AVCommand command = HOST(AcroView, AVCommandNew, AtomFromText(name));
        const COwnedCab inputs = COwnedCab::New();
        inputs->PutPointer(kAVCommandKeyPDDoc, "PDDoc", document);
        inputs->PutString(kAVCommandKeyBaseFileName, base);
        HOST(AcroView, AVCommandSetInputs, command, inputs.Get());
        return command;
    }
    AVCommandStatus Run(const char* name, PDDoc document, const std::string& base, const COwnedCab& params)
    {
        const AVCommand command = Step(name, document, base);
        HOST(AcroView, AVCommandSetParams, command, params.Get());
        return HOST(AcroView, AVCommandWork, command);
    }
    AVCommandStatus Save(PDDoc document, const std::string& base, const COwnedCab& params)
    {
        return Run("WorkflowPlaybackSaveFiles", document, base, params);
    }
    std::string MessageOf(const std::function<void()>& work)
    {
        try {
            work();
        } catch (const CHostRaise& raise) {
            return raise.Message();
        }
        return "nothing was raised";
    }

    CTemporaryFolder folder;
};

bool IsThere(const std::string& path) { return std::filesystem::exists(path); }

}  // namespace

TEST_F(Steps, TheSaveStepReadsTextsStringsAndPathCabs)
{
    const COwnedCab cab = COwnedCab::New();
    cab->PutString("DocSaveDestType", "WorkflowPlaybackSaveInAFolder");
    CCabinet& place = cab->PutNewCab("PreselectedFolderPath");
    place.PutText("DIText", "/C/some/f?lder/");
    place.PutString("DI", "/C/some/f\xF6lder/");
    cab->PutText("InsertAfterBaseName", "unused");
    cab->PutBool("OptimizePDF", false);
    cab->PutString("HandlerUniqueID", "com.adobe.acrobat.pdf");
    const auto settings = SaveStepSettings::Read(&*cab);
    EXPECT_TRUE(settings.inFolder);
    EXPECT_EQ(settings.folder.value_or(""), NativeFromDeviceIndependent("/C/some/f\xF6lder/", nullptr))
        << "its bytes";
    EXPECT_EQ(settings.after, "") << "only with AddToBaseName";
    EXPECT_FALSE(settings.optimise);
    EXPECT_TRUE(settings.dontOverwrite);
    EXPECT_EQ(settings.converterId, "") << "PDF is no conversion";
}

TEST_F(Steps, SavingInPlaceReplacesTheFileAndTheNextSaveFollowsTheDocument)
{
    const std::string path = Sample("a.pdf");
    const PDDoc document = Open(path);
    DocumentAt(document).pdf.SetInfo("Title", "changed");
    const COwnedCab none = COwnedCab::New(), affix = COwnedCab::New();
    EXPECT_EQ(Save(document, "a", none), kAVCommandDone);
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_NE(FileBytes(path).find("/Linearized"), std::string::npos);
    affix->PutBool("AddToBaseName", true);
    affix->PutText("InsertAfterBaseName", "_o");
    EXPECT_EQ(Save(document, "a", affix), kAVCommandDone);
    const std::string before = FileBytes(path);
    DocumentAt(document).pdf.SetInfo("Title", "again");
    EXPECT_EQ(Save(document, "a", none), kAVCommandDone);
    EXPECT_EQ(FileBytes(path), before) << "the document now lives in a_o.pdf";
    EXPECT_EQ(DocumentAt(document).pdf.Path(), folder / "a_o.pdf");
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, AConvertedDocumentGoesBesideItsSourceAndNeverOverIt)
{
    const std::string source = folder.Write("p.any", "not a PDF");
    AVConversionToPDFHandlerRec converter = {};
    converter.size = sizeof(converter);
    converter.canDoSync = 1;
    converter.convert = &CSlot<&Convert>::Entry;
    converter.defaultSettings = &CSlot<&Defaults>::Entry;
    HOST(AcroView, AVAppRegisterToPDFHandler, &converter);
    const auto cabs = LiveCabs();
    const ASPathName path = NewPath(source);
    PDDoc document = nullptr;
    EXPECT_EQ(HOST(AcroView, AVConversionConvertToPDFWithHandler, &converter, static_cast<ASCab>(nullptr),
                   AVConversionFlags{0}, path, static_cast<ASFileSys>(nullptr), &document,
                   static_cast<AVStatusMonitorProcs>(nullptr)),
              kAVConversionSuccess);
    EXPECT_EQ(LiveCabs(), cabs) << "default settings are the host's to destroy";
    ReleasePath(path);
    EXPECT_EQ(Save(document, "p", COwnedCab::New()), kAVCommandDone);
    EXPECT_TRUE(IsThere(folder / "p.pdf"));
    EXPECT_EQ(FileBytes(source), "not a PDF");
    Part<CDocuments>().Close(document);
}

namespace {

/// Somebody else takes the name just before the first file gets it.
class CQuickerOverseer final : public COverseer {
public:
    CQuickerOverseer() : m_former(InstallOverseer(this)) {}
    ~CQuickerOverseer() override { InstallOverseer(m_former); }
    Answer Ask(Act, const std::string&, const std::string& target) override
    {
        if (!std::exchange(m_done, true)) std::ofstream(target) << "theirs";
        return Answer::Go;
    }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    COverseer* m_former;
    bool m_done = false;
};

}  // namespace

TEST_F(Steps, ANameThatIsTakenMeanwhileIsLeftAlone)
{
    const PDDoc document = Open(Sample("a.pdf"));
    const COwnedCab params = COwnedCab::New();
    params->PutBool("AddToBaseName", true);
    params->PutText("InsertAfterBaseName", "_o");
    for (const char* name : {"a_o.txt", "a_o.pdf"}) {
        const bool asText = std::string(name).ends_with(".txt");
        params->PutString("HandlerUniqueID", asText ? "com.adobe.acrobat.plain-text" : "");
        const CQuickerOverseer quicker;
        EXPECT_EQ(Save(document, "a", params), kAVCommandDone);
        EXPECT_EQ(FileBytes(folder / name), "theirs");
        EXPECT_TRUE(IsThere(folder / (asText ? "a_o (1).txt" : "a_o (1).pdf")));
    }
    params->PutText("InsertAfterBaseName", "_p");
    params->PutBool("DontOverwrite", false);
    const CQuickerOverseer quicker;
    EXPECT_EQ(RaisedBy([&] { Save(document, "a", params); }), fileErrExists);
    EXPECT_EQ(FileBytes(folder / "a_p.pdf"), "theirs");
    EXPECT_EQ(folder.EntryCount(), 6u);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, AFailedSaveRaisesWithFileAndReason)
{
    const std::string path = Sample("a.pdf");
    const PDDoc document = Open(path);
    const std::string none = NativeFromDeviceIndependent("/C/no/such/folder", nullptr);
    const struct {
        const char *key, *value;
        std::string said;
    } rows[] = {{"PreselectedFolderPath", "/C/no/such/folder", none + ": the folder to save in does not exist"},
                {"HandlerUniqueID", "com.example.unknown", "there is no converter named com.example.unknown"}};
    for (const auto& row : rows) {
        const COwnedCab params = COwnedCab::New();
        params->PutString("DocSaveDestType", "WorkflowPlaybackSaveInAFolder");
        params->PutText("PreselectedFolderPath", folder.Path());
        params->PutText(row.key, row.value);
        EXPECT_NE(MessageOf([&] { Save(document, "a", params); }).find(row.said), std::string::npos) << row.said;
    }
    const AVCommand empty = HOST(AcroView, AVCommandNew, AtomFromText("WorkflowPlaybackSaveFiles"));
    EXPECT_EQ(RaisedBy([&] { HOST(AcroView, AVCommandWork, empty); }), genErrBadParm) << "no document";
    EXPECT_EQ(Part<CCommands>().At(empty).status, kAVCommandInError);
    EXPECT_EQ(folder.EntryCount(), 1u);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, TheSaveStepWritesOtherFormatsUnderUniqueNamesAndReportsAConverterThatFails)
{
    const PDDoc document = Open(Sample("a.pdf"));
    const COwnedCab params = COwnedCab::New();
    params->PutString("HandlerUniqueID", "com.adobe.acrobat.plain-text");
    EXPECT_EQ(Save(document, "a", params), kAVCommandDone);
    EXPECT_EQ(Save(document, "a", params), kAVCommandDone);
    EXPECT_NE(FileBytes(folder / "a (1).txt").find("Page 2 of the sample"), std::string::npos);
    AVConversionFromPDFHandlerRec converter = {};
    converter.size = sizeof(converter);
    converter.canDoSync = 1;
    converter.convert = &CSlot<&Raises>::Entry;
    std::memcpy(converter.uniqueID, "T.raises", 9);
    HOST(AcroView, AVAppRegisterFromPDFHandler, &converter);
    params->PutString("HandlerUniqueID", "T.raises");
    EXPECT_NE(MessageOf([&] { Save(document, "a", params); }).find("deliberate"), std::string::npos);
    converter.canDoSync = 0;
    EXPECT_NE(MessageOf([&] { Save(document, "a", params); }).find("while the caller waits"), std::string::npos);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, PartsOfTheSaveStepThatAreNotThereAreSaid)
{
    const PDDoc document = Open(Sample("a.pdf"));
    const COwnedCab params = COwnedCab::New();
    params->PutBool("RunPDFOptimizer", true);
    params->PutText("PresetName", "Mobile");
    EXPECT_EQ(Save(document, "a", params), kAVCommandDone);
    EXPECT_NE(SaidAll().find("\"Mobile\" is not applied"), std::string::npos);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, TheSecurityStepProtectsAndRemovesAndNeverLeavesADocumentHalfProtected)
{
    const std::string path = Sample("a.pdf");
    const PDDoc document = Open(path);
    const COwnedCab params = COwnedCab::New(), none = COwnedCab::New();
    const struct {
        const char* handler;
        ASErrorCode code;
    } refused[] = {{"T.unknown", pdErrNoCryptHandler}, {"Standard", genErrBadParm}};
    for (const auto& row : refused) {
        params->PutAtom("CryptHandler", AtomFromText(row.handler));
        EXPECT_EQ(RaisedBy([&] { Run("DocSecurity", document, "a", params); }), row.code) << row.handler;
        EXPECT_NE(RaisedBy([&] { Save(document, "a", none); }), 0) << row.handler << ": not saved without";
        EXPECT_EQ(Run("DocSecurity", document, "a", none), kAVCommandDone) << "removing it allows saving again";
        EXPECT_EQ(Save(document, "a", none), kAVCommandDone) << row.handler;
    }
    CCabinet& settings = params->PutNewCab("SecuritySettings");
    settings.PutText("userPW", "geheim ");
    settings.PutInt("perms", 4);
    settings.PutInt("encryptMethod", 99);
    settings.PutInt("keyLength", 16);
    settings.PutInt("revision", 1);
    EXPECT_NE(RaisedBy([&] { Run("DocSecurity", document, "a", params); }), 0) << "an unknown method";
    EXPECT_NE(RaisedBy([&] { Save(document, "a", none); }), 0) << "refused protection is not saved without";
    for (const char* key : {"encryptMethod", "keyLength", "revision"}) settings.Remove(key);
    EXPECT_EQ(Run("DocSecurity", document, "a", params), kAVCommandDone);
    EXPECT_EQ(Save(document, "a", none), kAVCommandDone);
    Part<CDocuments>().Close(document);

    EXPECT_NE(RaisedBy([&] { Open(path); }), 0) << "it needs its password now";
    Part<CDocuments>().passwordCandidates = {"wrong", "geheim "};
    const PDDoc again =
        Part<CDocuments>().Open(path, false, [](PDDoc asked) { return Part<CDocuments>().AskPassword(asked); });
    EXPECT_EQ(DocumentAt(again).pdf.Security().method, 7);
    Part<CDocuments>().Close(again);
}
