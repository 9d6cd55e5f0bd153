#include "engine/InputOpening.h"

#include <algorithm>
#include <optional>

#include "base/Names.h"
#include "base/Text.h"
#include "common/Log.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Conversions.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"

bool HasChanged(const std::string& path, const std::optional<platform::FileStamp>& known)
{
    const auto now = known ? platform::StampOf(path) : std::nullopt;
    if (!now) return false;
    return now->device != known->device || now->inode != known->inode || now->size != known->size ||
           now->modifiedNanoseconds != known->modifiedNanoseconds;
}

bool IsSameFile(const std::string& path, const std::string& otherPath)
{
    return path == otherPath || (platform::FileExists(path) && platform::FileExists(otherPath) &&
                                 platform::CanonicalPath(path) == platform::CanonicalPath(otherPath));
}

bool IsSameFolder(const std::string& path, const std::string& otherPath)
{
    const auto canonical = [](const std::string& folder) {
        return platform::CanonicalPath(folder.empty() ? "." : folder);
    };
    const std::string one = canonical(path);
    return path == otherPath || (!one.empty() && one == canonical(otherPath));
}

namespace {

std::optional<ToPdfConverter> ConverterFor(const std::string& extension, CLogWriter& log)
{
    for (ToPdfConverter& converter : EnumerateToPdf()) {
        log.NameValue("Checking conversion handler", converter.uniqueId, 1);
        const bool matches = std::any_of(converter.extensions.begin(), converter.extensions.end(),
                                         [&](const auto& known) { return EqualsIgnoreCaseAscii(known, extension); });
        if (!matches) continue;
        log.NameValue("File extension has been matched", extension, 1);
        return std::move(converter);
    }
    return std::nullopt;
}

std::string Convert(CAcrobatDoc& document, const std::string& path, CLogWriter& log)
{
    log.NameValue("Preparing to convert from non-PDF file type", path, 1);
    std::string reason = "no converter for files of its type";
    if (const auto converter = ConverterFor(Extension(path), log)) {
        log.NameValue("Converting to PDF from", path, 1);
        ConversionResult result;
        const auto error = CatchHostError([&] { result = ConvertToPdf(converter->handler, path); });
        if (!error && result.status == kAVConversionSuccess && result.document) {
            document.Adopt(std::move(result.document), path);
            log.Line("\tFile conversion status is ok.");
            return {};
        }
        reason = "the conversion to PDF failed" +
                 (error ? ": " + error->text : " (" + std::to_string(result.status) + ")");
    }
    log.Line("\tFile conversion failed. No file convertor found or invalid file format.");
    return reason;
}

}  // namespace

bool IsPdfPath(const std::string& path) { return EqualsIgnoreCaseAscii(Extension(path), "pdf"); }

std::string OpenInput(CAcrobatDoc& document, const std::string& path, CLogWriter& log)
{
    platform::FileResult readable = platform::CheckReadable(path);
    if (readable && !platform::FileExists(path))  // a trial run has taken it away
        readable = platform::Failure(platform::FileProblem::Missing);
    if (!readable) {
        log.Line("File does not exist or is exclusively used by another application.");
        return platform::ErrorText(readable.errorNumber);
    }
    if (!IsPdfPath(path)) return Convert(document, path, log);
    document.Open(path);
    return {};
}
