#include "openhost/commands/SaveStep.h"

#include <cstring>
#include <string_view>

#include "base/Names.h"
#include "openhost/commands/Step.h"
#include "openhost/conversion/Converters.h"
#include "openhost/core/Host.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "platform/Files.h"

namespace openhost {

namespace {

constexpr char kDestination[] = "DocSaveDestType";
constexpr char kInAFolder[] = "WorkflowPlaybackSaveInAFolder";
constexpr char kFolder[] = "PreselectedFolderPath";

/// A parameter that may be stored as a text or as a string; host encoding.
std::optional<std::string> TextOrString(const CCabinet* cab, std::string_view key)
{
    if (!cab) return std::nullopt;
    if (const CHostText* const text = cab->GetText(key)) return text->HostBytes();
    if (const char* const string = cab->GetString(key)) return std::string(string);
    return std::nullopt;
}

/// A folder as text, or as a cab that describes a path; native. "DI" and "DIPath" have the name's bytes, which need
/// not be text.
std::optional<std::string> ReadFolder(const CCabinet& params)
{
    auto text = TextOrString(&params, kFolder);
    if (const CCabinet* const path = params.GetCab(kFolder))
        for (const char* key : {"DI", "DIPath", "DIText"})
            if (!text || text->empty()) text = TextOrString(path, key);
    if (!text || text->empty()) return std::nullopt;
    return NativeFromDeviceIndependent(*text, nullptr);
}

/// The name up to its last dot; all of a name that begins with its only one.
std::string StemOf(const std::string& path)
{
    const std::string base = SplitPath(path).base;
    return base.empty() ? FileName(path) : base;
}

void RequireInsideFolder(const std::string& affix)
{
    if (affix.find_first_of(kSeparators) != std::string::npos)
        Raise(genErrBadParm, "\"" + affix + "\" cannot be part of a file name");
}

/// What is saved beside it: the document's own file, or the file that it was made from.
const std::string& Neighbour(const SaveStepDocument& document)
{
    return document.path.empty() ? document.madeFrom : document.path;
}

std::string ChooseFolder(const SaveStepSettings& settings, const SaveStepDocument& document)
{
    if (settings.inFolder) {
        if (!settings.folder) Raise(genErrBadParm, "the save step names no folder to save in");
        return *settings.folder;
    }
    if (Neighbour(document).empty())
        Raise(genErrBadParm, "the document has no file yet, so there is no place to save it in");
    return FolderOf(Neighbour(document));
}

}  // namespace

SaveStepSettings SaveStepSettings::Read(const CCabinet* params)
{
    SaveStepSettings settings;
    if (!params) return settings;
    settings.inFolder = TextOrString(params, kDestination).value_or("") == kInAFolder;
    settings.folder = ReadFolder(*params);
    if (params->GetBool("AddToBaseName")) {
        settings.before = TextOrString(params, "InsertBeforeBaseName").value_or("");
        settings.after = TextOrString(params, "InsertAfterBaseName").value_or("");
    }
    settings.dontOverwrite = params->GetBool("DontOverwrite", true);
    settings.optimise = params->GetBool("OptimizePDF", true);
    settings.converterId = TextOrString(params, "HandlerUniqueID").value_or("");
    if (settings.converterId == PDF_FILEFILTERREC_UNIQUEID) settings.converterId.clear();
    return settings;
}

SaveTarget PlanSaveTarget(const SaveStepSettings& settings, const SaveStepDocument& document,
                          const std::string& extension, const std::function<bool(const std::string&)>& exists)
{
    RequireInsideFolder(settings.before);
    RequireInsideFolder(settings.after);
    const bool affixed = !settings.before.empty() || !settings.after.empty();
    const bool asPdf = settings.converterId.empty();
    if (asPdf && !settings.inFolder && !affixed && !document.path.empty()) return {document.path, true};
    const std::string base = document.baseName.empty() ? StemOf(Neighbour(document)) : document.baseName;
    if (base.empty()) Raise(genErrBadParm, "the document has no name to be saved under");
    RequireInsideFolder(base);
    const std::string folder = ChooseFolder(settings, document);
    const std::string path =
        WithTrailingSeparator(folder) + settings.before + base + settings.after + '.' + extension;
    if (settings.dontOverwrite) return {UniqueSpaced(path, exists), false};
    return {path, path == document.path};
}

namespace {

void RequireFolder(const SaveStepSettings& settings)
{
    if (settings.inFolder && settings.folder && !platform::FolderExists(*settings.folder))
        Raise(fileErrFNF, *settings.folder + ": the folder to save in does not exist");
}

/// Parts of the step that this host does not have: said, so that nobody takes them for done.
void SayWhatIsMissing(const CCabinet* params)
{
    if (!params) return;
    if (params->GetBool("RunPDFOptimizer"))
        Diagnose("the save step's optimizer preset \"" + TextOrString(params, "PresetName").value_or("") +
                 "\" is not applied: the host has no optimizer");
    if (params->GetBool("EmbedIndex")) Diagnose("the save step embeds no search index: the host has none");
    if (params->GetBool("NumbericNaming")) Diagnose("the save step numbers no files: the host does not offer that");
}

SaveStepDocument Describe(PDDoc document, const CCabinet* inputs)
{
    const CHostDocument& held = DocumentAt(document);
    auto base = TextOrString(inputs, kAVCommandKeyBaseFileName);
    if (!base) base = TextOrString(inputs, kAVCommandKeyBaseFileNameASText);
    return {held.pdf.Path(), held.madeFrom, base.value_or("")};
}

/// Another program may take a free name before we do; then the next free one is tried, so often at most.
constexpr int kNameAttempts = 100;

template <class Save>
void SaveUnderPlannedName(const SaveStepSettings& settings, const SaveStepDocument& described,
                          const std::string& extension, const Save& save)
{
    for (int attempt = 1;; ++attempt) {
        const SaveTarget target = PlanSaveTarget(settings, described, extension, &platform::NameExists);
        try {
            return save(target);
        } catch (const CHostRaise& raise) {
            const bool taken = raise.Code() == fileErrExists && settings.dontOverwrite && !target.inPlace;
            if (!taken || attempt == kNameAttempts) throw;
        }
    }
}

void SaveAsPdf(PDDoc document, const SaveStepSettings& settings, const SaveTarget& target)
{
    DocumentSaveRequest request;
    request.path = target.path;
    request.linearise = settings.optimise;
    request.mustNotExist = settings.dontOverwrite && !target.inPlace;
    Part<CDocuments>().Save(document, request);
}

/// A path for the time of one call.
class COwnedPath {
public:
    explicit COwnedPath(const std::string& native) : m_path(NewPath(native)) {}
    ~COwnedPath() { ReleasePath(m_path); }
    COwnedPath(const COwnedPath&) = delete;
    COwnedPath& operator=(const COwnedPath&) = delete;
    ASPathName Get() const { return m_path; }

private:
    ASPathName m_path;
};

std::string ExtensionOf(const AVConversionFromPDFHandlerRec& converter)
{
    const AVFileFilterRec& filter = converter.convFilter;
    if (!filter.fileDescs || filter.numFileDescs == 0) return {};
    const auto& extension = filter.fileDescs[0].extension;
    return std::string(extension, strnlen(extension, sizeof(extension)));
}

/// Fails with "exists" when the name was taken meanwhile.
StepResult ConvertTo(const std::string& target, AVConversionFromPDFHandler converter, PDDoc document,
                     const SaveStepSettings& settings)
{
    auto& converters = Part<CConverters>();
    const COwnedPath path(target);
    ConversionOrder order;
    if (settings.dontOverwrite) order.flags = kAVConversionDontOverwrite;
    const AVConversionStatus status = converters.Convert(converter, order, document, path.Get());
    if (status == kAVConversionSuccess) return StepResult::Unchanged;
    if (status == kAVConversionCancelled) return StepResult::Cancelled;
    const std::string& reason = converters.LastFailure();
    const ASErrorCode taken = fileErrExists, other = genErrGeneral;
    Raise(converters.LastFailureCode() == taken ? taken : other,
          target + ": the converter " + settings.converterId + " could not write it" +
              (reason.empty() ? std::string() : " (" + reason + ")"));
}

StepResult SaveThroughConverter(PDDoc document, const SaveStepSettings& settings, const SaveStepDocument& described)
{
    const auto converter = Part<CConverters>().FromPdfNamed(settings.converterId);
    if (!converter)
        Raise(genErrGeneral,
              Neighbour(described) + ": cannot be saved, there is no converter named " + settings.converterId);
    StepResult result = StepResult::Unchanged;
    SaveUnderPlannedName(settings, described, ExtensionOf(*converter), [&](const SaveTarget& target) {
        result = ConvertTo(target.path, converter, document, settings);
    });
    return result;
}

/// A save that fails raises: the message names file and reason, and nobody takes the step for done.
StepResult SaveDocument(CStepRun& run)
{
    const auto settings = SaveStepSettings::Read(run.Params());
    const auto described = Describe(run.Handle(), run.Inputs());
    SayWhatIsMissing(run.Params());
    RequireFolder(settings);
    if (!settings.converterId.empty()) return SaveThroughConverter(run.Handle(), settings, described);
    SaveUnderPlannedName(settings, described, "pdf",
                         [&](const SaveTarget& target) { SaveAsPdf(run.Handle(), settings, target); });
    return StepResult::Unchanged;
}

}  // namespace

const StepDescription& SaveStep()
{
    static const StepDescription step{
        .names = {"WorkflowPlaybackSaveFiles"}, .group = "Document", .title = "Save", .work = &SaveDocument};
    return step;
}

}  // namespace openhost
