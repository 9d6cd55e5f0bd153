// The host's converters to and from PDF.
#pragma once

#include <string>
#include <vector>

#include "hostcalls/Documents.h"

/// One converter. The handler belongs to the host.
template <class Handler>
struct ConverterInfo {
    Handler handler = nullptr;
    std::string uniqueId;
    std::string description;              // for people
    std::vector<std::string> extensions;  // without dots
};
using ToPdfConverter = ConverterInfo<AVConversionToPDFHandler>;
using FromPdfConverter = ConverterInfo<AVConversionFromPDFHandler>;

/// All converters, in the host's order of priority. Throw CHostException.
[[nodiscard]] std::vector<ToPdfConverter> EnumerateToPdf();
[[nodiscard]] std::vector<FromPdfConverter> EnumerateFromPdf();

struct ConversionResult {
    AVConversionStatus status = 0;
    CHostDocument document;  // filled on success only
};

/// Converts a file with the converter's default settings, without interaction. Throws CHostException.
[[nodiscard]] ConversionResult ConvertToPdf(AVConversionToPDFHandler handler, const std::string& path);

/// Converts a document into a file, with the default settings; the flags are kAVConversion... values. Answers the
/// host's status. Throws CHostException.
[[nodiscard]] AVConversionStatus ConvertFromPdf(AVConversionFromPDFHandler handler, PDDoc document,
                                                const std::string& path, AVConversionFlags flags);
