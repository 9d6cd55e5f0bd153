#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

#include "base/Names.h"
#include "openhost/commands/Commands.h"
#include "openhost/commands/SaveStep.h"
#include "openhost/conversion/Converters.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "support/RefusingOverseer.h"
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
    const std::set<std::string> present = {"/in/a.pdf", "/out/a.pdf", "/out/a (1).pdf", "/in/p.pdf"};
    const auto taken = [&](const std::string& path) {
        return std::ranges::any_of(present, [&](const std::string& one) { return Native(one) == path; });
    };
    const auto into = [](const char* folder, bool unique) {
        return SaveStepSettings{.inFolder = true, .folder = Native(folder), .dontOverwrite = unique};
    };
    const SaveStepSettings inPlace, affixed{.after = "_o"};
    const SaveStepDocument file{Native("/in/a.pdf"), "", "a"}, unnamed{Native("/in/a.pdf"), "", ""},
        picture{"", Native("/in/p.jpg"), "p"}, other{Native("/in/tmp.pdf"), "", "a"};
    const struct {
        const char* what;
        SaveStepSettings settings;
        const SaveStepDocument& document;
        const char* path;
        bool inPlace;
    } rows[] = {{"in place overwrites", inPlace, file, "/in/a.pdf", true},
                {"affix", affixed, file, "/in/a_o.pdf", false},
                {"name of the file without inputs", affixed, unnamed, "/in/a_o.pdf", false},
                {"name of the inputs", affixed, other, "/in/a_o.pdf", false},
                {"unique in the folder", into("/out", true), file, "/out/a (2).pdf", false},
                {"replaces in the folder", into("/out", false), file, "/out/a.pdf", false},
                {"top folder", into("/", true), file, "/a.pdf", false},
                {"own folder, unique", into("/in", true), file, "/in/a (1).pdf", false},
                {"own folder, replacing itself", into("/in", false), file, "/in/a.pdf", true},
                {"a converted document beside its source", inPlace, picture, "/in/p (1).pdf", false},
                {"a converted document with affix", affixed, picture, "/in/p_o.pdf", false}};
    for (const auto& row : rows) {
        const SaveTarget target = PlanSaveTarget(row.settings, row.document, "pdf", taken);
        EXPECT_EQ(target.path, Native(row.path)) << row.what;
        EXPECT_EQ(target.inPlace, row.inPlace) << row.what;
    }
    const SaveStepSettings lost{.inFolder = true}, escaping{.before = "../"};
    const std::pair<SaveStepSettings, SaveStepDocument> unusable[] = {
        {lost, file}, {escaping, file}, {inPlace, {"", "", "x"}}};
    for (const auto& [settings, document] : unusable)
        EXPECT_REFUSED(PlanSaveTarget(settings, document, "pdf", taken));
}

