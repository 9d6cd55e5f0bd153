#include "engine/SequenceInputs.h"

#include <set>

#include "common/Log.h"
#include "hostcalls/Application.h"
#include "hostcalls/Conversions.h"

namespace {

constexpr int kMostFormats = 100;

void Append(std::vector<std::string>& extensions, const ToPdfConverter& converter)
{
    extensions.insert(extensions.end(), converter.extensions.begin(), converter.extensions.end());
}

std::vector<std::string> AllExtensions()
{
    std::vector<std::string> extensions{"pdf"};
    for (const ToPdfConverter& converter : EnumerateToPdf()) Append(extensions, converter);
    return extensions;
}

std::set<std::string> ListedHandlers(CCabView formats)
{
    std::set<std::string> handlers;
    for (int index = 0; index < kMostFormats; ++index) {
        auto handler = formats.StringOrText(CabKey(index).c_str());
        if (!handler) break;
        handlers.insert(std::move(*handler));
    }
    return handlers;
}

std::vector<std::string> ListedExtensions(CCabView formats, CLogWriter& log)
{
    const std::set<std::string> listed = ListedHandlers(formats);
    std::vector<std::string> extensions{"pdf"};
    bool anyHandler = false;
    log.Line("\tEnumerating PDF converters.");
    for (const ToPdfConverter& converter : EnumerateToPdf()) {
        if (!listed.contains(converter.uniqueId)) continue;
        anyHandler = true;
        for (const std::string& extension : converter.extensions)
            log.NameValue("ALLOWED FILE EXTENSION", extension, 1);
        log.NameValue("ALLOWED FILE TYPE HANDLERS", converter.uniqueId, 1);
        Append(extensions, converter);
    }
    if (extensions.size() == 1) log.Line("\tWARNING: No other file types are allowed.");
    if (!anyHandler) log.Line("\tWARNING: List of allowed PDF converters is empty.");
    return extensions;
}

using Paths = Expected<std::vector<std::string>>;

/// One place or several, to be collected from.
Paths PreselectedFiles(CSequenceInput input, CLogWriter& log)
{
    std::vector<std::string> paths = input.Listed();
    if (!paths.empty()) return paths;
    constexpr char kNone[] = "No pre-selected file paths available";
    log.Line(kNone);
    return Failure(kNone);
}

Paths PreselectedFolder(CSequenceInput input, CLogWriter& log)
{
    constexpr char kNone[] = "No pre-selected folder/file paths available";
    const auto folder = input.Folder();
    if (folder) {
        log.NameValue("Source folder path", *folder, 1);
        return std::vector{*folder};
    }
    if (input.NamesFolder()) log.Line("Missing DI in pre-selected folder path");
    log.Line(kNone);
    return Failure(kNone);
}

Paths AskUser(const std::vector<std::string>& extensions, CLogWriter& log)
{
    log.Line("Prompting user for the input document.");
    auto paths = OpenFilesDialog({{"Input documents", extensions}});
    if (!paths) return Failure("No input document was chosen.");
    return std::move(*paths);
}

Paths OwnPlaces(int kind, CSequenceInput input, const std::vector<std::string>& extensions, CLogWriter& log)
{
    switch (kind) {
        case kInputFiles:
            return PreselectedFiles(input, log);
        case kInputFolder:
            return PreselectedFolder(input, log);
        case kInputAskUser:
            return AskUser(extensions, log);
        default:
            log.NameNumber("ERROR: Unknown input option", kind, 1);
            return Failure("ERROR: Unknown input option");
    }
}

/// The places that stand in for those of the sequence; none when nothing does.
std::vector<std::string> AlternativePlaces(const ExecutorSettings& settings, int kind, CLogWriter& log)
{
    std::vector<std::string> places = settings.furtherInputPaths;
    if (!settings.alternativeInputPath.empty()) places.insert(places.begin(), settings.alternativeInputPath);
    for (const std::string& place : places)
        log.NameValue(kind == kInputFolder ? "Alternative source folder path" : "Source file path", place, 1);
    return places;
}

}  // namespace

std::vector<std::string> AcceptedExtensions(CSequenceInput input, CLogWriter& log)
{
    if (!input.SourceOptions()) {
        log.Line("Allowing all input file types.");
        return AllExtensions();
    }
    const CCabView formats = input.Formats();
    if (!formats) {
        log.Line("\tNo <Format> section is found in SEQU file. Allowing all input file types.");
        return AllExtensions();
    }
    return ListedExtensions(formats, log);
}

Paths SequencePlaces(const ExecutorSettings& settings, CSequenceInput input,
                     const std::vector<std::string>& extensions, Asking asking, CLogWriter& log)
{
    const int kind = input.Kind();
    auto places = AlternativePlaces(settings, kind, log);
    if (!places.empty()) return places;
    if (kind == kInputAskUser && asking == Asking::Unwanted) return std::vector<std::string>();
    return OwnPlaces(kind, input, extensions, log);
}
