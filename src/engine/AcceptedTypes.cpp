#include "engine/AcceptedTypes.h"

#include "common/Log.h"
#include "hostcalls/Conversions.h"

#include <set>

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

}  // namespace

std::vector<std::string> AcceptedExtensions(const ExecutorSettings& settings, CSequenceInput input, CLogWriter& log)
{
    if (settings.allowedExtensions) return *settings.allowedExtensions;
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