namespace {

AVConversionStatus Convert(ASCab settings, AVConversionFlags, ASPathName, ASFileSys, PDDoc* made,
                           AVStatusMonitorProcs, AVConversionClientData data)
{
    EXPECT_EQ(data, nullptr) << "the record ends before it";
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

    PDDoc Open() { return Part<CDocuments>().Open(path, true, {}); }
    AVCommandStatus Run(const char* name, PDDoc document, const COwnedCab& given)
    {
        const AVCommand command = HOST(AcroView, AVCommandNew, AtomFromText(name));
        const COwnedCab inputs = COwnedCab::New();
        inputs->PutPointer(kAVCommandKeyPDDoc, "PDDoc", document);
        inputs->PutString(kAVCommandKeyBaseFileName, "a");
        HOST(AcroView, AVCommandSetInputs, command, inputs.Get());
        HOST(AcroView, AVCommandSetParams, command, given.Get());
        return HOST(AcroView, AVCommandWork, command);
    }
    AVCommandStatus Save(PDDoc document, const COwnedCab& given)
    {
        return Run("WorkflowPlaybackSaveFiles", document, given);
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
    const std::string path = folder.Write("a.pdf", SamplePdf(2));
    const COwnedCab params = COwnedCab::New(), none = COwnedCab::New();
};

}  // namespace

TEST_F(Steps, TheSaveStepReadsTextsStringsAndPathCabs)
{
    params->PutString("DocSaveDestType", "WorkflowPlaybackSaveInAFolder");
    CCabinet& place = params->PutNewCab("PreselectedFolderPath");
    place.PutText("DIText", "/C/some/f?lder/");
    place.PutString("DI", "/C/some/f\xF6lder/");
    params->PutText("InsertAfterBaseName", "unused");
    params->PutBool("OptimizePDF", false);
    params->PutString("HandlerUniqueID", "com.adobe.acrobat.pdf");
    const auto settings = SaveStepSettings::Read(&*params);
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
    const PDDoc document = Open();
    DocumentAt(document).pdf.SetInfo("Title", "changed");
    EXPECT_EQ(Save(document, none), kAVCommandDone);
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_NE(FileBytes(path).find("/Linearized"), std::string::npos);
    params->PutBool("AddToBaseName", true);
    params->PutText("InsertAfterBaseName", "_o");
    EXPECT_EQ(Save(document, params), kAVCommandDone);
    const std::string before = FileBytes(path);
    DocumentAt(document).pdf.SetInfo("Title", "again");
    EXPECT_EQ(Save(document, none), kAVCommandDone);
    EXPECT_EQ(FileBytes(path), before) << "the document now lives in a_o.pdf";
    EXPECT_EQ(DocumentAt(document).pdf.Path(), folder / "a_o.pdf");
    params->PutBool("RunPDFOptimizer", true);
    params->PutText("PresetName", "Mobile");
    EXPECT_EQ(Save(document, params), kAVCommandDone);
    EXPECT_NE(SaidAll().find("\"Mobile\" is not applied"), std::string::npos);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, AConvertedDocumentGoesBesideItsSourceAndNeverOverIt)
{
    const std::string source = folder.Write("a.any", "not a PDF");
    AVConversionToPDFHandlerRec converter = {};
    converter.canDoSync = 1;
    converter.convert = &CSlot<&Convert>::Entry;
    converter.defaultSettings = &CSlot<&Defaults>::Entry;
    converter.clientData = reinterpret_cast<AVConversionClientData>(this);
    converter.size = offsetof(AVConversionToPDFHandlerRec, append) - 1;
    EXPECT_REFUSED(HOST(AcroView, AVAppRegisterToPDFHandler, &converter));
    converter.size += 1;  // it may end exactly behind what it cannot do without
    HOST(AcroView, AVAppRegisterToPDFHandler, &converter);
    const auto cabs = LiveCabs();
    const ASPathName name = NewPath(source);
    PDDoc document = nullptr;
    EXPECT_EQ(HOST(AcroView, AVConversionConvertToPDFWithHandler, &converter, static_cast<ASCab>(nullptr),
                   AVConversionFlags{0}, name, static_cast<ASFileSys>(nullptr), &document,
                   static_cast<AVStatusMonitorProcs>(nullptr)),
              kAVConversionSuccess);
    EXPECT_EQ(LiveCabs(), cabs) << "default settings are the host's to destroy";
    ReleasePath(name);
    EXPECT_EQ(Save(document, COwnedCab::New()), kAVCommandDone);
    EXPECT_TRUE(std::filesystem::exists(folder / "a (1).pdf"));
    EXPECT_EQ(FileBytes(source), "not a PDF");
    Part<CDocuments>().Close(document);
}

namespace {

/// Somebody else takes the name just before the first file gets it.
class CQuickerOverseer final : public CRefusingOverseer {
public:
    Answer Ask(Act, const std::string&, const std::string& target) override
    {
        if (!std::exchange(m_done, true)) std::ofstream(target) << "theirs";
        return Answer::Go;
    }

private:
    bool m_done = false;
};

}  // namespace

TEST_F(Steps, ANameThatIsTakenMeanwhileIsLeftAlone)
{
    const PDDoc document = Open();
    params->PutBool("AddToBaseName", true);
    params->PutText("InsertAfterBaseName", "_o");
    for (const char* name : {"a_o.txt", "a_o.pdf"}) {
        const bool asText = std::string(name).ends_with(".txt");
        params->PutString("HandlerUniqueID", asText ? "com.adobe.acrobat.plain-text" : "");
        const CQuickerOverseer quicker;
        EXPECT_EQ(Save(document, params), kAVCommandDone);
        EXPECT_EQ(FileBytes(folder / name), "theirs");
        EXPECT_TRUE(std::filesystem::exists(folder / (asText ? "a_o (1).txt" : "a_o (1).pdf")));
    }
    params->PutText("InsertAfterBaseName", "_p");
    params->PutBool("DontOverwrite", false);
    const CQuickerOverseer quicker;
    EXPECT_EQ(RaisedBy([&] { Save(document, params); }), fileErrExists);
    EXPECT_EQ(FileBytes(folder / "a_p.pdf"), "theirs");
    EXPECT_EQ(folder.EntryCount(), 6u);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, TheSaveStepWritesOtherFormatsUnderUniqueNamesAndRaisesWithFileAndReason)
{
    const PDDoc document = Open();
    params->PutString("HandlerUniqueID", "com.adobe.acrobat.plain-text");
    EXPECT_EQ(Save(document, params), kAVCommandDone);
    EXPECT_EQ(Save(document, params), kAVCommandDone);
    EXPECT_NE(FileBytes(folder / "a (1).txt").find("Page 2 of the sample"), std::string::npos);
    AVConversionFromPDFHandlerRec converter = {};
    converter.convert = &CSlot<&Raises>::Entry;
    std::memcpy(converter.uniqueID, "T.raises", 9);
    converter.size = offsetof(AVConversionFromPDFHandlerRec, clientData) - 1;
    EXPECT_REFUSED(HOST(AcroView, AVAppRegisterFromPDFHandler, &converter));
    converter.size += 1;
    HOST(AcroView, AVAppRegisterFromPDFHandler, &converter);
    const auto entries = folder.EntryCount();
    const std::string missing = NativeFromDeviceIndependent("/C/no/such/folder", nullptr);
    const struct {
        const char *key, *value;
        bool canWork;
        std::string said;
    } rows[] = {
        {"PreselectedFolderPath", "/C/no/such/folder", true, missing + ": the folder to save in does not exist"},
        {"HandlerUniqueID", "T.unknown", true, "there is no converter named T.unknown"},
        {"HandlerUniqueID", "T.raises", true, "deliberate"},
        {"HandlerUniqueID", "T.raises", false, "while the caller waits"}};
    for (const auto& row : rows) {
        converter.canDoSync = row.canWork;
        params->PutString("DocSaveDestType", "WorkflowPlaybackSaveInAFolder");
        params->PutText("PreselectedFolderPath", folder.Path());
        params->PutText(row.key, row.value);
        EXPECT_NE(MessageOf([&] { Save(document, params); }).find(row.said), std::string::npos) << row.said;
    }
    const AVCommand empty = HOST(AcroView, AVCommandNew, AtomFromText("WorkflowPlaybackSaveFiles"));
    EXPECT_REFUSED(HOST(AcroView, AVCommandWork, empty)) << "no document";
    EXPECT_EQ(Part<CCommands>().At(empty).status, kAVCommandInError);
    EXPECT_EQ(folder.EntryCount(), entries);
    Part<CDocuments>().Close(document);
}

TEST_F(Steps, TheSecurityStepProtectsAndRemovesAndNeverLeavesADocumentHalfProtected)
{
    const PDDoc document = Open();
    const struct {
        const char* handler;
        ASErrorCode code;
    } refused[] = {{"T.unknown", pdErrNoCryptHandler}, {"Standard", genErrBadParm}};
    for (const auto& row : refused) {
        params->PutAtom("CryptHandler", AtomFromText(row.handler));
        EXPECT_EQ(RaisedBy([&] { Run("DocSecurity", document, params); }), row.code) << row.handler;
        EXPECT_NE(RaisedBy([&] { Save(document, none); }), 0) << row.handler << ": not saved without";
        EXPECT_EQ(Run("DocSecurity", document, none), kAVCommandDone) << "removing it allows saving again";
        EXPECT_EQ(Save(document, none), kAVCommandDone) << row.handler;
    }
    CCabinet& settings = params->PutNewCab("SecuritySettings");
    settings.PutText("userPW", "geheim ");
    settings.PutInt("perms", 4);
    settings.PutInt("encryptMethod", 99);
    settings.PutInt("keyLength", 16);
    settings.PutInt("revision", 1);
    EXPECT_NE(RaisedBy([&] { Run("DocSecurity", document, params); }), 0) << "an unknown method";
    EXPECT_NE(RaisedBy([&] { Save(document, none); }), 0) << "refused protection is not saved without";
    for (const char* key : {"encryptMethod", "keyLength", "revision"}) settings.Remove(key);
    EXPECT_EQ(Run("DocSecurity", document, params), kAVCommandDone);
    EXPECT_EQ(Save(document, none), kAVCommandDone);
    Part<CDocuments>().Close(document);

    EXPECT_NE(RaisedBy([&] { Open(); }), 0) << "it needs its password now";
    Part<CDocuments>().passwordCandidates = {"wrong", "geheim "};
    const PDDoc again =
        Part<CDocuments>().Open(path, false, [](PDDoc asked) { return Part<CDocuments>().AskPassword(asked); });
    EXPECT_EQ(DocumentAt(again).pdf.Security().method, 7);
    Part<CDocuments>().Close(again);
}
